#include "common/utf8.h"

#include <array>

namespace zrml {

std::pair<char32_t, std::size_t> DecodeUtf8(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {0, 0};
  char32_t c = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {0, 0};
    c = c << 6 | (byte(i) & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  if (c < kSmallest[length] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return {0, 0};
  return {c, length};
}

bool AppendUtf8(char32_t c, std::string& out) {
  const auto tail = [&](int shift) { out.push_back(static_cast<char>(0x80 | ((c >> shift) & 0x3F))); };
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | c >> 6));
    tail(0);
  } else if (c < 0x10000) {
    if (c >= 0xD800 && c <= 0xDFFF) return false;
    out.push_back(static_cast<char>(0xE0 | c >> 12));
    tail(6);
    tail(0);
  } else if (c <= 0x10FFFF) {
    out.push_back(static_cast<char>(0xF0 | c >> 18));
    tail(12);
    tail(6);
    tail(0);
  } else {
    return false;
  }
  return true;
}

}  // namespace zrml
