// How numbers and text look in the output: UTF-8, independent of the locale, one line per line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/number_text.h"

namespace zrml::tool {

/// For people: at most four decimals.
std::string RoundedNumber(double value);

/// Text for lines that people read: bytes that are not UTF-8 become U+FFFD each; characters that would
/// move the cursor or reorder the line become \t, \n, \r or \u and four digits.
std::string VisibleText(std::string_view text);

/// UTF-8 between double quotes, as in JSON.
std::string QuotedJson(std::string_view text);

/// The first `count` characters of a text; all of a shorter one.
std::string_view FirstCharacters(std::string_view text, std::size_t count);

/// How many characters `utf8` shows.
std::size_t CharacterCount(std::string_view utf8);

/// "1 scan", "2 scans".
std::string Counted(std::int64_t count, const std::string& noun);

}  // namespace zrml::tool
