// Small numbers in Parquet's mixture of two forms: a number that repeats at least eight times as a run,
// others packed, eight together. For definition levels and for places in a dictionary.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zrml::convert::parquet {

class RunEncoder {
 public:
  /// Of `bits` each, 1 to 32; appends to `out`.
  RunEncoder(int bits, std::string& out) : bits_(bits), out_(out) {}

  /// `value` as often as `count`.
  void Add(std::uint32_t value, std::size_t count);
  /// Call once, after the last Add.
  void Finish();

 private:
  static constexpr std::size_t kGroup = 8;  // as many values as are packed together

  void Gather(std::uint32_t value, std::size_t count);
  void PackGroup();
  void WritePacked();
  void WriteRun(std::uint32_t value, std::size_t count);

  int bits_;
  std::string& out_;
  std::array<std::uint32_t, kGroup> group_{};
  std::size_t gathered_ = 0;  // in group_
  std::string packed_;
  std::size_t groups_ = 0;  // in packed_
};

}  // namespace zrml::convert::parquet
