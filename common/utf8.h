// UTF-8, one character at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace zrml {

/// Decodes the front of `text`, which must not be empty: character and length, or length 0 when the bytes are
/// not UTF-8.
std::pair<char32_t, std::size_t> DecodeUtf8(std::string_view text);

/// False, with nothing appended, when `c` is not a Unicode scalar value.
bool AppendUtf8(char32_t c, std::string& out);

}  // namespace zrml
