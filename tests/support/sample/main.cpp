// zrml-sample DIRECTORY: makes a raw directory with a simulated acquisition.
#include <cstdio>
#include <exception>
#include <filesystem>

#include "tests/support/sample/acquisition.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int Fail(int status, const char* what, const char* about) {
  std::fprintf(stderr, "zrml-sample: %s%s\n", what, about);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return Fail(kWrongUsage, "usage: zrml-sample DIRECTORY", "");
  try {
    const std::filesystem::path directory = argv[1];
    if (std::filesystem::exists(std::filesystem::symlink_status(directory))) {
      return Fail(kFailed, "not overwriting ", argv[1]);
    }
    std::filesystem::create_directories(directory);
    zrml::sample::Acquisition().WriteTo(directory);
    return 0;
  } catch (const std::exception& error) {
    return Fail(kFailed, "", error.what());
  }
}
