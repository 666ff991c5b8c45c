#include "tools/zrml/slot_view.h"

#include <algorithm>
#include <string_view>

#include "masslynx/directory_files.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/sub_scans.h"
#include "masslynx/scandata/traces.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::tool {
namespace {

using masslynx::FunctionRecord;
using masslynx::LeftOutOffsets;
using masslynx::ScanRoom;

bool IsNamed(const FunctionRecord& record, const source::FunctionId& id) {
  if (record.processed) return record.number == id.process && record.repeat == id.repeat;
  return id.process == 0 && record.number == id.number;
}

// What follows the end of the file is zero. No value where there is no file, or no room.
std::optional<std::vector<std::byte>> BytesOf(const platform::SystemPath& folder, FunctionRecord& record,
                                              const std::optional<ScanRoom>& room) {
  const platform::File file = masslynx::OpenDataFile(folder, record);
  if (!file.IsOpen() || !room) return std::nullopt;
  std::vector<std::byte> bytes(room->bytes);
  file.ReadAt(room->offset, bytes);
  return bytes;
}

void SumSubScans(CZRMassSpectrum& points) {
  const std::size_t count = points.UsablePoints();
  const auto sum = masslynx::SumSubScans({points.GetMasses(), count}, {points.GetIntensities(), count});
  if (!sum) return;
  points.SetSize(static_cast<int>(sum->Count()));
  sum->CopyTo(points.GetMasses(), points.GetIntensities());
}

}  // namespace

RawSlots::RawSlots(const platform::SystemPath& folder) : folder_(folder) {
  const auto directory = masslynx::RawDirectory::Open(folder);
  if (directory) functions_.assign(directory->Functions().begin(), directory->Functions().end());
}

FunctionRecord& RawSlots::Loaded(const source::FunctionId& id) {
  const auto found = std::find_if(functions_.begin(), functions_.end(),
                                  [&](const FunctionRecord& record) { return IsNamed(record, id); });
  FunctionRecord& record = functions_.at(static_cast<std::size_t>(found - functions_.begin()));
  masslynx::LoadScanIndex(folder_, record, LeftOutOffsets::kLower32Bits);
  return record;
}

const FunctionRecord* RawSlots::WithCutOffsets(const source::FunctionId& id) {
  const FunctionRecord& record = Loaded(id);
  FunctionRecord whole = record;
  whole.scanIndex.clear();
  masslynx::LoadScanIndex(folder_, whole, LeftOutOffsets::kWhole);
  const bool hasCutOffsets =
      std::any_of(whole.scanIndex.begin(), whole.scanIndex.end(),
                  [](const masslynx::ScanIndexEntry& scan) { return scan.dataOffsetHigh != 0; });
  return hasCutOffsets ? &record : nullptr;
}

std::optional<StoredPoints> RawSlots::ReadPoints(const source::FunctionId& id, int scan) {
  FunctionRecord& record = Loaded(id);
  const std::optional<ScanRoom> room = masslynx::RoomOf(record, scan);
  const auto bytes = BytesOf(folder_, record, room);
  if (!bytes) return std::nullopt;
  CZRMassSpectrum points;
  points.SetSize(static_cast<int>(room->points));
  const bool isUnsorted =
      masslynx::DecodeScan(record, scan, *room, *bytes, {points.GetMasses(), points.GetIntensities()})
          .isUnsorted;
  if (isUnsorted && masslynx::MayHaveSubScans(*room)) SumSubScans(points);
  if (isUnsorted) SortByMass(true, points);
  const std::size_t count = points.UsablePoints();
  return StoredPoints{{points.GetMasses(), points.GetMasses() + count},
                      {points.GetIntensities(), points.GetIntensities() + count}};
}

std::optional<StoredPoints> RawSlots::ReadAbsorbance(const source::FunctionId& id, int scan) {
  FunctionRecord& record = Loaded(id);
  const std::optional<ScanRoom> room = masslynx::AbsorbanceRoomOf(record, scan);
  const auto bytes = BytesOf(folder_, record, room);
  if (!bytes) return std::nullopt;
  StoredPoints points = {std::vector<double>(room->points), std::vector<double>(room->points)};
  masslynx::DecodeAbsorbance(*room, *bytes, {points.x.data(), points.y.data()});
  return points;
}

bool RawSlots::HasTraceList() const { return masslynx::ReadTraceList(folder_).has_value(); }

ReportSlots::ReportSlots(const platform::SystemPath& path)
    : path_(path), report_(openlynx::ReportStream::Open(path)) {}

int ReportSlots::CountSamplesOfText() const {
  using openlynx::ReportStream;
  ReportStream text = ReportStream::Open(path_, ReportStream::Mode::kText);
  int count = 0;
  for (std::string_view line; text.Find(openlynx::report_format::kSample) && text.Next(line);) ++count;
  return count;
}

bool ReportSlots::IsUnnamed(int sample, const source::FunctionId& id) {
  openlynx::Sample& found = SampleAt(sample);
  const auto place = static_cast<std::size_t>(id.number - 1);
  return report_.NameOf(found, report_.FunctionsOf(found)[place]).empty();
}

std::vector<int> ReportSlots::TracesOf(int sample) {
  openlynx::Sample& found = SampleAt(sample);
  const std::span<const openlynx::Function> functions = report_.FunctionsOf(found);
  report_.FindAllBlocks(found, true);
  std::vector<std::size_t> known;  // ascending
  std::vector<int> traces;
  for (const openlynx::Function& function : functions) {
    const openlynx::Run& run = function.chromatograms;
    for (std::size_t i = run.first; function.isAnalog && i < run.last; ++i) {
      if (known.empty() || known.back() < i) known.push_back(i);
      traces.push_back(static_cast<int>(std::lower_bound(known.begin(), known.end(), i) - known.begin()));
    }
  }
  return traces;
}

bool ReportSlots::HasOnlyAnalog(int sample) {
  const std::span<const openlynx::Function> functions = report_.FunctionsOf(SampleAt(sample));
  return std::all_of(functions.begin(), functions.end(),
                     [](const openlynx::Function& function) { return function.isAnalog; });
}

}  // namespace zrml::tool
