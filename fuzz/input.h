// Takes values from the front of a fuzzer's input. Past its end everything reads as zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "common/bytes.h"

namespace zrml::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(std::as_bytes(std::span(data, size))) {}

  explicit Input(Bytes bytes) : rest_(bytes) {}

  bool IsEmpty() const { return rest_.empty(); }

  /// The next `count` bytes, or all that remain.
  Bytes Take(std::size_t count) {
    const Bytes taken = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  Bytes TakeRest() { return Take(rest_.size()); }

  /// An integer or floating-point value with any bits.
  template <class T>
  T Value() {
    const Bytes bytes = Take(sizeof(T));
    T value{};
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  /// 0 to limit - 1.
  int Below(int limit) { return Value<std::uint16_t>() % limit; }
  bool Bool() { return (Value<std::uint8_t>() & 1) != 0; }

 private:
  Bytes rest_;
};

}  // namespace zrml::fuzz
