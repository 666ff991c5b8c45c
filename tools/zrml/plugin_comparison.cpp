#include "tools/zrml/plugin_comparison.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>

#include "common/platform/platform.h"
#include "tools/zrml/description.h"
#include "tools/zrml/format.h"
#include "tools/zrml/names.h"

namespace zrml::tool {

namespace {

constexpr std::string_view kDateTime = "AnalysisDateTime";
constexpr const char* kFolder = "DatasetName";
constexpr std::string_view kIonMode = "IonizationMethod";
constexpr const char* kNoDateTime = "-00-T+00:00";

constexpr int kProbes = 50;  // scans of a function for slots that read a spectrum for one number of it

struct ProviderRow {
  std::string_view name;
  std::string_view guid;
  std::string_view filter;
};

// In the order of source::Format.
constexpr std::array<ProviderRow, 2> kProviders = {{
    {"ZRMLProvider", "{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}", "Waters MassLynx (*.dat *.idx *.inf)"},
    {"ZROpenLynxRptProvider", "{c1972a1b-f675-4d08-921a-3e6f8d107c76}", "Waters OpenLynx Report (*.rpt)"},
}};

std::string Narrow(std::wstring_view text) { return platform::ToNativePath(text); }

double ZeroIfAbsent(double value) { return std::isnan(value) ? 0 : value; }

// Whether it is one of the scans that are looked at more closely.
bool IsProbed(int scan, int count) { return scan % (count / kProbes + 1) == 0 || scan + 1 == count; }

class Comparer : Verdicts {
 public:
  Comparer(const PluginLibrary& plugin, source::Source& source) : plugin_(plugin), source_(source) {}

  PluginComparison Compare() {
    if (Open()) {
      CompareProvider();
      const int samples = Agreed("GetSampleCount", server_->GetSampleCount(), source_.SampleCount());
      Check("GetFileSampleCount", "samples", server_->GetFileSampleCount(wholePath_), samples);
      for (int sample = 0; sample < samples; ++sample) CompareSample(sample);
      place_ = {};
      Check("Close", "success", server_->Close(), true);
    }
    return TakeResult();
  }

 private:
  bool IsReport() const { return source_.GetFormat() == source::Format::kReport; }

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
    std::wstring path = platform::FromNativePath(source_.Path());
    const bool isFile = platform::IsFile(path);
    constexpr std::wstring_view kSeparators = L"/\\";
    const auto separator = path.find_last_of(kSeparators);
    const std::wstring folder = separator == std::wstring::npos ? L"." : path.substr(0, separator);
    while (!isFile && path.size() > 1 && kSeparators.find(path.back()) != std::wstring_view::npos)
      path.pop_back();
    if (TryProviders(path)) return IsOpened("Open", server_->Open(path));
    if (isFile && TryProviders(folder))
      return IsOpened("OpenFileInSet", server_->OpenFileInSet(folder, path));
    AddFault("ValidateSource", "no provider of the plug-in takes the source");
    return false;
  }

  bool IsOpened(std::string_view slot, bool isOpened) {
    const std::span<const Finding> findings = source_.Findings();
    const bool isCut = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
      return finding.code == FindingCode::kFunctionTableCut;
    });
    if (isCut) Count(Wanted::kRefusedTable);
    Check(slot, "success", isOpened, !isCut);
    return isOpened;
  }

  void CompareProvider() {
    const ProviderRow& row = kProviders.at(static_cast<std::size_t>(source_.GetFormat()));
    Check("GetProviderName", "name", Narrow(server_->GetProviderName()), std::string(row.name));
    Check("GetProviderGuid", "GUID", Narrow(server_->GetProviderGuid()), std::string(row.guid));
    Check("GetFileFilter", "filter", Narrow(server_->GetFileFilter()), std::string(row.filter));
    Check("IsReportSource", "report", server_->IsReportSource(), IsReport());
  }

  // Samples

  void CompareSample(int sample) {
    place_ = {.sample = sample};
    Check("GetSampleName", "name", Narrow(server_->GetSampleName(sample)), source_.SampleName(sample));
    CompareTraces(sample);  // before anything about functions, which the count of traces may depend on
    ListFunctions(sample);
    const int functions = static_cast<int>(listed_.size());
    for (int function = 0; function < functions; ++function) CompareFunction(sample, function);
    place_ = {.sample = sample};
    if (functions == 0) CompareMetadata(sample, 0, std::nullopt);
    CompareAbsorbance(sample);
  }

  // The functions of a raw directory that have no data file.
  std::set<FindingSubject> FunctionsWithoutData() {
    std::set<FindingSubject> functions;
    for (const Finding& finding : source_.Findings()) {
      const bool isUnopened = finding.code == FindingCode::kFileUnreadable && finding.file.ends_with(".DAT");
      if (finding.code == FindingCode::kDataMissing || isUnopened) functions.insert(finding.subject);
    }
    return functions;
  }

  // The source's positions of the functions that the plug-in lists.
  void ListFunctions(int sample) {
    listed_.clear();
    const std::span<const source::Function> functions = source_.Functions(sample);
    const std::set<FindingSubject> lost = IsReport() ? std::set<FindingSubject>() : FunctionsWithoutData();
    for (std::size_t i = 0; i < functions.size(); ++i) {
      const source::FunctionId& id = functions[i].id;
      if (lost.contains({FindingSubject::Kind::kFunction, 0, id.number, id.process, id.repeat})) continue;
      listed_.push_back(static_cast<int>(i));
      if (TextOf(id) != std::to_string(listed_.size())) Count(Wanted::kListPosition);
    }
    const int given = server_->GetFunctionCount(sample);
    const int wanted = static_cast<int>(listed_.size());
    CheckWanted(Wanted::kUnlistedFunction, "count", given, static_cast<int>(functions.size()), wanted);
    listed_.resize(static_cast<std::size_t>(std::clamp(given, 0, wanted)));
    CountFunctions(sample);
  }

  // What answers about one function depend on in all of them.
  void CountFunctions(int sample) {
    uses_.clear();
    withMobility_.clear();
    hasEmptyLevel_ = false;
    const std::span<const source::Function> functions = source_.Functions(sample);
    for (const source::Function& function : functions) {
      ++uses_[BaseName(function)].all;
      if (function.id.process == 0 && function.hasMobility) withMobility_.insert(function.id.number);
    }
    for (const int position : listed_) {
      const source::Function& function = functions[static_cast<std::size_t>(position)];
      ++uses_[BaseName(function)].listed;
      hasEmptyLevel_ = hasEmptyLevel_ || (function.msLevel == 1 && source_.ScanCount(sample, position) == 0);
    }
  }

  // Functions

  void CompareFunction(int sample, int position) {
    const int held = listed_[static_cast<std::size_t>(position)];
    const source::Function function = source_.Functions(sample)[static_cast<std::size_t>(held)];
    place_ = {.sample = sample, .function = TextOf(function.id)};
    at_ = {sample, position, held};
    hasMobility_ = function.hasMobility || IsMadeOfMobility(function);
    const int scans =
        Agreed("GetScanCount", server_->GetScanCount(sample, position), source_.ScanCount(sample, held));
    DescribeFunction(function, scans);
    CompareMobility(function, scans);
    CompareSpectra(function, scans);
    CompareSeries();
    CompareFunctionTraces();
    CompareMetadata(sample, position, held);
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
    const auto [sample, position, held] = at_;
    CheckWanted(Wanted::kSharedName, "name", Narrow(server_->GetFunctionName(sample, position)),
                function.name, NameInList(function, position));
    CheckWanted(Wanted::kUnknownKind, "kind", server_->GetFunctionKind(sample, position),
                KindCode(function.kind), GivenKind(function));
    Check("GetMSMSScanType", "type", server_->GetMSMSScanType(sample, position),
          static_cast<int>(function.scanType));
    Check("GetPolarity", "polarity", server_->GetPolarity(sample, position),
          static_cast<int>(function.polarity));
    Check("GetMSLevel", "level", server_->GetMSLevel(sample, position), function.msLevel);
    const int scanDimensions = hasMobility_ ? 2 : 1;
    CheckWanted(Wanted::kScanDimensions, "dimensions", server_->GetScanDimensionCount(sample, position),
                scanDimensions, IsReport() ? 0 : scanDimensions);
    Check("GetDimensionCount", "dimensions", server_->GetDimensionCount(sample, position),
          scanDimensions + (scans > 1 ? 1 : 0));
    CheckCentroided(scans);
    const auto askRange = [&, sample = sample, position = position](double& low, double& high) {
      return server_->GetFunctionMassRange(sample, position, low, high);
    };
    CheckRange("GetFunctionMassRange", askRange, function.massRange.has_value(),
               function.massRange.value_or(source::Range{}));
  }

  // Without the number that tells functions of one name apart.
  static std::string BaseName(const source::Function& function) {
    const std::string end = ' ' + TextOf(function.id);
    const bool hasNumber = function.name.ends_with(end);
    return hasNumber ? function.name.substr(0, function.name.size() - end.size()) : function.name;
  }

  // Counts only functions that are in the list.
  std::string NameInList(const source::Function& own, int position) const {
    const std::string base = BaseName(own);
    const NameUses& uses = uses_.at(base);
    if (IsReport() || base == own.name || uses.all < 2) return own.name;
    return uses.listed > 1 ? base + ' ' + std::to_string(position + 1) : base;
  }

  void CheckCentroided(int scans) {
    const bool held = scans > 0 && source_.ScanAt(at_.sample, at_.held, 0).isCentroided;
    const bool isRefused = scans > 0 && IsReport() && CountPoints(0) == 0;
    CheckWanted(Wanted::kRefusedFirstSpectrum, "centroided", server_->IsCentroided(at_.sample, at_.position),
                held, held && !isRefused);
  }

  std::size_t CountPoints(int scan) { return source_.ReadPoints(at_.sample, at_.held, scan, x_, y_).count; }

  // Spectra

  // The chromatograms that follow from the points as the plug-in is to give them, scan by scan.
  struct Computed {
    bool isComplete = true;  // every spectrum is given
    std::optional<source::Range> range;
    std::vector<double> minutes;
    std::vector<double> largest;
    std::vector<double> largestInRange;
    std::vector<double> sumInRange;
  };

  // The middle half of the points of the first spectrum that has some.
  void ChooseRange(const CZRMassSpectrum& spectrum) {
    const std::size_t count = spectrum.UsablePoints();
    if (computed_.range || count == 0) return;
    const auto [low, high] =
        std::minmax(spectrum.GetMasses()[count / 4], spectrum.GetMasses()[count - 1 - count / 4]);
    computed_.range = source::Range{low, high};
  }

  void CompareSpectra(const source::Function& function, int scans) {
    computed_ = {};
    for (int scan = 0; scan < scans; ++scan) {
      place_.scan = scan;
      CZRMassSpectrum spectrum;
      const bool isGiven = CompareSpectrum(function, scan, spectrum);
      if (IsProbed(scan, scans)) CompareScanSlots(scan, isGiven, spectrum);
      computed_.isComplete = computed_.isComplete && isGiven;
      if (computed_.isComplete) Compute(spectrum);
    }
    place_.scan.reset();
    CompareComputed(scans);
  }

  void Compute(const CZRMassSpectrum& spectrum) {
    ChooseRange(spectrum);
    const source::Range range = computed_.range.value_or(source::Range{});
    computed_.minutes.push_back(spectrum.GetStartTime());
    computed_.largest.push_back(spectrum.GetMaxIntensityInRange(-DBL_MAX, DBL_MAX));
    computed_.largestInRange.push_back(spectrum.GetMaxIntensityInRange(range.low, range.high));
    computed_.sumInRange.push_back(spectrum.GetIntensitySumInRange(range.low, range.high));
  }

  bool CompareSpectrum(const source::Function& function, int scan, CZRMassSpectrum& spectrum) {
    const source::Scan held = source_.ScanAt(at_.sample, at_.held, scan);
    std::optional<source::PointsRead> read;
    try {
      read = source_.ReadPoints(at_.sample, at_.held, scan, x_, y_);
    } catch (const source::Error&) {
    }
    const bool isWanted = read && !(IsReport() && read->count == 0);
    const bool isGiven = server_->GetSpectrum(at_.sample, at_.position, scan, spectrum);
    CheckWanted(Wanted::kRefusedSpectrum, "success", isGiven, read.has_value(), isWanted);
    if (!isGiven || !isWanted) return isGiven;
    const Columns given = {{spectrum.GetMasses(), spectrum.UsablePoints()},
                           {spectrum.GetIntensities(), spectrum.UsablePoints()}};
    if (IsReport()) {
      CompareReportPoints(given);
    } else {
      ComparePoints("GetSpectrum", given, {x_, y_}, held.points,
                    read->lost != 0 ? Wanted::kLostPoints : Wanted::kUnwrittenPoints);
    }
    CompareAttributes(function, held, scan, spectrum);
    return true;
  }

  void CompareReportPoints(const Columns& given) {
    std::vector<std::size_t> order(given.x.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return given.x[a] < given.x[b]; });
    if (!std::is_sorted(order.begin(), order.end())) Count(Wanted::kReportOrder);
    std::vector<double> x;
    std::vector<double> y;
    for (const std::size_t i : order) {
      x.push_back(given.x[i]);
      y.push_back(given.y[i]);
    }
    ComparePoints("GetSpectrum", {x, y}, {x_, y_}, x_.size(), Wanted::kReportOrder);
  }

  void CompareAttributes(const source::Function& function, const source::Scan& held, int scan,
                         const CZRMassSpectrum& given) {
    const auto check = [&](const char* what, const auto& value, const auto& expected) {
      Check("GetSpectrum", what, value, expected);
    };
    CheckWanted(Wanted::kAbsentScanTime, "start time", given.GetStartTime(), held.minutes,
                ZeroIfAbsent(held.minutes));
    CheckWanted(Wanted::kAbsentScanTime, "end time", given.GetEndTime(), held.endMinutes,
                ZeroIfAbsent(held.endMinutes));
    const int number = scan + 1;
    const int narrow = static_cast<std::int16_t>(number);
    CheckWanted(Wanted::kScanNumber, "first scan", given.GetFirstScan(), number, narrow);
    CheckWanted(Wanted::kScanNumber, "last scan", given.GetLastScan(), number, narrow);
    check("centroided", given.IsCentroided(), held.isCentroided);
    check("level", given.GetMSLevel(), function.msLevel);
    check("kind", given.GetScanType(), GivenKind(function));
    const int polarity = static_cast<int>(function.polarity);
    CheckWanted(Wanted::kPolarity, "polarity", given.GetPolarity(), polarity,
                polarity == kNegativePolarity ? polarity : int{kPositivePolarity});
    CheckOptional(Wanted::kNoPrecursor, "precursor", given.GetPrecursorMass(), held.precursorMz);
    CheckOptional(Wanted::kNoScanValue, "scan value", given.GetScanAuxValue(), held.scanValue);
    check("title", Narrow(Wide(given.GetTitle())), std::string());
    check("label", Narrow(Wide(given.GetLabel())), std::string());
    const int firstBin = hasMobility_ ? 1 : 0;
    check("first drift bin", given.GetFirstDriftBin(), firstBin);
    check("last drift bin", given.GetLastDriftBin(), driftBins_);
    check("first drift value", given.GetFirstDriftValue(), static_cast<double>(firstBin));
    check("last drift value", given.GetLastDriftValue(), static_cast<double>(driftBins_));
  }

  static std::wstring Wide(const HostString& text) { return {text.begin(), text.end()}; }

  // Slots that give one number or two of a scan.
  void CompareScanSlots(int scan, bool isGiven, CZRMassSpectrum& spectrum) {
    const auto [sample, position, held] = at_;
    double first = 0;
    if (Check("GetScanRetentionTime", "success", server_->GetScanRetentionTime(sample, position, scan, first),
              isGiven) &&
        isGiven) {
      Check("GetScanRetentionTime", "time", first, spectrum.GetStartTime());
    }
    if (!hasMobility_) CompareScanRanges(scan, isGiven, spectrum);
    ComparePrecursor(scan);
  }

  void CompareScanRanges(int scan, bool isGiven, CZRMassSpectrum& spectrum) {
    const auto [sample, position, held] = at_;
    const auto ask = [&, sample = sample, position = position](auto slot) {
      return [&, sample, position, slot](double& low, double& high) {
        return (*server_.*slot)(sample, position, scan, low, high);
      };
    };
    source::Range masses;
    const bool hasMasses = isGiven && spectrum.GetMassRange(masses.low, masses.high);
    if (hasMasses && !IsReport()) Count(Wanted::kRefusedMassRange);
    CheckRange("GetScanMassRange", ask(&CDataServerImpl::GetScanMassRange), hasMasses && IsReport(), masses);
    CheckRange("GetScanIntensityRange", ask(&CDataServerImpl::GetScanIntensityRange), isGiven,
               {spectrum.GetMinIntensity(), spectrum.GetBasePeakIntensity()});
  }

  void ComparePrecursor(int scan) {
    const auto [sample, position, held] = at_;
    source::ScanPosition given;
    const bool isFound = server_->FindPrecursorScan(sample, position, scan, given.function, given.scan);
    const auto expected = source_.FindPrecursor(sample, held, scan);
    CheckWanted(Wanted::kPrecursorSearch, "success", isFound, expected.has_value(),
                expected.has_value() && !hasEmptyLevel_);
    if (!isFound || !expected) return;
    const bool isListed = std::binary_search(listed_.begin(), listed_.end(), expected->function);
    if (!isListed) return Count(Wanted::kUnlistedFunction);
    const auto place = static_cast<std::size_t>(given.function);
    const int function = place < listed_.size() ? listed_[place] : -1;
    Check("FindPrecursorScan", "function", function, expected->function);
    Check("FindPrecursorScan", "scan", given.scan, expected->scan);
  }

  // Chromatograms

  void CompareComputed(int scans) {
    const auto [sample, position, held] = at_;
    const bool isComplete = computed_.isComplete && static_cast<int>(computed_.minutes.size()) == scans;
    const source::Range range = computed_.range.value_or(source::Range{});
    CZRChromatogram sums;
    Compare("GetMassRangeChromatogram",
            server_->GetMassRangeChromatogram(range.low, range.high, true, sample, position, sums), sums,
            isComplete, computed_.sumInRange);
    CZRChromatogram largest;
    Compare("GetMassRangeBasePeakChromatogram",
            server_->GetMassRangeBasePeakChromatogram(range.low, range.high, true, sample, position, largest),
            largest, isComplete, computed_.largestInRange);
    if (IsReport()) return;
    CZRChromatogram basePeaks;
    Compare("GetBasePeakChromatogram", server_->GetBasePeakChromatogram(true, sample, position, basePeaks),
            basePeaks, isComplete, computed_.largest);
  }

  void Compare(std::string_view slot, bool isGiven, const CZRChromatogram& given, bool isComplete,
               const std::vector<double>& expected) {
    if (!Check(slot, "success", isGiven, isComplete) || !isGiven) return;
    CheckColumn(slot, "time", given.Times(), computed_.minutes);
    CheckColumn(slot, "intensity", given.Intensities(), expected);
  }

  // What the index or the report tells scan by scan.
  void CompareSeries() {
    const auto [sample, position, held] = at_;
    const std::vector<double> minutes = WithZeros(source_.Minutes(sample, held), Wanted::kAbsentTime);
    HostVector<double> times;
    Check("GetRetentionTimes", "success", server_->GetRetentionTimes(sample, position, times), true);
    CheckColumn("GetRetentionTimes", "time", times, minutes);
    CZRChromatogram total;
    Check("GetTotalIonChromatogram", "success",
          server_->GetTotalIonChromatogram(true, sample, position, total), true);
    CheckColumn("GetTotalIonChromatogram", "time", total.Times(), minutes);
    CheckColumn("GetTotalIonChromatogram", "intensity", total.Intensities(),
                WithZeros(source_.TotalIons(sample, held).intensities, Wanted::kAbsentTotal));
    if (!IsReport()) return;
    CZRChromatogram basePeaks;
    Check("GetBasePeakChromatogram", "success",
          server_->GetBasePeakChromatogram(true, sample, position, basePeaks), true);
    CheckColumn("GetBasePeakChromatogram", "time", basePeaks.Times(), minutes);
    CheckColumn("GetBasePeakChromatogram", "intensity", basePeaks.Intensities(),
                WithZeros(source_.BasePeaks(sample, held).intensities, Wanted::kAbsentBasePeak));
  }

  std::vector<double> WithZeros(std::vector<double> values, Wanted difference) {
    for (double& value : values) {
      if (std::isnan(value)) Count(difference);
      value = ZeroIfAbsent(value);
    }
    return values;
  }

  // Ion mobility

  void CompareMobility(const source::Function& function, int scans) {
    const auto [sample, position, held] = at_;
    CheckWanted(Wanted::kProcessedMobility, "mobility", server_->HasMobility(sample, position),
                function.hasMobility, hasMobility_);
    driftBins_ = source_.DriftBinCount(sample, held);
    const int given = server_->GetMobilityBinCount(sample, position);
    if (hasMobility_ == function.hasMobility) Check("GetMobilityBinCount", "bins", given, driftBins_);
    if (hasMobility_ != function.hasMobility) driftBins_ = given;  // of another function than the source's
    if (hasMobility_ && driftBins_ == 0) Count(Wanted::kLastDriftBin);
    HostVector<double> axis;
    Check("GetMobilityAxis", "success", server_->GetMobilityAxis(sample, position, 0, axis), driftBins_ > 0);
    std::vector<double> bins(static_cast<std::size_t>(driftBins_));
    std::iota(bins.begin(), bins.end(), 1.0);
    CheckColumn("GetMobilityAxis", "value", axis, bins);
    const auto askRange = [&, sample = sample, position = position](double& low, double& high) {
      return server_->GetScanMobilityRange(sample, position, 0, low, high);
    };
    CheckRange("GetScanMobilityRange", askRange, driftBins_ > 0, {1, static_cast<double>(driftBins_)});
    for (int scan = 0; scan < scans && function.hasMobility && driftBins_ > 0; ++scan) {
      if (IsProbed(scan, scans)) CompareDriftBins(scan);
    }
    place_.scan.reset();
  }

  // Several at once are filled up to the first that cannot be read.
  void CompareDriftBins(int scan) {
    const auto [sample, position, held] = at_;
    place_.scan = scan;
    HostVector<CZRMassSpectrum> spectra;
    const bool areGiven = server_->GetMobilitySpectra(sample, position, scan, 0, driftBins_ - 1, spectra);
    bool isComplete = true;
    for (int bin = 0; bin < driftBins_; ++bin) {
      const bool isHeld = ReadDriftBin(scan, bin);
      isComplete = isComplete && isHeld;
      CZRMassSpectrum spectrum;
      const bool isGiven = server_->GetMobilitySpectrum(sample, position, scan, bin, spectrum);
      Check("GetMobilitySpectrum", "success", isGiven, isHeld);
      if (isGiven && isHeld) CompareBin("GetMobilitySpectrum", spectrum);
      const auto place = static_cast<std::size_t>(bin);
      if (isComplete && place < spectra.size()) CompareBin("GetMobilitySpectra", spectra[place]);
    }
    Check("GetMobilitySpectra", "success", areGiven, isComplete);
  }

  bool ReadDriftBin(int scan, int bin) {
    try {
      source_.ReadDriftBin(at_.sample, at_.held, scan, bin, x_, y_);
      return true;
    } catch (const source::Error&) {
      return false;
    }
  }

  void CompareBin(std::string_view slot, const CZRMassSpectrum& given) {
    const std::size_t count = given.UsablePoints();
    ComparePoints(slot, {{given.GetMasses(), count}, {given.GetIntensities(), count}}, {x_, y_}, x_.size(),
                  Wanted::kLostPoints);
  }

  // Traces

  void CompareTraces(int sample) {
    const std::vector<source::Trace> traces = source_.Traces(sample);
    const int count =
        Agreed("GetTraceCount", server_->GetTraceCount(sample), static_cast<int>(traces.size()));
    const int again =
        static_cast<int>(traces.size()) * (IsReport() && source_.Functions(sample).empty() ? 2 : 1);
    CheckWanted(Wanted::kGrowingTraces, "count", server_->GetTraceCount(sample),
                static_cast<int>(traces.size()), again);
    for (int trace = 0; trace < count; ++trace) {
      place_.trace = trace;
      const std::string& name = traces[static_cast<std::size_t>(trace)].name;
      Check("GetTraceName", "name", Narrow(server_->GetTraceName(sample, trace)), name);
      CZRChromatogram given;
      const bool isGiven = server_->GetTrace(sample, trace, given);
      CompareTrace("GetTrace", isGiven, given, [&] { return source_.ReadTrace(sample, trace); });
    }
    place_.trace.reset();
  }

  template <class Read>
  void CompareTrace(std::string_view slot, bool isGiven, const CZRChromatogram& given, Read read) {
    std::optional<source::Chromatogram> held;
    try {
      held = read();
    } catch (const source::Error&) {
    }
    const bool isWanted = held && !(IsReport() && held->minutes.empty());
    if (held && !isWanted) Count(Wanted::kRefusedTrace);
    if (!Check(slot, "success", isGiven, isWanted) || !isGiven) return;
    CheckColumn(slot, "time", given.Times(), held->minutes);
    CheckColumn(slot, "intensity", given.Intensities(), held->intensities);
  }

  void CompareFunctionTraces() {
    const auto [sample, position, held] = at_;
    const std::vector<source::Trace> traces = source_.FunctionTraces(sample, held);
    const int count = Agreed("GetFunctionTraceCount", server_->GetFunctionTraceCount(sample, position),
                             static_cast<int>(traces.size()));
    for (int trace = 0; trace < count; ++trace) {
      place_.trace = trace;
      Check("GetFunctionTraceName", "name", Narrow(server_->GetFunctionTraceName(sample, position, trace)),
            traces[static_cast<std::size_t>(trace)].name);
      CZRChromatogram given;
      const bool isGiven = server_->GetFunctionTrace(sample, position, trace, given);
      CompareTrace("GetFunctionTrace", isGiven, given, [&, sample = sample, held = held] {
        return source_.ReadFunctionTrace(sample, held, trace);
      });
    }
    place_.trace.reset();
  }

  // Absorbance

  void CompareAbsorbance(int sample) {
    const bool isThere = source_.HasAbsorbance(sample);
    Check("HasAbsorbanceData", "absorbance", server_->HasAbsorbanceData(sample), isThere);
    const int scans = Agreed("GetAbsorbanceScanCount", server_->GetAbsorbanceScanCount(sample),
                             isThere ? source_.AbsorbanceScanCount(sample) : 0);
    for (int scan = 0; scan < scans; ++scan) {
      place_.scan = scan;
      CompareAbsorbanceScan(sample, scan);
    }
    place_.scan.reset();
  }

  void CompareAbsorbanceScan(int sample, int scan) {
    std::optional<source::PointsRead> read;
    try {
      read = source_.ReadAbsorbance(sample, scan, x_, y_);
    } catch (const source::Error&) {
    }
    CZRAbsorbanceSpectrum given;
    const bool isGiven = server_->GetAbsorbanceSpectrum(sample, scan, given);
    if (!Check("GetAbsorbanceSpectrum", "success", isGiven, read.has_value()) || !isGiven) return;
    ComparePoints("GetAbsorbanceSpectrum", {given.Wavelengths(), given.Absorbances()}, {x_, y_},
                  given.Wavelengths().size(),
                  read->lost != 0 ? Wanted::kLostPoints : Wanted::kUnwrittenPoints);
    CheckWanted(Wanted::kAbsorbanceScan, "first scan", given.FirstScan(), scan + 1, scan);
    CheckWanted(Wanted::kAbsorbanceScan, "last scan", given.LastScan(), scan + 1, scan);
    const double minutes = source_.AbsorbanceMinutes(sample, scan);
    Check("GetAbsorbanceSpectrum", "start time", given.StartTime(), minutes);
    Check("GetAbsorbanceSpectrum", "end time", given.EndTime(), minutes);
  }

  // Metadata

  void CompareMetadata(int sample, int position, std::optional<int> held) {
    const std::vector<source::MetadataItem> items = MetadataOf(source_, sample, held);
    std::vector<std::wstring> keys;
    const bool isGiven = server_->GetMetadataKeys(sample, position, keys);
    const bool isWanted = !IsReport() || held;
    CheckWanted(Wanted::kNoMetadata, "success", isGiven, true, isWanted);
    if (!isGiven || !isWanted) return;
    Check("GetMetadataKeys", "keys", static_cast<int>(keys.size()), static_cast<int>(items.size()));
    for (std::size_t i = 0; i < std::min(keys.size(), items.size()); ++i) {
      Check("GetMetadataKeys", "key", Narrow(keys[i]), items[i].key);
      std::wstring value;
      const bool hasValue = server_->GetMetadataValue(sample, position, keys[i], value);
      // A function's text is not given when it is very long.
      const bool isLongText = !items[i].value && items[i].key == kFunctionText;
      const bool isOfNoFunction = !held && items[i].key == kIonMode;
      CheckWanted(Wanted::kNoMetadataValue, items[i].key.c_str(), hasValue, items[i].value.has_value(),
                  !isLongText && !isOfNoFunction);
      if (!hasValue) continue;
      if (items[i].key == kFolder && items[i].value) {
        CheckWanted(Wanted::kFolderEnd, kFolder, Narrow(value), *items[i].value, *items[i].value + '\\');
        continue;
      }
      Check("GetMetadataValue", items[i].key.c_str(), Narrow(value),
            items[i].value.value_or(items[i].key == kDateTime ? kNoDateTime : ""));
    }
  }

  struct NameUses {
    int all = 0;
    int listed = 0;
  };

  // Of the function that is being compared.
  struct At {
    int sample = 0;
    int position = 0;  // in the plug-in's list
    int held = 0;      // in the source's
  };

  const PluginLibrary& plugin_;
  source::Source& source_;
  std::unique_ptr<CDataServerImpl> server_;
  std::wstring wholePath_;
  At at_;
  std::vector<int> listed_;                         // ascending
  std::unordered_map<std::string, NameUses> uses_;  // by name without number
  std::set<int> withMobility_;                      // numbers of raw functions
  bool hasEmptyLevel_ = false;                      // a function of level 1 without scans
  bool hasMobility_ = false;                        // as the plug-in is to tell it
  int driftBins_ = 0;
  Computed computed_;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace

PluginComparison ComparePlugin(const PluginLibrary& plugin, source::Source& source) {
  return Comparer(plugin, source).Compare();
}

}  // namespace zrml::tool
