#include "masslynx/scandata/omitted_offsets.h"

#include <array>

#include "common/bytes.h"
#include "masslynx/scandata/scan_index_format.h"

namespace zrml::masslynx {

std::size_t OmittedOffsets::EndOf(std::span<const ScanIndexEntry> entries, std::size_t place) const {
  const auto isOmitted = [&](std::size_t of) {
    std::array<std::byte, sizeof(std::uint32_t)> offset = {};
    const std::uint64_t at = std::uint64_t{of} * recordSize + scan_index_format::kDataOffset;
    return index.ReadAt(at, offset) == offset.size() && LoadU32(offset.data()) == 0;
  };
  std::size_t end = place + 1;
  while (end < entries.size() && isOmitted(end)) ++end;
  return end;
}

bool OmittedOffsets::IsShort(std::span<const ScanIndexEntry> entries, std::size_t end) const {
  const ScanIndexEntry& last = entries[end - 1];
  const std::uint64_t begin = end < entries.size() ? entries[end].DataOffset() : dataSize;
  return !last.HasLostOffset() && last.DataOffset() + unit.BytesOf(last.pointCount) < begin;
}

Places OmittedOffsets::Lose(std::span<ScanIndexEntry> entries, const Places& doubtful) const {
  // In a sound file, however many scans are empty, the index need not be read again.
  std::size_t end = 1;
  while (end <= entries.size() && !IsShort(entries, end)) ++end;
  if (end > entries.size()) return {};
  Places lost;
  end = 0;
  for (const std::size_t place : doubtful) {
    if (place < end) continue;  // in the scans before
    end = EndOf(entries, place);
    if (!IsShort(entries, end)) continue;
    for (std::size_t behind = place + 1; behind < end; ++behind) {
      if (entries[behind].pointCount == 0 || entries[behind].HasLostOffset()) continue;
      entries[behind].SetDataOffset(ScanIndexEntry::kLostOffset);
      lost.push_back(behind);
    }
  }
  return lost;
}

}  // namespace zrml::masslynx
