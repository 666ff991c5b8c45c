// Base64 as used by mzML: the standard alphabet, padded, on one line.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace zrml::convert {

/// Number of characters needed for `bytes` bytes.
constexpr std::size_t Base64Length(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

void AppendBase64(std::span<const std::byte> bytes, std::string& out);

}  // namespace zrml::convert
