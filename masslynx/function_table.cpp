#include "masslynx/function_table.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "common/bytes.h"
#include "common/number.h"
#include "masslynx/function_table_format.h"
#include "masslynx/function_types.h"
#include "masslynx/raw_directory.h"

namespace zrml {
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
  function.keptSetValue = ByteCursor(record, format::kKeptSetValue).F32();
  function.channels.resize(format::kChannels);
  ByteCursor cursor(record, format::kChannelList);
  for (std::uint32_t& channel : function.channels) channel = cursor.U32();
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
  ByteCursor times(record, format::kKeptTimes);
  for (float& time : function.keptTimes) time = times.F32();
  ByteCursor values(record, format::kDefaultScanValue);
  function.defaultScanValue = values.U8();
  function.keptScanValue = values.U8();
  if (function.typeCode == kMtofType) {
    ReadMtofRange(record, function);
  } else {
    ReadChannels(record, function);
  }
  return function;
}

}  // namespace

bool ReadFunctionTable(const std::wstring& directory, const std::vector<CalibrationLine>& calibration,
                       FunctionTable& table) {
  const platform::File file = OpenInDirectory(directory, L"_functns.inf");
  if (!file.IsOpen()) return false;
  const std::uint64_t size = file.Size();
  if (size % format::kRecordSize != 0) return false;
  if (size / format::kRecordSize > std::numeric_limits<std::uint16_t>::max()) return false;
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  if (file.ReadAt(0, bytes) != bytes.size()) return false;

  const std::size_t count = bytes.size() / format::kRecordSize;
  table.functions = std::vector<FunctionRecord>(count);
  table.unlisted.assign(count, false);
  const FileFinder files(directory, 2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    FunctionRecord function =
        ReadRecord(Bytes(bytes).subspan(i * format::kRecordSize, format::kRecordSize), number);
    ParseCalibration(calibration, function);
    function.hasMobilityData = files.Opens(FunctionFileName(number, L"CDT"));
    table.unlisted[i] = !files.Opens(FunctionFileName(number, L"DAT"));
    if (function.typeCode == kDadType) {
      table.absorbance = std::move(function);
      table.unlisted[i] = true;
    } else {
      table.functions[i] = std::move(function);
    }
  }
  return true;
}

void RemoveUnlisted(FunctionTable& table) {
  std::vector<FunctionRecord> listed;
  for (std::size_t i = 0; i < table.functions.size(); ++i) {
    const bool removed = i < table.unlisted.size() && table.unlisted[i];
    if (!removed) listed.push_back(std::move(table.functions[i]));
  }
  table.functions = std::move(listed);
  table.unlisted.clear();
}

bool SelectFunction(const std::wstring& fileName, std::vector<FunctionRecord>& functions) {
  constexpr std::size_t kStemLength = 5;
  constexpr std::size_t kDigits = 3;
  if (fileName.size() < kStemLength) return false;
  const bool processed = fileName.starts_with(L"_proc");
  std::wstring_view digits = std::wstring_view(fileName).substr(kStemLength, kDigits);
  const std::optional<int> number = TakeInt(digits);
  const auto match = std::find_if(functions.begin(), functions.end(), [&](const FunctionRecord& function) {
    return function.processed == processed && function.number == number;
  });
  if (match == functions.end()) return false;
  std::vector<FunctionRecord> selected;
  selected.push_back(std::move(*match));
  functions = std::move(selected);
  return true;
}

}  // namespace zrml
