#include "openlynx/openlynx_data_server.h"

namespace zrml {

std::wstring COpenLynxRptDataServerImpl::GetProviderName() { return L"ZROpenLynxRptProvider"; }
std::wstring COpenLynxRptDataServerImpl::GetProviderGuid() {
  return L"{c1972a1b-f675-4d08-921a-3e6f8d107c76}";
}
std::wstring COpenLynxRptDataServerImpl::GetFileFilter() { return L"Waters OpenLynx Report (*.rpt)"; }

bool COpenLynxRptDataServerImpl::Open(const std::wstring&) { return false; }
bool COpenLynxRptDataServerImpl::Close() { return true; }
bool COpenLynxRptDataServerImpl::ValidateSource(const std::wstring&) { return false; }
int COpenLynxRptDataServerImpl::GetScanCount(int, int) { return 0; }
bool COpenLynxRptDataServerImpl::GetSpectrum(int, int, int, CZRMassSpectrum&) { return false; }

}  // namespace zrml
