#include "convert/parquet/run_encoder.h"

#include <algorithm>

#include "convert/parquet/compact_writer.h"

namespace zrml::convert::parquet {

void RunEncoder::Add(std::uint32_t value, std::size_t count) {
  if (gathered_ > 0) {  // a group is whole before a run may begin
    const std::size_t missing = std::min(count, kGroup - gathered_);
    Gather(value, missing);
    count -= missing;
  }
  if (count >= kGroup) {
    WritePacked();
    WriteRun(value, count);
  } else {
    Gather(value, count);
  }
}

void RunEncoder::Finish() {
  if (gathered_ > 0) PackGroup();  // readers know how many values there are
  WritePacked();
}

void RunEncoder::Gather(std::uint32_t value, std::size_t count) {
  std::fill_n(group_.begin() + gathered_, count, value);
  gathered_ += count;
  if (gathered_ == kGroup) PackGroup();
}

// The lowest bits first; eight values of so many bits are as many bytes.
void RunEncoder::PackGroup() {
  std::fill(group_.begin() + gathered_, group_.end(), 0);
  std::uint64_t waiting = 0;
  int bits = 0;
  for (const std::uint32_t value : group_) {
    waiting |= std::uint64_t{value} << bits;
    for (bits += bits_; bits >= 8; bits -= 8, waiting >>= 8) packed_.push_back(static_cast<char>(waiting));
  }
  gathered_ = 0;
  ++groups_;
}

void RunEncoder::WritePacked() {
  if (groups_ == 0) return;
  AppendVarint(groups_ << 1 | 1, out_);
  out_ += packed_;
  packed_.clear();
  groups_ = 0;
}

void RunEncoder::WriteRun(std::uint32_t value, std::size_t count) {
  AppendVarint(count << 1, out_);
  for (int bits = 0; bits < bits_; bits += 8) out_.push_back(static_cast<char>(value >> bits));
}

}  // namespace zrml::convert::parquet
