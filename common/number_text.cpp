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

}  // namespace zrml
