#include "common/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>

#include "common/text.h"

namespace zrml {
namespace {

struct Sign {
  bool negative = false;
  std::size_t length = 0;  // characters up to the first digit: white space and sign
};

template <class Char>
Sign ReadSign(std::basic_string_view<Char> text) {
  Sign sign;
  while (sign.length < text.size() && IsSpace(text[sign.length])) ++sign.length;
  if (sign.length < text.size() && (text[sign.length] == Char('-') || text[sign.length] == Char('+'))) {
    sign.negative = text[sign.length] == Char('-');
    ++sign.length;
  }
  return sign;
}

bool IsAsciiAlnum(wchar_t c) {
  return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

// The longest run of characters at the front of `text` that can occur in a number, as narrow text. Narrow
// text is taken whole.
std::string_view NumberCharacters(std::string_view text) { return text; }
std::string NumberCharacters(std::wstring_view text) {
  std::string run;
  for (const wchar_t c : text) {
    if (!IsAsciiAlnum(c) && c != L'.' && c != L'+' && c != L'-' && c != L'(' && c != L')' && c != L'_') break;
    run.push_back(static_cast<char>(c));
  }
  return run;
}

bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool IsHexadecimal(std::string_view run) {
  if (run.size() < 3 || run[0] != '0' || (run[1] != 'x' && run[1] != 'X')) return false;
  return IsHexDigit(run[2]) || (run[2] == '.' && run.size() > 3 && IsHexDigit(run[3]));
}

// Whether the out-of-range number in `digits` is too large (true) or too small (false): the weight of its
// first digit that is not zero, in digits before the point, plus the exponent.
bool Overflows(std::string_view digits, bool hexadecimal) {
  const auto mark = std::min(digits.find_first_of(hexadecimal ? "pP" : "eE"), digits.size());
  const std::string_view mantissa = digits.substr(0, mark);
  const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  const auto first = static_cast<std::int64_t>(std::min(mantissa.find_first_not_of("0."), mantissa.size()));
  constexpr std::int64_t kLargestExponent = std::int64_t{1} << 60;  // leaves room to add the digits
  std::int64_t exponent = 0;
  if (mark < digits.size()) {
    std::string_view text = digits.substr(mark + 1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const auto error = std::from_chars(text.data(), text.data() + text.size(), exponent).ec;
    if (error != std::errc() || exponent > kLargestExponent) exponent = kLargestExponent;
    if (negative) exponent = -exponent;
  }
  return (point - first) * (hexadecimal ? 4 : 1) + exponent > 0;
}

template <class Real, class Char>
std::optional<Real> TakeReal(std::basic_string_view<Char>& text) {
  const Sign sign = ReadSign(text);
  const auto run = NumberCharacters(text.substr(sign.length));
  if (run.empty() || run[0] == '-' || run[0] == '+') return std::nullopt;
  const bool hexadecimal = IsHexadecimal(run);
  const char* const begin = run.data() + (hexadecimal ? 2 : 0);
  Real value = 0;
  const auto [end, error] =
      std::from_chars(begin, run.data() + run.size(), value,
                      hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (error == std::errc::invalid_argument) return std::nullopt;
  if (error == std::errc::result_out_of_range) {
    const std::string_view digits(begin, static_cast<std::size_t>(end - begin));
    value = Overflows(digits, hexadecimal) ? std::numeric_limits<Real>::infinity() : Real{0};
  }
  text.remove_prefix(sign.length + static_cast<std::size_t>(end - run.data()));
  return sign.negative ? -value : value;
}

constexpr std::array<double, 20> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                                 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Most numbers in files are like 445.1206: up to 15 digits and a point, then white space or the end. The
// digits without the point and the power of ten are exact as doubles, so a single division rounds correctly.
inline bool TakeShortDecimal(std::string_view& text, double& value) {
  constexpr std::ptrdiff_t kExactDigits = 15;
  const Sign sign = ReadSign(text);
  const char* const end = text.data() + text.size();
  const char* const begin = text.data() + sign.length;
  const char* at = begin;
  std::uint64_t digits = 0;
  for (; at != end && IsDigit(*at); ++at) digits = digits * 10 + static_cast<unsigned>(*at - '0');
  const char* const point = at;
  if (at != end && *at == '.') {
    for (++at; at != end && IsDigit(*at); ++at) digits = digits * 10 + static_cast<unsigned>(*at - '0');
  }
  const bool hasDigits = at - begin > (point != at ? 1 : 0);
  if (!hasDigits || at - begin > kExactDigits || (at != end && !IsSpace(*at))) return false;
  const std::size_t decimals = point == at ? 0 : static_cast<std::size_t>(at - point - 1);
  value = static_cast<double>(digits) / kPowersOfTen[decimals];
  if (sign.negative) value = -value;
  text.remove_prefix(static_cast<std::size_t>(at - text.data()));
  return true;
}

template <class Char>
std::optional<int> TakeDecimal(std::basic_string_view<Char>& text) {
  const Sign sign = ReadSign(text);
  std::size_t i = sign.length;
  std::int64_t value = 0;
  constexpr std::int64_t kLimit = std::int64_t{1} << 32;
  for (; i < text.size() && text[i] >= Char('0') && text[i] <= Char('9'); ++i) {
    value = std::min(value * 10 + (text[i] - Char('0')), kLimit);
  }
  if (i == sign.length) return std::nullopt;
  text.remove_prefix(i);
  if (sign.negative) value = -value;
  return static_cast<int>(
      std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

std::optional<double> TakeDouble(std::wstring_view& text) { return TakeReal<double>(text); }
std::optional<float> TakeFloat(std::wstring_view& text) { return TakeReal<float>(text); }
std::optional<int> TakeInt(std::wstring_view& text) { return TakeDecimal(text); }

std::optional<double> TakeDouble(std::string_view& text) {
  double value = 0;
  if (TakeShortDecimal(text, value)) return value;
  return TakeReal<double>(text);
}
std::optional<float> TakeFloat(std::string_view& text) { return TakeReal<float>(text); }
std::optional<int> TakeInt(std::string_view& text) { return TakeDecimal(text); }

}  // namespace zrml
