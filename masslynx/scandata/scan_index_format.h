// Scan index ("idx") files: an array of records, no header, in one of two sizes. Little-endian.
// docs/scan-index.md
#pragma once

#include <cstddef>
#include <cstdint>

namespace zrml::masslynx::scan_index_format {

inline constexpr std::size_t kShortRecordSize = 22;
inline constexpr std::size_t kLongRecordSize = 30;  // 8 unused bytes more

// Offsets in a record.
inline constexpr std::size_t kDataOffset = 0;      // u32
inline constexpr std::size_t kPackedWord = 4;      // u32, fields below
inline constexpr std::size_t kTotalIntensity = 8;  // f32
inline constexpr std::size_t kRetentionTime = 12;  // f32: minutes

// Fields of the packed word.
inline constexpr std::uint32_t kPointCountMask = 0x3FFFFF;  // bits 0-21
inline constexpr unsigned kSegmentShift = 22;               // bits 22-26
inline constexpr std::uint32_t kSegmentMask = 0x1F;
inline constexpr std::uint32_t kCentroidStateGiven = 1u << 27;
inline constexpr std::uint32_t kProfile = 1u << 28;  // valid when kCentroidStateGiven is set
inline constexpr std::uint32_t kPreCalibrated = 1u << 30;

}  // namespace zrml::masslynx::scan_index_format
