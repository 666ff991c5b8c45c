#include "common/platform/platform.h"
#include "tests/zrml/fake_servers.h"

namespace zrml {

bool FakeReportServer::ValidateSource(const std::wstring& path) {
  return path.ends_with(L".fakereport") && platform::IsFile(path);
}

bool FakeReportServer::Open(const std::wstring&) { return true; }
int FakeReportServer::GetSampleCount() { return 2; }
std::wstring FakeReportServer::GetSampleName(int sample) { return sample == 0 ? L"Vial A1" : L""; }

// Sample 1 has one function, sample 2 has none.
int FakeReportServer::GetFunctionCount(int sample) { return sample == 0 ? 1 : 0; }
int FakeReportServer::GetScanCount(int sample, int function) { return sample == 0 && function == 0 ? 1 : 0; }

bool FakeReportServer::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  if (sample != 0 || function != 0 || scan != 0) return false;
  spectrum = CZRMassSpectrum(1);
  spectrum.SetMass(0, 18);
  spectrum.SetIntensity(0, 1.5);
  return true;
}

int FakeReportServer::GetFunctionTraceCount(int, int) { return 2; }

std::wstring FakeReportServer::GetFunctionTraceName(int, int, int trace) {
  return L"Channel " + std::to_wstring(trace + 1);
}

bool FakeReportServer::GetFunctionTrace(int, int, int trace, CZRChromatogram& chromatogram) {
  chromatogram.SetSize(1);
  chromatogram.SetTime(0, 2.5);
  chromatogram.SetIntensity(0, -4);
  return trace == 1;
}

bool FakeReportServer::IsReportSource() { return true; }

}  // namespace zrml
