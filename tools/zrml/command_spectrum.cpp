// zrml spectrum: the attributes and points of one scan, of one of its drift bins, or of an absorbance
// spectrum.
#include <algorithm>
#include <utility>

#include "tools/zrml/code_names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/report.h"

namespace zrml {
namespace {

struct Points {
  std::span<const double> masses;
  std::span<const double> intensities;
};

Points PointsOf(const CZRMassSpectrum& spectrum) {
  const auto count = std::min({static_cast<std::size_t>(std::max(spectrum.GetCount(), 0)),
                               spectrum.MassVector().size(), spectrum.IntensityVector().size()});
  return {{spectrum.GetMasses(), count}, {spectrum.GetIntensities(), count}};
}

std::wstring Wide(const HostString& text) { return {text.begin(), text.end()}; }

// Absent unless `isThere`.
Value When(bool isThere, Value value) { return isThere ? std::move(value) : Value(); }

std::vector<Attribute> PrecursorAttributes(CDataServerImpl& server, const FunctionPosition& at, int scan,
                                           const CZRMassSpectrum& spectrum) {
  int function = 0;
  int precursorScan = 0;
  const bool isFound = spectrum.GetMSLevel() > 1 &&
                       server.FindPrecursorScan(at.sample, at.function, scan, function, precursorScan);
  return {
      {"precursorMz", When(spectrum.GetPrecursorMass() != 0, spectrum.GetPrecursorMass())},
      {"precursorFunction", When(isFound, function + 1)},
      {"precursorScan", When(isFound, precursorScan + 1)},
  };
}

std::vector<Attribute> ScanAttributes(const CZRMassSpectrum& spectrum) {
  const std::wstring title = Wide(spectrum.GetTitle());
  const std::wstring label = Wide(spectrum.GetLabel());
  return {
      {"title", When(!title.empty(), title)},
      {"label", When(!label.empty(), label)},
      {"startMinutes", spectrum.GetStartTime()},
      {"endMinutes", spectrum.GetEndTime()},
      {"msLevel", spectrum.GetMSLevel()},
      {"polarity", std::wstring(PolarityName(spectrum.GetPolarity()))},
      {"centroided", spectrum.IsCentroided()},
  };
}

std::vector<Attribute> DriftAttributes(const CZRMassSpectrum& spectrum) {
  const bool hasDrift = spectrum.GetFirstDriftBin() > 0;
  const NumberRange bins = {static_cast<double>(spectrum.GetFirstDriftBin()),
                            static_cast<double>(spectrum.GetLastDriftBin())};
  const NumberRange values = {spectrum.GetFirstDriftValue(), spectrum.GetLastDriftValue()};
  return {
      {"scanValue", spectrum.GetScanAuxValue()},
      {"driftBins", When(hasDrift, bins)},
      {"driftValues", When(hasDrift, values)},
  };
}

std::vector<Attribute> PointAttributes(CZRMassSpectrum& spectrum, std::size_t points) {
  return {
      {"totalIntensity", spectrum.GetTotalIntensity()},
      {"basePeakMz", When(points > 0, spectrum.GetBasePeakMass())},
      {"basePeakIntensity", When(points > 0, spectrum.GetBasePeakIntensity())},
      {"points", static_cast<int>(points)},
  };
}

class SpectrumCommand : public FunctionCommand {
 public:
  explicit SpectrumCommand(CommandLine& line)
      : FunctionCommand(line, "spectrum", "Print one scan: its attributes and points") {
    AddNumber("--scan", scan_, "The scan, counted from 1")->required()->option_text("N REQUIRED");
    CLI::Option* const bin = AddNumber("--bin", bin_, "The drift bin of the scan, counted from 1");
    Options()
        .add_flag("--absorbance", isAbsorbance_, "A scan of the sample's absorbance data, not of a function")
        ->option_text(" ")
        ->excludes(bin)
        ->excludes(Options().get_option("--function"));
  }

  void Run(Output& out) override {
    const Source source = OpenSource();
    isAbsorbance_ ? PrintAbsorbance(source, out) : PrintSpectrum(source, out);
  }

 protected:
  bool NeedsFunction() const override { return !isAbsorbance_; }

 private:
  void PrintSpectrum(const Source& source, Output& out) const {
    const FunctionPosition at = Find(source);
    CDataServerImpl& server = source.Server();
    const std::wstring function = L"function " + std::to_wstring(at.function + 1);
    const int scan = PositionOf(scan_, server.GetScanCount(at.sample, at.function), L"scan", function);
    CZRMassSpectrum spectrum;
    if (!Read(server, at, scan, spectrum)) {
      const std::wstring bin = bin_ != 0 ? L"drift bin " + std::to_wstring(bin_) + L" of " : L"";
      throw Failure(ExitStatus::kUnreadable, L"cannot read " + bin + L"scan " + std::to_wstring(scan_) +
                                                 L" of " + function + L" of " + source.Path());
    }
    const Points points = PointsOf(spectrum);
    Report report;
    report.attributes = OriginOf(source, at);
    report.Add({{"scan", scan + 1}});
    report.Add(ScanAttributes(spectrum));
    report.Add(PrecursorAttributes(server, at, scan, spectrum));
    report.Add(DriftAttributes(spectrum));
    report.Add(PointAttributes(spectrum, points.masses.size()));
    report.columns = {{"m/z", "masses", points.masses}, {"intensity", "intensities", points.intensities}};
    Print(report, out);
  }

  bool Read(CDataServerImpl& server, const FunctionPosition& at, int scan, CZRMassSpectrum& spectrum) const {
    if (bin_ == 0) return server.GetSpectrum(at.sample, at.function, scan, spectrum);
    const int bins = server.GetMobilityBinCount(at.sample, at.function);
    const int bin =
        PositionOf(bin_, bins, L"drift bin", L"a scan of function " + std::to_wstring(at.function + 1));
    return server.GetMobilitySpectrum(at.sample, at.function, scan, bin, spectrum);
  }

  void PrintAbsorbance(const Source& source, Output& out) const {
    const int sample = FindSampleOf(source);
    CDataServerImpl& server = source.Server();
    const int scans = server.HasAbsorbanceData(sample) ? server.GetAbsorbanceScanCount(sample) : 0;
    const int scan = PositionOf(scan_, scans, L"absorbance scan", L"sample " + std::to_wstring(sample + 1));
    CZRAbsorbanceSpectrum spectrum;
    if (!server.GetAbsorbanceSpectrum(sample, scan, spectrum)) {
      throw Failure(ExitStatus::kUnreadable,
                    L"cannot read absorbance scan " + std::to_wstring(scan_) + L" of " + source.Path());
    }
    const std::size_t count = std::min(spectrum.Wavelengths().size(), spectrum.Absorbances().size());
    Report report;
    report.attributes = OriginOf(source, sample);
    report.Add(
        {{"scan", scan + 1}, {"startMinutes", spectrum.StartTime()}, {"points", static_cast<int>(count)}});
    report.columns = {{"wavelength", "wavelengths", {spectrum.Wavelengths().data(), count}},
                      {"absorbance", "absorbances", {spectrum.Absorbances().data(), count}}};
    Print(report, out);
  }

  int scan_ = 0;
  int bin_ = 0;  // 0: the whole scan
  bool isAbsorbance_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeSpectrumCommand(CommandLine& line) {
  return std::make_unique<SpectrumCommand>(line);
}

}  // namespace zrml
