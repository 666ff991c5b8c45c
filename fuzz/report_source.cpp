// A report as tools read it: the number of bytes of questions, these, then the file.
#include "fuzz/check.h"
#include "fuzz/every_question.h"
#include "fuzz/simulated_files.h"

namespace {

constexpr const char* kPath = "/run.raw/report.rpt";

bool Open(zrml::Bytes bytes) {
  zrml::fuzz::SetFiles({{L"report.rpt", {bytes.begin(), bytes.end()}}});
  return zrml::fuzz::CanOpen(kPath);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  static const bool isSimulated = Open(std::as_bytes(std::span("[SAMPLE]")));
  fuzz::Check(isSimulated, "a report of one line opens");
  fuzz::Input input(data, size);
  const std::size_t length = input.Value<std::uint8_t>();
  const fuzz::Input questions(input.Take(length));
  if (Open(input.TakeRest())) fuzz::AskSource(kPath, questions);
  fuzz::Check(fuzz::OpenFileCount() == 0, "no file outlives its source");
  return 0;
}
