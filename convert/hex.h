// Bytes as hexadecimal digits.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace zrml::convert {

/// Two digits per byte, in lower case.
inline std::string Hex(std::span<const std::byte> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::byte byte : bytes) {
    text.push_back(kDigits[std::to_integer<unsigned>(byte >> 4)]);
    text.push_back(kDigits[std::to_integer<unsigned>(byte & std::byte{15})]);
  }
  return text;
}

}  // namespace zrml::convert
