#include "tests/support/scan_statistics_writer.h"

#include <algorithm>
#include <array>

namespace zrml {
namespace {

namespace format = masslynx::scan_statistics_format;

struct ItemWriter {
  std::uint16_t code;
  void (*append)(const ScanStatisticsRecord& record, ByteWriter& writer);
};

using R = ScanStatisticsRecord;
constexpr std::array<ItemWriter, 7> kItemWriters = {{
    {format::kAuxValue, [](const R& r, ByteWriter& w) { w.F32(r.auxValue); }},
    {format::kPrecursorMass, [](const R& r, ByteWriter& w) { w.F32(r.precursorMass); }},
    {format::kPrecursorFlags, [](const R& r, ByteWriter& w) { w.U16(r.precursorFlags); }},
    {format::kWord80, [](const R& r, ByteWriter& w) { w.U16(r.word80); }},
    {format::kTemperatureValid, [](const R& r, ByteWriter& w) { w.I8(r.temperatureValid); }},
    {format::kTemperature, [](const R& r, ByteWriter& w) { w.F32(r.temperature); }},
    {format::kTemperatureCoefficient, [](const R& r, ByteWriter& w) { w.F32(r.temperatureCoefficient); }},
}};

FileBytes ItemBytes(std::uint16_t code, const ScanStatisticsRecord& record) {
  ByteWriter writer;
  for (const ItemWriter& item : kItemWriters) {
    if (item.code == code) item.append(record, writer);
  }
  return writer.Take();
}

std::uint16_t EndOfItems(const std::vector<StatisticsItem>& items) {
  std::size_t end = sizeof(ScanStatisticsRecord::firstBytes);
  for (const StatisticsItem& item : items) {
    end = std::max(end, item.offset + ItemBytes(item.code, {}).size());
  }
  return static_cast<std::uint16_t>(end);
}

FileBytes WriteRecord(const ScanStatisticsRecord& record, const std::vector<StatisticsItem>& items,
                      std::size_t size) {
  FileBytes bytes = ByteWriter().U32(record.firstBytes).UnusedUpTo(size).Take();
  bytes.resize(size);
  for (const StatisticsItem& item : items) {
    const FileBytes value = ItemBytes(item.code, record);
    if (item.offset + value.size() <= size) PatchBytes(bytes, item.offset, value);
  }
  return bytes;
}

}  // namespace

std::vector<StatisticsItem> AllItems() {
  return {{format::kAuxValue, 4},         {format::kPrecursorMass, 8}, {format::kPrecursorFlags, 12},
          {format::kWord80, 14},          {format::kTemperature, 16},  {format::kTemperatureCoefficient, 20},
          {format::kTemperatureValid, 24}};
}

std::vector<StatisticsItem> AllItemsBut(const std::vector<std::uint16_t>& codes) {
  std::vector<StatisticsItem> items = AllItems();
  std::erase_if(items, [&](const StatisticsItem& item) {
    return std::find(codes.begin(), codes.end(), item.code) != codes.end();
  });
  return items;
}

FileBytes WriteScanStatistics(const std::vector<ScanStatisticsRecord>& records,
                              const StatisticsLayout& layout) {
  const auto& items = layout.items;
  const std::size_t endOfHeader = format::kDescriptors + items.size() * format::kDescriptorSize;
  const std::uint16_t headerSize = layout.headerSize.value_or(static_cast<std::uint16_t>(endOfHeader));
  const std::uint16_t recordSize = layout.recordSize.value_or(EndOfItems(items));

  ByteWriter header;
  header.U16(headerSize).U16(layout.version).U16(recordSize);
  header.U16(layout.itemCount.value_or(static_cast<std::uint16_t>(items.size())));
  header.UnusedUpTo(format::kDescriptors);
  for (const StatisticsItem& item : items) {
    const std::size_t start = header.Size();
    header.U16(item.code).UnusedUpTo(start + format::kItemOffset).U16(item.offset);
    header.UnusedUpTo(start + format::kDescriptorSize);
  }

  // Records may overlap the header: a header size can be wrong on purpose.
  FileBytes bytes = header.UnusedUpTo(headerSize).Take();
  bytes.resize(std::max(bytes.size(), headerSize + records.size() * recordSize));
  for (std::size_t i = 0; i < records.size(); ++i) {
    PatchBytes(bytes, headerSize + i * recordSize, WriteRecord(records[i], items, recordSize));
  }
  return bytes;
}

}  // namespace zrml
