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

/// ASCII letters mapped, everything else kept.
std::wstring ToUpper(std::wstring_view text);
std::string ToUpper(std::string_view text);
std::wstring ToLower(std::wstring_view text);
std::string ToLower(std::string_view text);

/// `value` in decimal, zeros in front up to `width` characters (printf's %0<width>d).
std::wstring ZeroPadded(int value, std::size_t width);

/// ASCII text as wide characters.
std::wstring Widen(std::string_view ascii);

/// Each byte as the character of its code.
std::wstring FromBytes(std::string_view bytes);

}  // namespace zrml
