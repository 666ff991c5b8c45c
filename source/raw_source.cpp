#include "source/raw_source.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "masslynx/directory_files.h"
#include "masslynx/function_names.h"
#include "masslynx/function_types.h"
#include "masslynx/metadata.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/sub_scans.h"
#include "masslynx/scandata/zeroed_points.h"
#include "source/formats.h"
#include "source/position.h"

namespace zrml::source {
namespace {

using masslynx::FunctionRecord;
using masslynx::ScanIndexEntry;
using masslynx::ScanRoom;
using platform::SystemPath;

std::string Utf8(std::wstring_view text) { return platform::ToNativePath(text); }

bool AreZero(std::span<const double> values) {
  return std::ranges::all_of(values, [](double value) { return value == 0; });
}

bool IsSeparator(char c) {
#ifdef _WIN32
  return c == '/' || c == '\\';
#else
  return c == '/';
#endif
}

// Shells complete a folder's name with a separator at its end.
std::string WithoutLastSeparator(std::string path) {
  while (path.size() > 1 && IsSeparator(path.back()) && path[path.size() - 2] != ':') path.pop_back();
  return path;
}

// The folder of a file and the file's name in it.
std::pair<std::string, std::string> Split(const std::string& path) {
  const auto name = std::find_if(path.rbegin(), path.rend(), IsSeparator).base();
  const std::string folder(path.begin(), name);
  return {folder.empty() ? "." : WithoutLastSeparator(folder), std::string(name, path.end())};
}

std::string StemOf(const FunctionRecord& function) {
  return masslynx::FunctionStem(Utf8(masslynx::FileNameOf(function, L"DAT")));
}

FunctionId IdOf(const FunctionRecord& function) {
  if (!function.processed) return {.number = function.number};
  return {function.rawNumber, function.number, function.repeat};
}

static_assert(static_cast<int>(FunctionKind::kAbsorbance) ==
              static_cast<int>(masslynx::FunctionKind::kAbsorbance));
static_assert(static_cast<int>(Monitoring::kReactions) == static_cast<int>(masslynx::Monitoring::kReactions));
static_assert(static_cast<int>(ScanType::kNeutralGain) == static_cast<int>(masslynx::ScanType::kNeutralGain));
static_assert(static_cast<int>(Polarity::kNegative) == static_cast<int>(masslynx::Polarity::kNegative));

// Empty where nothing was refused.
void ThrowRefusal(const std::string& front, const std::string& refusal) {
  if (!refusal.empty()) throw Error(Status::kUnreadable, front + refusal);
}

masslynx::RawDirectory OpenDirectory(const std::string& path, const SystemPath& folder) {
  for (const std::wstring_view name : {masslynx::kHeaderName, masslynx::kFunctionTableName}) {
    const platform::File file = masslynx::OpenInDirectory(folder, name);
    std::string refusal;
    masslynx::NoticeRefusal(file, folder, name, masslynx::Spellings::kUpperLower, &refusal);
    ThrowRefusal(path + ": ", refusal);
    if (!file.IsOpen())
      throw Error(Status::kDamaged, path + " is damaged: " + Utf8(name) + " cannot be opened");
  }
  if (!masslynx::IsMassLynxHeader(masslynx::OpenInDirectory(folder, masslynx::kHeaderName)))
    throw Error(Status::kNotRecognised, path + " is no raw directory: its _HEADER.TXT has another beginning");
  std::optional<masslynx::RawDirectory> directory = masslynx::RawDirectory::Open(folder);
  if (!directory) throw Error(Status::kUnreadable, path + ": _FUNCTNS.INF cannot be read");
  ThrowRefusal(path + ": ", directory->TakeRefusal());
  return std::move(*directory);
}

[[noreturn]] void ThrowUnread(const std::string& what) {
  throw Error(Status::kDamaged, "cannot read " + what);
}

std::string TextOfScan(int scan, const Function& function) {
  return "scan " + std::to_string(scan + 1) + " of function " + TextOf(function.id);
}

// Both ascend.
void AddPlaces(const std::vector<std::size_t>& more, std::vector<std::size_t>& places) {
  if (more.empty()) return;
  std::vector<std::size_t> both;
  std::set_union(places.begin(), places.end(), more.begin(), more.end(), std::back_inserter(both));
  places = std::move(both);
}

// No mass is less. Processing may move them anywhere.
double LowestMass(const FunctionRecord& record) {
  constexpr double kHalf = 0.5;
  return record.massRangeKnown && !record.processed ? record.lowMass * kHalf : 1;
}

// Closes the gaps at the given places, which ascend. Returns the number of remaining points.
std::size_t CloseGaps(const std::vector<std::size_t>& gaps, std::size_t count, double* values) {
  std::size_t kept = 0;
  auto gap = gaps.begin();
  for (std::size_t i = 0; i < count; ++i) {
    if (gap != gaps.end() && *gap == i) {
      ++gap;
    } else {
      values[kept++] = values[i];
    }
  }
  return kept;
}

}  // namespace

Function Describe(const FunctionRecord& record) {
  const bool isTypeKnown = record.typeCode != FunctionRecord::kLostCode;
  Function function;
  function.id = IdOf(record);
  function.name = Utf8(masslynx::NameOf(record));
  function.kind = isTypeKnown ? static_cast<FunctionKind>(masslynx::FunctionKindOfType(record.typeCode))
                              : FunctionKind::kOther;
  function.monitoring = static_cast<Monitoring>(masslynx::MonitoringOfType(record.typeCode));
  function.msLevel = isTypeKnown ? std::optional(masslynx::MsLevelOfType(record.typeCode)) : std::nullopt;
  function.scanType = static_cast<ScanType>(masslynx::ScanTypeOfType(record.typeCode));
  function.polarity = static_cast<Polarity>(masslynx::PolarityOfIonMode(record.ionMode));
  function.isLockMass = record.label.find(L"Lock Mass") != std::wstring::npos;
  if (record.massRangeKnown) function.massRange = Range{record.lowMass, record.highMass};
  function.hasMobility = record.hasMobilityData && !record.processed;
  function.isOfMobility = record.hasMobilityData;
  function.hasOwnMasses = masslynx::HasOwnMasses(record.dataFormat);
  return function;
}

RawSource::RawSource(std::string path, const SystemPath& folder, const std::string& chosen)
    : Source(std::move(path)), directory_(OpenDirectory(Path(), folder)) {
  const std::span<const FunctionRecord> all = directory_.Functions();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool isListed = all[i].typeCode != masslynx::kDadType && directory_.HasScans(i) &&
                          !(all[i].processed && all[i].number == 0);  // not the name of a function
    if (isListed && (chosen.empty() || StemOf(all[i]) == chosen)) List(i);
  }
  absorbance_ = masslynx::FindAbsorbance(all);
  const bool isAbsorbance = absorbance_ && StemOf(all[*absorbance_]) == chosen;
  if (!chosen.empty() && functions_.empty() && !isAbsorbance)
    throw Error(Status::kNotRecognised, Path() + " belongs to no function: give its folder (" +
                                            Split(Path()).first + ") or one of its data files");
  if (!chosen.empty())
    chosen_ = masslynx::SubjectOf(all[functions_.empty() ? *absorbance_ : positions_.front()]);
  NameFunctions();
  mobilityPath_ = masslynx::MobilityPath(folder);
}

void RawSource::List(std::size_t position) {
  positions_.push_back(position);
  Function& function = functions_.emplace_back(Describe(directory_.Functions()[position]));
  function.file = platform::ToUtf8Path(directory_.DataFileName(position));
}

// Functions of one name get their numbers appended, even when the others are lost or were not chosen: a name
// does not depend on what else is read.
void RawSource::NameFunctions() {
  std::map<std::string, int> counts;
  for (const FunctionRecord& record : directory_.Functions()) {
    if (record.typeCode != masslynx::kDadType) ++counts[Utf8(masslynx::NameOf(record))];
  }
  for (Function& function : functions_) {
    if (counts[function.name] > 1) function.name += ' ' + TextOf(function.id);
  }
}

std::string RawSource::SampleName(int) { return "Injection 1"; }

std::size_t RawSource::PositionOf(int function) const {
  return At(std::span(positions_), function, "function");
}

std::size_t RawSource::AbsorbancePosition() const {
  if (!absorbance_) throw Error(Status::kWrongArgument, "there are no absorbance spectra");
  return *absorbance_;
}

FunctionRecord& RawSource::LoadedAt(std::size_t position) {
  FunctionRecord& record = directory_.LoadedFunction(position);
  ThrowRefusal({}, directory_.TakeRefusal());
  return record;
}

const ScanIndexEntry& RawSource::EntryOf(const FunctionRecord& record, int scan) {
  return At(std::span(record.scanIndex), scan, "scan");
}

// `what` names the scan in the message that it cannot be read.
template <class What>
RawSource::StoredScan RawSource::Fetch(std::size_t position, const std::optional<ScanRoom>& room, What what) {
  if (!room) ThrowUnread(what());
  const std::optional<Bytes> bytes = directory_.ReadScan(position, *room);
  ThrowRefusal({}, directory_.TakeRefusal());
  if (!bytes) ThrowUnread(what() + ": " + directory_.WhyNoData(position));
  return {*room, *bytes};
}

RawSource::StoredScan RawSource::FetchScan(int function, int scan) {
  const std::size_t position = PositionOf(function);
  const FunctionRecord& record = LoadedAt(position);
  EntryOf(record, scan);
  return Fetch(position, masslynx::RoomOf(record, scan),
               [&] { return TextOfScan(scan, functions_[static_cast<std::size_t>(function)]); });
}

std::vector<MetadataItem> RawSource::SampleMetadata(int) {
  using Origin = masslynx::MetadataOrigin;
  if (!metadata_.empty()) return metadata_;
  std::vector<MetadataItem> items;
  for (const masslynx::MetadataItem& item : masslynx::MetadataItems()) {
    std::string value = Utf8(masslynx::HeaderMetadata(item, directory_.Header().All()));
    if (item.origin == Origin::kDateTime) value = LocalDateTime(std::move(value), "-00-T").value_or("");
    if (item.origin == Origin::kFolder) value = platform::ToUtf8Path(directory_.Folder());
    if (item.origin == Origin::kProvider) value = Utf8(masslynx::kProviderName);
    items.push_back({Utf8(item.key), value.empty() ? std::nullopt : std::optional(std::move(value))});
  }
  return metadata_ = std::move(items);
}

std::vector<MetadataItem> RawSource::FunctionMetadata(int, int function) {
  const std::string value = Utf8(masslynx::IonModeText(directory_.Functions()[PositionOf(function)].ionMode));
  std::vector<MetadataItem> items;
  for (const masslynx::MetadataItem& item : masslynx::MetadataItems()) {
    if (item.origin == masslynx::MetadataOrigin::kIonMode)
      items.push_back({Utf8(item.key), value.empty() ? std::nullopt : std::optional(value)});
  }
  return items;
}

int RawSource::ScanCount(int, int function) {
  return static_cast<int>(LoadedAt(PositionOf(function)).scanIndex.size());
}

namespace {

constexpr float kAbsent = std::numeric_limits<float>::quiet_NaN();

// `get` gives the value of an entry.
template <class Value, class Get>
void FillColumn(std::span<Value> column, std::size_t row, std::span<const ScanIndexEntry> entries, Get get) {
  if (column.empty()) return;
  for (const ScanIndexEntry& entry : entries) column[row++] = static_cast<Value>(get(entry));
}

// The layout, which decides, may be lost.
Representation HowStored(const FunctionRecord& record, const ScanIndexEntry& entry) {
  return record.IsLost() ? Representation::kUnknown : RepresentationOf(entry.centroided);
}

float OrAbsent(const std::optional<float>& value) { return value.value_or(kAbsent); }

}  // namespace

Scan RawSource::ScanAt(int, int function, int scan) {
  const FunctionRecord& record = LoadedAt(PositionOf(function));
  const ScanIndexEntry& entry = EntryOf(record, scan);
  const masslynx::ScanFacts facts = masslynx::FactsOf(record, entry);
  Scan result;
  result.minutes = entry.retentionTime;
  result.endMinutes = facts.endMinutes;
  result.representation = HowStored(record, entry);
  result.points =
      static_cast<std::uint32_t>(masslynx::PointCounts(record).At(static_cast<std::size_t>(scan)));
  result.totalIntensity = entry.totalIntensity;
  result.precursorMz = facts.precursorMass;
  result.isPrecursorOfMethod = facts.isPrecursorOfMethod;
  result.scanValue = facts.value;
  return result;
}

// Column by column, each in a loop of few steps; few entries at a time, so that they stay where the processor
// has them at hand.
void RawSource::ReadScans(int, int function, int first, int count, const ScanColumns& columns) {
  constexpr std::size_t kAtOnce = 256;
  const FunctionRecord& record = LoadedAt(PositionOf(function));
  if (count == 0) return;
  EntryOf(record, first);
  EntryOf(record, first + count - 1);
  const masslynx::MethodFacts method(record);
  const masslynx::PointCounts points(record);
  const auto begin = static_cast<std::size_t>(first);
  const auto all = std::span(record.scanIndex).subspan(begin, static_cast<std::size_t>(count));
  for (std::size_t row = 0; row < all.size(); row += kAtOnce) {
    const auto some = all.subspan(row, std::min(kAtOnce, all.size() - row));
    const auto fill = [&](auto column, auto get) { FillColumn(column, row, some, get); };
    using Entry = ScanIndexEntry;
    fill(columns.minutes, [](const Entry& entry) { return entry.retentionTime; });
    fill(columns.endMinutes, [&](const Entry& entry) { return FactsOf(method, entry).endMinutes; });
    fill(columns.areCentroided,
         [&](const Entry& entry) { return static_cast<std::uint8_t>(HowStored(record, entry)); });
    std::size_t scan = begin + row;
    fill(columns.points, [&](const Entry&) { return points.At(scan++); });
    fill(columns.totalIntensities, [](const Entry& entry) { return entry.totalIntensity; });
    fill(columns.basePeakIntensities, [](const Entry&) { return kAbsent; });
    fill(columns.precursorMz,
         [&](const Entry& entry) { return OrAbsent(FactsOf(method, entry).precursorMass); });
    fill(columns.scanValues, [&](const Entry& entry) { return OrAbsent(FactsOf(method, entry).value); });
  }
}

std::vector<double> RawSource::Minutes(int, int function) {
  const std::vector<ScanIndexEntry>& entries = LoadedAt(PositionOf(function)).scanIndex;
  std::vector<double> minutes(entries.size());
  std::transform(entries.begin(), entries.end(), minutes.begin(),
                 [](const ScanIndexEntry& entry) { return entry.retentionTime; });
  return minutes;
}

PointsRead RawSource::ReadPoints(int, int function, int scan, std::span<double> mz,
                                 std::span<double> intensities) {
  const StoredScan stored = FetchScan(function, scan);
  RequireRoom(stored.room.points, mz, intensities);
  return Decode(function, scan, stored, mz, intensities);
}

PointsRead RawSource::ReadPoints(int, int function, int scan, std::vector<double>& mz,
                                 std::vector<double>& intensities) {
  const StoredScan stored = FetchScan(function, scan);
  mz.resize(stored.Points());
  intensities.resize(stored.Points());
  const PointsRead read = Decode(function, scan, stored, mz, intensities);
  mz.resize(read.count);
  intensities.resize(read.count);
  return read;
}

// Drops places that were not written, and points that are zeros although the scan has counted something.
// Returns how many are left and how many of these are lost.
PointsRead RawSource::CloseGapsIn(const FunctionRecord& record, int scan, const StoredScan& stored,
                                  std::size_t count, std::span<double> x, std::span<double> y) {
  const ScanIndexEntry& entry = record.scanIndex[static_cast<std::size_t>(scan)];
  const bool mayBeZeroed = entry.totalIntensity > 0 && !record.hasMobilityData;
  // More than a list of masses has may be declared. With mobility the points are elsewhere.
  const std::size_t declared = record.hasMobilityData ? stored.room.points : entry.pointCount;
  PointsRead result = {count, declared - count};
  if (!record.hasMobilityData) {
    // Ions are monitored in the order of the method.
    const bool isInOrder = masslynx::MonitoringOfType(record.typeCode) == masslynx::Monitoring::kNone;
    masslynx::FindZeroedPoints({stored.room, stored.bytes, x.first(count), y.first(count), LowestMass(record),
                                isInOrder, record.typeCode == masslynx::kDadType},
                               zeroed_);
    masslynx::FindPointsWithoutMass(record, stored.room, count, zeroed_);
    result.lost += zeroed_.size();
    AddPlaces(zeroed_, unwritten_);
  }
  if (!unwritten_.empty()) {
    CloseGaps(unwritten_, count, x.data());
    result.count = CloseGaps(unwritten_, count, y.data());
  }
  if (!mayBeZeroed || !AreZero(y.first(result.count)) || stored.room.points != count) return result;
  return {0, std::max<std::size_t>(declared, 1)};  // at least one where the index knows none
}

// Into arrays with room for all points that are there.
PointsRead RawSource::Decode(int function, int scan, const StoredScan& stored, std::span<double> mz,
                             std::span<double> intensities) {
  unwritten_.clear();
  const FunctionRecord& record = directory_.Functions()[PositionOf(function)];
  const masslynx::DecodedPoints decoded = masslynx::DecodeScan(
      record, scan, stored.room, stored.bytes, {mz.data(), intensities.data(), &unwritten_, true});
  PointsRead result = CloseGapsIn(record, scan, stored, decoded.count, mz, intensities);
  if (decoded.isUnsorted && result.count > 0) {
    result.count = InOrder(mz.first(result.count), intensities.first(result.count),
                           masslynx::MayHaveSubScans(stored.room), EntryOf(record, scan).centroided);
  }
  return result;
}

// Sums sub-scans, sorts, and returns how many points are left. Sub-scans of a profile are samples of one
// grid: samples of equal mass are added; merged as peaks, neighbours would become one. All other points stay:
// two channels may have one mass.
std::size_t RawSource::InOrder(std::span<double> mz, std::span<double> intensities, bool mayHaveSubScans,
                               bool isCentroided) {
  std::optional<PeakSum> sum;
  if (mayHaveSubScans && isCentroided) sum = masslynx::SumSubScans(mz, intensities);
  const bool sumsEqualMasses = mayHaveSubScans && !isCentroided && masslynx::HasSubScans(mz);
  unsorted_.SetSize(static_cast<int>(sum ? sum->Count() : mz.size()));
  if (sum) {
    sum->CopyTo(unsorted_.GetMasses(), unsorted_.GetIntensities());
  } else {
    std::copy(mz.begin(), mz.end(), unsorted_.GetMasses());
    std::copy(intensities.begin(), intensities.end(), unsorted_.GetIntensities());
  }
  SortSpectrum(kMassAscending, sumsEqualMasses, false, false, unsorted_);
  const std::size_t count = unsorted_.UsablePoints();
  std::copy_n(unsorted_.GetMasses(), count, mz.begin());
  std::copy_n(unsorted_.GetIntensities(), count, intensities.begin());
  return count;
}

// Whether all points may be zeros although the scan has counted something, as far as the first ones show.
bool RawSource::MayBeZeroed(const FunctionRecord& record, int scan, const StoredScan& stored) {
  constexpr std::size_t kFirst = 96;  // bytes, and more than their points
  if (!(record.scanIndex[static_cast<std::size_t>(scan)].totalIntensity > 0)) return false;
  std::array<double, kFirst> mz;
  std::array<double, kFirst> intensities;
  const Bytes bytes = stored.bytes.first(std::min(kFirst, stored.bytes.size()));
  const masslynx::DecodedPoints decoded =
      masslynx::DecodeScan(record, scan, stored.room, bytes, {mz.data(), intensities.data()});
  return AreZero(std::span(intensities).first(decoded.count));
}

std::optional<std::span<const double>> RawSource::IntensitiesWithin(int sample, int function, int scan,
                                                                    Range range, Points& points) {
  const StoredScan stored = FetchScan(function, scan);
  const FunctionRecord& record = directory_.Functions()[PositionOf(function)];
  if (masslynx::DecodeWithin(record, scan, stored.room, stored.bytes, {range.low, range.high},
                             points.intensities) &&
      !(AreZero(points.intensities) && MayBeZeroed(record, scan, stored)))
    return points.intensities;
  return Source::IntensitiesWithin(sample, function, scan, range, points);  // the fetched scan is still there
}

int RawSource::DriftBinCount(int, int function) {
  const Function& described = At(std::span(functions_), function, "function");
  return described.hasMobility ? mobility_.BinCount({mobilityPath_, described.id.number}) : 0;
}

void RawSource::ReadDriftBin(int, int function, int scan, int bin, std::vector<double>& mz,
                             std::vector<double>& intensities) {
  const Function& described = At(std::span(functions_), function, "function");
  FunctionRecord& record = LoadedAt(PositionOf(function));
  EntryOf(record, scan);
  const masslynx::MobilityScan request = {{mobilityPath_, described.id.number}, record, scan};
  if (!described.hasMobility || !mobility_.Prepare(request, bin, bin) || !mobility_.ReadBin(request, bin))
    ThrowUnread("drift bin " + std::to_string(std::int64_t{bin} + 1) + " of " + TextOfScan(scan, described));
  mz.resize(static_cast<std::size_t>(mobility_.PointCount()));
  intensities.resize(mz.size());
  mobility_.WritePoints(mz.data(), intensities.data());
}

const masslynx::TraceList& RawSource::Traced() {
  if (traces_) return *traces_;
  std::string refusal;
  masslynx::TraceList list =
      masslynx::ReadTraceList(directory_.Folder(), &refusal).value_or(masslynx::TraceList());
  ThrowRefusal({}, refusal);
  return traces_.emplace(std::move(list));
}

std::vector<Trace> RawSource::Traces(int) {
  std::vector<Trace> traces;
  const auto add = [&](std::wstring_view name) {
    traces.push_back({static_cast<int>(traces.size()) + 1, Utf8(name)});
  };
  for (const std::wstring& name : Traced().names) add(name);
  if (absorbance_) add(masslynx::kTotalAbsorbance);
  return traces;
}

Chromatogram RawSource::ReadTrace(int, int trace) {
  const masslynx::TraceList& list = Traced();
  const auto position = static_cast<std::size_t>(trace);
  const std::string what = "trace " + std::to_string(std::int64_t{trace} + 1);
  Chromatogram chromatogram;
  if (position == list.names.size() && absorbance_) {
    chromatogram.name = Utf8(masslynx::kTotalAbsorbance);
    for (const ScanIndexEntry& entry : LoadedAt(AbsorbancePosition()).scanIndex) {
      chromatogram.minutes.push_back(entry.retentionTime);
      chromatogram.intensities.push_back(entry.totalIntensity);
    }
    return chromatogram;
  }
  chromatogram.name = Utf8(At(std::span(list.names), trace, "trace"));
  std::string refusal;
  const std::optional<masslynx::TraceData> data =
      masslynx::TraceData::Open(directory_.Folder(), list, position, &refusal);
  ThrowRefusal({}, refusal);
  if (!data) ThrowUnread(what);
  chromatogram.minutes.resize(data->Count());
  chromatogram.intensities.resize(data->Count());
  masslynx::TraceData::Zeros zeros;
  const auto kept = data->Read(chromatogram.minutes.data(), chromatogram.intensities.data(), &zeros);
  ThrowRefusal(what + ' ', data->Refusal());
  if (!kept) ThrowUnread(what);
  const std::size_t measured = std::min(*kept, data->Count() - zeros.inside - zeros.end);
  const auto front = static_cast<std::ptrdiff_t>(std::min(measured, zeros.front));
  for (std::vector<double>* const column : {&chromatogram.minutes, &chromatogram.intensities}) {
    column->resize(measured);
    column->erase(column->begin(), column->begin() + front);
  }
  return chromatogram;
}

Function RawSource::AbsorbanceFunction(int) {
  Function function = Describe(directory_.Functions()[AbsorbancePosition()]);
  function.file = platform::ToUtf8Path(directory_.DataFileName(*absorbance_));
  return function;
}

int RawSource::AbsorbanceScanCount(int) {
  return absorbance_ ? static_cast<int>(LoadedAt(AbsorbancePosition()).scanIndex.size()) : 0;
}

double RawSource::AbsorbanceMinutes(int, int scan) {
  return EntryOf(LoadedAt(AbsorbancePosition()), scan).retentionTime;
}

PointsRead RawSource::ReadAbsorbance(int, int scan, std::vector<double>& wavelengths,
                                     std::vector<double>& values) {
  const std::size_t position = AbsorbancePosition();
  const FunctionRecord& record = LoadedAt(position);
  EntryOf(record, scan);
  const StoredScan stored = Fetch(position, masslynx::AbsorbanceRoomOf(record, scan),
                                  [&] { return "absorbance spectrum " + std::to_string(scan + 1); });
  wavelengths.resize(stored.Points());
  values.resize(stored.Points());
  unwritten_.clear();
  const std::size_t count =
      masslynx::DecodeAbsorbance(stored.room, stored.bytes, {wavelengths.data(), values.data(), &unwritten_});
  const PointsRead result = CloseGapsIn(record, scan, stored, count, wavelengths, values);
  wavelengths.resize(result.count);
  values.resize(result.count);
  return result;
}

// Absorbance and traces are there whichever function is chosen.
bool RawSource::Includes(const FindingSubject& subject) const {
  return !chosen_ || subject.kind != FindingSubject::Kind::kFunction || subject == *chosen_;
}

std::span<const Finding> RawSource::Findings() {
  if (findings_) return findings_->List();
  zrml::Findings own;  // stored only when complete, even if memory runs out
  const zrml::Findings all = directory_.CollectFindings();
  for (const Finding& finding : all.List()) {
    if (Includes(finding.subject)) own.Add(finding);
  }
  return findings_.emplace(std::move(own)).List();
}

std::unique_ptr<Source> OpenRawDirectory(const std::string& path) {
  const SystemPath given = platform::FromUtf8Path(path);
  const bool isFile = platform::IsFile(given);
  const auto [parent, name] = Split(path);
  if (isFile && !name.starts_with('_')) return nullptr;
  const std::string folder = isFile ? parent : WithoutLastSeparator(path);
  const SystemPath folderPath = platform::FromUtf8Path(folder);
  if (!platform::IsDirectory(folderPath)) return nullptr;
  const bool hasHeader = masslynx::IsThere(folderPath, masslynx::kHeaderName);
  const bool hasTable = masslynx::IsThere(folderPath, masslynx::kFunctionTableName);
  const bool hasData = masslynx::IsThere(folderPath, masslynx::FunctionFileName(1, L"DAT"));
  if (!hasHeader && !hasTable && !hasData) return nullptr;
  if (!hasHeader || !hasTable) {
    throw Error(Status::kNotRecognised, folder + " is no raw directory: it has no " +
                                            std::string(hasHeader  ? "_FUNCTNS.INF"
                                                        : hasTable ? "_HEADER.TXT"
                                                                   : "_HEADER.TXT and no _FUNCTNS.INF"));
  }
  return std::make_unique<RawSource>(path, folderPath, isFile ? masslynx::FunctionStem(name) : std::string());
}

}  // namespace zrml::source
