// Stored numbers of the sample-level trace files. docs/traces.md
#pragma once

#include <cstddef>
#include <cstdint>

namespace zrml::masslynx::traces_format {

// "_ANALOGS.INF" has only name records; "_CHROMS.INF" has a header before them.
inline constexpr std::uint16_t kNameRecordSize = 85;
inline constexpr std::size_t kName = 4;
inline constexpr std::size_t kNameSize = 81;  // including its NUL, if there is one

// The header of "_CHROMS.INF" and of each "_CHRO001.DAT": u16 offset of the first record, then three
// constants.
inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::uint16_t kHeaderSecond = 1;
inline constexpr std::uint16_t kHeaderFourth = 2;

// A point of "_CHRO001.DAT": f32 time, f32 value.
inline constexpr std::uint16_t kPointSize = 8;

// A record of "_ANALOGS.DAT": f32 time, then a word for each trace.
inline constexpr std::size_t kAnalogTimeSize = 4;
inline constexpr std::size_t kAnalogWordSize = 2;

}  // namespace zrml::masslynx::traces_format
