// A small generator with the same numbers on every platform (Marsaglia's xorshift64*).
#pragma once

#include <cstdint>

namespace zrml {

class RandomNumbers {
 public:
  explicit RandomNumbers(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * 0x2545F4914F6CDD1DULL;
  }

  /// 0 to limit - 1.
  int Below(int limit) { return static_cast<int>((Next() >> 33) % static_cast<std::uint64_t>(limit)); }

 private:
  std::uint64_t state_;  // never 0
};

}  // namespace zrml
