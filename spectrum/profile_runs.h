// The samples of a profile by runs: those that follow each other on the grid, without a gap or two zeros in a
// row.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "spectrum/profile_stretches.h"

namespace zrml {

/// The mean of three samples, the middle one counted twice.
inline double SmoothSample(const double* sample) {
  return 0.25 * sample[-1] + 0.5 * sample[0] + 0.25 * sample[1];
}

/// So many intensities before and behind a run can be read, whatever they are.
inline constexpr SampleIndex kReadable = 8;

/// Samples with ascending masses. The first and the last have an intensity, or the last is a zero behind one.
/// The two intensities before them are 0, the one behind them too, and behind an intensity the next as well.
struct ProfileRun {
  const double* mz;
  const double* intensities;
  SampleIndex first;
  SampleIndex last;
  bool isLasting;  ///< whether they stay where they are when other runs are looked at

  double operator[](SampleIndex i) const { return intensities[i]; }
  SampleIndex Count() const { return last - first + 1; }
  double Smooth(SampleIndex i) const { return SmoothSample(intensities + i); }
};

/// Intensities between as many zeros as are read before and behind a run.
class PaddedSamples {
 public:
  void Reserve(std::size_t most);
  double* Begin() { return samples_.get() + kZeros; }
  /// Puts the zeros behind that many.
  void End(std::size_t count);

 private:
  static constexpr auto kZeros = static_cast<std::size_t>(kReadable);

  std::size_t room_ = 0;
  std::unique_ptr<double[]> samples_;
};

/// Goes through the runs of a profile. A step ends a run when it is more than half as long again as the
/// shortest of the four before and after it: acquisitions leave out zeros. So does a mass that is not above
/// the one before or not from 0 to 1e100.
class ProfileRuns {
 public:
  /// The runs that add up to `least` or more. The arrays are as long as each other, and stay where they are.
  ProfileRuns(std::span<const double> mz, std::span<const double> intensities, double least);

  /// The next one; nothing behind the last. Holds until the next call.
  std::optional<ProfileRun> Next();

  /// Passes over the next run and the zero behind it if it is a single sample: returns its intensity. Returns
  /// 0 for any other run, and for one that does not end before `end` with that zero.
  double PassSingle(SampleIndex end);

  /// Goes on with the first run that begins at this sample or behind it, not before those that were passed.
  void SkipTo(SampleIndex sample);
  /// How many samples have been gone through.
  SampleIndex Passed() const { return next_; }

 private:
  double Step(SampleIndex i) const { return mz_[i + 1] - mz_[i]; }
  double ShortestStep(SampleIndex first, SampleIndex last) const;
  bool HasPlace(SampleIndex i) const;
  bool FindStretch();
  bool IsShortAndLow() const;
  bool LookAtStretch();
  bool IsFollowed(SampleIndex i);
  SampleIndex EndOfRun(SampleIndex first);
  ProfileRun Copy(const SampleRange& part);

  const double* mz_;
  const double* intensities_;
  SampleIndex count_;
  double least_;
  Stretches stretches_;
  SampleRange stretch_ = {};  // that is being gone through
  double highest_ = 0;        // sample of it
  SampleIndex next_ = 0;
  SampleIndex endOfBlock_ = 0;  // of samples whose steps have been looked at together
  double shortestStep_ = 0;     // in the block and four steps around it
  PaddedSamples copied_;
};

/// What one ion adds to the intensities: the median of what the samples say that go up and down by turns, as
/// no peak of three samples or more does; 0 when there are none. Of more than 8192 samples it looks at the
/// runs in sixteen blocks of 256, evenly spaced, and at all if these say less than 512 times what it is.
double IonIntensityOf(std::span<const double> mz, std::span<const double> intensities);

}  // namespace zrml
