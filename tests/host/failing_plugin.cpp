// A plug-in whose operations fail in every possible way, behind the same face as the real one.
#include <new>
#include <stdexcept>

#include "plugin/hostabi/face.h"

namespace {

class FailingServer : public zrml::CDataServerImpl {
 public:
  std::wstring GetProviderName() override { throw std::bad_alloc(); }
  std::wstring GetProviderGuid() override { throw std::runtime_error("no provider"); }
  bool Open(const std::wstring&) override { throw 1; }
  bool Close() override { return true; }
  bool ValidateSource(const std::wstring&) override { throw std::length_error("too long"); }
  int GetScanCount(int, int) override { throw std::out_of_range("no such scan"); }
  bool GetSpectrum(int, int, int, zrml::CZRMassSpectrum& spectrum) override {
    spectrum.SetSize(3);
    throw std::bad_alloc();
  }
  bool GetMetadataValue(int, int, const std::wstring&, std::wstring& value) override {
    value = L"half done";
    throw std::bad_alloc();
  }
  // Works, and shows how the arguments arrive.
  bool GetTotalIonChromatogram(bool compute, int sample, int, zrml::CZRChromatogram&) override {
    return compute && sample == -2;
  }
};

}  // namespace

extern "C" __declspec(dllexport) bool GetInstance(unsigned long long, zrml::hostabi::Face** face) {
  *face = zrml::hostabi::MakeFace(std::make_unique<FailingServer>());
  return true;
}
