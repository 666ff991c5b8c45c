// Provider 1: OpenLynx reports, text files of several samples. The report stays open between calls; what lies
// where is looked for when it is first needed, and points are read again on every call.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "openlynx/precursor_search.h"
#include "openlynx/report_index.h"
#include "openlynx/report_stream.h"
#include "openlynx/report_values.h"
#include "plugin/data_server.h"

namespace zrml {

class COpenLynxRptDataServerImpl : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override;
  std::wstring GetProviderGuid() override;
  std::wstring GetFileFilter() override;
  bool IsReportSource() override;

  /// By the name: a file, not a directory, that ends in ".rpt" in any case.
  bool CanOpen(const std::wstring& path) override;
  /// Also looks for a sample in the first ten lines.
  bool ValidateSource(const std::wstring& path) override;

  /// A second open without Close() deliberately leaves the earlier file open and keeps what is known of it.
  /// An open that fails changes nothing.
  bool Open(const std::wstring& path) override;
  bool Close() override;

  int GetSampleCount() override;
  /// Deliberately leaves the file open for as long as the process runs.
  int GetFileSampleCount(const std::wstring& path) override;
  std::wstring GetSampleName(int sample) override;

  /// Drops the functions that hold no spectrum and no chromatogram, which moves the later ones down. Until it
  /// is asked for, the other operations see all functions.
  int GetFunctionCount(int sample) override;
  std::wstring GetFunctionName(int sample, int function) override;
  int GetFunctionKind(int sample, int function) override;
  int GetPolarity(int sample, int function) override;
  int GetScanCount(int sample, int function) override;

  /// As the report gives them, whether or not computing is allowed; the container's name is kept.
  bool GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetRetentionTimes(int sample, int function, HostVector<double>& times) override;
  /// False for a spectrum without points, too.
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;

  /// The chromatograms of the sample's analog functions. The count of a sample that has no other functions
  /// deliberately grows with each call that looks at its functions.
  int GetTraceCount(int sample) override;
  std::wstring GetTraceName(int sample, int trace) override;
  bool GetTrace(int sample, int trace, CZRChromatogram& chromatogram) override;

  int GetFunctionTraceCount(int sample, int function) override;
  std::wstring GetFunctionTraceName(int sample, int function, int trace) override;
  /// Deliberately true for a trace that the function does not have; the chromatogram is left alone then.
  bool GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& chromatogram) override;

  /// The value is cleared in every case.
  bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) override;
  bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) override;

  /// What the base finds, each spectrum read once.
  bool FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                         int& precursorScan) override;

 private:
  struct MetadataItem;
  static const MetadataItem kMetadata[6];

  bool ReadProviderName(const MetadataItem& item, int sample, int function, std::wstring& value);
  bool ReadSampleItem(const MetadataItem& item, int sample, int function, std::wstring& value);
  bool ReadDateTime(const MetadataItem& item, int sample, int function, std::wstring& value);
  bool ReadFunctionBlock(const MetadataItem& item, int sample, int function, std::wstring& value);

  // Looks for the samples of the open file unless some are known.
  void IndexSamples();

  // The record at a position with what its callers need indexed, each step when it is first needed; null when
  // there is none or no file is open.
  ReportSampleRecord* FindSample(int sample);
  ReportSampleRecord* FindIndexedSample(int sample);
  ReportFunctionRecord* FindFunction(int sample, int function);
  ReportFunctionRecord* FindIndexedFunction(int sample, int function);

  // Functions of MS level 1; no value when one has no spectrum.
  std::optional<std::vector<PrecursorCandidate>> FindPrecursorCandidates(int sample);

  std::optional<std::uint64_t> FindAnalogTrace(int sample, int trace);

  bool FillChromatogram(int sample, int function, HostVector<double> ScanTimeSeries::*series,
                        CZRChromatogram& chromatogram);
  std::wstring TraceNameAt(std::uint64_t position, const wchar_t* noun, int trace);
  bool ReadTraceAt(std::uint64_t position, CZRChromatogram& chromatogram);

  ReportStream stream;
  std::vector<ReportSampleRecord> samples;  // empty until they are needed
  // Of GetSpectrum while it runs. No local, because a Microsoft-compiled host may throw from its own
  // spectrum's Resize, and its exceptions pass our frames without cleaning up.
  ReportSpectrum spectrumRead;
};

}  // namespace zrml
