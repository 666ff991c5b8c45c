// Text helpers that do not depend on the process locale: a fixed white-space set and ASCII case mapping.
#pragma once

#include <string>
#include <string_view>

namespace zrml {

/// Tab, line feed, vertical tab, form feed, carriage return and blank.
constexpr bool IsSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

/// `text` without the white space at both ends.
std::wstring_view Trim(std::wstring_view text);
std::string_view Trim(std::string_view text);

/// Maps ASCII letters, keeps everything else.
std::wstring ToUpper(std::wstring_view text);
std::string ToUpper(std::string_view text);
std::wstring ToLower(std::wstring_view text);
std::string ToLower(std::string_view text);

/// `value` in decimal, padded with zeros to `width` characters (printf's %0<width>d).
std::wstring ZeroPadded(int value, std::size_t width);

/// ASCII text as wide characters.
std::wstring Widen(std::string_view ascii);

/// Each byte becomes the character of the same code.
std::wstring FromBytes(std::string_view bytes);

/// Whether `word` is a whole word of `text`: no letter, hyphen or underscore is next to it, as in "uv-trig",
/// but a digit may be. Both are lower case.
bool HasWord(std::string_view text, std::string_view word);

}  // namespace zrml
