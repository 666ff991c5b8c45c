// Base64 as mzML has it: the standard alphabet, padded, on one line.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace zrml::convert {

/// Characters that `bytes` bytes take.
constexpr std::size_t Base64Length(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

void AppendBase64(std::span<const std::byte> bytes, std::string& out);

}  // namespace zrml::convert
