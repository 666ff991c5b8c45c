// The plug-in itself with one altered answer: the file with the source's name followed by ".altered" names
// the slot, or the slot and the part of its answer, to alter.
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>

#include "common/platform/platform.h"
#include "plugin/data_server.h"
#include "plugin/provider_table.h"
#include "tests/support/loaded_library.h"
#include "tests/zrml/plugin_exports.h"

namespace zrml {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

const LoadedLibrary& Plugin() {
  static const LoadedLibrary plugin(ZRML_PLUGIN);
  return plugin;
}

class AlteredServer : public CDataServerImpl {
 public:
  explicit AlteredServer(std::unique_ptr<CDataServerImpl> inner) : inner_(std::move(inner)) {}

  std::wstring GetProviderName() override { return Text("GetProviderName", inner_->GetProviderName()); }
  std::wstring GetProviderGuid() override { return Text("GetProviderGuid", inner_->GetProviderGuid()); }
  std::wstring GetFileFilter() override { return Text("GetFileFilter", inner_->GetFileFilter()); }
  bool IsReportSource() override { return Truth("IsReportSource", inner_->IsReportSource()); }

  bool CanOpen(const std::wstring& path) override {
    ReadAlteration(path);
    return Truth("CanOpen", inner_->CanOpen(path));
  }
  bool ValidateSource(const std::wstring& path) override {
    return Truth("ValidateSource", inner_->ValidateSource(path));
  }
  bool Open(const std::wstring& path) override { return Truth("Open", inner_->Open(path)); }
  bool OpenFileInSet(const std::wstring& path, const std::wstring& file) override {
    return Truth("OpenFileInSet", inner_->OpenFileInSet(path, file));
  }
  bool Close() override { return Truth("Close", inner_->Close()); }

  int GetSampleCount() override { return Number("GetSampleCount", inner_->GetSampleCount()); }
  int GetFileSampleCount(const std::wstring& path) override {
    return Number("GetFileSampleCount", inner_->GetFileSampleCount(path));
  }
  std::wstring GetSampleName(int s) override { return Text("GetSampleName", inner_->GetSampleName(s)); }
  int GetFunctionCount(int s) override { return Number("GetFunctionCount", inner_->GetFunctionCount(s)); }
  std::wstring GetFunctionName(int s, int f) override {
    return Text("GetFunctionName", inner_->GetFunctionName(s, f));
  }
  int GetFunctionKind(int s, int f) override {
    return Number("GetFunctionKind", inner_->GetFunctionKind(s, f));
  }
  int GetMSMSScanType(int s, int f) override {
    return Number("GetMSMSScanType", inner_->GetMSMSScanType(s, f));
  }
  int GetPolarity(int s, int f) override { return Number("GetPolarity", inner_->GetPolarity(s, f)); }
  int GetMSLevel(int s, int f) override { return Number("GetMSLevel", inner_->GetMSLevel(s, f)); }
  int GetDimensionCount(int s, int f) override {
    return Number("GetDimensionCount", inner_->GetDimensionCount(s, f));
  }
  bool IsCentroided(int s, int f) override { return Truth("IsCentroided", inner_->IsCentroided(s, f)); }
  bool HasMobility(int s, int f) override { return Truth("HasMobility", inner_->HasMobility(s, f)); }
  int GetScanDimensionCount(int s, int f) override {
    return Number("GetScanDimensionCount", inner_->GetScanDimensionCount(s, f));
  }
  int GetScanCount(int s, int f) override { return Number("GetScanCount", inner_->GetScanCount(s, f)); }
  int GetMobilityBinCount(int s, int f) override {
    return Number("GetMobilityBinCount", inner_->GetMobilityBinCount(s, f));
  }

  bool GetBasePeakChromatogram(bool c, int s, int f, CZRChromatogram& out) override {
    return Altered("GetBasePeakChromatogram", inner_->GetBasePeakChromatogram(c, s, f, out), out);
  }
  bool GetMassRangeBasePeakChromatogram(double low, double high, bool c, int s, int f,
                                        CZRChromatogram& out) override {
    return Altered("GetMassRangeBasePeakChromatogram",
                   inner_->GetMassRangeBasePeakChromatogram(low, high, c, s, f, out), out);
  }
  bool GetTotalIonChromatogram(bool c, int s, int f, CZRChromatogram& out) override {
    return Altered("GetTotalIonChromatogram", inner_->GetTotalIonChromatogram(c, s, f, out), out);
  }
  bool GetMassRangeChromatogram(double low, double high, bool c, int s, int f,
                                CZRChromatogram& out) override {
    return Altered("GetMassRangeChromatogram", inner_->GetMassRangeChromatogram(low, high, c, s, f, out),
                   out);
  }
  bool GetRetentionTimes(int s, int f, HostVector<double>& times) override {
    const bool isGiven = inner_->GetRetentionTimes(s, f, times);
    if (Is("GetRetentionTimes") && !times.empty()) times.back() += 1;
    if (Is("GetRetentionTimes NaN")) Exchange(kNaN, 0, times);
    return isGiven;
  }
  bool GetScanRetentionTime(int s, int f, int i, double& minutes) override {
    return Altered("GetScanRetentionTime", inner_->GetScanRetentionTime(s, f, i, minutes), minutes);
  }
  bool GetFunctionMassRange(int s, int f, double& low, double& high) override {
    return Altered("GetFunctionMassRange", inner_->GetFunctionMassRange(s, f, low, high), high);
  }
  bool GetScanMassRange(int s, int f, int i, double& low, double& high) override {
    return Truth("GetScanMassRange", inner_->GetScanMassRange(s, f, i, low, high));
  }
  bool GetScanMobilityRange(int s, int f, int i, double& low, double& high) override {
    return Truth("GetScanMobilityRange", inner_->GetScanMobilityRange(s, f, i, low, high));
  }
  bool GetScanIntensityRange(int s, int f, int i, double& min, double& max) override {
    return Altered("GetScanIntensityRange", inner_->GetScanIntensityRange(s, f, i, min, max), min);
  }
  bool GetMobilityAxis(int s, int f, int i, HostVector<double>& axis) override {
    return Truth("GetMobilityAxis", inner_->GetMobilityAxis(s, f, i, axis));
  }

  bool GetSpectrum(int s, int f, int i, CZRMassSpectrum& out) override {
    const bool isGiven = inner_->GetSpectrum(s, f, i, out);
    if (isGiven) AlterSpectrum(out);
    return Truth("GetSpectrum success", isGiven);
  }
  bool GetMobilitySpectrum(int s, int f, int i, int bin, CZRMassSpectrum& out) override {
    return inner_->GetMobilitySpectrum(s, f, i, bin, out);
  }
  bool GetMobilitySpectra(int s, int f, int i, int first, int last,
                          HostVector<CZRMassSpectrum>& out) override {
    return inner_->GetMobilitySpectra(s, f, i, first, last, out);
  }

  int GetTraceCount(int s) override { return Number("GetTraceCount", inner_->GetTraceCount(s)); }
  std::wstring GetTraceName(int s, int t) override {
    return Text("GetTraceName", inner_->GetTraceName(s, t));
  }
  bool GetTrace(int s, int t, CZRChromatogram& out) override {
    return Altered("GetTrace", inner_->GetTrace(s, t, out), out);
  }
  int GetFunctionTraceCount(int s, int f) override {
    return Number("GetFunctionTraceCount", inner_->GetFunctionTraceCount(s, f));
  }
  std::wstring GetFunctionTraceName(int s, int f, int t) override {
    return Text("GetFunctionTraceName", inner_->GetFunctionTraceName(s, f, t));
  }
  bool GetFunctionTrace(int s, int f, int t, CZRChromatogram& out) override {
    return Altered("GetFunctionTrace", inner_->GetFunctionTrace(s, f, t, out), out);
  }

  bool HasAbsorbanceData(int s) override { return Truth("HasAbsorbanceData", inner_->HasAbsorbanceData(s)); }
  int GetAbsorbanceScanCount(int s) override {
    return Number("GetAbsorbanceScanCount", inner_->GetAbsorbanceScanCount(s));
  }
  bool GetAbsorbanceSpectrum(int s, int i, CZRAbsorbanceSpectrum& out) override {
    const bool isGiven = inner_->GetAbsorbanceSpectrum(s, i, out);
    if (Is("GetAbsorbanceSpectrum points")) out.SetAbsorbance(0, out.Absorbances()[0] + 1);
    if (Is("GetAbsorbanceSpectrum time")) out.SetTime(out.StartTime() + 1);
    if (Is("GetAbsorbanceSpectrum scan")) out.SetScan(out.FirstScan() + 1);
    return isGiven;
  }

  bool GetMetadataValue(int s, int f, const std::wstring& key, std::wstring& value) override {
    const bool isGiven = inner_->GetMetadataValue(s, f, key, value);
    value = Text("GetMetadataValue", value);
    return isGiven;
  }
  bool GetMetadataKeys(int s, int f, std::vector<std::wstring>& keys) override {
    const bool isGiven = inner_->GetMetadataKeys(s, f, keys);
    if (isGiven && Is("GetMetadataKeys")) keys.pop_back();
    return isGiven;
  }
  bool FindPrecursorScan(int s, int f, int i, int& function, int& scan) override {
    const bool isFound = inner_->FindPrecursorScan(s, f, i, function, scan);
    if (isFound) scan = Number("FindPrecursorScan", scan);
    return isFound;
  }

 private:
  void ReadAlteration(const std::wstring& path) {
#ifdef _WIN32
    std::ifstream file(std::filesystem::path(path + L".altered"));
#else
    std::ifstream file(platform::ToNativePath(path) + ".altered");
#endif
    std::getline(file, altered_);
  }

  bool Is(std::string_view name) const { return altered_ == name; }
  int Number(std::string_view slot, int value) const { return Is(slot) ? value + 1 : value; }
  bool Truth(std::string_view slot, bool value) const { return value != Is(slot); }
  std::wstring Text(std::string_view slot, const std::wstring& value) const {
    return Is(slot) ? value + L"x" : value;
  }
  bool Altered(std::string_view slot, bool isGiven, double& value) const {
    if (Is(slot)) value += 1;
    return isGiven;
  }
  bool Altered(std::string_view slot, bool isGiven, CZRChromatogram& out) const {
    if (Is(slot) && !out.Times().empty()) out.SetIntensity(0, out.Intensities()[0] + 1);
    HostVector<double> intensities = out.Intensities();
    if (Is(std::string(slot) + " NaN")) Exchange(kNaN, 0, intensities);
    if (Is(std::string(slot) + " zero")) Exchange(0, kNaN, intensities);
    if (!intensities.empty()) out.AssignIntensities(intensities);
    return isGiven;
  }

  // Replaces one value by another everywhere; NaN counts as a value.
  static void Exchange(double from, double to, HostVector<double>& values) {
    for (double& value : values) {
      if (value == from || (std::isnan(value) && std::isnan(from))) value = to;
    }
  }

  void AlterSpectrum(CZRMassSpectrum& out) const {
    const auto is = [&](std::string_view part) { return Is("GetSpectrum " + std::string(part)); };
    if (is("mass") && out.GetCount() > 0) out.SetMass(0, out.GetMass(0) + 1);
    if (is("intensity") && out.GetCount() > 0) out.SetIntensity(0, 12345);
    if (is("more points")) {
      out.SetSize(out.GetCount() + 1);
    }
    if (is("fewer points") && out.GetCount() > 0) out.SetSize(out.GetCount() - 1);
    if (is("start time")) out.SetStartTime(out.GetStartTime() + 1);
    if (is("NaN time") && std::isnan(out.GetStartTime())) out.SetStartTime(0);
    if (is("end time")) out.SetEndTime(out.GetEndTime() + 1);
    if (is("first scan")) out.SetFirstScan(out.GetFirstScan() + 1);
    if (is("last scan")) out.SetLastScan(out.GetLastScan() + 1);
    if (is("centroided")) out.SetCentroided(!out.IsCentroided());
    if (is("level")) out.SetMSLevel(3);
    if (is("kind")) out.SetScanType(out.GetScanType() + 1);
    if (is("polarity")) out.SetPolarity(kUnknownPolarity);
    if (is("precursor")) out.SetPrecursorMass(out.GetPrecursorMass() + 1);
    if (is("scan value")) out.SetScanAuxValue(out.GetScanAuxValue() + 1);
    if (is("title")) out.SetTitle(L"title");
    if (is("label")) out.SetLabel(L"label");
    if (is("first drift bin")) out.SetFirstDriftBin(out.GetFirstDriftBin() + 1);
    if (is("last drift value")) out.SetLastDriftValue(out.GetLastDriftValue() + 1);
  }

  std::unique_ptr<CDataServerImpl> inner_;
  std::string altered_;
};

}  // namespace
}  // namespace zrml

ZRML_EXPORT bool CheckVersion(int version) { return version == zrml::kInterfaceVersion; }
ZRML_EXPORT int GetInterfaceCount() { return 2; }

ZRML_EXPORT bool GetInstance(std::uint64_t index, zrml::HostInstance** instance) {
  const auto getInstance = zrml::Plugin().Get<zrml::GetInstanceFunction>("GetInstance");
  auto inner = zrml::CreateServer(getInstance, index);
  if (inner == nullptr) return false;
  *instance = zrml::MakeInstance(std::make_unique<zrml::AlteredServer>(std::move(inner)));
  return true;
}
