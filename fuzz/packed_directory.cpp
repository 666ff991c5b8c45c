#include "fuzz/packed_directory.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "common/text.h"
#include "masslynx/scandata/scan_index_format.h"

namespace zrml::fuzz {
namespace {

// Inputs refer to a file by its place here: add new names at the end.
constexpr std::array<std::string_view, 27> kNames = {
    "_HEADER.TXT",  "_FUNCTNS.INF", "_EXTERN.INF",  "_HISTORY.INF",  //
    "_FUNC001.IDX", "_FUNC001.DAT", "_FUNC001.STS", "_FUNC001.CDT",  //
    "_FUNC002.IDX", "_FUNC002.DAT", "_FUNC002.STS", "_FUNC002.CDT",  //
    "_FUNC003.IDX", "_FUNC003.DAT", "_FUNC003.STS", "_FUNC003.CDT",  //
    "_PROC001.IDX", "_PROC001.DAT", "_PROC001.STS",                  //
    "_PROC002.IDX", "_PROC002.DAT", "_PROC002.STS",                  //
    "_ANALOGS.INF", "_ANALOGS.DAT", "_CHROMS.INF",  "_CHRO001.DAT",  //
    "_CHRO002.DAT",
};

}  // namespace

Files UnpackDirectory(Input input) {
  Files files;
  while (!input.IsEmpty()) {
    const std::size_t place = input.Value<std::uint8_t>() % kNames.size();
    const Bytes bytes = input.Take(input.Value<std::uint16_t>());
    std::vector<std::byte>& file = files[Widen(kNames[place])];
    file.insert(file.end(), bytes.begin(), bytes.end());
  }
  return files;
}

void CutPointCounts(Files& files) {
  namespace format = masslynx::scan_index_format;
  constexpr std::byte kKeptOfSecondByte{0x0F};
  constexpr std::byte kKeptOfThirdByte{0xC0};  // the segment's bits
  for (auto& [name, bytes] : files) {
    if (!name.ends_with(L".IDX")) continue;
    for (const std::size_t size : {format::kShortRecordSize, format::kLongRecordSize}) {
      if (bytes.size() % size != 0) continue;
      for (std::size_t at = format::kPackedWord; at < bytes.size(); at += size) {
        bytes[at + 1] &= kKeptOfSecondByte;
        bytes[at + 2] &= kKeptOfThirdByte;
      }
    }
  }
}

std::vector<std::byte> PackDirectory(const std::map<std::string, std::vector<std::byte>>& files) {
  constexpr std::size_t kLongest = std::numeric_limits<std::uint16_t>::max();
  std::vector<std::byte> packed;
  for (const auto& [name, bytes] : files) {
    const auto place = std::find(kNames.begin(), kNames.end(), name);
    if (place == kNames.end()) continue;
    std::size_t at = 0;
    do {
      const std::size_t count = std::min(kLongest, bytes.size() - at);
      packed.push_back(static_cast<std::byte>(place - kNames.begin()));
      packed.push_back(static_cast<std::byte>(count & 0xFF));
      packed.push_back(static_cast<std::byte>(count >> 8));
      const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
      packed.insert(packed.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
      at += count;
    } while (at < bytes.size());
  }
  return packed;
}

}  // namespace zrml::fuzz
