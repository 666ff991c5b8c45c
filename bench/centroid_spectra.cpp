// Centroids of the profiles on standard input, for bench/centroids.py; areas with the argument "area". All is
// doubles: a profile is its number of points, their masses, their intensities, and an answer the same of its
// centroids. All profiles are in memory before the first is looked at. Behind the answers come the
// processor's seconds for all of them together.
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

struct Points {
  std::vector<double> mz;
  std::vector<double> intensities;
};

bool ReadAll(std::vector<Points>& profiles) {
  for (double count = 0; Read({&count, 1});) {
    Points& profile = profiles.emplace_back();
    profile.mz.resize(static_cast<std::size_t>(count));
    profile.intensities.resize(profile.mz.size());
    if (!Read(profile.mz) || !Read(profile.intensities)) return false;
  }
  return true;
}

int AnswerAll(const CentroidOptions& options) {
  std::vector<Points> profiles;
  if (!ReadAll(profiles)) return 1;
  std::vector<Points> answers(profiles.size());
  const std::clock_t began = std::clock();
  for (std::size_t i = 0; i < profiles.size(); ++i)
    FindCentroids(profiles[i].mz, profiles[i].intensities, options, answers[i].mz, answers[i].intensities);
  const double seconds = static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC;
  for (const Points& answer : answers) {
    const auto found = static_cast<double>(answer.mz.size());
    Write({&found, 1});
    Write(answer.mz);
    Write(answer.intensities);
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
