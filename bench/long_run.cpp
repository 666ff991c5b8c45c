// zrml-long-run DIRECTORY SCANS: a raw directory of many small scans, with a peak every ten thousand.
#include <cmath>
#include <cstdlib>

#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

FunctionFiles LongFunction(int scans) {
  constexpr unsigned kTofMs = 18;
  FunctionFiles function;
  function.record.type = kTofMs;
  function.record.startMasses[0] = 50;
  function.record.endMasses[0] = 1000;
  function.statistics = StatisticsLayout();
  for (int i = 0; i < scans; ++i) {
    const double intensity = 1000 + 900 * std::sin(i * 0.0003) + (i % 9973 == 0 ? 50'000 : 0);
    const std::vector<WantedPoint> points = {
        {100.0 + i % 7, intensity}, {300, intensity / 2}, {500.0 + i / 1000 % 300, intensity / 3}};
    function.scans.push_back(ScanFrom<StoredPoint9>(static_cast<float>(i + 1) * 1e-4F, points));
  }
  return function;
}

}  // namespace
}  // namespace zrml

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  zrml::RawDirectoryBuilder raw;
  raw.functions = {zrml::LongFunction(std::atoi(argv[2]))};
  std::filesystem::create_directories(argv[1]);
  raw.WriteTo(argv[1]);
  return 0;
}
