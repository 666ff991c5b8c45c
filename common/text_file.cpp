#include "common/text_file.h"

#include <algorithm>
#include <vector>

namespace zrml {
namespace {

constexpr wchar_t kCtrlZ = 0x1a;

}  // namespace

std::wstring ReadText(const platform::File& file, std::uint64_t maxBytes) {
  std::vector<std::byte> block(static_cast<std::size_t>(std::min<std::uint64_t>(maxBytes, 1 << 16)));
  std::wstring text;
  std::uint64_t offset = 0;
  while (offset < maxBytes) {
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), maxBytes - offset));
    const std::size_t count = file.ReadAt(offset, std::span(block).first(wanted));
    for (std::size_t i = 0; i < count; ++i) {
      const auto c = static_cast<wchar_t>(std::to_integer<unsigned char>(block[i]));
      if (c == kCtrlZ) return text;
      if (c == L'\n' && text.ends_with(L'\r')) text.pop_back();
      text.push_back(c);
    }
    if (count < wanted) break;
    offset += count;
  }
  return text;
}

bool LineReader::Next(std::wstring_view& piece) {
  if (rest_.empty()) {
    metEnd_ = true;
    return false;
  }
  const std::wstring_view window = rest_.substr(0, limit_);
  const std::size_t lineFeed = window.find(L'\n');
  const std::size_t length = lineFeed == std::wstring_view::npos ? window.size() : lineFeed + 1;
  metEnd_ = lineFeed == std::wstring_view::npos && length < limit_;
  const std::wstring_view whole = rest_.substr(0, length);
  piece = whole.substr(0, whole.find(L'\0'));
  rest_.remove_prefix(length);
  return true;
}

}  // namespace zrml
