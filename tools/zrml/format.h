// How numbers and text look in the output: UTF-8, independent of the locale, one line per line.
#pragma once

#include <string>
#include <string_view>

namespace zrml {

/// The shortest decimal that reads back as the same double; positional from 1e-5 up to 1e15, with an exponent
/// beyond. "nan", "inf", "-inf".
void AppendNumber(double value, std::string& out);
std::string Number(double value);

/// For people: at most four decimals.
std::string RoundedNumber(double value);

/// UTF-8; what is no character becomes U+FFFD.
std::string Utf8(std::wstring_view text);

/// The same for lines that people read: characters that would move the cursor or reorder the line become \t,
/// \n, \r or \u and four digits.
std::string VisibleUtf8(std::wstring_view text);

/// UTF-8 between double quotes, as JSON has it.
std::string QuotedJson(std::wstring_view text);

/// How many characters `utf8` shows.
std::size_t CharacterCount(std::string_view utf8);

}  // namespace zrml
