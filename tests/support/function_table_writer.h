// "_FUNCTNS.INF".
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "masslynx/function_table_format.h"
#include "tests/support/byte_writer.h"

namespace zrml {

struct FunctionTableRecord {
  // The packed word, unless given as a whole. Values are cut to their bits.
  unsigned type = 18;    // TOF MS
  unsigned ionMode = 8;  // ES+
  unsigned dataFormat = 9;
  std::optional<std::uint16_t> packedWord = {};

  float scanTime = 1;  ///< seconds
  std::array<float, 3> keptTimes = {};
  std::uint8_t defaultScanValue = 0;
  std::uint8_t keptScanValue = 0;
  float setMass = 0;
  float keptSetValue = 0;
  std::array<std::uint32_t, masslynx::function_table_format::kChannels> channels = {};
  std::array<float, masslynx::function_table_format::kChannels> startMasses = {};
  std::array<float, masslynx::function_table_format::kChannels> endMasses = {};

  // Written for type 17 only, in place of the set mass and everything below it.
  float mtofLowMass = 0;
  float mtofHighMass = 0;
};

FileBytes WriteFunctionTable(const std::vector<FunctionTableRecord>& records);

}  // namespace zrml
