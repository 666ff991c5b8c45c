#include "masslynx/scandata/scan_statistics.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "common/bytes.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/scan_statistics_format.h"

namespace zrml {
namespace {

namespace format = scan_statistics_format;

struct Header {
  std::uint16_t recordsOffset = 0;
  std::uint16_t version = 0;
  std::uint16_t recordSize = 0;
  std::uint16_t descriptorCount = 0;
};

Header ReadHeader(Bytes bytes) {
  return {ByteCursor(bytes, format::kRecordsOffset).U16(), ByteCursor(bytes, format::kVersion).U16(),
          ByteCursor(bytes, format::kRecordSize).U16(), ByteCursor(bytes, format::kDescriptorCount).U16()};
}

// Where the items stand in a record; 0 for an absent item.
struct ItemOffsets {
  std::uint16_t auxValue = 0;
  std::uint16_t precursorMass = 0;
  std::uint16_t precursorFlags = 0;
  std::uint16_t word80 = 0;
  std::uint16_t temperatureValid = 0;
  std::uint16_t temperature = 0;
  std::uint16_t temperatureCoefficient = 0;

  bool HasTemperature() const {
    return temperatureValid != 0 && temperature != 0 && temperatureCoefficient != 0;
  }
};

std::uint16_t* OffsetOf(std::uint16_t itemCode, ItemOffsets& offsets) {
  switch (itemCode) {
    case format::kAuxValue:
      return &offsets.auxValue;
    case format::kPrecursorMass:
      return &offsets.precursorMass;
    case format::kPrecursorFlags:
      return &offsets.precursorFlags;
    case format::kWord80:
      return &offsets.word80;
    case format::kTemperatureValid:
      return &offsets.temperatureValid;
    case format::kTemperature:
      return &offsets.temperature;
    case format::kTemperatureCoefficient:
      return &offsets.temperatureCoefficient;
    default:
      return nullptr;
  }
}

ItemOffsets ReadDescriptors(Bytes bytes, std::uint16_t count) {
  ItemOffsets offsets;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = format::kDescriptors + i * format::kDescriptorSize;
    ByteCursor offset(bytes, at + format::kItemOffset);
    const std::uint16_t itemOffset = offset.U16();
    if (!offset.Ok()) break;
    std::uint16_t* const target = OffsetOf(ByteCursor(bytes, at + format::kItemCode).U16(), offsets);
    if (target != nullptr) *target = itemOffset;
  }
  return offsets;
}

void FillEntry(Bytes record, const ItemOffsets& items, ScanIndexEntry& entry) {
  const auto at = [&](std::uint16_t offset) { return ByteCursor(record, offset); };
  if (items.auxValue != 0) entry.auxValue = at(items.auxValue).F32();
  // Deliberate: without their descriptors these three come from the record's first bytes.
  entry.precursorMass = at(items.precursorMass).F32();
  entry.precursorFlags = at(items.precursorFlags).U16();
  entry.item80Word = at(items.word80).U16();
  if (items.HasTemperature()) {
    entry.temperatureValid = at(items.temperatureValid).I8() > 0;
    entry.temperature = at(items.temperature).F32();
    entry.temperatureCoefficient = at(items.temperatureCoefficient).F32();
  }
}

bool ConvertsAlike(const ScanIndexEntry& a, const ScanIndexEntry& b) {
  return a.preCalibrated == b.preCalibrated && a.temperatureValid == b.temperatureValid &&
         a.temperature == b.temperature && a.temperatureCoefficient == b.temperatureCoefficient;
}

// The file's header and descriptors, as far as the file has them.
std::vector<std::byte> ReadDescription(const platform::File& file) {
  std::array<std::byte, format::kHeaderSize> start{};
  if (file.ReadAt(0, start) != start.size()) return {};
  const std::uint64_t end =
      format::kDescriptors + std::uint64_t{ReadHeader(start).descriptorCount} * format::kDescriptorSize;
  std::vector<std::byte> bytes(static_cast<std::size_t>(std::min(file.Size(), end)));
  bytes.resize(file.ReadAt(0, bytes));
  return bytes;
}

// Calls `visit(i, record)` for each of `count` records, of which some at the file's end may be short or
// empty. Few of them are in memory at a time.
template <class Visit>
void ForEachRecord(const platform::File& file, const Header& header, std::size_t count, Visit visit) {
  constexpr std::size_t kBlock = std::size_t{1} << 18;
  const std::size_t size = header.recordSize;
  const std::size_t atOnce = size == 0 ? count : std::max<std::size_t>(1, kBlock / size);
  std::vector<std::byte> block(std::min(atOnce, count) * size);
  for (std::size_t first = 0; first < count; first += atOnce) {
    const std::size_t records = std::min(atOnce, count - first);
    const std::uint64_t at = header.recordsOffset + std::uint64_t{first} * size;
    const Bytes read(block.data(), file.ReadAt(at, std::span(block).first(records * size)));
    for (std::size_t i = 0; i < records; ++i) {
      const std::size_t start = std::min(i * size, read.size());
      visit(first + i, read.subspan(start, std::min(size, read.size() - start)));
    }
  }
}

}  // namespace

void LoadScanStatistics(const std::wstring& directory, FunctionRecord& function,
                        std::vector<ScanIndexEntry>& entries) {
  const platform::File file = OpenFunctionFile(directory, function, L"sts");
  const std::vector<std::byte> description = ReadDescription(file);
  const Header header = ReadHeader(description);
  if (header.version != format::kKnownVersion) return;
  const ItemOffsets items = ReadDescriptors(description, header.descriptorCount);
  bool alike = true;
  ForEachRecord(file, header, entries.size(), [&](std::size_t i, Bytes record) {
    FillEntry(record, items, entries[i]);
    alike = alike && (i == 0 || ConvertsAlike(entries[i - 1], entries[i]));
  });
  function.calibrationConstant = alike;
}

}  // namespace zrml
