// A whole raw directory, then every question that a host can ask. packed_directory.h describes the input.
#include <utility>

#include "fuzz/check.h"
#include "fuzz/every_slot.h"
#include "fuzz/packed_directory.h"
#include "plugin/raw_server.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  fuzz::Files files = fuzz::UnpackDirectory(fuzz::Input(data, size));
  fuzz::CutPointCounts(files);
  fuzz::SetFiles(std::move(files));
  {
    plugin::CMLDataServerImpl server;
    fuzz::LiveWith(server, fuzz::kFolder, L"_FUNC002.DAT");
    fuzz::Check(fuzz::OpenFileCount() == 0, "a closed server holds no file");
    server.Open(fuzz::kFolder);
    fuzz::Check(fuzz::OpenFileCount() <= 1, "an open server holds only the header");
  }
  fuzz::Check(fuzz::OpenFileCount() == 0, "no file outlives its server");
  return 0;
}
