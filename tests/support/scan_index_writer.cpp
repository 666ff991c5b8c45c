#include "tests/support/scan_index_writer.h"

namespace zrml {
namespace {

namespace format = masslynx::scan_index_format;

std::uint32_t PackedWord(const ScanIndexRecord& record) {
  std::uint32_t word = record.pointCount & format::kPointCountMask;
  word |= (record.segment & format::kSegmentMask) << format::kSegmentShift;
  if (record.centroidState != CentroidState::kByFormat) word |= format::kCentroidStateGiven;
  if (record.centroidState == CentroidState::kProfile) word |= format::kProfile;
  if (record.preCalibrated) word |= format::kPreCalibrated;
  return record.packedWord.value_or(word);
}

}  // namespace

FileBytes WriteScanIndex(const std::vector<ScanIndexRecord>& records, std::size_t recordSize) {
  ByteWriter writer;
  for (const ScanIndexRecord& record : records) {
    const std::size_t start = writer.Size();
    writer.U32(record.dataOffset).U32(PackedWord(record));
    writer.F32(record.totalIntensity).F32(record.retentionTime);
    writer.UnusedUpTo(start + recordSize);
  }
  return writer.Take();
}

}  // namespace zrml
