// Sample-level traces: "_ANALOGS.INF" and "_ANALOGS.DAT", or "_CHROMS.INF" and "_CHRO001.DAT" and so on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "masslynx/scandata/traces_format.h"
#include "tests/support/byte_writer.h"

namespace zrml {

/// One record per name. A name of more than 81 bytes is cut, so it has no NUL.
FileBytes WriteAnalogsInf(const std::vector<std::string>& names);

struct AnalogRecord {
  float time = 0;
  std::vector<std::uint16_t> words;  ///< one per trace; see PackIntensityWord()
};

FileBytes WriteAnalogsDat(const std::vector<AnalogRecord>& records);

/// The header of "_CHROMS.INF" and of "_CHRO%03ld.DAT".
struct TraceHeader {
  std::uint16_t headerSize = masslynx::traces_format::kHeaderSize;
  std::uint16_t second = masslynx::traces_format::kHeaderSecond;
  std::uint16_t recordSize = 0;
  std::uint16_t fourth = masslynx::traces_format::kHeaderFourth;
};

FileBytes WriteChromsInf(const std::vector<std::string>& names,
                         const TraceHeader& header = {
                             .recordSize = masslynx::traces_format::kNameRecordSize});

struct TracePoint {
  float time = 0;
  float value = 0;
};

FileBytes WriteChroDat(const std::vector<TracePoint>& points,
                       const TraceHeader& header = {.recordSize = masslynx::traces_format::kPointSize});

}  // namespace zrml
