#include "masslynx/scandata/scan_statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "common/bytes.h"
#include "masslynx/directory_files.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/scan_statistics_format.h"
#include "masslynx/scandata/zeroed_points.h"

namespace zrml::masslynx {
namespace {

namespace format = scan_statistics_format;

struct Header {
  std::uint16_t recordsOffset = 0;
  std::uint16_t version = 0;
  std::uint16_t recordSize = 0;
  std::uint16_t descriptorCount = 0;
};

Header ReadHeader(Bytes bytes) {
  return {ByteCursor(bytes, format::kRecordsOffset).U16(), ByteCursor(bytes, format::kVersion).U16(),
          ByteCursor(bytes, format::kRecordSize).U16(), ByteCursor(bytes, format::kDescriptorCount).U16()};
}

using ItemOffsets = StatisticsReader::ItemOffsets;

std::uint16_t* OffsetOf(std::uint16_t itemCode, ItemOffsets& offsets) {
  switch (itemCode) {
    case format::kAuxValue:
      return &offsets.auxValue;
    case format::kPrecursorMass:
      return &offsets.precursorMass;
    case format::kPrecursorFlags:
      return &offsets.precursorFlags;
    case format::kTemperatureValid:
      return &offsets.temperatureValid;
    case format::kTemperature:
      return &offsets.temperature;
    case format::kTemperatureCoefficient:
      return &offsets.temperatureCoefficient;
    default:
      return nullptr;
  }
}

ItemOffsets ReadDescriptors(Bytes bytes, std::uint16_t count) {
  ItemOffsets offsets;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = format::kDescriptors + i * format::kDescriptorSize;
    ByteCursor offset(bytes, at + format::kItemOffset);
    const std::uint16_t itemOffset = offset.U16();
    if (!offset.Ok()) break;
    std::uint16_t* const target = OffsetOf(ByteCursor(bytes, at + format::kItemCode).U16(), offsets);
    if (target != nullptr) *target = itemOffset;
  }
  const int size =
      std::max({offsets.auxValue + 4, offsets.precursorMass + 4, offsets.precursorFlags + 2,
                offsets.temperatureValid + 1, offsets.temperature + 4, offsets.temperatureCoefficient + 4});
  offsets.recordSize = static_cast<std::size_t>(size);
  return offsets;
}

// Of a record that has all its bytes.
class WholeItem {
 public:
  explicit WholeItem(const std::byte* item) : item_(item) {}

  float F32() const { return LoadF32(item_); }
  std::uint16_t U16() const { return LoadU16(item_); }
  std::int8_t I8() const { return std::to_integer<std::int8_t>(*item_); }

 private:
  const std::byte* item_;
};

// `at(offset)` reads the item there.
template <class At>
void FillEntry(At at, const ItemOffsets& items, ScanIndexEntry& entry) {
  if (items.auxValue != 0) entry.auxValue = at(items.auxValue).F32();
  // Deliberate: without their descriptors these two come from the record's first bytes.
  entry.precursorMass = at(items.precursorMass).F32();
  entry.precursorFlags = at(items.precursorFlags).U16();
  if (items.HasTemperature()) {
    entry.temperatureValid = at(items.temperatureValid).I8() > 0;
    entry.temperature = at(items.temperature).F32();
    entry.temperatureCoefficient = at(items.temperatureCoefficient).F32();
  }
}

// Whether a scan has what moves masses, or a precursor.
bool HasValues(const ScanIndexEntry& scan, bool hasPrecursors) {
  return scan.temperatureValid || (hasPrecursors && HasOwnPrecursor(scan));
}

// No instrument has precursors of less than one m/z or of more than this.
bool MayBePrecursor(const ScanIndexEntry& scan) {
  constexpr float kMost = 1e6F;
  return !HasOwnPrecursor(scan) || (scan.precursorMass >= 1 && scan.precursorMass <= kMost);
}

// Temperatures move masses by some hundred ppm.
bool MayBeCorrection(const ScanIndexEntry& scan, float reference) {
  constexpr float kMostPpm = 1e4F;
  return !scan.temperatureValid ||
         std::abs((scan.temperature - reference) * scan.temperatureCoefficient) <= kMostPpm;
}

bool ConvertsAlike(const ScanIndexEntry& a, const ScanIndexEntry& b) {
  return a.preCalibrated == b.preCalibrated && a.temperatureValid == b.temperatureValid &&
         a.temperature == b.temperature && a.temperatureCoefficient == b.temperatureCoefficient;
}

// The file's header and descriptors, as far as the file has them.
std::vector<std::byte> ReadDescription(const platform::File& file) {
  std::array<std::byte, format::kHeaderSize> start{};
  if (file.ReadAt(0, start) != start.size()) return {};
  const std::uint64_t end =
      format::kDescriptors + std::uint64_t{ReadHeader(start).descriptorCount} * format::kDescriptorSize;
  std::vector<std::byte> bytes(static_cast<std::size_t>(std::min(file.Size(), end)));
  bytes.resize(file.ReadAt(0, bytes));
  return bytes;
}

// Some records of a file, of which those at its end may be short or empty.
struct Block {
  std::size_t first;
  std::size_t count;
  std::size_t recordSize;
  Bytes bytes;

  Bytes Record(std::size_t i) const {
    const std::size_t start = std::min(i * recordSize, bytes.size());
    return bytes.subspan(start, std::min(recordSize, bytes.size() - start));
  }
};

// Calls `visit(block)` for the records from `first` up to `end`. Few of them are in memory at a time.
template <class Visit>
void ForEachBlock(const platform::File& file, const StatisticsReader::Place& place, std::size_t first,
                  std::size_t end, Visit visit) {
  constexpr std::size_t kBlock = std::size_t{1} << 16;
  const std::size_t size = place.recordSize;
  const std::size_t atOnce = size == 0 ? end : std::max<std::size_t>(1, kBlock / size);
  std::vector<std::byte> block(std::min(atOnce, end - first) * size);
  for (; first < end; first += atOnce) {
    const std::size_t records = std::min(atOnce, end - first);
    const std::uint64_t at = place.recordsOffset + std::uint64_t{first} * size;
    const Bytes read(block.data(), file.ReadAt(at, std::span(block).first(records * size)));
    visit(Block{first, records, size, read});
  }
}

void FillFrom(Bytes record, const ItemOffsets& items, ScanIndexEntry& entry) {
  if (record.size() >= items.recordSize) {
    FillEntry([&](std::uint16_t offset) { return WholeItem(record.data() + offset); }, items, entry);
  } else {
    FillEntry([&](std::uint16_t offset) { return ByteCursor(record, offset); }, items, entry);
  }
}

}  // namespace

StatisticsReader::StatisticsReader(const platform::SystemPath& folder, const FunctionRecord& function)
    : folder_(folder), function_(function), file_(OpenFunctionFile(folder, function, L"sts")) {
  const std::vector<std::byte> description = ReadDescription(file_);
  const Header header = ReadHeader(description);
  isKnown_ = header.version == format::kKnownVersion;
  place_ = {header.recordsOffset, header.recordSize};
  if (isKnown_) items_ = ReadDescriptors(description, header.descriptorCount);
  hasPrecursors_ = HasPrecursors(function) || (items_.precursorMass != 0 && items_.precursorFlags != 0);
}

bool StatisticsReader::MayBe(const ScanIndexEntry& scan) const {
  return (!hasPrecursors_ || MayBePrecursor(scan)) && MayBeCorrection(scan, function_.calTemperature);
}

void StatisticsReader::Fill(std::span<ScanIndexEntry> entries, std::size_t first) {
  if (!isKnown_) return;
  if (first == 0) {
    haveOneCalibration_ = arePossible_ = true;
    have_ = lack_ = 0;
  }
  const ItemOffsets items = items_;  // which no entry can change
  ForEachBlock(file_, place_, first, entries.size(), [&](const Block& block) {
    for (std::size_t i = 0; i < block.count; ++i) FillFrom(block.Record(i), items, entries[block.first + i]);
    LookAt(entries, block.first, block.count);
  });
}

// While they are in the cache.
void StatisticsReader::LookAt(std::span<const ScanIndexEntry> entries, std::size_t first, std::size_t count) {
  // Not members, which entries might share memory with.
  const bool hasPrecursors = items_.precursorFlags != 0;
  std::size_t have = 0;
  bool haveOneCalibration = haveOneCalibration_;
  bool arePossible = arePossible_;
  for (std::size_t i = first; i < first + count; ++i) {
    have += HasValues(entries[i], hasPrecursors) ? 1U : 0U;
    haveOneCalibration = haveOneCalibration && (i == 0 || ConvertsAlike(entries[i - 1], entries[i]));
    arePossible = arePossible && MayBe(entries[i]);
  }
  have_ += have;
  lack_ += count - have;
  haveOneCalibration_ = haveOneCalibration;
  arePossible_ = arePossible;
}

void StatisticsReader::NoticeRefusal(std::string* refusal) const {
  masslynx::NoticeRefusal(file_, folder_, FileNameOf(function_, L"sts"), Spellings::kAsWrittenUpperLower,
                          refusal);
}

namespace {

// What is wrong with a file; empty when nothing is.
struct Problem {
  FindingCode code = FindingCode::kStatisticsCut;
  std::string text = {};
  Numbers without = {};  // scans that have no record
};

// The numbers of the scans behind the first `records`.
Numbers NumbersBehind(std::uint64_t records, std::uint64_t scans) {
  Numbers numbers;
  for (std::uint64_t scan = records; scan < scans; ++scan) numbers.Add(scan + 1);
  return numbers;
}

// Nothing could be read by it, whatever the version.
bool IsHeaderOfZeros(const Header& header) {
  return header.version == 0 && header.recordSize == 0 && header.descriptorCount == 0;
}

// Of a file that the system gives to its end.
Problem ProblemOf(const Header& header, std::uint64_t size, std::uint64_t scans) {
  if (size < format::kHeaderSize) return {.text = "ends in its header", .without = NumbersBehind(0, scans)};
  if (IsHeaderOfZeros(header))
    return {.text = "has zeros in place of its header", .without = NumbersBehind(0, scans)};
  if (header.version != format::kKnownVersion) {
    return {FindingCode::kStatisticsUnknown,
            "is of version " + std::to_string(header.version) + ", which is not read",
            NumbersBehind(0, scans)};
  }
  const std::uint64_t bytes = size - std::min<std::uint64_t>(header.recordsOffset, size);
  const std::uint64_t records = header.recordSize == 0 ? 0 : bytes / header.recordSize;
  Problem problem = {.without = NumbersBehind(records, scans)};
  if (header.recordSize == 0 || bytes % header.recordSize != 0) {
    problem.text = "does not end with a whole record";
  } else if (records != scans) {
    problem.text = "is about " + std::to_string(records) + " scans, the index about " + std::to_string(scans);
  }
  return problem;
}

std::uint64_t CountZeroedDescriptors(Bytes description, std::uint16_t count) {
  std::uint64_t zeroed = 0;
  for (std::size_t i = 0; i < count; ++i) {
    ByteCursor code(description, format::kDescriptors + i * format::kDescriptorSize + format::kItemCode);
    if (code.U16() == 0 && code.Ok()) ++zeroed;
  }
  return zeroed;
}

// Whether no record but the last has only zeros from `begin` on.
bool IsAloneInZeros(const platform::File& file, const Header& header, std::uint64_t records,
                    std::size_t begin) {
  bool isAlone = records > 2;
  std::vector<std::byte> record(header.recordSize);
  for (std::uint64_t i = 0; isAlone && i + 1 < records; ++i) {
    const std::uint64_t at = header.recordsOffset + i * header.recordSize;
    isAlone = file.ReadAt(at, record) == record.size() && !AreZeros(Bytes(record).subspan(begin));
  }
  return isAlone;
}

// Of a whole file of `records`: a scan may have no values, so zeros at its end prove nothing, and others
// less.
Problem ZeroedRecords(const platform::File& file, const Header& header, std::uint64_t records) {
  const std::uint64_t zeros = BeginOfZeros(file);
  if (records == 0 || zeros == kNoZeros) return {};
  const std::uint64_t begin = std::max<std::uint64_t>(zeros, header.recordsOffset) - header.recordsOffset;
  const std::uint64_t left = (begin + header.recordSize - 1) / header.recordSize;
  if (left < records) {
    return {FindingCode::kStatisticsZeroed,
            "ends in zeros in place of the records of " + std::to_string(records - left) + " of " +
                std::to_string(records) + " scans; the first is scan " + std::to_string(left + 1),
            NumbersBehind(left, records)};
  }
  const auto place = static_cast<std::size_t>(begin - (records - 1) * header.recordSize);
  if (place == header.recordSize || !IsAloneInZeros(file, header, records, place)) return {};
  return {FindingCode::kStatisticsZeroed,
          "ends in zeros inside the record of scan " + std::to_string(records) +
              ", where no other record has them",
          NumbersBehind(records - 1, records)};
}

// Ahead of the end, where a scan may have no values; but not where each other one, of three at least, has a
// precursor or a temperature. One beside zeros may be cut by them.
Problem ZerosAmongValues(const platform::File& file, const Header& header, const ItemOffsets& items,
                         std::uint64_t records) {
  constexpr std::uint64_t kSome = 3;  // fewer say nothing about another
  Numbers zeros;
  std::uint64_t valued = 0;
  std::uint64_t cut = 0;  // records without values behind zeros
  bool isRead = true;
  bool haveValues = true;
  bool isOfZeros = false;  // the record before
  bool isCut = false;      // that one has no values, and no zeros ahead of it
  const auto look = [&](std::size_t i, Bytes record) {
    ScanIndexEntry entry;
    FillFrom(record, items, entry);
    const bool isBehindZeros = std::exchange(isOfZeros, AreZeros(record));
    if (isOfZeros) zeros.Add(i + 1);
    haveValues = haveValues && (isOfZeros || !isCut);
    const bool hasValues = HasValues(entry, items.precursorFlags != 0);
    valued += hasValues;
    cut += !hasValues && !isOfZeros && isBehindZeros;
    isCut = !hasValues && !isOfZeros && !isBehindZeros;
  };
  const StatisticsReader::Place place = {header.recordsOffset, header.recordSize};
  ForEachBlock(file, place, 0, static_cast<std::size_t>(records), [&](const Block& block) {
    isRead = isRead && block.bytes.size() == block.count * block.recordSize;
    for (std::size_t i = 0; i < block.count; ++i) look(block.first + i, block.Record(i));
  });
  if (!haveValues || isCut || zeros.IsEmpty() || valued + cut < kSome || cut > valued || !isRead) return {};
  return {FindingCode::kStatisticsZeroed,
          "has zeros in place of the records of " + std::to_string(zeros.Count()) + " of " +
              std::to_string(records) + " scans; the first is scan " + std::to_string(zeros.First()),
          zeros};
}

// Of a file that is as long as it should be.
Problem ProblemInside(const platform::File& file, const Header& header, std::uint64_t scans,
                      bool someLackValues) {
  const std::vector<std::byte> description = ReadDescription(file);
  const std::uint64_t zeroed = CountZeroedDescriptors(description, header.descriptorCount);
  if (zeroed > 0) {
    return {.text = "has zeros in place of " + std::to_string(zeroed) + " of " +
                    std::to_string(header.descriptorCount) + " descriptions of its items",
            .without = NumbersBehind(0, scans)};
  }
  const ItemOffsets items = ReadDescriptors(description, header.descriptorCount);
  if (items.HasPartOfTemperature()) {
    return {FindingCode::kTemperaturesUnknown,
            "describes some of the items of temperatures only, so none is read", NumbersBehind(0, scans)};
  }
  Problem problem = ZeroedRecords(file, header, scans);
  if (!problem.text.empty() || !someLackValues) return problem;
  return ZerosAmongValues(file, header, items, scans);
}

}  // namespace

bool NoticeStatistics(const platform::SystemPath& folder, const FunctionRecord& function, std::uint64_t scans,
                      bool someLackValues, Findings& findings) {
  const std::wstring name = FileNameOf(function, L"sts");
  constexpr Spellings kSpellings = Spellings::kAsWrittenUpperLower;
  const platform::File file = OpenInDirectory(folder, name, kSpellings);
  if (!file.IsOpen() && !IsThere(folder, name, kSpellings)) return scans == 0;
  Finding finding = NotOpened(folder, name, kSpellings, FindingCode::kFileUnreadable);
  finding.subject = SubjectOf(function);
  if (file.IsOpen()) {
    const std::uint64_t size = file.Size();
    if (size == 0 && scans == 0) return true;  // of a function that was never acquired
    std::array<std::byte, format::kHeaderSize> start{};
    file.ReadAt(0, start);
    const Header header = ReadHeader(start);
    Problem problem = ProblemOf(header, size, scans);
    if (problem.text.empty()) problem = ProblemInside(file, header, scans, someLackValues);
    if (problem.text.empty()) return true;
    finding.code = problem.code;
    finding.problem = std::move(problem.text);
    finding.scans = std::move(problem.without);
  }
  const bool hasAll = file.IsOpen() && finding.scans.IsEmpty();
  findings.Add(std::move(finding));
  return hasAll;
}

}  // namespace zrml::masslynx
