#include "common/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace zrml {
namespace {

constexpr double kSmallestPositional = 1e-5;
constexpr double kLargestPositional = 1e15;

bool IsPositional(double value) {
  const double size = std::fabs(value);
  return size == 0 || (size >= kSmallestPositional && size < kLargestPositional);
}

template <class Number>
void Append(Number value, std::string& out) {
  std::array<char, 64> text;
  const auto format = IsPositional(value) ? std::chars_format::fixed : std::chars_format::scientific;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value, format);
  out.append(text.data(), result.ptr);
}

}  // namespace

void AppendNumber(double value, std::string& out) {
  std::isnan(value) ? static_cast<void>(out += "nan")
                    : Append(value, out);  // to_chars would show the sign bit
}

std::string Number(double value) {
  std::string out;
  AppendNumber(value, out);
  return out;
}

void AppendShortNumber(double value, std::string& out) {
  const bool isWhole = std::trunc(value) == value;  // also what is beyond single precision, and infinity
  const auto single = isWhole ? 0.0F : static_cast<float>(value);
  const bool isSingle = !isWhole && static_cast<double>(single) == value;
  isSingle ? Append(single, out) : AppendNumber(value, out);
}

std::string ShortNumber(double value) {
  std::string out;
  AppendShortNumber(value, out);
  return out;
}

}  // namespace zrml
