#include "tools/zrml/convert/date_time.h"

#include <algorithm>
#include <array>

namespace zrml {
namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// '0' in the pattern stands for any digit.
bool Matches(std::wstring_view text, std::wstring_view pattern) {
  return text.size() == pattern.size() &&
         std::equal(text.begin(), text.end(), pattern.begin(),
                    [](wchar_t c, wchar_t p) { return p == L'0' ? IsDigit(c) : c == p; });
}

int NumberAt(std::wstring_view text, std::size_t at, std::size_t digits) {
  int number = 0;
  for (const wchar_t c : text.substr(at, digits)) number = number * 10 + (c - L'0');
  return number;
}

int DaysOf(int year, int month) {
  constexpr std::array kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return kDays[static_cast<std::size_t>(month - 1)] + (isLeap && month == 2 ? 1 : 0);
}

}  // namespace

bool IsXmlDateTime(std::wstring_view text) {
  constexpr std::wstring_view kZone = L"+00:00";
  constexpr std::wstring_view kToTheSecond = L"0000-00-00T00:00:00";
  if (!text.ends_with(kZone)) return false;
  text.remove_suffix(kZone.size());
  if (!Matches(text.substr(0, kToTheSecond.size()), kToTheSecond)) return false;
  const std::wstring_view fraction = text.substr(kToTheSecond.size());
  if (!fraction.empty() && (fraction.size() == 1 || fraction.front() != L'.' ||
                            !std::all_of(fraction.begin() + 1, fraction.end(), IsDigit))) {
    return false;
  }
  const int year = NumberAt(text, 0, 4);
  const int month = NumberAt(text, 5, 2);
  const int day = NumberAt(text, 8, 2);
  return year >= 1 && month >= 1 && month <= 12 && day >= 1 && day <= DaysOf(year, month) &&
         NumberAt(text, 11, 2) < 24 && NumberAt(text, 14, 2) < 60 && NumberAt(text, 17, 2) < 60;
}

}  // namespace zrml
