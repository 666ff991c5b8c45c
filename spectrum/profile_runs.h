// The samples of a profile by runs: those that follow each other on the grid, without a gap or two zeros in a
// row.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zrml {

using SampleIndex = std::ptrdiff_t;

/// Samples with ascending masses. The first and the last have an intensity; the two before and behind are 0,
/// and their masses nothing.
struct ProfileRun {
  const double* mz;
  const double* intensities;
  SampleIndex first;
  SampleIndex last;

  double operator[](SampleIndex i) const { return intensities[i]; }
  SampleIndex Count() const { return last - first + 1; }
  /// The mean of three samples, the middle one counted twice.
  double Smooth(SampleIndex i) const {
    return 0.25 * intensities[i - 1] + 0.5 * intensities[i] + 0.25 * intensities[i + 1];
  }
};

/// Owns samples, one run after the other.
class ProfileRuns {
 public:
  /// Without any.
  ProfileRuns() { Clear(); }
  /// A step ends a run when it is more than half as long again as the shortest of the four before and after
  /// it: acquisitions leave out zeros. So does a mass that is not above the one before or not from 0 to
  /// 1e100. An intensity that is not from 0 to 1e100 counts as 0. The arrays are as long as each other.
  ProfileRuns(std::span<const double> mz, std::span<const double> intensities);

  void Clear();
  /// Adds a sample to the run that is being made.
  void Add(double mz, double intensity);
  void EndRun();

  std::size_t Count() const { return lasts_.size(); }
  /// Holds until there is another change.
  ProfileRun operator[](std::size_t run) const;

  /// What one ion adds to the intensities: the median of what the samples say that go up and down by turns,
  /// as no peak of three samples or more does; 0 when there are none.
  double IonIntensity() const;

 private:
  void AddZeros();

  std::vector<double> mz_;
  std::vector<double> intensities_;
  std::vector<SampleIndex> lasts_;  // of each run
};

}  // namespace zrml
