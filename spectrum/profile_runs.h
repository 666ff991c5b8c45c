// The samples of a profile by runs: those that follow each other on the grid, without a gap or two zeros in a
// row.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace zrml {

using SampleIndex = std::ptrdiff_t;

/// Samples with ascending masses. The first and the last have an intensity, or the last is a zero behind one;
/// the two intensities before and behind them are 0.
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

/// Intensities between zeros, two before them and two behind.
class PaddedSamples {
 public:
  explicit PaddedSamples(std::size_t most = 0) { Reserve(most); }

  void Reserve(std::size_t most);
  double* Begin() { return samples_.get() + kZeros; }
  /// Puts the zeros behind that many.
  void End(std::size_t count);

 private:
  static constexpr std::size_t kZeros = 2;  // as far as what looks at a sample's surroundings goes

  std::size_t room_ = 0;
  std::unique_ptr<double[]> samples_;
};

/// Goes through the runs of a profile. A step ends a run when it is more than half as long again as the
/// shortest of the four before and after it: acquisitions leave out zeros. So does a mass that is not above
/// the one before or not from 0 to 1e100. An intensity that is not from 1e-100 to 1e100 counts as 0.
class ProfileRuns {
 public:
  /// The arrays are as long as each other, and stay where they are.
  ProfileRuns(std::span<const double> mz, std::span<const double> intensities);

  /// The next run that adds up to `least` or more; nothing behind the last. Holds until the next call.
  std::optional<ProfileRun> Next(double least);

  /// Goes on with the first run that begins at this sample or behind it, not before those that were passed.
  void SkipTo(SampleIndex sample);
  /// How many samples have been gone through.
  SampleIndex Passed() const { return next_; }

 private:
  double Intensity(SampleIndex i) const;
  double Step(SampleIndex i) const { return mz_[i + 1] - mz_[i]; }
  double ShortestStep(SampleIndex first, SampleIndex last) const;
  bool HasPlace(SampleIndex i) const;
  bool IsFollowed(SampleIndex i);
  bool FindStretch(double least);
  SampleIndex EndOfRun(SampleIndex first);
  ProfileRun Copy(SampleIndex first, SampleIndex last);

  const double* mz_;
  const double* intensities_;
  SampleIndex count_;
  SampleIndex next_ = 0;
  SampleIndex beginOfStretch_ = 0;  // of the samples between two pairs of zeros that are being gone through
  SampleIndex endOfStretch_ = 0;
  SampleIndex endOfBlock_ = 0;  // of samples whose steps have been looked at together
  double shortestStep_ = 0;     // in the block and four steps around it
  PaddedSamples copied_;
};

/// What one ion adds to the intensities: the median of what the samples say that go up and down by turns, as
/// no peak of three samples or more does; 0 when there are none. Of more than 8192 samples it looks at the
/// runs in sixteen blocks of 256, evenly spaced, and at all if these say less than 512 times what it is.
double IonIntensityOf(std::span<const double> mz, std::span<const double> intensities);

}  // namespace zrml
