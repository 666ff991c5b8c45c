#include "tests/hostile/reading.h"

#include <bit>
#include <filesystem>
#include <iterator>

#include "common/platform/platform.h"

namespace zrml {
namespace {

constexpr unsigned kTofMs = 18;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kDad = 12;

class Reader {
 public:
  explicit Reader(CDataServerImpl& server) : server_(server) {}

  Answers Read(const std::wstring& path) {
    Add("valid", server_.ValidateSource(path));
    Add("open", server_.Open(path));
    Add("functions", server_.GetFunctionCount(0));
    for (int function = 0; function < server_.GetFunctionCount(0); ++function) ReadFunction(function);
    ReadTraces();
    ReadAbsorbance();
    server_.Close();
    return std::move(answers_);
  }

 private:
  void Add(const std::string& question, std::int64_t answer) {
    answers_.push_back(question + " " + std::to_string(answer));
  }
  void Add(const std::string& question, const HostVector<double>& numbers) {
    answers_.push_back(question);
    for (const double number : numbers)
      answers_.back() += " " + std::to_string(std::bit_cast<std::uint64_t>(number));
  }
  void Add(const std::string& question, const std::wstring& text) {
    answers_.push_back(question + " " + platform::ToNativePath(text));
  }

  void ReadFunction(int function) {
    Add("name", server_.GetFunctionName(0, function));
    Add("kind", server_.GetFunctionKind(0, function));
    Add("mobility", server_.HasMobility(0, function));
    std::wstring value;
    Add("metadata", server_.GetMetadataValue(0, function, L"AnalysisDateTime", value));
    Add("date", value);
    const int scans = server_.GetScanCount(0, function);
    Add("scans", scans);
    for (int scan = 0; scan < scans; ++scan) {
      CZRMassSpectrum spectrum;
      Add("spectrum", server_.GetSpectrum(0, function, scan, spectrum));
      Add("masses", spectrum.MassVector());
      Add("intensities", spectrum.IntensityVector());
    }
    CZRChromatogram chromatogram;
    Add("base peaks", server_.GetBasePeakChromatogram(true, 0, function, chromatogram));
    Add("intensities", chromatogram.Intensities());
  }

  void ReadTraces() {
    const int traces = server_.GetTraceCount(0);
    Add("traces", traces);
    for (int trace = 0; trace < traces; ++trace) {
      CZRChromatogram chromatogram;
      Add("trace", server_.GetTrace(0, trace, chromatogram));
      Add("name", server_.GetTraceName(0, trace));
      Add("intensities", chromatogram.Intensities());
    }
  }

  void ReadAbsorbance() {
    const int scans = server_.GetAbsorbanceScanCount(0);
    Add("absorbance scans", scans);
    for (int scan = 0; scan < scans; ++scan) {
      CZRAbsorbanceSpectrum spectrum;
      Add("absorbance", server_.GetAbsorbanceSpectrum(0, scan, spectrum));
      Add("wavelengths", spectrum.Wavelengths());
    }
  }

  CDataServerImpl& server_;
  Answers answers_;
};

FunctionFiles FunctionOf(unsigned type) {
  FunctionFiles function;
  function.record.type = type;
  function.record.dataFormat = 9;
  function.statistics = StatisticsLayout();
  function.scans = {ScanFrom<StoredPoint9>(0.5F, {{300, 7}, {200, 9}, {100, 3}}),
                    ScanFrom<StoredPoint9>(1, {{150, 4}, {250, 5}})};
  return function;
}

}  // namespace

Answers ReadEverything(CDataServerImpl& server, const std::wstring& path) {
  return Reader(server).Read(path);
}

RawDirectoryBuilder WholeDirectory() {
  RawDirectoryBuilder raw;
  raw.header.insert(raw.header.end(),
                    {HeaderLine("Acquired Date", "14-Nov-2026"), HeaderLine("Acquired Time", "09:15:00"),
                     CalLine("MS1 Static", {0.5, 1.0})});
  raw.functions = {FunctionOf(kTofMs), FunctionOf(kTofMsMs), FunctionOf(kDad)};
  raw.processed[1] = FunctionOf(kTofMs);
  raw.history = {{.processNumber = 1, .processCode = 3}};
  raw.labels = {FunctionHeading(1, "Survey scan of the sample")};
  raw.chroms = {{"Pressure", {{0.5F, 1}, {1, 2}}}};
  return raw;
}

int OpenDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<int>(std::distance(begin(descriptors), end(descriptors))) - 1;
}

}  // namespace zrml
