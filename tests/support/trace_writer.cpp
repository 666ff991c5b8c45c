#include "tests/support/trace_writer.h"

namespace zrml {
namespace {

void AppendNames(const std::vector<std::string>& names, ByteWriter& writer) {
  using namespace masslynx::traces_format;
  for (const std::string& name : names) {
    const std::string cut = name.substr(0, kNameSize);
    writer.Unused(kName).Text(cut).Zeros(kNameSize - cut.size());
  }
}

ByteWriter StartWith(const TraceHeader& header) {
  ByteWriter writer;
  writer.U16(header.headerSize).U16(header.second).U16(header.recordSize).U16(header.fourth);
  writer.UnusedUpTo(header.headerSize);
  return writer;
}

}  // namespace

FileBytes WriteAnalogsInf(const std::vector<std::string>& names) {
  ByteWriter writer;
  AppendNames(names, writer);
  return writer.Take();
}

FileBytes WriteAnalogsDat(const std::vector<AnalogRecord>& records) {
  ByteWriter writer;
  for (const AnalogRecord& record : records) {
    writer.F32(record.time);
    for (const std::uint16_t word : record.words) writer.U16(word);
  }
  return writer.Take();
}

FileBytes WriteChromsInf(const std::vector<std::string>& names, const TraceHeader& header) {
  ByteWriter writer = StartWith(header);
  AppendNames(names, writer);
  return writer.Take();
}

FileBytes WriteChroDat(const std::vector<TracePoint>& points, const TraceHeader& header) {
  ByteWriter writer = StartWith(header);
  for (const TracePoint& point : points) writer.F32(point.time).F32(point.value);
  return writer.Take();
}

}  // namespace zrml
