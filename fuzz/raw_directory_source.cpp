// A whole raw directory as tools read it: the number of bytes of questions, these, then the directory.
#include <utility>

#include "fuzz/check.h"
#include "fuzz/every_question.h"
#include "fuzz/packed_directory.h"

namespace {

bool OpensDirectory(std::string_view header) {
  const zrml::Bytes bytes = std::as_bytes(std::span(header));
  zrml::fuzz::SetFiles({{L"_HEADER.TXT", {bytes.begin(), bytes.end()}}, {L"_FUNCTNS.INF", {}}});
  return zrml::fuzz::CanOpen("/run.raw");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  static const bool isSimulated = OpensDirectory("$$ Version: 01.00\n");
  fuzz::Check(isSimulated, "a directory without functions opens");
  fuzz::Input input(data, size);
  const std::size_t length = input.Value<std::uint8_t>();
  const fuzz::Input questions(input.Take(length));
  fuzz::Files files = fuzz::UnpackDirectory(input);
  fuzz::CutPointCounts(files);
  fuzz::SetFiles(std::move(files));
  for (const char* const path : {"/run.raw", "/run.raw/_FUNC002.DAT"}) {
    fuzz::AskSource(path, questions);
    fuzz::Check(fuzz::OpenFileCount() == 0, "no file outlives its source");
  }
  return 0;
}
