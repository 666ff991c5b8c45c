// The different values of a column in a row group, each once, in the order in which they came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zrml::convert::parquet {

class Dictionary {
 public:
  /// The place of a value, from 0; it is added when it is new.
  std::uint32_t PlaceOf(std::string_view value);

  std::size_t Count() const { return ends_.size(); }
  std::string_view ValueAt(std::size_t place) const;
  /// All of them, one after the other.
  const std::string& Bytes() const { return bytes_; }

 private:
  /// The slot of a value, or the free one where it belongs. There must be a free one.
  std::uint32_t& SlotOf(std::string_view value);
  void Grow();

  std::string bytes_;
  std::vector<std::size_t> ends_;     // of the values in it
  std::vector<std::uint32_t> slots_;  // by their hashes: places from 1, 0 where free; at least half are free
};

}  // namespace zrml::convert::parquet
