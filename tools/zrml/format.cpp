#include "tools/zrml/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace zrml {
namespace {

constexpr double kSmallestPositional = 1e-5;
constexpr double kLargestPositional = 1e15;
constexpr int kDecimalsForPeople = 4;

bool IsPositional(double value) {
  const double size = std::fabs(value);
  return size == 0 || (size >= kSmallestPositional && size < kLargestPositional);
}

// The character at the front of `text`, which is shortened by it: UTF-32, or UTF-16 where a pair of
// surrogates stands.
char32_t TakeCharacter(std::wstring_view& text) {
  constexpr char32_t kReplacement = 0xFFFD;
  const auto unit = [&](std::size_t i) { return static_cast<char32_t>(text[i]); };
  char32_t c = unit(0);
  std::size_t length = 1;
  if (c >= 0xD800 && c < 0xE000) {
    const bool isPair = c < 0xDC00 && text.size() > 1 && unit(1) >= 0xDC00 && unit(1) < 0xE000;
    c = isPair ? 0x10000 + ((c - 0xD800) << 10) + (unit(1) - 0xDC00) : kReplacement;
    length = isPair ? 2 : 1;
  } else if (c > 0x10FFFF) {
    c = kReplacement;
  }
  text.remove_prefix(length);
  return c;
}

void AppendCharacter(char32_t c, std::string& out) {
  const auto tail = [&](int shift) { out.push_back(static_cast<char>(0x80 | ((c >> shift) & 0x3F))); };
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
    return;
  }
  if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | c >> 6));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | c >> 12));
    tail(6);
  } else {
    out.push_back(static_cast<char>(0xF0 | c >> 18));
    tail(12);
    tail(6);
  }
  tail(0);
}

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// Control characters, and the marks that break lines or turn the direction of writing.
constexpr std::array<CharacterRange, 6> kMovers = {{
    {0x00, 0x1F},
    {0x7F, 0x9F},
    {0x061C, 0x061C},
    {0x200E, 0x200F},
    {0x2028, 0x202E},
    {0x2066, 0x2069},
}};

bool MovesText(char32_t c) {
  return std::any_of(kMovers.begin(), kMovers.end(),
                     [c](const CharacterRange& range) { return c >= range.first && c <= range.last; });
}

// Only for characters below U+10000.
void AppendEscape(char32_t c, std::string& out) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  switch (c) {
    case U'\t':
      out += "\\t";
      return;
    case U'\n':
      out += "\\n";
      return;
    case U'\r':
      out += "\\r";
      return;
    default:
      break;
  }
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kDigits[(c >> shift) & 0xF]);
}

}  // namespace

void AppendNumber(double value, std::string& out) {
  if (std::isnan(value)) {
    out += "nan";  // to_chars would show the sign bit
    return;
  }
  std::array<char, 64> text;
  const auto format = IsPositional(value) ? std::chars_format::fixed : std::chars_format::scientific;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value, format);
  out.append(text.data(), result.ptr);
}

std::string Number(double value) {
  std::string out;
  AppendNumber(value, out);
  return out;
}

std::string RoundedNumber(double value) {
  if (!std::isfinite(value) || std::fabs(value) >= kLargestPositional) return Number(value);
  std::array<char, 64> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed,
                                    kDecimalsForPeople);
  std::string out(text.data(), result.ptr);
  out.erase(out.find_last_not_of('0') + 1);
  if (out.back() == '.') out.pop_back();
  return out == "-0" ? "0" : out;
}

std::string Utf8(std::wstring_view text) {
  std::string out;
  while (!text.empty()) AppendCharacter(TakeCharacter(text), out);
  return out;
}

std::string VisibleUtf8(std::wstring_view text) {
  std::string out;
  while (!text.empty()) {
    const char32_t c = TakeCharacter(text);
    MovesText(c) ? AppendEscape(c, out) : AppendCharacter(c, out);
  }
  return out;
}

std::string QuotedJson(std::wstring_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const char32_t c = TakeCharacter(text);
    if (c == U'"' || c == U'\\') out.push_back('\\');
    MovesText(c) ? AppendEscape(c, out) : AppendCharacter(c, out);
  }
  return out + '"';
}

std::size_t CharacterCount(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // not the tail of a character
  }));
}

}  // namespace zrml
