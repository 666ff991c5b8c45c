#include "masslynx/history.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "common/bytes.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_types.h"
#include "masslynx/history_format.h"

namespace zrml::masslynx {
namespace {

namespace format = history_format;

// Steps that the chains of all functions may have together. Real files have a handful; a damaged one in which
// each step is derived from the one before it would have the square of its size.
constexpr std::size_t kMostSteps = std::size_t{1} << 20;

// Entries that may name the files of an earlier one. Each is a separate function, so a damaged file could
// need the square of its size.
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

// The record of a raw function: at the position given for its number in the header, else at the number
// itself.
const FunctionRecord* RawFunction(const History& history, std::uint16_t number,
                                  const std::vector<FunctionRecord>& rawFunctions) {
  const auto& numbers = history.functionNumbers;
  const auto place =
      static_cast<std::size_t>(std::find(numbers.begin(), numbers.end(), number) - numbers.begin());
  if (place < numbers.size() && place < rawFunctions.size()) return &rawFunctions[place];
  if (number >= 1 && number <= rawFunctions.size()) return &rawFunctions[number - 1u];
  return nullptr;
}

bool HasData(const platform::SystemPath& folder, std::uint16_t processNumber) {
  return OpenInDirectory(folder, ProcessedFileName(processNumber, L"DAT")).IsOpen();
}

class ProcessedFunctions {
 public:
  ProcessedFunctions(const platform::SystemPath& folder, const History& history,
                     const std::vector<FunctionRecord>& rawFunctions, Findings* findings)
      : folder_(folder), history_(history), rawFunctions_(rawFunctions), findings_(findings) {}

  std::vector<FunctionRecord> Make() {
    for (const Entry& entry : history_.entries) {
      if (steps_ > kMostSteps) break;
      const bool isRepeated = &entry != &history_.entries[history_.positions.at(entry.processNumber)];
      if (isRepeated) NoticeRepeated(entry);
      if (isRepeated && ++repeats_ > kMostRepeats) continue;
      if (HasData(folder_, entry.processNumber)) Add(entry);
    }
    return std::move(functions_);
  }

 private:
  void Add(const Entry& entry) {
    const std::vector<const Entry*> chain = Chain(history_, entry);
    steps_ += chain.size();
    if (steps_ > kMostSteps) return;
    const FunctionRecord* const raw = RawFunction(history_, chain.back()->rawFunctionNumber, rawFunctions_);
    if (raw == nullptr || raw->typeCode == FunctionRecord::kNoFunction) return NoticeUnrooted(entry);
    if (raw->typeCode == kDadType) return NoticeAbsorbance(entry);
    FunctionRecord& function = functions_.emplace_back(*raw);
    function.number = entry.processNumber;
    function.rawNumber = raw->number;
    function.processed = true;
    function.repeat = ++repeatsOf_[entry.processNumber];
    function.hasDataFile = true;
    function.processChain.resize(chain.size());
    std::transform(chain.rbegin(), chain.rend(), function.processChain.begin(),
                   [](const Entry* step) { return step->processCode; });
  }

  void NoticeUnrooted(const Entry& entry) const {
    if (findings_ == nullptr) return;
    findings_->Add({.code = FindingCode::kProcessUnrooted,
                    .file = platform::ToNativePath(ProcessedFileName(entry.processNumber, L"DAT")),
                    .problem = "goes back to no function, so it is not listed",
                    .subject = {.kind = FindingSubject::Kind::kFunction, .process = entry.processNumber}});
  }

  void NoticeAbsorbance(const Entry& entry) const {
    if (findings_ == nullptr) return;
    findings_->Add({.code = FindingCode::kAbsorbanceHidden,
                    .file = platform::ToNativePath(ProcessedFileName(entry.processNumber, L"DAT")),
                    .problem = "is processed absorbance, which is not shown",
                    .subject = {.kind = FindingSubject::Kind::kAbsorbance, .process = entry.processNumber}});
  }

  void NoticeRepeated(const Entry& entry) const {
    if (findings_ == nullptr || !HasData(folder_, entry.processNumber)) return;
    findings_->Add({.code = FindingCode::kProcessRepeated,
                    .file = platform::ToNativePath(kHistoryName),
                    .problem = "has process " + std::to_string(entry.processNumber) + " more than once",
                    .subject = {.kind = FindingSubject::Kind::kFunction, .process = entry.processNumber}});
  }

  const platform::SystemPath& folder_;
  const History& history_;
  const std::vector<FunctionRecord>& rawFunctions_;
  Findings* findings_;
  std::size_t steps_ = 0;
  std::size_t repeats_ = 0;
  std::unordered_map<std::uint16_t, int> repeatsOf_;
  std::vector<FunctionRecord> functions_;
};

void NoticeCut(std::uint64_t size, Findings* findings) {
  const bool isHeaderCut = size < format::kHeaderSize;
  const bool isSound = size == 0 || (!isHeaderCut && (size - format::kHeaderSize) % format::kEntrySize == 0);
  if (findings == nullptr || isSound) return;
  findings->Add({.code = FindingCode::kHistoryCut,
                 .file = platform::ToNativePath(kHistoryName),
                 .problem = isHeaderCut ? "ends in its header" : "does not end with a whole record"});
}

// No value without a file that has a header.
std::optional<History> OpenHistory(const platform::SystemPath& folder, Findings* findings,
                                   std::string* refusal) {
  const platform::File file = OpenInDirectory(folder, kHistoryName);
  const auto notice = [&] { NoticeRefusal(file, folder, kHistoryName, Spellings::kUpperLower, refusal); };
  if (!file.IsOpen()) {
    notice();
    NoticeUnreadable(folder, kHistoryName, findings);
    return std::nullopt;
  }
  const std::uint64_t size = file.Size();
  NoticeCut(size, findings);
  if (size < format::kHeaderSize) return std::nullopt;
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  bytes.resize(file.ReadAt(0, bytes));
  notice();
  if (bytes.size() < format::kHeaderSize) return std::nullopt;
  return ReadHistory(bytes);
}

}  // namespace

void AppendProcessedFunctions(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                              Findings* findings, std::string* refusal) {
  const std::optional<History> history = OpenHistory(folder, findings, refusal);
  if (!history) return;
  std::vector<FunctionRecord> processed = ProcessedFunctions(folder, *history, functions, findings).Make();
  std::move(processed.begin(), processed.end(), std::back_inserter(functions));
}

std::vector<std::uint16_t> ProcessNumbersWithData(const platform::SystemPath& folder) {
  std::vector<std::uint16_t> numbers;
  const std::optional<History> history = OpenHistory(folder, nullptr, nullptr);
  if (!history) return numbers;
  for (const auto& [number, position] : history->positions) {
    if (HasData(folder, number)) numbers.push_back(number);
  }
  return numbers;
}

}  // namespace zrml::masslynx
