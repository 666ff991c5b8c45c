// Scan statistics ("sts") files.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "masslynx/scandata/scan_statistics_format.h"
#include "tests/support/byte_writer.h"

namespace zrml {

/// The items of one scan.
struct ScanStatisticsRecord {
  std::uint32_t firstBytes = 0;  ///< the record's first four bytes, below every item of AllItems()
  float auxValue = 0;
  float precursorMass = 0;
  std::uint16_t precursorFlags = 0;
  std::uint16_t word80 = 0;
  std::int8_t temperatureValid = 0;
  float temperature = 0;
  float temperatureCoefficient = 0;
};

/// A descriptor: the place of an item in each record. Codes without an item are allowed.
struct StatisticsItem {
  std::uint16_t code = 0;
  std::uint16_t offset = 0;
};

/// The seven items that are read, from offset 4 on, without overlap.
std::vector<StatisticsItem> AllItems();

/// The descriptors of AllItems() without those of the codes given.
std::vector<StatisticsItem> AllItemsBut(const std::vector<std::uint16_t>& codes);

struct StatisticsLayout {
  std::vector<StatisticsItem> items = AllItems();
  std::uint16_t version = masslynx::scan_statistics_format::kKnownVersion;
  // Computed from `items` unless given.
  std::optional<std::uint16_t> headerSize = {};
  std::optional<std::uint16_t> recordSize = {};
  std::optional<std::uint16_t> itemCount = {};
};

/// Items that reach beyond the record size are left out of the records.
FileBytes WriteScanStatistics(const std::vector<ScanStatisticsRecord>& records,
                              const StatisticsLayout& layout = {});

}  // namespace zrml
