#include "tools/zrml/slot_view.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "common/platform/platform.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_names.h"
#include "masslynx/function_types.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/sub_scans.h"
#include "masslynx/scandata/traces.h"
#include "openlynx/precursor_search.h"
#include "source/report_source.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::tool {
namespace {

using masslynx::FunctionRecord;
using masslynx::IndexView;
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

// False when there are none.
bool SumSubScans(CZRMassSpectrum& points) {
  const std::size_t count = points.UsablePoints();
  const auto sum = masslynx::SumSubScans({points.GetMasses(), count}, {points.GetIntensities(), count});
  if (!sum) return false;
  points.SetSize(static_cast<int>(sum->Count()));
  sum->CopyTo(points.GetMasses(), points.GetIntensities());
  return true;
}

}  // namespace

RawSlots::RawSlots(const platform::SystemPath& folder) : folder_(folder) {
  const auto directory = masslynx::RawDirectory::Open(folder);
  if (!directory) return;
  functions_ = masslynx::ReadFunctions(folder, directory->Header(), masslynx::TableView::kOfSlots)
                   .value_or(std::vector<FunctionRecord>());
  for (const FunctionRecord& measured : directory->Functions()) {
    if (measured.IsLost()) lost_.push_back(source::Describe(measured).id);
  }
}

bool RawSlots::IsLost(const source::FunctionId& id) const {
  return std::find(lost_.begin(), lost_.end(), id) != lost_.end();
}

std::string RawSlots::IonModeOf(const source::FunctionId& id) {
  return platform::ToNativePath(masslynx::IonModeText(RecordOf(id).ionMode));
}

std::vector<std::string> RawSlots::NamesOf(std::span<const source::FunctionId> listed) {
  std::vector<FunctionRecord> records;
  for (const source::FunctionId& id : listed) records.push_back(RecordOf(id));
  masslynx::MarkSharedNames(records);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < records.size(); ++i)
    names.push_back(platform::ToNativePath(masslynx::FunctionName(records, i)));
  return names;
}

FunctionRecord& RawSlots::RecordOf(const source::FunctionId& id) {
  const auto found = std::find_if(functions_.begin(), functions_.end(),
                                  [&](const FunctionRecord& record) { return IsNamed(record, id); });
  return functions_.at(static_cast<std::size_t>(found - functions_.begin()));
}

FunctionRecord& RawSlots::Loaded(const source::FunctionId& id) {
  FunctionRecord& record = RecordOf(id);
  masslynx::LoadScanIndex(folder_, record, IndexView::kOfSlots);
  return record;
}

std::optional<SlotScans> RawSlots::OtherScans(const source::FunctionId& id) {
  const FunctionRecord& record = Loaded(id);
  FunctionRecord whole = record;
  whole.scanIndex.clear();
  masslynx::LoadScanIndex(folder_, whole, IndexView::kMeasured);
  const bool isSame = std::equal(
      whole.scanIndex.begin(), whole.scanIndex.end(), record.scanIndex.begin(), record.scanIndex.end(),
      [](const masslynx::ScanIndexEntry& measured, const masslynx::ScanIndexEntry& ofSlots) {
        const bool isUntimed = std::isnan(measured.retentionTime) && std::isnan(ofSlots.retentionTime);
        return measured.dataOffsetHigh == 0 && measured.centroided == ofSlots.centroided &&
               (isUntimed || measured.retentionTime == ofSlots.retentionTime);
      });
  if (isSame && !IsLost(id)) return std::nullopt;
  SlotScans others = {.read = [this, id](int scan) { return ReadPoints(id, scan); }};
  for (const masslynx::ScanIndexEntry& entry : record.scanIndex) {
    const masslynx::ScanFacts facts = masslynx::FactsOf(record, entry);
    source::Scan& scan = others.scans.emplace_back();
    scan.minutes = entry.retentionTime;
    scan.endMinutes = facts.endMinutes;
    scan.precursorMz = facts.precursorMass;
    scan.scanValue = facts.value;
    scan.representation = source::RepresentationOf(entry.centroided);
    scan.totalIntensity = entry.totalIntensity;
  }
  return others;
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
  const bool isSum = isUnsorted && masslynx::MayHaveSubScans(*room) && SumSubScans(points);
  if (isUnsorted) SortByMass(true, points);
  const std::size_t count = points.UsablePoints();
  return StoredPoints{{points.GetMasses(), points.GetMasses() + count},
                      {points.GetIntensities(), points.GetIntensities() + count},
                      isSum && !record.scanIndex[static_cast<std::size_t>(scan)].centroided,
                      isUnsorted};
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

std::optional<StoredPoints> RawSlots::ReadStoredTrace(int trace) const {
  const auto list = masslynx::ReadTraceList(folder_);
  const auto position = static_cast<std::size_t>(trace);
  if (!list || position >= list->names.size()) return std::nullopt;
  const auto data = masslynx::TraceData::Open(folder_, *list, position);
  if (!data) return std::nullopt;
  StoredPoints points = {std::vector<double>(data->Count()), std::vector<double>(data->Count())};
  const std::optional<std::size_t> kept = data->Read(points.x.data(), points.y.data());
  points.x.resize(kept.value_or(0));
  points.y.resize(kept.value_or(0));
  return kept ? std::optional(std::move(points)) : std::nullopt;
}

ReportSlots::ReportSlots(const platform::SystemPath& path)
    : path_(path), report_(openlynx::ReportStream::Open(path)) {}

int ReportSlots::CountSamplesOfText() const {
  using openlynx::ReportStream;
  ReportStream text = ReportStream::Open(path_, ReportStream::Mode::kText);
  int count = 0;
  for (std::string_view line; text.Find(openlynx::report_format::kSample) && text.Next(line);) ++count;
  return count;
}

void ReportSlots::Enter(int sample, bool isDamaged) {
  number_ = sample + 1;
  isDamaged_ = isDamaged;
  sample_ = &report_.Samples()[static_cast<std::size_t>(sample)];
  report_.FunctionsOf(*sample_);
  own_ = *sample_;
  report_.FindOwnBlocks(own_);
  // The source ends a sample where the next one begins.
  const std::span<const openlynx::Sample> later =
      std::span(report_.Samples()).subspan(static_cast<std::size_t>(sample) + 1);
  for (openlynx::Function& function : own_.functions) {
    if (!later.empty() && function.position > later.front().position)
      function.spectra = function.chromatograms = {};
  }
  report_.FindAllBlocks(*sample_, true);
  report_.FindAllBlocks(*sample_, false);
  listed_.clear();
  for (std::size_t i = 0; i < sample_->functions.size(); ++i) {
    const openlynx::Function& function = sample_->functions[i];
    if (!function.isAnalog && function.HasBlocks()) listed_.push_back(i);
  }
}

std::string ReportSlots::Name() { return source::SampleNameOf(report_, *sample_, number_); }

std::vector<source::MetadataItem> ReportSlots::Items() { return source::SampleItemsOf(report_, *sample_); }

source::Function ReportSlots::Describe(int position) {
  constexpr std::array kKinds = {source::FunctionKind::kOther, source::FunctionKind::kMs,
                                 source::FunctionKind::kMsMs, source::FunctionKind::kIonMonitoring,
                                 source::FunctionKind::kIonMonitoring};
  constexpr std::array kPolarities = {source::Polarity::kUnknown, source::Polarity::kPositive,
                                      source::Polarity::kNegative};
  const openlynx::FunctionKind kind = report_.KindOf(*sample_, At(position));
  source::Function function;
  function.id.number = static_cast<int>(listed_[static_cast<std::size_t>(position)]) + 1;
  function.name = platform::ToNativePath(report_.NameOf(*sample_, At(position)));
  function.kind = kKinds[static_cast<std::size_t>(kind)];
  function.msLevel = openlynx::MsLevelOf(kind);
  function.polarity = kPolarities[static_cast<std::size_t>(report_.PolarityOf(*sample_, At(position)))];
  return function;
}

bool ReportSlots::IsUnnamed(int position) { return report_.NameOf(*sample_, At(position)).empty(); }

std::optional<std::string> ReportSlots::TextOf(int position) {
  const std::optional<std::wstring> text = report_.ReadText(At(position));
  return text ? std::optional(platform::ToNativePath(*text)) : std::nullopt;
}

std::optional<SlotScans> ReportSlots::OtherScans(int position) {
  const std::span<const std::uint64_t> spectra = sample_->SpectraOf(At(position));
  const openlynx::Function& own = OwnAt(position);
  if (!isDamaged_ && own.HasBlocks() && own.spectra.Size() == spectra.size()) return std::nullopt;
  SlotScans others = {.read = [this, spectra](int scan) -> std::optional<StoredPoints> {
    const auto head = report_.ReadSpectrumHead(spectra[static_cast<std::size_t>(scan)]);
    openlynx::Points points = report_.ReadPoints(head);
    if (points.x.empty()) return std::nullopt;
    return StoredPoints{std::move(points.x), std::move(points.intensities)};
  }};
  for (const std::uint64_t spectrum : spectra) {
    const openlynx::SpectrumHead head = report_.ReadSpectrumHead(spectrum);
    source::Scan& scan = others.scans.emplace_back();
    scan.minutes = scan.endMinutes = head.minutes.value_or(0);
    scan.representation = source::RepresentationOf(head.isCentroided);
    scan.totalIntensity = head.totalIons.value_or(0);
    scan.basePeakIntensity = head.basePeak.value_or(0);
  }
  return others;
}

std::optional<TraceList> ReportSlots::OtherTraces(int position) {
  const std::span<const std::uint64_t> traces = sample_->ChromatogramsOf(At(position));
  const openlynx::Function& own = OwnAt(position);
  if (!isDamaged_ && own.HasBlocks() && own.chromatograms.Size() == traces.size()) return std::nullopt;
  return TracesAt({traces.begin(), traces.end()}, "Function Trace ");
}

std::optional<TraceList> ReportSlots::OtherTraces() {
  std::vector<std::uint64_t> traces;
  std::size_t held = 0;
  bool areSame = !isDamaged_;
  for (std::size_t i = 0; i < own_.functions.size(); ++i) {
    areSame = areSame && !HasOthers(i);
    if (!own_.functions[i].isAnalog) continue;
    const std::span<const std::uint64_t> more = sample_->ChromatogramsOf(sample_->functions[i]);
    traces.insert(traces.end(), more.begin(), more.end());
    held += own_.functions[i].chromatograms.Size();
  }
  if (areSame && traces.size() == held) return std::nullopt;
  return TracesAt(std::move(traces), "Analog Trace ");
}

TraceList ReportSlots::TracesAt(std::vector<std::uint64_t> positions, const std::string& noun) {
  TraceList list;
  for (const std::uint64_t position : positions) {
    const int number = static_cast<int>(list.traces.size()) + 1;
    const std::wstring name = report_.TraceNames(std::span(&position, 1)).front();
    list.traces.push_back(
        {number, name.empty() ? noun + std::to_string(number) : platform::ToNativePath(name)});
  }
  list.read = [this, positions = std::move(positions)](int trace) {
    openlynx::Points points = report_.ReadTrace(positions[static_cast<std::size_t>(trace)]).points;
    return source::Chromatogram{{}, std::move(points.x), std::move(points.intensities)};
  };
  return list;
}

std::optional<source::ScanPosition> ReportSlots::FindPrecursor(int position, int scan) {
  const std::uint64_t spectrum = sample_->SpectraOf(At(position))[static_cast<std::size_t>(scan)];
  const auto found = openlynx::FindPrecursor(report_, *sample_, listed_, position, spectrum, 0);
  return found ? std::optional(source::ScanPosition{found->first, found->second}) : std::nullopt;
}

bool ReportSlots::HasOnlyAnalog() const {
  return std::all_of(own_.functions.begin(), own_.functions.end(),
                     [](const openlynx::Function& function) { return function.isAnalog; });
}

}  // namespace zrml::tool
