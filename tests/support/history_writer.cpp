#include "tests/support/history_writer.h"

#include <numeric>

namespace zrml {

namespace format = masslynx::history_format;

HistoryFunctionNumbers NumbersInOrder() {
  HistoryFunctionNumbers numbers;
  std::iota(numbers.begin(), numbers.end(), std::uint16_t{1});
  return numbers;
}

FileBytes WriteHistory(const std::vector<HistoryStep>& steps, const HistoryFunctionNumbers& functionNumbers) {
  ByteWriter writer;
  writer.UnusedUpTo(format::kFunctionNumbers);
  for (const std::uint16_t number : functionNumbers) writer.U16(number);
  writer.UnusedUpTo(format::kHeaderSize);
  for (const HistoryStep& step : steps) {
    const std::size_t entry = writer.Size();
    writer.U16(step.processNumber).U16(step.derivedFrom).U16(step.rawFunctionNumber);
    writer.UnusedUpTo(entry + format::kProcessCode).U16(step.processCode);
    writer.UnusedUpTo(entry + format::kEntrySize);
  }
  return writer.Take();
}

}  // namespace zrml
