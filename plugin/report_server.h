// Provider 1: OpenLynx reports, text files of several samples. The contract's view of a report, with the
// state that its oddities need: the functions that a host still sees, and the analog traces found so far.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "openlynx/report.h"
#include "plugin/analog_traces.h"
#include "plugin/data_server.h"

namespace zrml::plugin {

class COpenLynxRptDataServerImpl : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override;
  std::wstring GetProviderGuid() override;
  std::wstring GetFileFilter() override;
  bool IsReportSource() override;

  /// Decides by name: a file, not a directory, that ends in ".rpt" in upper or lower case.
  bool CanOpen(const std::wstring& path) override;
  /// Also looks for a sample in the first ten lines.
  bool ValidateSource(const std::wstring& path) override;

  /// A second open without Close() deliberately leaves the earlier file open and keeps what is known about
  /// it. A failed open changes nothing.
  bool Open(const std::wstring& path) override;
  bool Close() override;

  int GetSampleCount() override;
  /// Deliberately leaves the file open for as long as the process runs.
  int GetFileSampleCount(const std::wstring& path) override;
  std::wstring GetSampleName(int sample) override;

  /// Drops the functions that have neither spectra nor chromatograms, which moves the later ones down. Until
  /// this call, the other operations see all functions.
  int GetFunctionCount(int sample) override;
  std::wstring GetFunctionName(int sample, int function) override;
  int GetFunctionKind(int sample, int function) override;
  int GetPolarity(int sample, int function) override;
  int GetScanCount(int sample, int function) override;

  /// As the report gives them, whether or not computing is allowed; the container keeps its name.
  bool GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetRetentionTimes(int sample, int function, HostVector<double>& times) override;
  /// Also false for a spectrum without points.
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;

  /// The chromatograms of the sample's analog functions. The count of a sample that has no other functions
  /// deliberately grows with each call that looks at its functions.
  int GetTraceCount(int sample) override;
  std::wstring GetTraceName(int sample, int trace) override;
  bool GetTrace(int sample, int trace, CZRChromatogram& chromatogram) override;

  int GetFunctionTraceCount(int sample, int function) override;
  std::wstring GetFunctionTraceName(int sample, int function, int trace) override;
  /// Deliberately true for a trace that the function does not have; the chromatogram is then unchanged.
  bool GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& chromatogram) override;

  /// The value is cleared in every case.
  bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) override;
  bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) override;

  /// Same result as the base class, but reads each spectrum only once.
  bool FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                         int& precursorScan) override;

 private:
  // What a host has seen of a sample so far.
  struct SeenSample {
    bool isIndexed = false;              // it has a function that is not analog: no further look
    bool isPruned = false;               // functions without blocks are gone
    std::vector<std::size_t> functions;  // positions in the sample's list, of those that are not analog
    AnalogTraces traces;
    std::uint64_t lookedTo = 0;           // where the last look ended, plus 1
    std::optional<std::uint64_t> digest;  // of the bytes up to there, from the second look on
  };

  // A sample and, where requested, a function and its parts.
  struct FoundSample {
    openlynx::Sample* sample = nullptr;  // null when there is none or no file is open
    SeenSample* seen = nullptr;

    explicit operator bool() const { return sample != nullptr; }
  };
  struct FoundFunction {
    openlynx::Sample* sample = nullptr;
    openlynx::Function* function = nullptr;  // null when there is none

    explicit operator bool() const { return function != nullptr; }
  };

  openlynx::Sample* FindSample(int sample);
  FoundSample FindIndexedSample(int sample);
  FoundFunction FindFunction(int sample, int function);
  // Positions of its spectra or chromatograms.
  std::optional<std::span<const std::uint64_t>> FindSpectra(int sample, int function);
  std::optional<std::span<const std::uint64_t>> FindChromatograms(int sample, int function);

  void Look(openlynx::Sample& sample, SeenSample& seen);

  bool ReadFunctionText(int sample, int function, std::wstring& value);

  std::optional<std::uint64_t> FindAnalogTrace(int sample, int trace);

  bool FillChromatogram(int sample, int function, std::vector<double> openlynx::ScanSeries::*series,
                        CZRChromatogram& chromatogram);
  std::wstring TraceNameAt(std::uint64_t position, const wchar_t* noun, int trace);
  bool ReadTraceAt(std::uint64_t position, CZRChromatogram& chromatogram);

  openlynx::Report report_;
  std::vector<SeenSample> seen_;  // by sample
  // Used by GetSpectrum while it runs. Not a local, because a Microsoft-compiled host may throw from its own
  // spectrum's Resize, and its exceptions pass our frames without clean-up.
  openlynx::Points points_;
};

}  // namespace zrml::plugin
