#include "tools/zrml/plugin_comparison.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tools/zrml/names.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/plugin_scans.h"

namespace zrml::tool {

namespace {

constexpr std::string_view kDateTime = "AnalysisDateTime";
constexpr const char* kFolder = "DatasetName";
constexpr std::string_view kIonMode = "IonizationMethod";
constexpr std::string_view kFunctionText = "CompleteFunctionBlock";  // of a report's function
constexpr const char* kNoDateTime = "-00-T";
constexpr const char* kNoReportDateTime = "T";

struct ProviderRow {
  std::string_view guid;
  std::string_view filter;
};

// In the order of source::Format.
constexpr std::array<ProviderRow, 2> kProviders = {{
    {"{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}", "Waters MassLynx (*.dat *.idx *.inf)"},
    {"{c1972a1b-f675-4d08-921a-3e6f8d107c76}", "Waters OpenLynx Report (*.rpt)"},
}};

// What slots read in a report and the source does not: numbers, or lines of them, and what stands behind a
// brace that is missing.
constexpr std::array kDamage = {
    FindingCode::kDecimalComma, FindingCode::kNumberUnread,  FindingCode::kPointsUnread,
    FindingCode::kBytesZeroed,  FindingCode::kLinesJoined,   FindingCode::kBraceMissing,
    FindingCode::kLineCut,      FindingCode::kSampleUnended,
};

std::string Narrow(std::wstring_view text) { return platform::ToNativePath(text); }

class Comparer : Verdicts {
 public:
  Comparer(PluginComparison& result, const PluginLibrary& plugin, source::Source& source)
      : Verdicts(result), plugin_(plugin), source_(&source) {}

  void Compare() {
    if (!Open()) return;
    CompareProvider();
    const int samples = Agreed("GetSampleCount", server_->GetSampleCount(), source_->SampleCount());
    CheckWanted(kWanted.samplesBehindEnd, "samples", server_->GetFileSampleCount(wholePath_), samples,
                IsReport() ? reportSlots_->CountSamplesOfText() : samples);
    for (int sample = 0; sample < samples; ++sample) CompareSample(sample);
    place_ = {};
    Check("Close", "success", server_->Close(), true);
  }

 private:
  bool IsReport() const { return source_->GetFormat() == source::Format::kReport; }

  // The source as a whole

  bool TryProviders(const std::wstring& path) {
    for (int i = 0; i < plugin_.ProviderCount(); ++i) {
      server_ = plugin_.CreateServer(i);
      if (server_->CanOpen(path) && server_->ValidateSource(path)) {
        wholePath_ = path;
        return true;
      }
    }
    return false;
  }

  // A data file of a raw directory is a choice in the directory, for the plug-in as for the source.
  bool Open() {
    std::wstring path = platform::FromNativePath(source_->Path());
    const bool isFile = platform::IsFile(path);
    constexpr std::wstring_view kSeparators = L"/\\";
    const auto separator = path.find_last_of(kSeparators);
    const std::wstring folder = separator == std::wstring::npos ? L"." : path.substr(0, separator);
    while (!isFile && path.size() > 1 && kSeparators.find(path.back()) != std::wstring_view::npos)
      path.pop_back();
    if (TryProviders(path)) {
      TakeFolderForChoice();
      return IsOpened("Open", server_->Open(path));
    }
    if (isFile && TryProviders(folder)) {
      DropUnlistedChoice();
      return IsOpened("OpenFileInSet", server_->OpenFileInSet(folder, path));
    }
    AddFault("ValidateSource", "no provider of the plug-in takes the source");
    return false;
  }

  // To the plug-in, a folder named like a data file chooses that file.
  void TakeFolderForChoice() {
    constexpr std::size_t kNameLength = 12;
    constexpr std::size_t kStemLength = 8;  // "_func002"
    const std::string folder = source_->Path() + '/';
    const std::string name = ToLower(Narrow(wholePath_));
    if (IsReport() || name.size() < kNameLength) return;
    const std::string stem = name.substr(name.size() - kNameLength, kStemLength);
    for (const int position : Listed(0)) {
      const std::string& file = source_->Functions(0)[static_cast<std::size_t>(position)].file;
      if (ToLower(file).starts_with(stem + '.')) return CompareInstead(folder + file, kWanted.folderChoice);
    }
  }

  void DropUnlistedChoice() {
    if (Listed(0).empty()) CompareInstead(Narrow(wholePath_), kWanted.droppedChoice);
  }

  void CompareInstead(const std::string& path, const Wanted& difference) {
    other_ = source::Source::Open(path);
    source_ = other_.get();
    if (!Listed(0).empty()) Count(difference);
  }

  bool IsOpened(std::string_view slot, bool isOpened) {
    const std::span<const Finding> findings = source_->Findings();
    const bool isCut = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
      return finding.code == FindingCode::kFunctionTableCut;
    });
    if (isCut) Count(kWanted.refusedTable);
    Check(slot, "success", isOpened, !isCut);
    const platform::SystemPath path = platform::ToSystemPath(wholePath_);
    IsReport() ? void(reportSlots_.emplace(path)) : void(rawSlots_.emplace(path));
    return isOpened;
  }

  void CompareProvider() {
    const ProviderRow& row = kProviders.at(static_cast<std::size_t>(source_->GetFormat()));
    Check("GetProviderName", "name", Narrow(server_->GetProviderName()), ProviderName(source_->GetFormat()));
    Check("GetProviderGuid", "GUID", Narrow(server_->GetProviderGuid()), std::string(row.guid));
    Check("GetFileFilter", "filter", Narrow(server_->GetFileFilter()), std::string(row.filter));
    Check("IsReportSource", "report", server_->IsReportSource(), IsReport());
  }

  // Samples

  // Of the sample, or of the whole report.
  bool HasFinding(int sample, std::span<const FindingCode> codes) {
    const std::span<const Finding> findings = source_->Findings();
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
      const FindingSubject& subject = finding.subject;
      const bool isAbout = subject.kind != FindingSubject::Kind::kSample || subject.sample == sample + 1;
      return isAbout && std::find(codes.begin(), codes.end(), finding.code) != codes.end();
    });
  }

  bool IsDamaged(int sample) { return HasFinding(sample, kDamage); }

  // The source ends such a sample where the next one begins.
  bool IsUnended(int sample) { return HasFinding(sample, std::array{FindingCode::kSampleUnended}); }

  void CompareSample(int sample) {
    place_ = {.sample = sample};
    if (IsReport()) reportSlots_->Enter(sample, IsDamaged(sample));
    const std::string name = source_->SampleName(sample);
    CheckWanted(kWanted.unendedSample, "name", Narrow(server_->GetSampleName(sample)), name,
                IsUnended(sample) ? reportSlots_->Name() : name);
    CompareTraces(sample);  // before anything about functions, which the count of traces may depend on
    ListFunctions(sample);
    const int functions = static_cast<int>(list_.positions.size());
    for (int function = 0; function < functions; ++function) CompareFunction(sample, function);
    place_ = {.sample = sample};
    if (functions == 0) CompareMetadata(sample, 0, std::nullopt);
    CompareAbsorbance(sample);
  }

  // The functions of a raw directory that have no data file.
  std::set<FindingSubject> FunctionsWithoutData() {
    std::set<FindingSubject> functions;
    for (const Finding& finding : source_->Findings()) {
      const bool isUnopened = finding.code == FindingCode::kFileUnreadable && finding.file.ends_with(".DAT");
      if (finding.code == FindingCode::kDataMissing || isUnopened) functions.insert(finding.subject);
    }
    return functions;
  }

  // The source's positions of the functions that the plug-in lists for a raw directory.
  std::vector<int> Listed(int sample) {
    const std::span<const source::Function> functions = source_->Functions(sample);
    const std::set<FindingSubject> lost = FunctionsWithoutData();
    std::vector<int> positions;
    for (std::size_t i = 0; i < functions.size(); ++i) {
      if (!lost.contains(SubjectOf(*source_, sample, functions[i].id)))
        positions.push_back(static_cast<int>(i));
    }
    return positions;
  }

  // The same for a report.
  std::vector<int> ListedOfReport(int sample) {
    const std::span<const source::Function> functions = source_->Functions(sample);
    std::vector<int> positions;
    for (int i = 0; i < reportSlots_->FunctionCount(); ++i) {
      const source::FunctionId id = reportSlots_->Describe(i).id;
      const auto held = std::find_if(functions.begin(), functions.end(),
                                     [&](const source::Function& each) { return each.id == id; });
      positions.push_back(held != functions.end() ? static_cast<int>(held - functions.begin()) : kNotHeld);
    }
    return positions;
  }

  bool IsLost(const source::Function& function) const { return rawSlots_ && rawSlots_->IsLost(function.id); }

  source::Function FunctionAt(int sample, int position) {
    const int held = list_.positions[static_cast<std::size_t>(position)];
    const bool isOther = held == kNotHeld || (IsReport() && reportSlots_->HasOtherTexts(position));
    if (isOther) return reportSlots_->Describe(position);
    const source::Function& function = source_->Functions(sample)[static_cast<std::size_t>(held)];
    return IsLost(function) ? rawSlots_->Describe(function.id) : function;
  }

  std::optional<SlotScans> OtherScansOf(int sample, int position) {
    return IsReport() ? reportSlots_->OtherScans(position)
                      : rawSlots_->OtherScans(FunctionAt(sample, position).id);
  }

  void ListFunctions(int sample) {
    list_ = {};
    list_.positions = IsReport() ? ListedOfReport(sample) : Listed(sample);
    const int wanted = static_cast<int>(list_.positions.size());
    for (int i = 0; i < wanted; ++i) {
      if (TextOf(FunctionAt(sample, i).id) != std::to_string(i + 1)) Count(kWanted.listPosition);
    }
    const int given = server_->GetFunctionCount(sample);
    const int held = static_cast<int>(source_->Functions(sample).size());
    if (!IsReport() && held != wanted) Count(kWanted.unlistedFunction);
    Check("GetFunctionCount", "count", given, wanted);
    list_.positions.resize(static_cast<std::size_t>(std::clamp(given, 0, wanted)));
    names_.clear();
    if (rawSlots_ && rawSlots_->HasLost()) {
      std::vector<source::FunctionId> ids;
      for (std::size_t i = 0; i < list_.positions.size(); ++i)
        ids.push_back(FunctionAt(sample, static_cast<int>(i)).id);
      names_ = rawSlots_->NamesOf(ids);
    }
    CountFunctions(sample);
  }

  // What answers about one function depend on in all of them.
  void CountFunctions(int sample) {
    uses_.clear();
    withMobility_.clear();
    const std::span<const source::Function> functions = source_->Functions(sample);
    for (const source::Function& function : functions) {
      ++uses_[BaseName(function)].all;
      if (function.id.process == 0 && function.hasMobility) withMobility_.insert(function.id.number);
    }
    for (std::size_t i = 0; i < list_.positions.size(); ++i) {
      const int position = static_cast<int>(i);
      const source::Function function = FunctionAt(sample, position);
      ++uses_[BaseName(function)].listed;
      const bool isOther = OtherScansOf(sample, position).has_value();
      const bool hasOtherTexts = IsReport() && reportSlots_->HasOtherTexts(position);
      list_.hasOtherScans = list_.hasOtherScans || isOther || hasOtherTexts;
      list_.hasOtherTimes = list_.hasOtherTimes || HasUntimedScans(sample, position);
      list_.hasEmptyLevel = list_.hasEmptyLevel || (!isOther && function.msLevel == 1 &&
                                                    source_->ScanCount(sample, list_.positions[i]) == 0);
    }
    if (list_.hasOtherScans || list_.hasOtherTimes) list_.hasEmptyLevel = false;
  }

  // To the slots their times are 0.
  bool HasUntimedScans(int sample, int position) {
    const int held = list_.positions[static_cast<std::size_t>(position)];
    return IsReport() && held != kNotHeld &&
           std::ranges::any_of(source_->Minutes(sample, held), [](double time) { return std::isnan(time); });
  }

  // Functions

  void CompareFunction(int sample, int position) {
    const int held = list_.positions[static_cast<std::size_t>(position)];
    of_ = {.sample = sample, .position = position, .held = held, .function = FunctionAt(sample, position)};
    const source::Function& function = of_.function;
    place_ = {.sample = sample, .function = TextOf(function.id)};
    of_.kind = GivenKind(function);
    of_.others = OtherScansOf(sample, position);
    of_.hasMobility = function.hasMobility || IsMadeOfMobility(function);
    const int scans = CompareScanCount();
    DescribeFunction(function, scans);
    CompareMobility(function);
    CompareScans(
        Result(),
        {*server_, *source_, rawSlots_ ? &*rawSlots_ : nullptr, reportSlots_ ? &*reportSlots_ : nullptr},
        list_, of_, scans);
    CompareFunctionTraces();
    CompareMetadata(sample, position, held);
  }

  const Wanted& OtherContents() const {
    return reportSlots_->IsDamaged() ? kWanted.damagedText : kWanted.unclosedFunction;
  }

  int CompareScanCount() {
    if (IsLost(of_.function)) {
      Count(kWanted.lostRecord);
    } else if (of_.others) {
      Count(IsReport() ? OtherContents() : kWanted.indexOfSlots);
    }
    return Agreed(
        "GetScanCount", server_->GetScanCount(of_.sample, of_.position),
        of_.others ? static_cast<int>(of_.others->scans.size()) : source_->ScanCount(of_.sample, of_.held));
  }

  bool IsMadeOfMobility(const source::Function& function) const {
    return function.id.process != 0 && withMobility_.contains(function.id.number);
  }

  // An unknown type of a report is the interface's absorbance.
  int GivenKind(const source::Function& function) const {
    const bool isUnknown = IsReport() && function.kind == source::FunctionKind::kOther;
    return KindCode(isUnknown ? source::FunctionKind::kAbsorbance : function.kind);
  }

  void DescribeFunction(const source::Function& function, int scans) {
    const int sample = of_.sample;
    const int position = of_.position;
    CompareName(function);
    CheckWanted(kWanted.unknownKind, "kind", server_->GetFunctionKind(sample, position),
                KindCode(function.kind), of_.kind);
    Check("GetMSMSScanType", "type", server_->GetMSMSScanType(sample, position),
          static_cast<int>(function.scanType));
    Check("GetPolarity", "polarity", server_->GetPolarity(sample, position),
          static_cast<int>(function.polarity));
    Check("GetMSLevel", "level", server_->GetMSLevel(sample, position), function.msLevel.value_or(0));
    const int scanDimensions = of_.hasMobility ? 2 : 1;
    CheckWanted(kWanted.scanDimensions, "dimensions", server_->GetScanDimensionCount(sample, position),
                scanDimensions, IsReport() ? 0 : scanDimensions);
    Check("GetDimensionCount", "dimensions", server_->GetDimensionCount(sample, position),
          scanDimensions + (scans > 1 ? 1 : 0));
    CheckCentroided(scans);
    const auto askRange = [&](double& low, double& high) {
      return server_->GetFunctionMassRange(sample, position, low, high);
    };
    CheckRange("GetFunctionMassRange", askRange, function.massRange);
  }

  // Without the number that distinguishes functions of one name.
  static std::string BaseName(const source::Function& function) {
    const std::string end = ' ' + TextOf(function.id);
    const bool hasNumber = function.name.ends_with(end);
    return hasNumber ? function.name.substr(0, function.name.size() - end.size()) : function.name;
  }

  void CompareName(const source::Function& function) {
    const bool isUnnamed = IsReport() && reportSlots_->IsUnnamed(of_.position);
    const std::string given = Narrow(server_->GetFunctionName(of_.sample, of_.position));
    CheckWanted(isUnnamed ? kWanted.unnamedFunction : kWanted.sharedName, "name", given, function.name,
                isUnnamed ? "Function " + std::to_string(of_.position + 1) : NameInList(function, given));
  }

  // Counts only functions that are in the list. One that shares its name with a lost function alone has no
  // number there, but a name may end like one with a number.
  std::string NameInList(const source::Function& own, const std::string& given) const {
    if (!names_.empty()) return names_[static_cast<std::size_t>(of_.position)];
    const std::string base = BaseName(own);
    if (IsReport() || base == own.name) return own.name;
    const NameUses& uses = uses_.at(base);
    if (uses.all < 2) return given == base ? base : own.name;
    return uses.listed > 1 ? base + ' ' + std::to_string(of_.position + 1) : base;
  }

  void CheckCentroided(int scans) {
    bool held = false;
    bool isRefused = false;
    if (scans > 0 && of_.others) {
      held = of_.others->scans.front().representation == source::Representation::kCentroid;
      isRefused = IsReport() && !of_.others->read(0);
    } else if (scans > 0) {
      held = source_->ScanAt(of_.sample, of_.held, 0).representation == source::Representation::kCentroid;
      isRefused = IsReport() && source_->ReadPoints(of_.sample, of_.held, 0, x_, y_).count == 0;
    }
    CheckWanted(kWanted.refusedFirstSpectrum, "centroided", server_->IsCentroided(of_.sample, of_.position),
                held, held && !isRefused);
  }

  void CompareMobility(const source::Function& function) {
    const int sample = of_.sample;
    const int position = of_.position;
    CheckWanted(kWanted.processedMobility, "mobility", server_->HasMobility(sample, position),
                function.hasMobility, of_.hasMobility);
    of_.driftBins = source_->DriftBinCount(of_.sample, of_.held);
    const int given = server_->GetMobilityBinCount(sample, position);
    if (of_.hasMobility == function.hasMobility) Check("GetMobilityBinCount", "bins", given, of_.driftBins);
    if (of_.hasMobility != function.hasMobility)
      of_.driftBins = given;  // of another function than the source's
    if (of_.hasMobility && of_.driftBins == 0) Count(kWanted.lastDriftBin);
    HostVector<double> axis;
    Check("GetMobilityAxis", "success", server_->GetMobilityAxis(sample, position, 0, axis),
          of_.driftBins > 0);
    std::vector<double> bins(static_cast<std::size_t>(of_.driftBins));
    std::iota(bins.begin(), bins.end(), 1.0);
    CheckColumn("GetMobilityAxis", "value", axis, bins);
    const auto askRange = [&](double& low, double& high) {
      return server_->GetScanMobilityRange(sample, position, 0, low, high);
    };
    std::optional<source::Range> range;
    if (of_.driftBins > 0) range = source::Range{1, static_cast<double>(of_.driftBins)};
    CheckRange("GetScanMobilityRange", askRange, range);
  }

  // Traces

  source::Chromatogram TraceOfSlots(int sample, int trace) {
    source::Chromatogram held = source_->ReadTrace(sample, trace);
    const auto stored = rawSlots_ ? rawSlots_->ReadStoredTrace(trace) : std::nullopt;
    if (!stored || stored->x.size() == held.minutes.size()) return held;
    Count(kWanted.zeroedTrace);
    return {.name = held.name, .minutes = stored->x, .intensities = stored->y};
  }

  void CompareTraces(int sample) {
    TraceList list = {source_->Traces(sample), [=, this](int trace) { return TraceOfSlots(sample, trace); }};
    const int held = static_cast<int>(list.traces.size());
    if (IsReport()) {
      list = reportSlots_->OtherTraces().value_or(list);
    } else if (!rawSlots_->HasTraceList()) {
      list.traces.clear();
    }
    const int wanted = static_cast<int>(list.traces.size());
    const int given = server_->GetTraceCount(sample);
    CheckWanted(IsReport() ? kWanted.repeatedTrace : kWanted.lostTraces, "count", given, held, wanted);
    const bool isGrowing = IsReport() && reportSlots_->HasOnlyAnalog();
    CheckWanted(kWanted.growingTraces, "count", server_->GetTraceCount(sample), wanted,
                isGrowing ? 2 * wanted : wanted);
    CompareTraceList(
        list, std::min(given, wanted), "GetTraceName",
        [&](int trace) { return server_->GetTraceName(sample, trace); }, "GetTrace",
        [&](int trace, CZRChromatogram& points) { return server_->GetTrace(sample, trace, points); });
  }

  template <class GiveName, class Give>
  void CompareTraceList(const TraceList& list, int count, std::string_view nameSlot, GiveName giveName,
                        std::string_view slot, Give give) {
    for (int trace = 0; trace < count; ++trace) {
      place_.trace = trace;
      Check(nameSlot, "name", Narrow(giveName(trace)), list.traces[static_cast<std::size_t>(trace)].name);
      const std::optional<source::Chromatogram> held = Held([&] { return list.read(trace); });
      const bool isWanted = held && !(IsReport() && held->minutes.empty());
      if (held && !isWanted) Count(kWanted.refusedTrace);
      const source::Chromatogram expected = held.value_or(source::Chromatogram{});
      CheckChromatogram(
          slot, [&](CZRChromatogram& given) { return give(trace, given); }, isWanted, expected.minutes,
          expected.intensities);
    }
    place_.trace.reset();
  }

  TraceList FunctionTraces() {
    if (auto others = IsReport() ? reportSlots_->OtherTraces(of_.position) : std::nullopt) {
      Count(OtherContents());
      return *others;
    }
    return {source_->FunctionTraces(of_.sample, of_.held),
            [this](int trace) { return source_->ReadFunctionTrace(of_.sample, of_.held, trace); }};
  }

  void CompareFunctionTraces() {
    const int sample = of_.sample;
    const int position = of_.position;
    const TraceList list = FunctionTraces();
    const int count = Agreed("GetFunctionTraceCount", server_->GetFunctionTraceCount(sample, position),
                             static_cast<int>(list.traces.size()));
    CompareTraceList(
        list, count, "GetFunctionTraceName",
        [&](int trace) { return server_->GetFunctionTraceName(sample, position, trace); }, "GetFunctionTrace",
        [&](int trace, CZRChromatogram& points) {
          return server_->GetFunctionTrace(sample, position, trace, points);
        });
  }

  // Absorbance

  void CompareAbsorbance(int sample) {
    const bool isThere = source_->HasAbsorbance(sample);
    Check("HasAbsorbanceData", "absorbance", server_->HasAbsorbanceData(sample), isThere);
    const int scans = Agreed("GetAbsorbanceScanCount", server_->GetAbsorbanceScanCount(sample),
                             isThere ? source_->AbsorbanceScanCount(sample) : 0);
    for (int scan = 0; scan < scans; ++scan) {
      place_.scan = scan;
      CompareAbsorbanceScan(sample, scan);
    }
    place_.scan.reset();
  }

  void CompareAbsorbanceScan(int sample, int scan) {
    const auto read = Held([&] { return source_->ReadAbsorbance(sample, scan, x_, y_); });
    CZRAbsorbanceSpectrum given;
    const bool isGiven = server_->GetAbsorbanceSpectrum(sample, scan, given);
    if (!Check("GetAbsorbanceSpectrum", "success", isGiven, read.has_value()) || !isGiven) return;
    CheckSlotPoints("GetAbsorbanceSpectrum", {given.Wavelengths(), given.Absorbances()}, {x_, y_},
                    read->lost != 0, rawSlots_->ReadAbsorbance(source_->AbsorbanceFunction(sample).id, scan));
    CheckWanted(kWanted.absorbanceScan, "first scan", given.FirstScan(), scan + 1, scan);
    CheckWanted(kWanted.absorbanceScan, "last scan", given.LastScan(), scan + 1, scan);
    const double minutes = source_->AbsorbanceMinutes(sample, scan);
    Check("GetAbsorbanceSpectrum", "start time", given.StartTime(), minutes);
    Check("GetAbsorbanceSpectrum", "end time", given.EndTime(), minutes);
  }

  // Metadata

  // With the text of a report's function as returned by the slots.
  std::vector<source::MetadataItem> ItemsOf(int sample, int position, std::optional<int> held) {
    std::vector<source::MetadataItem> items = source_->SampleMetadata(sample);
    if (IsUnended(sample)) {
      std::vector<source::MetadataItem> own = std::exchange(items, reportSlots_->Items());
      const auto isSame = [](const auto& a, const auto& b) { return a.key == b.key && a.value == b.value; };
      if (!std::equal(own.begin(), own.end(), items.begin(), items.end(), isSame))
        Count(kWanted.unendedSample);
    }
    if (!held) return items;
    if (!IsReport()) {
      std::vector<source::MetadataItem> own = source_->FunctionMetadata(sample, *held);
      if (IsLost(of_.function)) own.front().value = rawSlots_->IonModeOf(of_.function.id);
      return source::Merged(std::move(items), std::move(own));
    }
    const std::optional<std::string> text = reportSlots_->TextOf(position);
    items.push_back({std::string(kFunctionText), text});
    if (*held == kNotHeld) return items;
    const std::optional<std::string> own = source_->FunctionText(sample, *held);
    const bool isLonger = own && own != text && (!text || text->starts_with(*own));
    if (isLonger) Count(kWanted.unclosedFunction);
    if (!isLonger) items.back().value = own;
    return items;
  }

  void CompareMetadata(int sample, int position, std::optional<int> held) {
    const std::vector<source::MetadataItem> items = ItemsOf(sample, position, held);
    std::vector<std::wstring> keys;
    const bool isGiven = server_->GetMetadataKeys(sample, position, keys);
    const bool isWanted = !IsReport() || held;
    CheckWanted(kWanted.noMetadata, "success", isGiven, true, isWanted);
    if (!isGiven || !isWanted) return;
    Check("GetMetadataKeys", "keys", static_cast<int>(keys.size()), static_cast<int>(items.size()));
    for (std::size_t i = 0; i < std::min(keys.size(), items.size()); ++i) {
      Check("GetMetadataKeys", "key", Narrow(keys[i]), items[i].key);
      std::wstring value;
      const bool hasValue = server_->GetMetadataValue(sample, position, keys[i], value);
      // A function's text is left out when it is very long.
      const bool isLongText = !items[i].value && items[i].key == kFunctionText;
      const bool isOfNoFunction = !held && items[i].key == kIonMode;
      CheckWanted(kWanted.noMetadataValue, items[i].key.c_str(), hasValue, items[i].value.has_value(),
                  !isLongText && !isOfNoFunction);
      if (!hasValue) continue;
      if (items[i].key == kFolder && items[i].value) {
        CheckWanted(kWanted.folderEnd, kFolder, Narrow(value), *items[i].value, *items[i].value + '\\');
        continue;
      }
      if (items[i].key == kDateTime) {
        const std::string own = items[i].value.value_or(IsReport() ? kNoReportDateTime : kNoDateTime);
        CheckWanted(kWanted.dateZone, items[i].key.c_str(), Narrow(value), own, WithZone(own));
        continue;
      }
      Check("GetMetadataValue", items[i].key.c_str(), Narrow(value), items[i].value.value_or(""));
    }
  }

  // Of a raw directory it has no more characters than the interface's buffer.
  std::string WithZone(const std::string& dateTime) const {
    constexpr std::size_t kMost = 79;
    std::string text = dateTime + "+00:00";
    if (!IsReport() && text.size() > kMost) text.resize(kMost);
    return text;
  }

  struct NameUses {
    int all = 0;
    int listed = 0;
  };

  const PluginLibrary& plugin_;
  source::Source* source_;
  std::unique_ptr<source::Source> other_;  // compared instead of the given one
  std::unique_ptr<CDataServerImpl> server_;
  std::wstring wholePath_;
  std::optional<RawSlots> rawSlots_;
  std::optional<ReportSlots> reportSlots_;
  ComparedList list_;
  std::unordered_map<std::string, NameUses> uses_;  // by name without number
  std::vector<std::string> names_;                  // of the list, where the records of some are lost
  std::set<int> withMobility_;                      // numbers of raw functions
  ComparedFunction of_;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace

PluginComparison ComparePlugin(const PluginLibrary& plugin, source::Source& source) {
  PluginComparison result;
  Comparer(result, plugin, source).Compare();
  return result;
}

}  // namespace zrml::tool
