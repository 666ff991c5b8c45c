// A sequence of peaks with fast insertion, removal and search.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zrml {

/// Peaks in a given order, mostly by mass. Each keeps its index until it is removed.
///
/// Neighbours form blocks, blocks form larger blocks, and so on. Each block has a bound that none of its
/// masses exceeds, so a search skips many peaks at once, whether or not masses ascend.
class PeakSequence {  // NOLINT(bugprone-reserved-identifier): the compiler generates such a name to copy
                      // arrays
 public:
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFF;

  /// Data that the user of the sequence keeps with a peak.
  struct Marks {
    bool isNew = false;
    bool isTouched = false;
    bool isPlanned = false;
  };

  PeakSequence();

  void Reserve(std::size_t count) { peaks_.reserve(count); }
  std::size_t Count() const { return count_; }
  Index First() const { return first_; }
  Index Last() const { return last_; }
  Index Below(Index i) const { return peaks_[i].below; }
  Index Above(Index i) const { return peaks_[i].above; }
  double Mass(Index i) const { return peaks_[i].mass; }
  double Intensity(Index i) const { return peaks_[i].intensity; }
  Marks& MarksOf(Index i) { return peaks_[i].marks; }

  /// A mass that was raised needs Update() before the next search.
  double& Mass(Index i) { return peaks_[i].mass; }
  double& Intensity(Index i) { return peaks_[i].intensity; }
  void Update(Index i);

  /// Searches stop at peaks marked this way. New peaks are not marked.
  void SetUnsettled(Index i, bool isUnsettled);
  bool IsUnsettled(Index i) const { return peaks_[i].isUnsettled; }
  bool HasUnsettled() const { return unsettled_ > 0; }

  /// `place` may be kNone: at the end.
  Index InsertBefore(Index place, double mass, double intensity);
  /// The peak then has mass 0 until its index is reused, at the next insertion at the earliest.
  void Remove(Index i);

  /// Gives all peaks new indices, in their order: neighbours are then neighbours in memory. Marks are
  /// cleared.
  void Renumber();

  /// The first peak from `from` on that is unsettled or whose mass is not below `mass`, or kNone. With NaN,
  /// the first unsettled one.
  Index Find(Index from, double mass);

 private:
  struct Peak {
    double mass;
    double intensity;
    Index below;
    Index above;
    Index block;
    bool isUnsettled;
    Marks marks;
  };

  // A block of peaks on the lowest level, elsewhere of blocks of the level below.
  struct Block {
    Index first = 0;  // meaningless when there are none
    Index count = 0;
    Index next = kNone;
    Index parent = 0;
    double bound;
  };

  static constexpr std::size_t kLevels = 8;

  bool IsStop(const Peak& peak, double mass) const { return peak.mass >= mass || peak.isUnsettled; }
  static bool MayHoldStop(const Block& block, double mass);
  Index Following(std::size_t level, Index child) const;
  void Tighten(std::size_t level, Index block);
  void SplitFrom(Index block);

  std::vector<Peak> peaks_;
  std::vector<Block> levels_[kLevels];
  Index first_ = kNone;
  Index last_ = kNone;
  Index free_ = kNone;
  std::size_t count_ = 0;
  std::size_t unsettled_ = 0;
};

}  // namespace zrml
