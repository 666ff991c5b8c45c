#include "masslynx/scandata/traces.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

#include "common/bytes.h"
#include "common/text.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/traces_format.h"

namespace zrml {
namespace {

namespace format = traces_format;
using platform::File;

// Calls `visit(record)` for each of `count` records of `size` bytes from `offset` on, until it returns false.
// A few records are read at a time. False when the file has fewer.
template <class Visit>
bool ForEachRecord(const File& file, std::uint64_t offset, std::uint64_t count, std::size_t size,
                   Visit visit) {
  constexpr std::size_t kBlock = std::size_t{1} << 16;
  const std::size_t atOnce = std::max<std::size_t>(1, kBlock / size);
  const auto block = std::make_unique_for_overwrite<std::byte[]>(atOnce * size);
  for (std::uint64_t done = 0; done < count; done += atOnce) {
    const auto records = static_cast<std::size_t>(std::min<std::uint64_t>(atOnce, count - done));
    const std::span bytes(block.get(), records * size);
    if (file.ReadAt(offset + done * size, bytes) != bytes.size()) return false;
    for (std::size_t i = 0; i < records; ++i) {
      if (!visit(block.get() + i * size)) return true;
    }
  }
  return true;
}

struct Header {
  std::uint16_t size = 0;  // where the records begin
  std::uint64_t dataSize = 0;
};

// No value when a constant is not as it must be or the file ends inside the header.
std::optional<Header> ReadHeader(const File& file, std::uint16_t recordSize) {
  std::array<std::byte, format::kHeaderSize> bytes;
  if (file.ReadAt(0, bytes) != bytes.size()) return std::nullopt;
  ByteCursor cursor(bytes);
  Header header;
  header.size = cursor.U16();
  const std::uint64_t fileSize = file.Size();
  const bool sound = cursor.U16() == format::kHeaderSecond && cursor.U16() == recordSize &&
                     cursor.U16() == format::kHeaderFourth && header.size <= fileSize;
  if (!sound) return std::nullopt;
  header.dataSize = fileSize - header.size;
  return header;
}

std::wstring NameOf(const std::byte* record, std::size_t position) {
  const char* const text = reinterpret_cast<const char*>(record + format::kName);
  const std::string_view name(text, std::find(text, text + format::kNameSize, '\0'));
  return name.empty() ? L"Trace " + std::to_wstring(position + 1) : platform::FromCodePage(name);
}

std::optional<TraceList> ReadNames(const File& file, std::uint64_t offset, std::uint64_t count,
                                   bool fromAnalogs) {
  TraceList list;
  list.fromAnalogs = fromAnalogs;
  const bool whole =
      count <= std::numeric_limits<int>::max() - 1 &&  // one more may be added to them
      ForEachRecord(file, offset, count, format::kNameRecordSize, [&](const std::byte* record) {
        list.names.push_back(NameOf(record, list.names.size()));
        return true;
      });
  return whole ? std::optional(std::move(list)) : std::nullopt;
}

std::optional<TraceList> ReadAnalogNames(const File& file) {
  const std::uint64_t size = file.Size();
  if (size % format::kNameRecordSize != 0) return std::nullopt;
  return ReadNames(file, 0, size / format::kNameRecordSize, true);
}

// What is left behind the last whole record is ignored.
std::optional<TraceList> ReadChromatogramNames(const File& file) {
  const std::optional<Header> header = ReadHeader(file, format::kNameRecordSize);
  if (!header) return std::nullopt;
  return ReadNames(file, header->size, header->dataSize / format::kNameRecordSize, false);
}

// The points of a data file, one for each record that `read(record, time, value)` accepts.
template <class Read>
bool ReadPoints(const File& file, std::uint64_t offset, std::uint64_t count, std::size_t size,
                const std::wstring& name, CZRChromatogram& chromatogram, Read read) {
  if (count > std::numeric_limits<int>::max()) return false;
  chromatogram.SetSize(static_cast<int>(count));
  chromatogram.SetName(name);
  double* const times = chromatogram.GetTimes();
  double* const intensities = chromatogram.GetIntensities();
  std::size_t kept = 0;
  const bool whole = ForEachRecord(file, offset, count, size, [&](const std::byte* record) {
    const double time = LoadF32(record);
    if (!read(record, kept > 0 ? times[kept - 1] : time, time, intensities[kept])) return false;
    times[kept++] = time;
    return true;
  });
  if (whole && kept < count) chromatogram.SetSize(static_cast<int>(kept));
  return whole;
}

bool ReadChromatogramTrace(const std::wstring& directory, int trace, const std::wstring& name,
                           CZRChromatogram& chromatogram) {
  constexpr std::size_t kValue = 4;
  const File file = OpenInDirectory(directory, L"_CHRO" + ZeroPadded(trace + 1, 3) + L".DAT");
  const std::optional<Header> header = ReadHeader(file, format::kPointSize);
  if (!header || header->size < format::kHeaderSize || header->dataSize % format::kPointSize != 0)
    return false;
  return ReadPoints(file, header->size, header->dataSize / format::kPointSize, format::kPointSize, name,
                    chromatogram, [](const std::byte* record, double, double, double& value) {
                      value = LoadF32(record + kValue);
                      return true;
                    });
}

bool ReadAnalogTrace(const std::wstring& directory, std::size_t traces, int trace, const std::wstring& name,
                     CZRChromatogram& chromatogram) {
  const File file = OpenInDirectory(directory, L"_ANALOGS.DAT");
  const std::size_t recordSize = format::kAnalogTimeSize + format::kAnalogWordSize * traces;
  const std::uint64_t size = file.Size();
  if (!file.IsOpen() || size % recordSize != 0) return false;
  const std::size_t word =
      format::kAnalogTimeSize + format::kAnalogWordSize * static_cast<std::size_t>(trace);
  return ReadPoints(file, 0, size / recordSize, recordSize, name, chromatogram,
                    [word](const std::byte* record, double before, double time, double& value) {
                      if (before > time) return false;  // nothing of a later run belongs to the trace
                      value = IntensityWord(LoadU16(record + word));
                      return true;
                    });
}

}  // namespace

std::optional<TraceList> ReadTraceList(const std::wstring& directory) {
  if (const File analogs = OpenInDirectory(directory, L"_ANALOGS.INF"); analogs.IsOpen())
    return ReadAnalogNames(analogs);
  const File chromatograms = OpenInDirectory(directory, L"_CHROMS.INF");
  return chromatograms.IsOpen() ? ReadChromatogramNames(chromatograms) : TraceList();
}

bool ReadTrace(const std::wstring& directory, const TraceList& list, int trace,
               CZRChromatogram& chromatogram) {
  const std::wstring& name = list.names[static_cast<std::size_t>(trace)];
  return list.fromAnalogs ? ReadAnalogTrace(directory, list.names.size(), trace, name, chromatogram)
                          : ReadChromatogramTrace(directory, trace, name, chromatogram);
}

}  // namespace zrml
