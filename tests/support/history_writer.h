// "_HISTORY.INF".
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "masslynx/history_format.h"
#include "tests/support/byte_writer.h"

namespace zrml {

struct HistoryStep {
  std::uint16_t processNumber = 1;
  std::uint16_t derivedFrom = 0;  ///< a process number; 0: a raw function
  std::uint16_t rawFunctionNumber = 1;
  std::uint16_t processCode = 0;
};

using HistoryFunctionNumbers = std::array<std::uint16_t, masslynx::history_format::kFunctionNumberCount>;

/// Every raw function at the position of its number: 1, 2, 3 ...
HistoryFunctionNumbers NumbersInOrder();

FileBytes WriteHistory(const std::vector<HistoryStep>& steps,
                       const HistoryFunctionNumbers& functionNumbers = NumbersInOrder());

}  // namespace zrml
