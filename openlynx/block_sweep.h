// Walks many blocks at once. A block that is never closed contains all later ones; a sweep reads each line
// once, however many blocks it is part of.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "openlynx/report_block.h"
#include "openlynx/report_stream.h"

namespace zrml::openlynx {

/// Walks the blocks at ascending positions and calls a visitor's
///   Line(line, open)       a line and the numbers of the blocks that contain it, outermost first,
///                          without the one that begins with it;
///   Ended(stillOpen)       the innermost block has ended; `stillOpen` remain;
///   Inside(line, position) the line again, if it is between the braces of a block;
///   Began(open)            a block has begun with the line: the last of the open ones.
/// For careful readers blocks also end as BlockWalk has it: no spectrum contains another.
/// When a visitor's IsSatisfied(number of open blocks) is true it needs no further line of the open blocks;
/// when its kEveryLine is false it needs only marked lines.
///
/// Positions found in another file may be within the pieces of an earlier block. Such blocks are walked in
/// further rounds: at most one for each possible distance of two positions within a piece.
template <class Visitor>
class BlockSweep {
 public:
  BlockSweep(ReportStream& stream, std::span<const std::uint64_t> positions, Visitor& visitor)
      : stream_(stream), positions_(positions), visitor_(visitor) {}

  void Run() {
    RunRound(Visitor::kEveryLine);
    while (!missed_.empty()) {
      round_ = std::exchange(missed_, {});
      RunRound(true);
    }
  }

 private:
  std::size_t Count() const { return round_.empty() ? positions_.size() : round_.size(); }
  std::size_t NextNumber() const { return round_.empty() ? next_ : round_[next_]; }
  bool IsNextBefore(std::uint64_t position) const {
    return next_ < Count() && positions_[NextNumber()] < position;
  }

  void RunRound(bool everyLine) {
    next_ = 0;
    bool isSecond = false;  // the second line of a block counts, whatever its first character
    std::string_view line;
    while (!open_.empty() || next_ < Count()) {
      const bool isFirst = open_.empty();
      if (isFirst) stream_.Seek(positions_[NextNumber()]);
      if (!(everyLine || isFirst || isSecond ? stream_.Next(line) : stream_.NextMarked(line))) {
        EndUnread(isFirst);
        continue;
      }
      const std::uint64_t position = stream_.Position() - line.size();
      PassMissed(position);
      isSecond = next_ < Count() && positions_[NextNumber()] == position;
      Visit(line, position, isSecond);
    }
  }

  // At the end of the file, or where it cannot be read: later blocks are then searched one by one.
  void EndUnread(bool isFirst) {
    if (isFirst) ++next_;
    PassMissed(stream_.Position());
    EndAll();
  }

  void PassMissed(std::uint64_t position) {
    for (; IsNextBefore(position); ++next_) missed_.push_back(NextNumber());
  }

  void Visit(std::string_view line, std::uint64_t position, bool begins) {
    const bool isInside = !open_.empty() && depths_.back() < depth_;
    if (isInside && IsOutside(RankOf(line), rank_)) EndAll();
    visitor_.Line(line, std::span<const std::size_t>(open_));
    const std::int64_t before = depth_;
    if (line.front() == report_format::kOpen) ++depth_;
    if (line.front() == report_format::kClose) --depth_;
    while (!open_.empty() && depths_.back() >= depth_) End();
    if (!open_.empty()) visitor_.Inside(line, position);
    if (begins) {
      if (stream_.IsCareful()) rank_ = RankOf(line);
      open_.push_back(NextNumber());
      depths_.push_back(before);
      ++next_;
      visitor_.Began(std::span<const std::size_t>(open_));
    }
    if (visitor_.IsSatisfied(open_.size())) EndAll();
  }

  void EndAll() {
    while (!open_.empty()) End();
  }

  void End() {
    open_.pop_back();
    depths_.pop_back();
    visitor_.Ended(open_.size());
  }

  ReportStream& stream_;
  std::span<const std::uint64_t> positions_;
  Visitor& visitor_;
  std::vector<std::size_t> round_;   // numbers of the blocks of this round; empty in the first, of all blocks
  std::vector<std::size_t> missed_;  // of those left for the next one
  std::size_t next_ = 0;             // of the round, to begin
  std::vector<std::size_t> open_;    // outermost first
  std::vector<std::int64_t> depths_;  // before each of them; ascending
  std::int64_t depth_ = 0;
  int rank_ = -1;  // of the blocks, for careful readers
};

/// Finds what ReadKeys would find in each of many blocks: calls `use(key, value, blocks)` with the number of
/// a key, a value, and the numbers of the blocks for which it is the first value. For careful readers also
/// with an empty value that is cut where zeros ahead of the first marker inside a block may be in place of
/// its value. To them a block has no values from behind the marker of a block in it: where its closing brace
/// is lost, they are of others.
template <std::size_t N, class Use>
class KeySweep {
 public:
  static constexpr bool kEveryLine = true;

  KeySweep(const std::array<std::string_view, N>& keys, Use& use, const ReportStream& stream)
      : keys_(keys), use_(use), stream_(stream) {}

  void Line(std::string_view line, std::span<const std::size_t> open) {
    isHead_ = isHead_ && RankOf(line) == kNoRank;
    if (stream_.IsCareful() && isHead_ && line.find('\0') != std::string_view::npos) Hide(open);
    for (found_ = 0; found_ < N && !BeginsWith(line, keys_[found_]);) ++found_;
    if (found_ == N) return;
    value_ = ValueOf(line, keys_[found_], stream_.IsAtEnd());
    if (value_.text.empty()) {
      found_ = N;
    } else {
      Give(open);
    }
  }

  void Inside(std::string_view, std::uint64_t) {}

  void Began(std::span<const std::size_t> open) {
    isHead_ = true;
    if (stream_.IsCareful()) given_.fill(open.size() - 1);
    if (found_ != N) Give(open);
  }

  void Ended(std::size_t stillOpen) {
    for (std::size_t& given : given_) given = given < stillOpen ? given : stillOpen;
  }

  bool IsSatisfied(std::size_t open) const {
    for (const std::size_t given : given_) {
      if (given < open) return false;
    }
    return true;
  }

 private:
  // Most lines differ from a key in their first byte.
  static bool BeginsWith(std::string_view line, std::string_view key) {
    return line.front() == key.front() && line.starts_with(key);
  }

  void Hide(std::span<const std::size_t> open) {
    for (std::size_t key = 0; key < N; ++key) {
      if (given_[key] < open.size()) use_(key, LineValue{{}, true}, open.last(1));
    }
  }

  void Give(std::span<const std::size_t> open) {
    std::size_t& given = given_[found_];
    if (given < open.size()) use_(found_, value_, open.subspan(given));
    given = open.size();
  }

  const std::array<std::string_view, N>& keys_;
  Use& use_;
  const ReportStream& stream_;
  bool isHead_ = false;    // no marker has come since the last block began
  std::size_t found_ = N;  // the key of the last line
  LineValue value_;
  // For each key, how many of the open blocks, from the outermost, have a value. The inner ones have none.
  std::array<std::size_t, N> given_ = {};
};

template <std::size_t N, class Use>
void ReadKeysOfAll(ReportStream& stream, std::span<const std::uint64_t> positions,
                   const std::array<std::string_view, N>& keys, Use use) {
  KeySweep<N, Use> visitor(keys, use, stream);
  BlockSweep(stream, positions, visitor).Run();
}

}  // namespace zrml::openlynx
