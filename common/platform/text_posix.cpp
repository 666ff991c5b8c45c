#include <algorithm>
#include <array>

#include "common/platform/platform.h"
#include "common/utf8.h"

namespace zrml::platform {
namespace {

constexpr char32_t kEscapedByte = 0xDC00;  // plus the byte: a byte of a path that is not UTF-8

// Windows-1252 between 0x80 and 0x9F; its five unused codes map to the C1 controls of the same code.
constexpr std::array<wchar_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

wchar_t FromWindows1252(unsigned char c) {
  return c >= 0x80 && c < 0xA0 ? kWindows1252[c - 0x80u] : static_cast<wchar_t>(c);
}

}  // namespace

std::wstring FromCodePage(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (std::string_view rest = text; !rest.empty();) {
    const auto [c, length] = DecodeUtf8(rest);
    if (length == 0) {
      wide.clear();
      for (const char narrow : text) wide.push_back(FromWindows1252(static_cast<unsigned char>(narrow)));
      return wide;
    }
    wide.push_back(static_cast<wchar_t>(c));
    rest.remove_prefix(length);
  }
  return wide;
}

std::optional<std::string> ToCodePage(std::wstring_view text) {
  std::string narrow;
  for (const wchar_t c : text) {
    if (!AppendUtf8(static_cast<char32_t>(c), narrow)) return std::nullopt;
  }
  return narrow;
}

std::wstring FromNativePath(std::string_view path) {
  std::wstring wide;
  while (!path.empty()) {
    const auto [c, length] = DecodeUtf8(path);
    const char32_t escaped = kEscapedByte + static_cast<unsigned char>(path.front());
    wide.push_back(static_cast<wchar_t>(length == 0 ? escaped : c));
    path.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return wide;
}

std::string ToNativePath(std::wstring_view path) {
  std::string native(path.size(), '\0');
  const auto isAscii = [](wchar_t c) { return static_cast<char32_t>(c) < 0x80; };
  const auto rest = std::find_if_not(path.begin(), path.end(), isAscii);
  std::transform(path.begin(), rest, native.begin(), [](wchar_t c) { return static_cast<char>(c); });
  native.resize(static_cast<std::size_t>(rest - path.begin()));
  for (const wchar_t wide : path.substr(native.size())) {
    const auto c = static_cast<char32_t>(wide);
    if (isAscii(wide)) {
      native.push_back(static_cast<char>(c));
    } else if (c >= kEscapedByte + 0x80 && c <= kEscapedByte + 0xFF) {
      native.push_back(static_cast<char>(c - kEscapedByte));
    } else if (!AppendUtf8(c, native)) {
      native.push_back('?');
    }
  }
  return native;
}

SystemPath FromUtf8Path(std::string_view path) {
  return path.find('\0') == std::string_view::npos ? SystemPath(path) : SystemPath();
}

std::string ToUtf8Path(const SystemPath& path) { return path; }

}  // namespace zrml::platform
