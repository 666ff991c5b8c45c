#include "convert/xml.h"

#include <algorithm>

#include "common/utf8.h"

namespace zrml::convert {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// The replacement of a character; empty when it is kept.
std::string_view Reference(char32_t c) {
  switch (c) {
    case U'&':
      return "&amp;";
    case U'<':
      return "&lt;";
    case U'>':
      return "&gt;";
    case U'"':
      return "&quot;";
    case U'\t':
      return "&#9;";
    case U'\n':
      return "&#10;";
    case U'\r':
      return "&#13;";
    default:
      return {};
  }
}

// Forbidden by XML; characters that have a reference are allowed.
bool IsForbidden(char32_t c) { return (c < 0x20 && Reference(c).empty()) || c == 0xFFFE || c == 0xFFFF; }

bool IsNamePart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
         c == '.';
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto [character, length] = DecodeUtf8(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
    const std::string_view replacement =
        length == 0 || IsForbidden(character) ? kReplacement : Reference(character);
    out += replacement.empty() ? bytes : replacement;
    text.remove_prefix(bytes.size());
  }
  return out;
}

std::string XmlIdPart(std::string_view text) {
  std::string id;
  for (const char c : text) {
    const bool isTail = (static_cast<unsigned char>(c) & 0xC0) == 0x80;  // of a character in UTF-8
    if (!isTail) id.push_back(IsNamePart(c) ? c : '_');
  }
  return id;
}

}  // namespace zrml::convert
