#include "common/text.h"

#include <algorithm>

namespace zrml {
namespace {

template <class Char>
Char Upper(Char c) {
  return c >= 'a' && c <= 'z' ? static_cast<Char>(c - 'a' + 'A') : c;
}

template <class Char>
Char Lower(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

template <class Char>
std::basic_string<Char> Mapped(std::basic_string_view<Char> text, Char (*map)(Char)) {
  std::basic_string<Char> result(text);
  std::transform(result.begin(), result.end(), result.begin(), map);
  return result;
}

template <class View>
View Trimmed(View text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

std::wstring_view Trim(std::wstring_view text) { return Trimmed(text); }
std::string_view Trim(std::string_view text) { return Trimmed(text); }

std::wstring ToUpper(std::wstring_view text) { return Mapped(text, Upper<wchar_t>); }
std::string ToUpper(std::string_view text) { return Mapped(text, Upper<char>); }
std::wstring ToLower(std::wstring_view text) { return Mapped(text, Lower<wchar_t>); }
std::string ToLower(std::string_view text) { return Mapped(text, Lower<char>); }

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

bool HasWord(std::string_view text, std::string_view word) {
  const auto isOfWord = [](char c) { return (c >= 'a' && c <= 'z') || c == '-' || c == '_'; };
  for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool isInside = (at > 0 && isOfWord(text[at - 1])) || (end < text.size() && isOfWord(text[end]));
    if (!isInside) return true;
  }
  return false;
}

}  // namespace zrml
