#include "tests/support/function_table_writer.h"

#include "masslynx/function_types.h"

namespace zrml {
namespace {

namespace format = masslynx::function_table_format;

std::uint16_t PackedWord(const FunctionTableRecord& record) {
  const auto field = [](unsigned value, unsigned bits) { return value & ((1u << bits) - 1); };
  const unsigned word =
      field(record.type, format::kTypeBits) | field(record.ionMode, format::kModeBits) << format::kTypeBits |
      field(record.dataFormat, format::kFormatBits) << (format::kTypeBits + format::kModeBits);
  return record.packedWord.value_or(static_cast<std::uint16_t>(word));
}

void AppendChannels(const FunctionTableRecord& record, ByteWriter& writer) {
  writer.F32(record.setMass).F32(record.keptSetValue);
  for (const std::uint32_t channel : record.channels) writer.U32(channel);
  for (const float mass : record.startMasses) writer.F32(mass);
  for (const float mass : record.endMasses) writer.F32(mass);
}

FileBytes WriteRecord(const FunctionTableRecord& record) {
  ByteWriter writer;
  writer.U16(PackedWord(record)).F32(record.scanTime);
  for (const float time : record.keptTimes) writer.F32(time);
  writer.UnusedUpTo(format::kDefaultScanValue).U8(record.defaultScanValue).U8(record.keptScanValue);
  if ((PackedWord(record) & ((1u << format::kTypeBits) - 1)) == masslynx::kMtofType) {
    writer.UnusedUpTo(format::kMtofLowMass).F32(record.mtofLowMass).F32(record.mtofHighMass);
  } else {
    AppendChannels(record, writer);
  }
  return writer.UnusedUpTo(format::kRecordSize).Take();
}

}  // namespace

FileBytes WriteFunctionTable(const std::vector<FunctionTableRecord>& records) {
  ByteWriter writer;
  for (const FunctionTableRecord& record : records) writer.Append(WriteRecord(record));
  return writer.Take();
}

}  // namespace zrml
