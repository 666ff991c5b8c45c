// zrml-sample PATH [--lf]: makes a raw directory with a simulated acquisition or, when PATH ends in ".rpt", a
// report of such acquisitions, with LF line ends instead of CR LF on request.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string_view>

#include "tests/support/sample/acquisition.h"
#include "tests/support/sample/report.h"
#include "tests/support/temp_directory.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr const char* kUsage = "usage: zrml-sample DIRECTORY, or REPORT.rpt [--lf]";

int Fail(int status, const char* what, const char* about) {
  std::fprintf(stderr, "zrml-sample: %s%s\n", what, about);
  return status;
}

void Make(const std::filesystem::path& path, zrml::LineEnd lineEnd) {
  if (path.extension() == ".rpt") {
    zrml::WriteFileBytes(path, zrml::TextToBytes(zrml::sample::Report(lineEnd)));
  } else {
    std::filesystem::create_directories(path);
    zrml::sample::Acquisition().WriteTo(path);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (std::string_view(argv[1]) == "--help" || std::string_view(argv[1]) == "-h")) {
    std::puts(kUsage);
    return 0;
  }
  const bool wantsLf = argc == 3 && std::string_view(argv[2]) == "--lf";
  const bool hasPath = argc > 1 && !std::string_view(argv[1]).starts_with('-');
  if (!hasPath || (argc != 2 && !wantsLf)) return Fail(kWrongUsage, kUsage, "");
  try {
    const std::filesystem::path path = argv[1];
    if (std::filesystem::exists(std::filesystem::symlink_status(path))) {
      return Fail(kFailed, "not overwriting ", argv[1]);
    }
    Make(path, wantsLf ? zrml::LineEnd::kLf : zrml::LineEnd::kCrLf);
    return 0;
  } catch (const std::exception& error) {
    return Fail(kFailed, "", error.what());
  }
}
