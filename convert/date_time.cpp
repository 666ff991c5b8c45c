#include "convert/date_time.h"

#include <algorithm>
#include <array>

#include "common/text.h"

namespace zrml::convert {
namespace {

std::string Padded(int number, std::size_t width) {
  std::string digits = std::to_string(number);
  return digits.size() < width ? digits.insert(0, width - digits.size(), '0') : digits;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Three fields between two separators.
using Fields = std::array<std::string_view, 3>;
std::optional<Fields> Split(std::string_view text, char separator) {
  const std::size_t first = text.find(separator);
  const std::size_t second = first == text.npos ? text.npos : text.find(separator, first + 1);
  if (second == text.npos) return std::nullopt;
  return Fields{text.substr(0, first), text.substr(first + 1, second - first - 1), text.substr(second + 1)};
}

// A number of `fewest` to `most` digits; -1 for other text.
int NumberOf(std::string_view text, std::size_t fewest, std::size_t most) {
  if (text.size() < fewest || text.size() > most || !std::all_of(text.begin(), text.end(), IsDigit))
    return -1;
  int number = 0;
  for (const char c : text) number = number * 10 + (c - '0');
  return number;
}

int MonthOf(std::string_view name) {
  constexpr std::array<std::string_view, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                        "jul", "aug", "sep", "oct", "nov", "dec"};
  const auto month = std::find(kMonths.begin(), kMonths.end(), ToLower(name));
  return month == kMonths.end() ? -1 : static_cast<int>(month - kMonths.begin()) + 1;
}

int DaysOf(int year, int month) {
  constexpr std::array kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return kDays[static_cast<std::size_t>(month - 1)] + (isLeap && month == 2 ? 1 : 0);
}

std::optional<std::string> XmlDate(std::string_view text) {
  constexpr std::size_t kYearDigits = 4;
  const std::optional<Fields> fields = Split(text, '-');
  if (!fields) return std::nullopt;
  const auto& [first, second, third] = *fields;
  const bool isYearFirst = first.size() == kYearDigits;
  const int year = NumberOf(isYearFirst ? first : third, kYearDigits, kYearDigits);
  const int month = isYearFirst ? NumberOf(second, 1, 2) : MonthOf(second);
  const int day = NumberOf(isYearFirst ? third : first, 1, 2);
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > DaysOf(year, month)) return std::nullopt;
  return Padded(year, kYearDigits) + '-' + Padded(month, 2) + '-' + Padded(day, 2);
}

std::optional<std::string> XmlTime(std::string_view text) {
  const std::optional<Fields> fields = Split(text, ':');
  if (!fields) return std::nullopt;
  const auto& [hours, minutes, seconds] = *fields;
  const std::string_view fraction = seconds.substr(std::min<std::size_t>(2, seconds.size()));
  const bool isFraction = fraction.size() > 1 && fraction.front() == '.' &&
                          std::all_of(fraction.begin() + 1, fraction.end(), IsDigit);
  if (!fraction.empty() && !isFraction) return std::nullopt;
  const int hour = NumberOf(hours, 1, 2);
  const int minute = NumberOf(minutes, 2, 2);
  const int second = NumberOf(seconds.substr(0, 2), 2, 2);
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return std::nullopt;
  return Padded(hour, 2) + ':' + std::string(minutes) + ':' + std::string(seconds);
}

}  // namespace

std::optional<std::string> XmlDateTime(std::string_view text) {
  const std::size_t separator = text.rfind('T');  // a month's name may have one, too
  if (separator == text.npos) return std::nullopt;
  const std::optional<std::string> date = XmlDate(text.substr(0, separator));
  const std::optional<std::string> time = XmlTime(text.substr(separator + 1));
  if (!date || !time) return std::nullopt;
  return *date + 'T' + *time;
}

}  // namespace zrml::convert
