#include "common/text.h"

#include <algorithm>

namespace zrml {
namespace {

template <class Map>
std::wstring Mapped(std::wstring_view text, Map map) {
  std::wstring result(text);
  std::transform(result.begin(), result.end(), result.begin(), map);
  return result;
}

template <class View>
View Trimmed(View text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

constexpr wchar_t kCaseDistance = L'a' - L'A';

}  // namespace

std::wstring_view Trim(std::wstring_view text) { return Trimmed(text); }
std::string_view Trim(std::string_view text) { return Trimmed(text); }

std::wstring ToUpper(std::wstring_view text) {
  return Mapped(
      text, [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - kCaseDistance) : c; });
}

std::wstring ToLower(std::wstring_view text) {
  return Mapped(
      text, [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + kCaseDistance) : c; });
}

std::string ToLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + kCaseDistance);
  }
  return lower;
}

std::wstring ZeroPadded(int value, std::size_t width) {
  std::wstring digits = Widen(std::to_string(value));  // to_wstring() formats with printf
  const std::size_t sign = value < 0 ? 1 : 0;
  if (digits.size() < width) digits.insert(sign, width - digits.size(), L'0');
  return digits;
}

std::wstring Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::wstring FromBytes(std::string_view bytes) {
  std::wstring text(bytes.size(), L'\0');
  std::transform(bytes.begin(), bytes.end(), text.begin(),
                 [](char byte) { return static_cast<wchar_t>(static_cast<unsigned char>(byte)); });
  return text;
}

}  // namespace zrml
