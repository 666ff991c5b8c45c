#include "convert/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace zrml::convert {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

using Pair = std::array<char, 2>;

// The two characters of every 12 bits: two look-ups for three bytes.
constexpr std::array<Pair, 4096> MakePairs() {
  std::array<Pair, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return pairs;
}
constexpr std::array<Pair, 4096> kPairs = MakePairs();

std::uint32_t Load24(const std::byte* bytes) {
  return std::to_integer<std::uint32_t>(bytes[0]) << 16 | std::to_integer<std::uint32_t>(bytes[1]) << 8 |
         std::to_integer<std::uint32_t>(bytes[2]);
}

void Store(std::uint32_t bits, char* out) {
  std::memcpy(out, kPairs[bits >> 12].data(), 2);
  std::memcpy(out + 2, kPairs[bits & 0xFFF].data(), 2);
}

// 12 bytes into 16 characters at a time, while 16 bytes can be read; returns the number of bytes.
[[gnu::target("ssse3")]] std::size_t StoreVectors(std::span<const std::byte> bytes, char* out) {
  const __m128i spread = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
  // What is added to six bits to make their character, by kind: a-z, ten digits, +, /, A-Z.
  const __m128i shifts = _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                       '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
  std::size_t done = 0;
  for (; bytes.size() - done >= 16; done += 12, out += 16) {
    const __m128i three =
        _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + done)), spread);
    const __m128i odd =
        _mm_mulhi_epu16(_mm_and_si128(three, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
    const __m128i even =
        _mm_mullo_epi16(_mm_and_si128(three, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
    const __m128i six = _mm_or_si128(odd, even);
    const __m128i isUpper = _mm_cmpgt_epi8(_mm_set1_epi8(26), six);
    const __m128i kind =
        _mm_or_si128(_mm_subs_epu8(six, _mm_set1_epi8(51)), _mm_and_si128(isUpper, _mm_set1_epi8(13)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_add_epi8(six, _mm_shuffle_epi8(shifts, kind)));
  }
  return done;
}

bool HasVectors() {
  static const bool has = __builtin_cpu_supports("ssse3") != 0;
  return has;
}

// Encodes all of `bytes` from `out` on.
void Encode(std::span<const std::byte> bytes, char* out) {
  const std::size_t whole = bytes.size() / 3 * 3;
  const std::size_t done = HasVectors() ? StoreVectors(bytes, out) : 0;
  out += done / 3 * 4;
  for (std::size_t i = done; i < whole; i += 3, out += 4) Store(Load24(bytes.data() + i), out);
  if (whole == bytes.size()) return;
  std::array<std::byte, 3> rest{};
  std::memcpy(rest.data(), bytes.data() + whole, bytes.size() - whole);
  Store(Load24(rest.data()), out);
  out[3] = '=';
  if (bytes.size() - whole == 1) out[2] = '=';
}

}  // namespace

// By blocks, which stay in the fastest cache: a string that grows is filled first.
void AppendBase64(std::span<const std::byte> bytes, std::string& out) {
  constexpr std::size_t kBlock = 3072;
  std::array<char, Base64Length(kBlock)> text;
  while (!bytes.empty()) {
    const std::size_t size = std::min(bytes.size(), kBlock);
    Encode(bytes.first(size), text.data());
    out.append(text.data(), Base64Length(size));
    bytes = bytes.subspan(size);
  }
}

}  // namespace zrml::convert
