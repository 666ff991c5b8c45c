#include "masslynx/function_table.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>

#include "common/bytes.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_table_format.h"
#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

namespace format = function_table_format;

// The lowest `count` bits of `bits`, which are removed from it.
int TakeBits(unsigned& bits, unsigned count) {
  const unsigned field = bits & ((1u << count) - 1);
  bits >>= count;
  return static_cast<int>(field);
}

std::vector<float> ReadFloats(Bytes record, std::size_t offset) {
  std::vector<float> values(format::kChannels);
  ByteCursor cursor(record, offset);
  for (float& value : values) value = cursor.F32();
  return values;
}

// The lists of every type but 17, and the mass range that they span.
void ReadChannels(Bytes record, FunctionRecord& function) {
  function.setMass = ByteCursor(record, format::kSetMass).F32();
  function.startMasses = ReadFloats(record, format::kStartMasses);
  function.endMasses = ReadFloats(record, format::kEndMasses);

  float low = 0;
  for (const float mass : function.startMasses) {
    if (mass > 0 && (low == 0 || mass < low)) low = mass;
  }
  float high = 0;
  for (const float mass : function.endMasses) high = mass > high ? mass : high;
  function.lowMass = low;
  function.highMass = high;
  function.massRangeKnown = low > 0 && high > 0 && high >= low;
}

void ReadMtofRange(Bytes record, FunctionRecord& function) {
  function.lowMass = ByteCursor(record, format::kMtofLowMass).F32();
  function.highMass = ByteCursor(record, format::kMtofHighMass).F32();
  function.massRangeKnown = function.lowMass > 0 && function.highMass > 0;
}

FunctionRecord ReadRecord(Bytes record, std::uint16_t number) {
  FunctionRecord function;
  function.number = number;
  unsigned word = ByteCursor(record, format::kPackedWord).U16();
  function.typeCode = TakeBits(word, format::kTypeBits);
  function.ionMode = TakeBits(word, format::kModeBits);
  function.dataFormat = TakeBits(word, format::kFormatBits);
  function.scanTime = ByteCursor(record, format::kScanTime).F32();
  function.defaultScanValue = ByteCursor(record, format::kDefaultScanValue).U8();
  if (function.typeCode == kMtofType) {
    ReadMtofRange(record, function);
  } else {
    ReadChannels(record, function);
  }
  return function;
}

// Of a function whose record is zeros. The length of its scans is not known, either.
FunctionRecord LostRecord(std::uint16_t number) {
  FunctionRecord function;
  function.number = number;
  function.typeCode = function.ionMode = function.dataFormat = FunctionRecord::kLostCode;
  function.scanTime = std::numeric_limits<float>::quiet_NaN();
  return function;
}

constexpr std::size_t kMostFunctions = std::numeric_limits<std::uint16_t>::max();

// The records to read from a file of `size` bytes; no value when the file has none.
std::optional<std::size_t> RecordsIn(std::uint64_t size, TableView view, Findings* findings) {
  const std::uint64_t count = size / format::kRecordSize;
  const auto notice = [&](const char* problem) {
    if (findings == nullptr) return;
    findings->Add({.code = FindingCode::kFunctionTableCut,
                   .file = platform::ToNativePath(kFunctionTableName),
                   .problem = problem});
  };
  if (size % format::kRecordSize != 0) notice("does not end with a whole record");
  if (count > kMostFunctions) notice("has more functions than can be numbered");
  const bool isWhole = size % format::kRecordSize == 0 && count <= kMostFunctions;
  if (!isWhole && view == TableView::kOfSlots) return std::nullopt;
  return static_cast<std::size_t>(std::min<std::uint64_t>(count, kMostFunctions));
}

// Any function has a time for its scans, or masses.
void NoticeZeroed(const FunctionRecord& function, Findings& findings) {
  findings.Add({.code = FindingCode::kFunctionZeroed,
                .file = platform::ToNativePath(kFunctionTableName),
                .problem = "has zeros in place of function " + std::to_string(function.number) +
                           ", so its type and the layout of its scans are not known",
                .subject = SubjectOf(function)});
}

// The first type, ionisation mode and layout have the code 0, but no function has no times.
bool BeginsWithZeros(Bytes record) { return AreZeros(record.first(format::kSetMass)); }

// Chosen ions may be listed without a range.
bool HasNoLastMass(const FunctionRecord& function) {
  const auto isPositive = [](float mass) { return mass > 0; };
  return MonitoringOfType(function.typeCode) == Monitoring::kNone && !function.startMasses.empty() &&
         isPositive(function.startMasses[0]) &&
         std::none_of(function.endMasses.begin(), function.endMasses.end(), isPositive);
}

// A sector of zeros ends inside a record.
void NoticeIncomplete(Bytes record, const FunctionRecord& function, Findings& findings) {
  const bool lacksType = BeginsWithZeros(record);
  if (!lacksType && !HasNoLastMass(function)) return;
  const std::string number = std::to_string(function.number);
  findings.Add({.code = FindingCode::kFunctionIncomplete,
                .file = platform::ToNativePath(kFunctionTableName),
                .problem = lacksType
                               ? "has zeros in place of the type, polarity, layout and times of function " +
                                     number + ", which are taken as they stand"
                               : "has no last mass of function " + number + ", but a first one",
                .subject = SubjectOf(function)});
}

}  // namespace

bool ReadFunctionTable(const platform::SystemPath& folder, const std::vector<CalibrationLine>& calibration,
                       TableView view, std::vector<FunctionRecord>& functions, Findings* findings) {
  const platform::File file = OpenInDirectory(folder, kFunctionTableName);
  if (!file.IsOpen()) return false;
  const std::optional<std::size_t> count = RecordsIn(file.Size(), view, findings);
  if (!count) return false;
  std::vector<std::byte> bytes(*count * format::kRecordSize);
  if (file.ReadAt(0, bytes) != bytes.size()) return false;

  functions.clear();
  functions.reserve(*count);
  const FileFinder files(folder, 2 * *count);
  for (std::size_t i = 0; i < *count; ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    const Bytes record = Bytes(bytes).subspan(i * format::kRecordSize, format::kRecordSize);
    const bool isZeros = AreZeros(record);
    const bool isLost = isZeros && view == TableView::kMeasured;
    FunctionRecord& function =
        functions.emplace_back(isLost ? LostRecord(number) : ReadRecord(record, number));
    if (findings != nullptr && isZeros) NoticeZeroed(function, *findings);
    if (findings != nullptr && !isZeros) NoticeIncomplete(record, function, *findings);
    ParseCalibration(calibration, function);
    function.hasMobilityData = files.Opens(FunctionFileName(number, L"CDT"));
    function.hasDataFile = files.Opens(FunctionFileName(number, L"DAT"));
  }
  return true;
}

}  // namespace zrml::masslynx
