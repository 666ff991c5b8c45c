// Centroids of the profiles on standard input, for bench/centroids.py; areas with the argument "area". All is
// doubles: a profile is its number of points, their masses, their intensities, and an answer the same of its
// centroids. Behind the answers come the processor's seconds for all of them together.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <span>
#include <vector>

#include "spectrum/centroiding.h"

namespace zrml {
namespace {

bool Read(std::span<double> values) {
  return std::fread(values.data(), sizeof(double), values.size(), stdin) == values.size();
}

void Write(std::span<const double> values) {
  std::fwrite(values.data(), sizeof(double), values.size(), stdout);
}

int AnswerAll(const CentroidOptions& options) {
  std::vector<double> mz, intensities, centroidMz, centroidIntensities;
  double seconds = 0;
  for (double count = 0; Read({&count, 1});) {
    mz.resize(static_cast<std::size_t>(count));
    intensities.resize(mz.size());
    if (!Read(mz) || !Read(intensities)) return 1;
    const std::clock_t began = std::clock();
    FindCentroids(mz, intensities, options, centroidMz, centroidIntensities);
    seconds += static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC;
    const auto found = static_cast<double>(centroidMz.size());
    Write({&found, 1});
    Write(centroidMz);
    Write(centroidIntensities);
  }
  Write({&seconds, 1});
  return 0;
}

}  // namespace
}  // namespace zrml

int main(int argc, char** argv) {
  zrml::CentroidOptions options;
  options.isArea = argc > 1 && std::strcmp(argv[1], "area") == 0;
  return zrml::AnswerAll(options);
}
