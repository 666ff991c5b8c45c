// Scan statistics ("sts") files: a header, item descriptors, one record per scan. Little-endian.
// docs/scan-statistics.md
#pragma once

#include <cstddef>
#include <cstdint>

namespace zrml::masslynx::scan_statistics_format {

// Header: four u16.
inline constexpr std::size_t kRecordsOffset = 0;    // where the first record begins
inline constexpr std::size_t kVersion = 2;          // only kKnownVersion is read
inline constexpr std::size_t kRecordSize = 4;       // bytes of one record
inline constexpr std::size_t kDescriptorCount = 6;  // items in a record
inline constexpr std::size_t kHeaderSize = 8;       // the part that the reader needs
inline constexpr std::uint16_t kKnownVersion = 1;

// Descriptors.
inline constexpr std::size_t kDescriptors = 32;  // offset of the first
inline constexpr std::size_t kDescriptorSize = 48;
inline constexpr std::size_t kItemCode = 0;    // u16
inline constexpr std::size_t kItemOffset = 4;  // u16: the item's place in a record; 0: absent

// Item codes.
enum Item : std::uint16_t {
  kAuxValue = 62,                 // f32
  kPrecursorMass = 77,            // f32
  kPrecursorFlags = 79,           // u16
  kWord80 = 80,                   // u16
  kTemperatureValid = 103,        // i8: above 0
  kTemperature = 104,             // f32: degrees
  kTemperatureCoefficient = 105,  // f32: parts per million per degree
};

inline constexpr std::uint16_t kPrecursorMassGiven = 1;  // bit of kPrecursorFlags

}  // namespace zrml::masslynx::scan_statistics_format
