#include "tools/zrml/check/raw_functions.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <set>

#include "common/bytes.h"
#include "common/text.h"
#include "masslynx/function_table_format.h"
#include "masslynx/function_types.h"
#include "masslynx/history_format.h"
#include "tools/zrml/check/raw_file.h"

namespace zrml {
namespace {

constexpr std::uint64_t kMostFunctions = std::numeric_limits<std::uint16_t>::max();

bool HasData(const std::wstring& folder, const std::wstring& stem) {
  return RawFile(folder, stem + L".DAT").IsOpen();
}

void Number(RawFunction& function, int& listed) {
  function.number = listed + 1;
  if (function.isListed) ++listed;
}

std::vector<RawFunction> ReadTable(const std::wstring& folder) {
  namespace format = function_table_format;
  const RawFile table(folder, L"_FUNCTNS.INF");
  std::vector<RawFunction> functions;
  const std::uint64_t count = std::min(table.Size() / format::kRecordSize, kMostFunctions);
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto record = table.Read(i * format::kRecordSize, sizeof(std::uint16_t));
    const unsigned word = LoadU16(record.data() + format::kPackedWord);
    const unsigned shift = format::kTypeBits + format::kModeBits;
    RawFunction& function = functions.emplace_back();
    function.stem = L"_FUNC" + ZeroPadded(static_cast<int>(i) + 1, 3);
    function.dataFormat = static_cast<int>(word >> shift & ((1u << format::kFormatBits) - 1));
    function.isAbsorbance = (word & ((1u << format::kTypeBits) - 1)) == kDadType;
    function.isListed = !function.isAbsorbance && HasData(folder, function.stem);
  }
  return functions;
}

struct Step {
  std::uint16_t processNumber = 0;
  std::uint16_t derivedFrom = 0;  // 0: from a raw function
  std::uint16_t rawFunctionNumber = 0;
};

class History {
 public:
  explicit History(const std::wstring& folder) {
    namespace format = history_format;
    const RawFile file(folder, L"_HISTORY.INF");
    if (file.Size() < format::kHeaderSize) return;
    const auto header = file.Read(0, format::kHeaderSize);
    for (std::size_t i = 0; i < numbers_.size(); ++i)
      numbers_[i] = LoadU16(header.data() + format::kFunctionNumbers + i * sizeof numbers_[i]);
    const std::uint64_t count = (file.Size() - format::kHeaderSize) / format::kEntrySize;
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto entry = file.Read(format::kHeaderSize + i * format::kEntrySize, format::kEntrySize);
      const Step step = {LoadU16(entry.data() + format::kProcessNumber),
                         LoadU16(entry.data() + format::kDerivedFrom),
                         LoadU16(entry.data() + format::kRawFunctionNumber)};
      if (first_.emplace(step.processNumber, step).second) inOrder_.push_back(step);
    }
  }

  /// The first of each process number.
  const std::vector<Step>& Steps() const { return inOrder_; }

  /// The raw function that a step goes back to; null when there is none. A chain that loops or points nowhere
  /// ends there.
  const RawFunction* SourceOf(Step step, const std::vector<RawFunction>& raw) const {
    std::set<std::uint16_t> seen = {step.processNumber};
    while (step.derivedFrom != 0 && seen.insert(step.derivedFrom).second) {
      const auto before = first_.find(step.derivedFrom);
      if (before == first_.end()) break;
      step = before->second;
    }
    const std::uint16_t number = step.rawFunctionNumber;
    const auto place =
        static_cast<std::size_t>(std::find(numbers_.begin(), numbers_.end(), number) - numbers_.begin());
    if (place < numbers_.size() && place < raw.size()) return &raw[place];
    return number >= 1 && number <= raw.size() ? &raw[number - 1u] : nullptr;
  }

 private:
  std::array<std::uint16_t, history_format::kFunctionNumberCount> numbers_{};
  std::map<std::uint16_t, Step> first_;
  std::vector<Step> inOrder_;
};

}  // namespace

RawFunctions ReadRawFunctions(const std::wstring& folder) {
  RawFunctions result;
  result.functions = ReadTable(folder);
  for (RawFunction& function : result.functions) Number(function, result.listed);
  result.listedRaw = result.listed;
  const std::vector<RawFunction> raw = result.functions;
  const History history(folder);
  for (const Step& step : history.Steps()) {
    RawFunction function = {.stem = L"_PROC" + ZeroPadded(step.processNumber, 3), .isProcessed = true};
    if (!HasData(folder, function.stem)) continue;
    if (const RawFunction* const source = history.SourceOf(step, raw)) {
      function.isAbsorbance = source->isAbsorbance;
      function.isListed = !source->isAbsorbance;
      // The layout of points that an ion-mobility function keeps elsewhere says nothing of these.
      const bool isMobility = RawFile(folder, source->stem + L".CDT").IsThere();
      if (!isMobility) function.dataFormat = source->dataFormat;
    }
    Number(function, result.listed);
    result.functions.push_back(std::move(function));
  }
  return result;
}

}  // namespace zrml
