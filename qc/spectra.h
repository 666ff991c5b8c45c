// What the metrics of a run are made of: one record for each mass spectrum, without its points.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zrml::qc {

struct Spectrum {
  double minutes = 0;  ///< NaN where no file has it
  double total = 0;    ///< sum of the intensities
  double basePeak = 0;
  double precursorMz = 0;  ///< 0 without one
  std::uint32_t points = 0;
  bool isCentroided = false;
};

/// Spectra by time; those of equal times in the order in which they were added.
class SpectrumList {
 public:
  void Add(const Spectrum& spectrum) { all_.push_back(spectrum); }
  /// Call once, after the last Add.
  void Sort();

  std::span<const Spectrum> All() const { return all_; }
  /// Those that have a time: the first ones.
  std::span<const Spectrum> Timed() const { return All().first(timed_); }

 private:
  std::vector<Spectrum> all_;
  std::size_t timed_ = 0;
};

enum Level : std::size_t { kAllLevels, kMs1, kMs2, kLevels };

/// The spectra of a run.
struct RunSpectra {
  std::array<SpectrumList, kLevels> lists = {};
  std::size_t chromatograms = 0;  ///< recorded: traces, and channels of ion monitoring

  std::span<const Spectrum> All(Level level) const { return lists.at(level).All(); }
  std::span<const Spectrum> Timed(Level level) const { return lists.at(level).Timed(); }
};

}  // namespace zrml::qc
