#include "plugin/hostabi/face_client.h"

#include <tuple>
#include <type_traits>
#include <utility>

#include "plugin/hostabi/crossing.h"
#include "plugin/hostabi/slots.h"

namespace zrml::hostabi {
namespace {

/// How an argument is passed to the plug-in: the inverse of Inbound.
template <class T>
class Outbound {
 public:
  explicit Outbound(T value) : value_(value) {}
  WireOf<T> Wire() const { return static_cast<WireOf<T>>(value_); }
  void Commit() const {}

 private:
  T value_;
};

template <class T>
class Outbound<T&> {
 public:
  explicit Outbound(T& target) : target_(&target) {}
  T* Wire() const { return target_; }
  void Commit() const {}

 private:
  T* target_;
};

template <>
class Outbound<const std::wstring&> {
 public:
  explicit Outbound(const std::wstring& text) : text_(std::wstring_view(text)) {}
  const HostString* Wire() const { return &text_; }
  void Commit() const {}

 private:
  HostString text_;
};

template <>
class Outbound<std::wstring&> {
 public:
  explicit Outbound(std::wstring& target) : target_(&target), text_(std::wstring_view(target)) {}
  HostString* Wire() { return &text_; }
  void Commit() const { *target_ = std::wstring_view(text_); }

 private:
  std::wstring* target_;
  HostString text_;
};

template <>
class Outbound<std::vector<std::wstring>&> {
 public:
  explicit Outbound(std::vector<std::wstring>& target) : target_(&target) {
    for (const std::wstring& text : target) texts_.emplace_back(std::wstring_view(text));
  }
  HostVector<HostString>* Wire() { return &texts_; }
  void Commit() const {
    target_->clear();
    for (const HostString& text : texts_) target_->emplace_back(std::wstring_view(text));
  }

 private:
  std::vector<std::wstring>* target_;
  HostVector<HostString> texts_;
};

// Calls through the table of a face, which it owns.
class FaceCaller {
 public:
  explicit FaceCaller(Face* face) : face_(face) {}
  FaceCaller(const FaceCaller&) = delete;
  FaceCaller& operator=(const FaceCaller&) = delete;
  ~FaceCaller() {
    constexpr unsigned kAlsoFree = 1;
    reinterpret_cast<void* (*)(Face*, unsigned)>(const_cast<void*>(face_->table[0]))(face_, kAlsoFree);
  }

  template <auto Operation, class... Given>
  auto Call(Given&&... given) const {
    constexpr std::size_t kSlot = Operations::SlotOf<Operation>();
    static_assert(kSlot < Operations::kSlotCount);
    return CallSlot(Operation, kSlot, std::forward<Given>(given)...);
  }

 private:
  template <class Result, class... Args>
  Result CallSlot(Result (CDataServerImpl::*)(Args...), std::size_t slot,
                  std::type_identity_t<Args>... values) const {
    std::tuple<Outbound<Args>...> arguments{Outbound<Args>(values)...};
    void* const function = const_cast<void*>(face_->table[slot]);
    return std::apply(
        [&](auto&... argument) {
          if constexpr (std::is_same_v<Result, std::wstring>) {
            union Storage {  // the plug-in makes the string in it
              Storage() {}
              ~Storage() {}
              HostString text;
            } storage;
            reinterpret_cast<HostString* (*)(Face*, HostString*, WireOf<Args>...)>(function)(
                face_, &storage.text, argument.Wire()...);
            std::wstring result{std::wstring_view(storage.text)};
            storage.text.~HostString();
            return result;
          } else {
            const Result result =
                reinterpret_cast<Result (*)(Face*, WireOf<Args>...)>(function)(face_, argument.Wire()...);
            (argument.Commit(), ...);
            return result;
          }
        },
        arguments);
  }

  Face* face_;
};

class FaceServer : public CDataServerImpl {
 public:
  explicit FaceServer(Face* face) : caller_(face) {}

  std::wstring GetProviderName() override { return caller_.Call<&Server::GetProviderName>(); }
  std::wstring GetProviderGuid() override { return caller_.Call<&Server::GetProviderGuid>(); }
  bool Open(const std::wstring& path) override { return caller_.Call<&Server::Open>(path); }
  bool Close() override { return caller_.Call<&Server::Close>(); }
  bool ValidateSource(const std::wstring& path) override {
    return caller_.Call<&Server::ValidateSource>(path);
  }
  bool CanOpen(const std::wstring& path) override { return caller_.Call<&Server::CanOpen>(path); }
  int GetSampleCount() override { return caller_.Call<&Server::GetSampleCount>(); }
  int GetFileSampleCount(const std::wstring& path) override {
    return caller_.Call<&Server::GetFileSampleCount>(path);
  }
  std::wstring GetSampleName(int s) override { return caller_.Call<&Server::GetSampleName>(s); }
  int GetFunctionCount(int s) override { return caller_.Call<&Server::GetFunctionCount>(s); }
  std::wstring GetFunctionName(int s, int f) override { return caller_.Call<&Server::GetFunctionName>(s, f); }
  int GetFunctionKind(int s, int f) override { return caller_.Call<&Server::GetFunctionKind>(s, f); }
  int GetMSMSScanType(int s, int f) override { return caller_.Call<&Server::GetMSMSScanType>(s, f); }
  int GetPolarity(int s, int f) override { return caller_.Call<&Server::GetPolarity>(s, f); }
  int GetMSLevel(int s, int f) override { return caller_.Call<&Server::GetMSLevel>(s, f); }
  int GetDimensionCount(int s, int f) override { return caller_.Call<&Server::GetDimensionCount>(s, f); }
  bool IsCentroided(int s, int f) override { return caller_.Call<&Server::IsCentroided>(s, f); }
  bool HasMobility(int s, int f) override { return caller_.Call<&Server::HasMobility>(s, f); }
  int GetScanDimensionCount(int s, int f) override {
    return caller_.Call<&Server::GetScanDimensionCount>(s, f);
  }
  int GetScanCount(int s, int f) override { return caller_.Call<&Server::GetScanCount>(s, f); }
  int GetMobilityBinCount(int s, int f) override { return caller_.Call<&Server::GetMobilityBinCount>(s, f); }
  bool GetBasePeakChromatogram(bool compute, int s, int f, CZRChromatogram& c) override {
    return caller_.Call<&Server::GetBasePeakChromatogram>(compute, s, f, c);
  }
  bool GetMassRangeBasePeakChromatogram(double low, double high, bool compute, int s, int f,
                                        CZRChromatogram& c) override {
    return caller_.Call<&Server::GetMassRangeBasePeakChromatogram>(low, high, compute, s, f, c);
  }
  bool GetTotalIonChromatogram(bool compute, int s, int f, CZRChromatogram& c) override {
    return caller_.Call<&Server::GetTotalIonChromatogram>(compute, s, f, c);
  }
  bool GetMassRangeChromatogram(double low, double high, bool compute, int s, int f,
                                CZRChromatogram& c) override {
    return caller_.Call<&Server::GetMassRangeChromatogram>(low, high, compute, s, f, c);
  }
  bool GetRetentionTimes(int s, int f, HostVector<double>& times) override {
    return caller_.Call<&Server::GetRetentionTimes>(s, f, times);
  }
  bool GetScanRetentionTime(int s, int f, int scan, double& minutes) override {
    return caller_.Call<&Server::GetScanRetentionTime>(s, f, scan, minutes);
  }
  bool GetFunctionMassRange(int s, int f, double& low, double& high) override {
    return caller_.Call<&Server::GetFunctionMassRange>(s, f, low, high);
  }
  bool GetScanMassRange(int s, int f, int scan, double& low, double& high) override {
    return caller_.Call<&Server::GetScanMassRange>(s, f, scan, low, high);
  }
  bool GetScanMobilityRange(int s, int f, int scan, double& low, double& high) override {
    return caller_.Call<&Server::GetScanMobilityRange>(s, f, scan, low, high);
  }
  bool GetScanIntensityRange(int s, int f, int scan, double& min, double& max) override {
    return caller_.Call<&Server::GetScanIntensityRange>(s, f, scan, min, max);
  }
  bool GetMobilityAxis(int s, int f, int scan, HostVector<double>& axis) override {
    return caller_.Call<&Server::GetMobilityAxis>(s, f, scan, axis);
  }
  bool GetSpectrum(int s, int f, int scan, CZRMassSpectrum& spectrum) override {
    return caller_.Call<&Server::GetSpectrum>(s, f, scan, spectrum);
  }
  bool GetMobilitySpectrum(int s, int f, int scan, int bin, CZRMassSpectrum& spectrum) override {
    return caller_.Call<&Server::GetMobilitySpectrum>(s, f, scan, bin, spectrum);
  }
  bool GetMobilitySpectra(int s, int f, int scan, int first, int last,
                          HostVector<CZRMassSpectrum>& spectra) override {
    return caller_.Call<&Server::GetMobilitySpectra>(s, f, scan, first, last, spectra);
  }
  int GetTraceCount(int s) override { return caller_.Call<&Server::GetTraceCount>(s); }
  std::wstring GetTraceName(int s, int trace) override {
    return caller_.Call<&Server::GetTraceName>(s, trace);
  }
  bool GetTrace(int s, int trace, CZRChromatogram& c) override {
    return caller_.Call<&Server::GetTrace>(s, trace, c);
  }
  int GetFunctionTraceCount(int s, int f) override {
    return caller_.Call<&Server::GetFunctionTraceCount>(s, f);
  }
  std::wstring GetFunctionTraceName(int s, int f, int trace) override {
    return caller_.Call<&Server::GetFunctionTraceName>(s, f, trace);
  }
  bool GetFunctionTrace(int s, int f, int trace, CZRChromatogram& c) override {
    return caller_.Call<&Server::GetFunctionTrace>(s, f, trace, c);
  }
  bool HasAbsorbanceData(int s) override { return caller_.Call<&Server::HasAbsorbanceData>(s); }
  int GetAbsorbanceScanCount(int s) override { return caller_.Call<&Server::GetAbsorbanceScanCount>(s); }
  bool GetAbsorbanceSpectrum(int s, int scan, CZRAbsorbanceSpectrum& spectrum) override {
    return caller_.Call<&Server::GetAbsorbanceSpectrum>(s, scan, spectrum);
  }
  bool GetMetadataValue(int s, int f, const std::wstring& key, std::wstring& value) override {
    return caller_.Call<&Server::GetMetadataValue>(s, f, key, value);
  }
  bool GetMetadataKeys(int s, int f, std::vector<std::wstring>& keys) override {
    return caller_.Call<&Server::GetMetadataKeys>(s, f, keys);
  }
  std::wstring GetFileFilter() override { return caller_.Call<&Server::GetFileFilter>(); }
  bool OpenFileInSet(const std::wstring& path, const std::wstring& file) override {
    return caller_.Call<&Server::OpenFileInSet>(path, file);
  }
  bool IsReportSource() override { return caller_.Call<&Server::IsReportSource>(); }
  bool FindPrecursorScan(int s, int f, int scan, int& precursorFunction, int& precursorScan) override {
    return caller_.Call<&Server::FindPrecursorScan>(s, f, scan, precursorFunction, precursorScan);
  }

 private:
  FaceCaller caller_;
};

}  // namespace

std::unique_ptr<CDataServerImpl> ServerOfFace(Face* face) { return std::make_unique<FaceServer>(face); }

}  // namespace zrml::hostabi
