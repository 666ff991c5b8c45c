// A report file, then every question that a host can ask.
#include "fuzz/check.h"
#include "fuzz/every_slot.h"
#include "fuzz/input.h"
#include "fuzz/simulated_files.h"
#include "plugin/report_server.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  const Bytes bytes = fuzz::Input(data, size).TakeRest();
  fuzz::SetFiles({{L"report.rpt", {bytes.begin(), bytes.end()}}});
  const std::wstring path = std::wstring(fuzz::kFolder) + L"/report.rpt";
  {
    plugin::COpenLynxRptDataServerImpl server;
    server.Open(path);
    fuzz::Check(fuzz::OpenFileCount() <= 1, "an open server holds only the report");
    server.GetSampleCount();
  }
  fuzz::Check(fuzz::OpenFileCount() == 0, "no file outlives its server");
  // Counting samples of a file, and a second open, deliberately leave files open.
  plugin::COpenLynxRptDataServerImpl server;
  fuzz::LiveWith(server, path, L"report.rpt");
  return 0;
}
