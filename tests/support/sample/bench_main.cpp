// zrml-bench-source DIRECTORY [SCANS]: a raw directory with the survey scans of the sample acquisition,
// repeated many times; or only the first SCANS.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "tests/support/sample/functions.h"

int main(int argc, char** argv) {
  constexpr int kRuns = 12;
  if (argc != 2 && argc != 3) return 2;
  try {
    zrml::FunctionFiles survey = zrml::sample::Survey();
    const std::vector<zrml::ScanFiles> scans = survey.scans;
    for (int run = 1; run < kRuns; ++run) {
      for (zrml::ScanFiles scan : scans) {
        scan.index.retentionTime += static_cast<float>(run * zrml::sample::kRunMinutes);
        survey.scans.push_back(std::move(scan));
      }
    }
    if (argc == 3) survey.scans.resize(std::strtoul(argv[2], nullptr, 10));
    zrml::RawDirectoryBuilder raw;
    raw.functions = {std::move(survey)};
    std::filesystem::create_directories(argv[1]);
    raw.WriteTo(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zrml-bench-source: %s\n", error.what());
    return 1;
  }
}
