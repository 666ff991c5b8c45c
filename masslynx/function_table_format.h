// "_FUNCTNS.INF": one record per acquisition function, function 1 first, nothing else. Little-endian.
// docs/function-table.md
#pragma once

#include <cstddef>

namespace zrml::masslynx::function_table_format {

inline constexpr std::size_t kRecordSize = 416;
inline constexpr std::size_t kChannels = 32;

// Offsets in a record.
inline constexpr std::size_t kPackedWord = 0;         // u16: type, ionisation mode, data format
inline constexpr std::size_t kScanTime = 2;           // f32: seconds
inline constexpr std::size_t kKeptTimes = 6;          // 3 x f32, not used
inline constexpr std::size_t kDiscarded = 18;         // u32
inline constexpr std::size_t kDefaultScanValue = 22;  // u8, then one more byte
inline constexpr std::size_t kSetMass = 24;           // f32: precursor m/z of MS/MS functions
inline constexpr std::size_t kKeptSetValue = 28;      // f32
inline constexpr std::size_t kChannelList = 32;       // 32 x u32
inline constexpr std::size_t kStartMasses = 160;      // 32 x f32
inline constexpr std::size_t kEndMasses = 288;        // 32 x f32

// A magnetic time-of-flight record (type 17) has no lists; its mass range is two f32 in their place.
inline constexpr std::size_t kMtofLowMass = 70;   // f32
inline constexpr std::size_t kMtofHighMass = 74;  // f32

// Fields of the packed word.
inline constexpr unsigned kTypeBits = 5;    // from bit 0
inline constexpr unsigned kModeBits = 5;    // from bit 5
inline constexpr unsigned kFormatBits = 4;  // from bit 10

static_assert(kEndMasses + kChannels * 4 == kRecordSize);

}  // namespace zrml::masslynx::function_table_format
