#include "common/text_file.h"

#include <algorithm>
#include <array>
#include <span>

namespace zrml {
namespace {

constexpr wchar_t kCtrlZ = 0x1a;

// Appends characters up to a Ctrl-Z, which is told.
bool Append(std::span<const std::byte> bytes, std::wstring& text) {
  std::size_t length = text.size();
  text.resize(length + bytes.size());
  wchar_t* const out = text.data();
  bool metEnd = false;
  for (const std::byte byte : bytes) {
    const auto c = static_cast<wchar_t>(std::to_integer<unsigned char>(byte));
    metEnd = c == kCtrlZ;
    if (metEnd) break;
    if (c == L'\n' && length > 0 && out[length - 1] == L'\r') --length;
    out[length++] = c;
  }
  text.resize(length);
  return metEnd;
}

}  // namespace

std::wstring ReadText(const platform::File& file, std::uint64_t maxBytes) {
  constexpr std::uint64_t kBlock = 1 << 16;
  std::wstring text;
  text.reserve(static_cast<std::size_t>(std::min(maxBytes, file.Size())));
  std::array<std::byte, kBlock> block;
  for (std::uint64_t offset = 0; offset < maxBytes;) {
    const auto wanted = static_cast<std::size_t>(std::min(kBlock, maxBytes - offset));
    const std::size_t count = file.ReadAt(offset, std::span(block).first(wanted));
    if (Append(std::span(block).first(count), text) || count < wanted) break;
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
