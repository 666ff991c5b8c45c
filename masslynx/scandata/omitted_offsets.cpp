#include "masslynx/scandata/omitted_offsets.h"

#include "common/bytes.h"
#include "masslynx/scandata/scan_index_format.h"

namespace zrml::masslynx {

bool OmittedOffsets::IsOmitted(std::size_t place) {
  constexpr std::size_t kRecordsAtOnce = 4096;
  if (place < blockBegin_ || (place - blockBegin_ + 1) * recordSize_ > blockSize_) {
    block_.resize(kRecordsAtOnce * recordSize_);
    blockBegin_ = place;
    blockSize_ = index_.ReadAt(std::uint64_t{place} * recordSize_, block_);
    if (blockSize_ < recordSize_) return false;
  }
  const std::size_t at = (place - blockBegin_) * recordSize_;
  return LoadU32(block_.data() + at + scan_index_format::kDataOffset) == 0;
}

std::size_t OmittedOffsets::EndOf(std::span<const ScanIndexEntry> entries, std::size_t place) {
  std::size_t end = place + 1;
  while (end < entries.size() && IsOmitted(end)) ++end;
  return end;
}

std::uint64_t OmittedOffsets::BytesBehind(std::span<const ScanIndexEntry> entries, std::size_t end) const {
  const ScanIndexEntry& last = entries[end - 1];
  if (last.HasLostOffset()) return 0;
  const std::uint64_t reached = last.DataOffset() + unit_.BytesOf(last.pointCount);
  const std::uint64_t begin = end < entries.size() ? entries[end].DataOffset() : dataSize_;
  return begin > reached ? begin - reached : 0;
}

bool OmittedOffsets::IsShort(std::span<const ScanIndexEntry> entries, std::size_t end) const {
  return BytesBehind(entries, end) >= unit_.bytes;
}

bool OmittedOffsets::LeavesBytes(std::span<const ScanIndexEntry> entries, std::size_t place) const {
  return BytesBehind(entries, place + 1) > 0;
}

Places OmittedOffsets::Lose(std::span<ScanIndexEntry> entries, const Places& doubtful) {
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
