// Reads numbers by the rules of C's strtod and strtol, independent of the process locale: leading white
// space, an optional sign, then the longest valid prefix (decimal or 0x hexadecimal, "inf", "nan"). Values
// that are too large become infinity, those too small 0; both keep their sign.
#pragma once

#include <optional>
#include <string_view>

namespace zrml {

/// Reads a number at the front of `text` and removes it. Without a number: no value, `text` unchanged.
std::optional<double> TakeDouble(std::wstring_view& text);
std::optional<float> TakeFloat(std::wstring_view& text);

/// The same for a decimal integer; values outside 32 bits become the nearest limit.
std::optional<int> TakeInt(std::wstring_view& text);

/// The same for narrow text.
std::optional<double> TakeDouble(std::string_view& text);
std::optional<float> TakeFloat(std::string_view& text);
std::optional<int> TakeInt(std::string_view& text);

}  // namespace zrml
