// Provider 0: MassLynx raw directories. A directory is one sample: for other samples operations give their
// empty result.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "masslynx/header.h"
#include "masslynx/scandata/traces.h"
#include "plugin/data_server.h"
#include "plugin/raw_spectra.h"

namespace zrml::plugin {

class CMLDataServerImpl : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override;
  std::wstring GetProviderGuid() override;
  std::wstring GetFileFilter() override;

  /// Cheap: checks that the header and the function table exist.
  bool CanOpen(const std::wstring& path) override;
  /// Also checks the header's first line.
  bool ValidateSource(const std::wstring& path) override;

  bool Open(const std::wstring& path) override;
  /// When `file` ends in the name of a function's data file ("_FUNC002.DAT"), only that function is listed. A
  /// second open without Close() loads the new description over the old one.
  bool OpenFileInSet(const std::wstring& path, const std::wstring& file) override;
  bool Close() override;

  int GetFunctionCount(int sample) override;
  std::wstring GetFunctionName(int sample, int function) override;
  int GetFunctionKind(int sample, int function) override;
  int GetMSMSScanType(int sample, int function) override;
  int GetPolarity(int sample, int function) override;
  bool IsCentroided(int sample, int function) override;
  bool HasMobility(int sample, int function) override;
  int GetScanDimensionCount(int sample, int function) override;
  int GetScanCount(int sample, int function) override;
  int GetMobilityBinCount(int sample, int function) override;

  /// Taken from the scan index, whether or not computing is allowed; the container keeps its name.
  bool GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetRetentionTimes(int sample, int function, HostVector<double>& times) override;
  bool GetFunctionMassRange(int sample, int function, double& low, double& high) override;
  /// The calibrated mass axis of a mobility function; false for other functions.
  bool GetScanMassRange(int sample, int function, int scan, double& low, double& high) override;
  bool GetMobilityAxis(int sample, int function, int scan, HostVector<double>& axis) override;
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;
  bool GetMobilitySpectrum(int sample, int function, int scan, int bin, CZRMassSpectrum& spectrum) override;
  /// The vector grows as needed and never shrinks.
  bool GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                          HostVector<CZRMassSpectrum>& spectra) override;

  /// Channels or stored chromatograms, then the total absorbance where the sample has absorbance data. 0
  /// while the list cannot be read.
  int GetTraceCount(int sample) override;
  std::wstring GetTraceName(int sample, int trace) override;
  bool GetTrace(int sample, int trace, CZRChromatogram& chromatogram) override;

  bool HasAbsorbanceData(int sample) override;
  int GetAbsorbanceScanCount(int sample) override;
  bool GetAbsorbanceSpectrum(int sample, int scan, CZRAbsorbanceSpectrum& spectrum) override;

  bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) override;
  bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) override;

 private:
  bool LoadDescription();

  /// The record at a position, with its scan index loaded or not yet loaded; null when there is none.
  masslynx::FunctionRecord* FindFunction(int sample, int function);
  masslynx::FunctionRecord* FindLoadedFunction(int sample, int function);
  bool DecodePoints(masslynx::FunctionRecord& record, int scan, CZRMassSpectrum& spectrum);
  void CompleteSpectrum(int function, int scan, CZRMassSpectrum& spectrum);

  masslynx::FunctionRecord* FindMobilityFunction(int sample, int function);

  /// The list, read once after the last Close(); null when it cannot be read.
  const masslynx::TraceList* LoadTraceList();
  bool IsAbsorbanceTrace(const masslynx::TraceList& list, int trace);
  bool ReadListedTrace(const masslynx::TraceList& list, int trace, CZRChromatogram& chromatogram);
  void LoadAbsorbanceIndex();
  bool GetTotalAbsorbanceTrace(int trace, CZRChromatogram& chromatogram);

  std::wstring dataPath_;        // with a trailing backslash while open
  platform::SystemPath folder_;  // the same
  // Held open until Close(): on Windows a directory in use cannot be moved away under the reader.
  platform::File headerFile_;
  // Open during GetSpectrum only. Not a local, because a Microsoft-compiled host may throw from its own
  // spectrum's Resize, and its exceptions pass our frames without clean-up; a file left open by that is
  // closed by the next read or by Close().
  platform::File dataFile_;
  // Lower-case name of the chosen data file, or empty.
  std::wstring selectedFile_;
  masslynx::HeaderLines headerLines_;
  std::vector<masslynx::FunctionRecord> functions_;
  masslynx::FunctionRecord absorbanceRecord_;  // its typeCode is kNoFunction when the directory has none
  std::optional<masslynx::TraceList> traceList_;
  MobilitySpectra mobilityData_;
};

}  // namespace zrml::plugin
