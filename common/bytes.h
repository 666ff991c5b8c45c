// Bounded little-endian access to bytes that come from a file. Integers are assembled from single bytes, so
// neither the machine's byte order nor alignment matters. Reads out of bounds give zero and are remembered.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zrml {

using Bytes = std::span<const std::byte>;

inline bool AreZeros(Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::byte byte) { return byte == std::byte{0}; });
}

/// Unchecked readers for hot loops: the bytes read at `p` must exist.
inline std::uint16_t LoadU16(const std::byte* p) {
  return static_cast<std::uint16_t>(std::to_integer<unsigned>(p[0]) | std::to_integer<unsigned>(p[1]) << 8);
}

inline std::uint32_t LoadU32(const std::byte* p) {
  return std::to_integer<std::uint32_t>(p[0]) | std::to_integer<std::uint32_t>(p[1]) << 8 |
         std::to_integer<std::uint32_t>(p[2]) << 16 | std::to_integer<std::uint32_t>(p[3]) << 24;
}

inline std::int16_t LoadI16(const std::byte* p) { return static_cast<std::int16_t>(LoadU16(p)); }
inline float LoadF32(const std::byte* p) { return std::bit_cast<float>(LoadU32(p)); }

/// A position in bytes. Every read advances; a read that does not fit gives 0, moves to the end and clears
/// Ok().
class ByteCursor {
 public:
  explicit ByteCursor(Bytes bytes, std::uint64_t offset = 0) : bytes_(bytes) { Skip(offset); }

  bool Ok() const { return ok_; }
  std::size_t Remaining() const { return bytes_.size() - offset_; }

  void Skip(std::uint64_t count) {
    if (count <= Remaining()) {
      offset_ += static_cast<std::size_t>(count);
    } else {
      offset_ = bytes_.size();
      ok_ = false;
    }
  }

  std::uint8_t U8() {
    return Read<1>([](const std::byte* p) { return std::to_integer<std::uint8_t>(*p); });
  }
  std::int8_t I8() { return static_cast<std::int8_t>(U8()); }
  std::uint16_t U16() { return Read<2>(LoadU16); }
  std::int16_t I16() { return static_cast<std::int16_t>(U16()); }
  std::uint32_t U32() { return Read<4>(LoadU32); }
  std::int32_t I32() { return static_cast<std::int32_t>(U32()); }
  float F32() { return std::bit_cast<float>(U32()); }

 private:
  template <std::size_t N, class Load>
  auto Read(Load load) -> decltype(load(nullptr)) {
    if (Remaining() < N) {
      offset_ = bytes_.size();
      ok_ = false;
      return {};
    }
    const std::byte* const p = bytes_.data() + offset_;
    offset_ += N;
    return load(p);
  }

  Bytes bytes_;
  std::size_t offset_ = 0;
  bool ok_ = true;
};

}  // namespace zrml
