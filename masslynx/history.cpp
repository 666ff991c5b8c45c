#include "masslynx/history.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "common/bytes.h"
#include "masslynx/history_format.h"
#include "masslynx/raw_directory.h"

namespace zrml {
namespace {

namespace format = history_format;

// Steps that the chains of all functions may have together. Real files have a handful; a damaged one in which
// each step is derived from the one before it would have the square of its size.
constexpr std::size_t kMostSteps = std::size_t{1} << 20;

// Entries that may name the files of an earlier one. Each is a function of its own, so a damaged file could
// ask for the square of its size.
constexpr std::size_t kMostRepeats = 8;

struct Entry {
  std::uint16_t processNumber = 0;
  std::uint16_t derivedFrom = 0;
  std::uint16_t rawFunctionNumber = 0;
  std::uint16_t processCode = 0;
};

struct History {
  std::array<std::uint16_t, format::kFunctionNumberCount> functionNumbers{};
  std::vector<Entry> entries;
  std::unordered_map<std::uint16_t, std::size_t> positions;  // first entry of each process number
};

History ReadHistory(Bytes bytes) {
  History history;
  ByteCursor numbers(bytes, format::kFunctionNumbers);
  for (std::uint16_t& number : history.functionNumbers) number = numbers.U16();
  for (std::size_t at = format::kHeaderSize; bytes.size() - at >= format::kEntrySize;
       at += format::kEntrySize) {
    const Bytes entry = bytes.subspan(at, format::kEntrySize);
    history.entries.push_back(
        {ByteCursor(entry, format::kProcessNumber).U16(), ByteCursor(entry, format::kDerivedFrom).U16(),
         ByteCursor(entry, format::kRawFunctionNumber).U16(), ByteCursor(entry, format::kProcessCode).U16()});
    history.positions.emplace(history.entries.back().processNumber, history.entries.size() - 1);
  }
  return history;
}

// The entries from `entry` back to the one derived from a raw function. A chain that loops or points nowhere
// ends there.
std::vector<const Entry*> Chain(const History& history, const Entry& entry) {
  std::vector<const Entry*> chain = {&entry};
  std::unordered_set<std::uint16_t> seen = {entry.processNumber};
  while (chain.back()->derivedFrom != 0 && seen.insert(chain.back()->derivedFrom).second) {
    const auto source = history.positions.find(chain.back()->derivedFrom);
    if (source == history.positions.end()) break;
    chain.push_back(&history.entries[source->second]);
  }
  return chain;
}

// The record of a raw function: at the position that the header gives its number, else at the number itself.
const FunctionRecord* RawFunction(const History& history, std::uint16_t number,
                                  const std::vector<FunctionRecord>& rawFunctions) {
  const auto& numbers = history.functionNumbers;
  const auto place =
      static_cast<std::size_t>(std::find(numbers.begin(), numbers.end(), number) - numbers.begin());
  if (place < numbers.size() && place < rawFunctions.size()) return &rawFunctions[place];
  if (number >= 1 && number <= rawFunctions.size()) return &rawFunctions[number - 1u];
  return nullptr;
}

}  // namespace

void AppendProcessedFunctions(const std::wstring& directory, std::vector<FunctionRecord>& functions) {
  const platform::File file = OpenInDirectory(directory, L"_history.inf");
  if (!file.IsOpen() || file.Size() < format::kHeaderSize) return;
  std::vector<std::byte> bytes(static_cast<std::size_t>(file.Size()));
  bytes.resize(file.ReadAt(0, bytes));
  if (bytes.size() < format::kHeaderSize) return;

  const History history = ReadHistory(bytes);
  std::vector<FunctionRecord> processed;
  std::size_t steps = 0;
  std::size_t repeats = 0;
  for (const Entry& entry : history.entries) {
    const bool isRepeated = &entry != &history.entries[history.positions.at(entry.processNumber)];
    if (isRepeated && ++repeats > kMostRepeats) continue;
    if (!OpenInDirectory(directory, ProcessedFileName(entry.processNumber, L"DAT")).IsOpen()) continue;
    const std::vector<const Entry*> chain = Chain(history, entry);
    steps += chain.size();
    if (steps > kMostSteps) break;
    const FunctionRecord* const raw = RawFunction(history, chain.back()->rawFunctionNumber, functions);
    if (raw == nullptr || raw->typeCode == FunctionRecord::kNoFunction) continue;
    FunctionRecord& function = processed.emplace_back(*raw);
    function.number = entry.processNumber;
    function.processed = true;
    function.processChain.resize(chain.size());
    std::transform(chain.rbegin(), chain.rend(), function.processChain.begin(),
                   [](const Entry* step) { return step->processCode; });
  }
  std::move(processed.begin(), processed.end(), std::back_inserter(functions));
}

}  // namespace zrml
