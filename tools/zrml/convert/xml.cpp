#include "tools/zrml/convert/xml.h"

#include "tools/zrml/format.h"

namespace zrml {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// What stands for a byte below 0x80; empty for itself.
std::string_view Replacement(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return static_cast<unsigned char>(c) < 0x20 ? kReplacement : std::string_view();
  }
}

// U+FFFE and U+FFFF, the only characters beyond ASCII that XML forbids.
bool IsForbidden(std::string_view utf8) {
  return utf8.starts_with("\xEF\xBF\xBE") || utf8.starts_with("\xEF\xBF\xBF");
}

bool IsNamePart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
         c == '.';
}

}  // namespace

std::string XmlText(std::string_view utf8) {
  std::string out;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const std::string_view replacement = Replacement(utf8[i]);
    if (!replacement.empty()) {
      out += replacement;
    } else if (IsForbidden(utf8.substr(i))) {
      out += kReplacement;
      i += 2;
    } else {
      out.push_back(utf8[i]);
    }
  }
  return out;
}

std::string XmlText(std::wstring_view text) { return XmlText(Utf8(text)); }

std::string XmlIdPart(std::wstring_view text) {
  std::string id;
  for (const wchar_t wide : text) {
    const char c = wide > 0 && wide < 0x80 ? static_cast<char>(wide) : '_';
    id.push_back(IsNamePart(c) ? c : '_');
  }
  return id;
}

}  // namespace zrml
