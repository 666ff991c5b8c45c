// Provider 1: OpenLynx reports. Reports are not read yet: the object answers for itself and holds no data.
#pragma once

#include <string>

#include "plugin/data_server.h"

namespace zrml {

class COpenLynxRptDataServerImpl : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override;
  std::wstring GetProviderGuid() override;
  std::wstring GetFileFilter() override;

  bool Open(const std::wstring& path) override;
  bool Close() override;
  bool ValidateSource(const std::wstring& path) override;
  int GetScanCount(int sample, int function) override;
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;
};

}  // namespace zrml
