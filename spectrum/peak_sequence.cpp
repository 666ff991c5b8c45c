#include "spectrum/peak_sequence.h"

#include <limits>
#include <utility>

namespace zrml {
namespace {

constexpr PeakSequence::Index kMostChildren = 16;
constexpr double kEndless = std::numeric_limits<double>::infinity();

}  // namespace

PeakSequence::PeakSequence() {
  for (std::size_t level = 0; level < kLevels; ++level)
    levels_[level].push_back({.count = level > 0 ? 1U : 0U, .bound = -kEndless});
}

void PeakSequence::Update(Index i) {
  const Peak& peak = peaks_[i];
  const double bound = peak.isUnsettled ? kEndless : peak.mass;
  Index block = peak.block;
  for (std::vector<Block>& blocks : levels_) {
    if (!(blocks[block].bound < bound)) return;
    blocks[block].bound = bound;
    block = blocks[block].parent;
  }
}

void PeakSequence::SetUnsettled(Index i, bool isUnsettled) {
  Peak& peak = peaks_[i];
  if (peak.isUnsettled == isUnsettled) return;
  peak.isUnsettled = isUnsettled;
  isUnsettled ? ++unsettled_ : --unsettled_;
  if (isUnsettled) Update(i);
}

PeakSequence::Index PeakSequence::InsertBefore(Index place, double mass, double intensity) {
  Index i = free_;
  if (i != kNone) {
    free_ = peaks_[i].above;
  } else {
    i = static_cast<Index>(peaks_.size());
    peaks_.emplace_back();
  }
  const Index below = place != kNone ? peaks_[place].below : last_;
  const Index neighbour = place != kNone ? place : below;
  const Index block = neighbour != kNone ? peaks_[neighbour].block : 0;
  peaks_[i] = {mass, intensity, below, place, block, false, {}};
  (below != kNone ? peaks_[below].above : first_) = i;
  (place != kNone ? peaks_[place].below : last_) = i;
  ++count_;
  Block& home = levels_[0][block];
  if (home.count == 0 || home.first == place) home.first = i;
  ++home.count;
  Update(i);
  SplitFrom(block);
  return i;
}

void PeakSequence::Remove(Index i) {
  SetUnsettled(i, false);
  Peak& peak = peaks_[i];
  Block& home = levels_[0][peak.block];
  if (home.first == i) home.first = peak.above;
  --home.count;
  (peak.below != kNone ? peaks_[peak.below].above : first_) = peak.above;
  (peak.above != kNone ? peaks_[peak.above].below : last_) = peak.below;
  --count_;
  peak.mass = 0;
  peak.above = free_;
  free_ = i;
}

void PeakSequence::Renumber() {
  PeakSequence ordered;
  ordered.Reserve(count_);
  for (Index i = first_; i != kNone; i = peaks_[i].above)
    ordered.SetUnsettled(ordered.InsertBefore(kNone, peaks_[i].mass, peaks_[i].intensity),
                         peaks_[i].isUnsettled);
  *this = std::move(ordered);
}

bool PeakSequence::MayHoldStop(const Block& block, double mass) {
  return block.bound >= mass || block.bound == kEndless;
}

PeakSequence::Index PeakSequence::Find(Index from, double mass) {
  if (from == kNone) return kNone;
  Index block = peaks_[from].block;
  for (Index i = from; i != kNone && peaks_[i].block == block; i = peaks_[i].above) {
    if (IsStop(peaks_[i], mass)) return i;
  }
  std::size_t level = 0;
  for (;;) {
    // To the next block; after the last one of a larger block, to the one after that.
    const Block* at = &levels_[level][block];
    while (level + 1 < kLevels && (at->next == kNone || levels_[level][at->next].parent != at->parent)) {
      block = at->parent;
      Tighten(++level, block);
      at = &levels_[level][block];
    }
    block = at->next;
    if (block == kNone) return kNone;
    // Down to the peaks, as long as one of them may match.
    while (level > 0 && MayHoldStop(levels_[level][block], mass)) block = levels_[level--][block].first;
    if (level > 0 || !MayHoldStop(levels_[0][block], mass)) continue;
    Index i = levels_[0][block].first;
    for (Index left = levels_[0][block].count; left > 0; --left, i = peaks_[i].above) {
      if (IsStop(peaks_[i], mass)) return i;
    }
    Tighten(0, block);
  }
}

PeakSequence::Index PeakSequence::Following(std::size_t level, Index child) const {
  return level == 0 ? peaks_[child].above : levels_[level - 1][child].next;
}

// Lowers the bound of a block as far as its present content allows.
void PeakSequence::Tighten(std::size_t level, Index block) {
  double bound = -kEndless;
  Index child = levels_[level][block].first;
  for (Index left = levels_[level][block].count; left > 0; --left, child = Following(level, child)) {
    const double one = level > 0                   ? levels_[level - 1][child].bound
                       : peaks_[child].isUnsettled ? kEndless
                                                   : peaks_[child].mass;
    if (one > bound) bound = one;
  }
  levels_[level][block].bound = bound;
}

// Splits a block of peaks that has become too large, then the larger blocks around it.
void PeakSequence::SplitFrom(Index block) {
  for (std::size_t level = 0; level < kLevels; ++level) {
    std::vector<Block>& blocks = levels_[level];
    if (blocks[block].count <= kMostChildren) return;
    // A block of the highest level has no parent to count it.
    const auto added = static_cast<Index>(blocks.size());
    blocks.push_back(blocks[block]);
    Block& low = blocks[block];
    Block& high = blocks[added];
    low.next = added;
    low.count /= 2;
    high.count -= low.count;
    for (Index i = 0; i < low.count; ++i) high.first = Following(level, high.first);
    Index child = high.first;
    for (Index i = 0; i < high.count; ++i, child = Following(level, child))
      (level == 0 ? peaks_[child].block : levels_[level - 1][child].parent) = added;
    Tighten(level, block);
    Tighten(level, added);
    block = low.parent;
    if (level + 1 < kLevels) ++levels_[level + 1][block].count;
  }
}

}  // namespace zrml
