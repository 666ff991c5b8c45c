// The providers of the stand-in plug-in.
//
// Provider 1, FakeFolder, takes folders that hold "fake_source.txt". Its text decides: "valid" opens, "valid
// and sound" opens without the scans of the broken function, "valid and sound but for ..." so too, but for
// one thing that it gives once or in part ("times", "totals", "bins", "traces", "absorbance"), "valid but
// damaged" does not open, anything else is not FakeFolder's content. Provider 2, FakeReport, takes files
// named "*.fakereport", with any content, as reports of two samples.
#pragma once

#include <set>

#include "plugin/data_server.h"

namespace zrml {

class FakeFolderServer : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override { return L"FakeFolder"; }
  std::wstring GetProviderGuid() override { return L"{00000000-0000-0000-0000-000000000001}"; }
  bool Open(const std::wstring& path) override;
  bool Close() override { return true; }
  bool ValidateSource(const std::wstring& path) override;
  bool CanOpen(const std::wstring& path) override;
  int GetFunctionCount(int sample) override;
  std::wstring GetFunctionName(int sample, int function) override;
  int GetFunctionKind(int sample, int function) override;
  int GetMSMSScanType(int sample, int function) override;
  int GetPolarity(int sample, int function) override;
  bool HasMobility(int sample, int function) override;
  int GetScanDimensionCount(int sample, int function) override;
  int GetScanCount(int sample, int function) override;
  int GetMobilityBinCount(int sample, int function) override;
  /// But for "times" without the last scan; but for "totals" the same of the total ion chromatogram.
  bool GetRetentionTimes(int sample, int function, HostVector<double>& times) override;
  bool GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                               CZRChromatogram& chromatogram) override;
  bool GetFunctionMassRange(int sample, int function, double& low, double& high) override;
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;
  /// The odd function's second bin can be read; of a sound source all, the fifth and the tenth with points.
  bool GetMobilitySpectrum(int sample, int function, int scan, int bin, CZRMassSpectrum& spectrum) override;
  int GetTraceCount(int sample) override;
  std::wstring GetTraceName(int sample, int trace) override;
  /// The first trace can be read; of a sound source both.
  bool GetTrace(int sample, int trace, CZRChromatogram& chromatogram) override;
  bool HasAbsorbanceData(int sample) override;
  int GetAbsorbanceScanCount(int sample) override;
  /// The first scan can be read; of a sound source all.
  bool GetAbsorbanceSpectrum(int sample, int scan, CZRAbsorbanceSpectrum& spectrum) override;
  bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) override;
  bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) override;
  /// Shows the path and file that it was given as its sample's name.
  bool OpenFileInSet(const std::wstring& path, const std::wstring& file) override;
  std::wstring GetSampleName(int sample) override;
  /// The first product scan belongs to the second survey scan, the other one to none.
  bool FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                         int& precursorScan) override;

 private:
  std::wstring sampleName_ = L"Injection 1";
  bool isSound_ = false;
  std::wstring lacking_;  // of a sound source
  std::set<int> readTraces_;
  std::set<int> readAbsorbance_;
};

class FakeReportServer : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override { return L"FakeReport"; }
  std::wstring GetProviderGuid() override { return L"{00000000-0000-0000-0000-000000000002}"; }
  bool Open(const std::wstring& path) override;
  bool Close() override { return true; }
  bool ValidateSource(const std::wstring& path) override;
  int GetSampleCount() override;
  std::wstring GetSampleName(int sample) override;
  int GetFunctionCount(int sample) override;
  int GetScanCount(int sample, int function) override;
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;
  int GetFunctionTraceCount(int sample, int function) override;
  std::wstring GetFunctionTraceName(int sample, int function, int trace) override;
  /// The second trace can be read.
  bool GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& chromatogram) override;
  bool IsReportSource() override;
};

}  // namespace zrml
