// "_HISTORY.INF": the processed functions. A header, then one entry per processing step. Little-endian.
// docs/history.md
#pragma once

#include <cstddef>

namespace zrml::masslynx::history_format {

// Header.
inline constexpr std::size_t kFunctionNumbers = 4;  // 32 x u16: raw function number of each position
inline constexpr std::size_t kFunctionNumberCount = 32;
inline constexpr std::size_t kHeaderSize = 132;

// Offsets in an entry.
inline constexpr std::size_t kProcessNumber = 0;      // u16: in the names of its files, "_PROC%03d."
inline constexpr std::size_t kDerivedFrom = 2;        // u16: process number of its source; 0: a raw function
inline constexpr std::size_t kRawFunctionNumber = 4;  // u16
inline constexpr std::size_t kProcessCode = 20;       // u16
inline constexpr std::size_t kEntrySize = 123;

}  // namespace zrml::masslynx::history_format
