#include "common/text_file.h"

#include <algorithm>
#include <array>
#include <span>

#include "common/text.h"

namespace zrml {
namespace {

constexpr char kCtrlZ = 0x1a;

// Appends characters up to a Ctrl-Z; says whether it met one.
bool Append(std::string_view bytes, std::string& text) {
  const std::size_t end = bytes.find(kCtrlZ);
  bytes = bytes.substr(0, end);
  for (std::size_t lineFeed; (lineFeed = bytes.find('\n')) != std::string_view::npos;) {
    text.append(bytes.substr(0, lineFeed));
    if (text.ends_with('\r')) text.pop_back();  // also one at the end of the block before
    text.push_back('\n');
    bytes.remove_prefix(lineFeed + 1);
  }
  text.append(bytes);
  return end != std::string_view::npos;
}

}  // namespace

std::string ReadTextBytes(const platform::File& file, std::uint64_t maxBytes) {
  constexpr std::uint64_t kBlock = 1 << 16;
  std::string text;
  text.reserve(static_cast<std::size_t>(std::min(maxBytes, file.Size())));
  std::array<char, kBlock> block;
  for (std::uint64_t offset = 0; offset < maxBytes;) {
    const auto wanted = static_cast<std::size_t>(std::min(kBlock, maxBytes - offset));
    const std::size_t count = file.ReadAt(offset, std::as_writable_bytes(std::span(block).first(wanted)));
    if (Append({block.data(), count}, text) || count < wanted) break;
    offset += count;
  }
  return text;
}

std::wstring ReadText(const platform::File& file, std::uint64_t maxBytes) {
  return FromBytes(ReadTextBytes(file, maxBytes));
}

}  // namespace zrml
