// The samples of a profile between zeros: most of a profile is zeros and single ions, and these are passed
// over 64 samples at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zrml {

using SampleIndex = std::ptrdiff_t;

/// Samples from `begin` up to `end`.
struct SampleRange {
  SampleIndex begin = 0;
  SampleIndex end = 0;

  SampleIndex Count() const { return end - begin; }
};

/// Far from where squares underflow or overflow. What is not between them counts as 0.
constexpr double kLowestIntensity = 1e-100;
constexpr double kHighestIntensity = 1e100;

inline double CountedIntensity(double value) {
  return ((value >= kLowestIntensity) & (value <= kHighestIntensity)) ? value : 0;
}

/// Goes through what is between two zeros in a row. A stretch begins with an intensity; it ends with a zero,
/// or where the samples do.
class Stretches {
 public:
  /// Of the stretches that are an intensity and a zero, those below `least` may be left out. The samples stay
  /// where they are.
  Stretches(std::span<const double> samples, double least);

  /// Empty behind the last.
  SampleRange Next();
  /// Goes on with the first stretch that begins at this sample or behind it. Not back into those that were
  /// passed.
  void SkipTo(SampleIndex sample);
  /// How many samples have been gone through.
  SampleIndex Passed() const { return passed_; }

 private:
  template <bool kIsMember>
  SampleIndex Find(SampleIndex from);
  void LookAt(SampleIndex word);

  const double* samples_;
  SampleIndex count_;
  double least_;
  SampleIndex passed_ = 0;
  SampleIndex word_ = -1;      // which 64 samples have been looked at
  std::uint64_t members_ = 0;  // a bit for each of them: whether it is in a stretch
};

}  // namespace zrml
