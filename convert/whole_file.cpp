#include "convert/whole_file.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "common/bytes.h"
#include "convert/deflate.h"
#include "convert/parquet/table_file.h"

namespace zrml::convert {
namespace {

using StoredBytes = std::vector<std::byte>;

constexpr std::size_t kLongestEnding = 64;
constexpr std::size_t kLongestStream = 1u << 24;  // far beyond the size of compressed pieces
constexpr std::array kStreamMark = {std::byte{0x1F}, std::byte{0x8B}, std::byte{8}};
constexpr std::size_t kSizeField = 4;  // the last bytes of a stream: how long it is without compression

StoredBytes EndOf(const platform::SystemPath& path, std::size_t most) {
  const platform::File file = platform::File::OpenSystemPath(path);
  const std::uint64_t size = file.Size();
  StoredBytes end(static_cast<std::size_t>(std::min<std::uint64_t>(size, most)));
  end.resize(file.ReadAt(size - end.size(), end));
  return end;
}

// The last stream, uncompressed. The mark may also occur inside a stream.
std::optional<StoredBytes> LastStream(const StoredBytes& end) {
  if (end.size() < kSizeField) return std::nullopt;
  const std::span<const std::byte> bytes(end);
  const auto size = LoadU32(bytes.last(kSizeField).data());
  if (size > kLongestStream) return std::nullopt;
  auto behind = end.end();
  for (;;) {
    const auto mark = std::find_end(end.begin(), behind, kStreamMark.begin(), kStreamMark.end());
    if (mark == behind) return std::nullopt;
    if (auto inflated = InflateGzip(bytes.subspan(static_cast<std::size_t>(mark - end.begin())), size))
      return inflated;
    behind = mark + 1;
  }
}

bool EndsAs(Format format, std::string_view text) {
  switch (format) {
    case Format::kMgf:
      return text.ends_with("\nEND IONS\n\n");
    case Format::kTsv:
      return text.ends_with('\n');
    case Format::kParquet:
      return text.ends_with(parquet::TableFile::kMark);
    case Format::kMzml:
      break;
  }
  return text.ends_with("</indexedmzML>\n") || text.ends_with("</mzML>\n");
}

}  // namespace

Ending EndingOf(const platform::SystemPath& path, Format format, bool isGzipped) {
  std::optional<StoredBytes> end = EndOf(path, isGzipped ? kLongestStream : kLongestEnding);
  if (isGzipped) end = LastStream(*end);
  if (!end) return Ending::kCut;
  if (end->empty() && format == Format::kMgf) return Ending::kEmpty;
  const std::string_view text = {reinterpret_cast<const char*>(end->data()), end->size()};
  return EndsAs(format, text) ? Ending::kWhole : Ending::kCut;
}

}  // namespace zrml::convert
