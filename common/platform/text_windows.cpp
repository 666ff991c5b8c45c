#include <algorithm>
#include <windows.h>

#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

// The conversion functions count in ints.
constexpr std::size_t kLongestText = 1u << 30;

std::wstring Widened(UINT codePage, std::string_view text) {
  if (text.empty()) return {};
  const int size = static_cast<int>(std::min<std::size_t>(text.size(), kLongestText));
  const int length = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(std::max(length, 0)), L'\0');
  ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
  return wide;
}

// No value when the code page lacks a character. UTF-8 has them all and allows no default character.
std::optional<std::string> Narrowed(UINT codePage, std::wstring_view text) {
  if (text.empty()) return std::string();
  const bool utf8 = codePage == CP_UTF8;
  const int size = static_cast<int>(std::min<std::size_t>(text.size(), kLongestText));
  BOOL replaced = FALSE;
  const int length = ::WideCharToMultiByte(codePage, utf8 ? 0 : WC_NO_BEST_FIT_CHARS, text.data(), size,
                                           nullptr, 0, nullptr, utf8 ? nullptr : &replaced);
  if (length <= 0 || replaced) return std::nullopt;
  std::string narrow(static_cast<std::size_t>(length), '\0');
  ::WideCharToMultiByte(codePage, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

}  // namespace

std::wstring FromCodePage(std::string_view text) { return Widened(CP_ACP, text); }
std::optional<std::string> ToCodePage(std::wstring_view text) { return Narrowed(::GetACP(), text); }
std::wstring FromNativePath(std::string_view path) { return Widened(CP_UTF8, path); }
std::string ToNativePath(std::wstring_view path) { return Narrowed(CP_UTF8, path).value_or(std::string()); }
SystemPath FromUtf8Path(std::string_view path) { return ToSystemPath(FromNativePath(path)); }
std::string ToUtf8Path(const SystemPath& path) { return ToNativePath(path); }

}  // namespace zrml::platform
