#include "tools/zrml/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "common/utf8.h"

namespace zrml::tool {
namespace {

constexpr double kLargestPositional = 1e15;
constexpr int kDecimalsForPeople = 4;

// Takes the first character off `text`.
char32_t TakeCharacter(std::string_view& text) {
  constexpr char32_t kReplacement = 0xFFFD;
  const auto [c, length] = DecodeUtf8(text);
  text.remove_prefix(std::max<std::size_t>(length, 1));
  return length != 0 ? c : kReplacement;
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
  constexpr std::u32string_view kNamed = U"\t\n\r";
  constexpr std::string_view kNames = "tnr";
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += '\\';
  if (const std::size_t place = kNamed.find(c); place != kNamed.npos) {
    out += kNames[place];
    return;
  }
  out += 'u';
  for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[(c >> shift) & 0xF];
}

void AppendVisible(char32_t c, std::string& out) {
  MovesText(c) ? AppendEscape(c, out) : static_cast<void>(AppendUtf8(c, out));
}

}  // namespace

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

std::string VisibleText(std::string_view text) {
  std::string out;
  while (!text.empty()) AppendVisible(TakeCharacter(text), out);
  return out;
}

std::string QuotedJson(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const char32_t c = TakeCharacter(text);
    if (c == U'"' || c == U'\\') out.push_back('\\');
    AppendVisible(c, out);
  }
  return out + '"';
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  std::string_view rest = text;
  while (count-- > 0 && !rest.empty()) TakeCharacter(rest);
  return text.substr(0, text.size() - rest.size());
}

std::size_t CharacterCount(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // not the tail of a character
  }));
}

std::string Counted(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

}  // namespace zrml::tool
