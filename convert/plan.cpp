#include "convert/plan.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "common/text.h"
#include "convert/channels.h"
#include "convert/error.h"
#include "convert/native_path.h"
#include "convert/source_files.h"

namespace zrml::convert {
namespace {

using source::Function;
using source::MetadataItem;
using source::Source;

constexpr std::string_view kAbsorbance = "Absorbance";
constexpr std::string_view kFolderKey = "DatasetName";

bool TakesAbsorbance(Format format) { return format == Format::kMzml; }
bool TakesChromatograms(Format format) { return format == Format::kMzml; }

bool IsAbsorbance(const Function& function) { return function.kind == source::FunctionKind::kAbsorbance; }
bool IsMonitoring(const Function& function) { return function.monitoring != source::Monitoring::kNone; }

bool IsFunctionWanted(const Function& function, const Selection& selection, Format format) {
  if (!selection.functions.Has(function.id) || !selection.msLevels.Has(MsLevelOf(function))) return false;
  if (selection.isLockMassExcluded && function.isLockMass) return false;
  if (!selection.HasPolarity(function)) return false;
  if (!IsMonitoring(function)) return format != Format::kMgf || function.msLevel > 1;
  // A list of MS levels never includes them: they hold a few ions, where surveys and fragments have spectra.
  return format != Format::kMgf && (selection.msLevels.IsAll() || !selection.functions.IsAll());
}

// `isAlone` when no mass scan is requested. A range of functions does not request absorbance.
Absorbance UseOfAbsorbance(const Function& function, const Selection& selection, Format format,
                           bool isAlone) {
  if (!TakesAbsorbance(format)) return Absorbance::kNone;
  if (selection.hasAbsorbance) return Absorbance::kTaken;
  const bool isMass = !selection.msLevels.IsAll() || selection.polarity != source::Polarity::kUnknown;
  if (!selection.functions.Has(function.id) || isMass) return Absorbance::kNone;
  const std::vector<source::FunctionId> named = selection.functions.Named();
  if (std::find(named.begin(), named.end(), function.id) != named.end()) return Absorbance::kTaken;
  return isAlone ? Absorbance::kTakenAlone : Absorbance::kLeftOut;
}

bool IsTaken(Absorbance absorbance) {
  return absorbance == Absorbance::kTaken || absorbance == Absorbance::kTakenAlone;
}

// Mass scans in requested functions. Functions whose scans cannot be counted have some.
bool HasWantedScans(Source& source, int sample, const Selection& selection, Format format) {
  const std::span<const Function> functions = source.Functions(sample);
  try {
    for (std::size_t i = 0; i < functions.size(); ++i) {
      const bool isWanted = !IsAbsorbance(functions[i]) && IsFunctionWanted(functions[i], selection, format);
      if (isWanted && source.ScanCount(sample, static_cast<int>(i)) > 0) return true;
    }
  } catch (const source::Error&) {
    return true;
  }
  return false;
}

// Of the detector of a raw directory.
std::vector<double> AbsorbanceMinutes(Source& source, int sample) {
  std::vector<double> minutes(static_cast<std::size_t>(source.AbsorbanceScanCount(sample)));
  for (std::size_t i = 0; i < minutes.size(); ++i)
    minutes[i] = source.AbsorbanceMinutes(sample, static_cast<int>(i));
  return minutes;
}

// Whether the path is a data file, which selects only its own function.
bool IsOneFunction(Source& source) {
  if (source.GetFormat() == source::Format::kReport) return false;
  const std::span<const Function> functions = source.Functions(0);
  const SystemPath path = platform::FromUtf8Path(source.Path());
  if (functions.size() != 1 || !platform::IsFile(path)) return false;
  return ToLower(StemOf(path)) == ToLower(StemOf(platform::FromUtf8Path(functions.front().file)));
}

class Planner {
 public:
  Planner(Source& source, RunPlan& plan, Format format, const Cancel& cancel)
      : source_(source), plan_(plan), format_(format), cancel_(cancel) {}

  void AddFunctions() {
    const std::span<const Function> functions = source_.Functions(plan_.sample);
    for (std::size_t i = 0; i < functions.size(); ++i) {
      ThrowIfCancelled(cancel_);
      if (!IsAbsorbance(functions[i])) AddFunction(functions[i], static_cast<int>(i));
    }
    ThrowIfCancelled(cancel_);
    const bool isAlone = !hasWantedScans_ && !IsOneFunction(source_);
    for (std::size_t i = 0; i < functions.size(); ++i) {
      if (!IsAbsorbance(functions[i])) continue;
      const int position = static_cast<int>(i);
      AddAbsorbance(functions[i], position, source_.Minutes(plan_.sample, position), isAlone);
    }
    if (source_.HasAbsorbance(plan_.sample)) AddDetector(isAlone);
  }

  /// Whether there are scans, but none is requested.
  bool HasFoundNothing() const { return hasFoundScans_ && !hasTakenScans_; }

 private:
  void AddFunction(const Function& info, int position) {
    hasFoundScans_ = hasFoundScans_ || source_.ScanCount(plan_.sample, position) > 0;
    if (!IsFunctionWanted(info, plan_.selection, format_)) return;
    RunFunction& function = plan_.functions.emplace_back(RunFunction{info, position});
    if (info.hasMobility && TakesDriftBins(format_))
      function.driftBins = source_.DriftBinCount(plan_.sample, position);
    if (IsMonitoring(info) && TakesChromatograms(format_))
      function.channels = FindChannels(source_, plan_.sample, position, cancel_);
    const bool hasSpectra = function.channels.empty() || plan_.selection.hasMonitoredSpectra;
    const std::vector<double> minutes = source_.Minutes(plan_.sample, position);
    hasWantedScans_ = hasWantedScans_ || !minutes.empty();
    for (std::size_t scan = 0; scan < minutes.size(); ++scan)
      AddScan(minutes[scan], static_cast<int>(scan), hasSpectra);
  }

  // That of a raw directory.
  void AddDetector(bool isAlone) {
    Function info = source_.AbsorbanceFunction(plan_.sample);
    info.name = kAbsorbance;
    info.massRange.reset();  // it is not a range of masses
    AddAbsorbance(info, kNoPosition, AbsorbanceMinutes(source_, plan_.sample), isAlone);
  }

  // Spectra that are left out leave the function's traces.
  void AddAbsorbance(const Function& info, int position, const std::vector<double>& minutes, bool isAlone) {
    const Absorbance use = UseOfAbsorbance(info, plan_.selection, format_, isAlone);
    if (!minutes.empty()) {
      plan_.absorbance = std::max(plan_.absorbance, use);
      hasFoundScans_ = hasFoundScans_ || (TakesAbsorbance(format_) && !IsOneFunction(source_));
    }
    if (use == Absorbance::kNone) return;
    plan_.functions.push_back({.info = info, .position = position, .isAbsorbance = true});
    for (std::size_t scan = 0; IsTaken(use) && scan < minutes.size(); ++scan)
      AddScan(minutes[scan], static_cast<int>(scan), true);
  }

  // Of the function added last.
  void AddScan(double minutes, int scan, bool isSpectrum) {
    if (!plan_.selection.Has(scan, minutes)) return;
    hasTakenScans_ = true;
    if (!isSpectrum) return;
    plan_.entries.push_back({minutes, static_cast<std::int32_t>(plan_.functions.size()) - 1, scan});
  }

  Source& source_;
  RunPlan& plan_;
  Format format_;
  const Cancel& cancel_;
  bool hasFoundScans_ = false;
  bool hasWantedScans_ = false;  // mass scans in requested functions
  bool hasTakenScans_ = false;
};

// Search engines take peaks. Spectra without points are not written.
void RefuseProfiles(Source& source, const RunPlan& plan) {
  for (const RunEntry& entry : plan.entries) {
    const RunFunction& function = plan.FunctionOf(entry);
    const source::Scan scan = source.ScanAt(plan.sample, function.position, entry.scan);
    const bool isPeaks = scan.representation != source::Representation::kProfile ||
                         BecomesCentroids(plan.selection, function.info, scan);
    if (isPeaks || scan.points == 0) continue;
    throw Error(ErrorKind::kProfile, "scan " + std::to_string(entry.scan + 1) + " of function " +
                                         TextOf(function.info.id) + " is a profile, and MGF is for peaks");
  }
}

void SortByTime(std::vector<RunEntry>& entries) {
  const auto key = [](const RunEntry& entry) {
    const bool isNan = std::isnan(entry.minutes);
    return std::tuple(isNan, isNan ? 0 : entry.minutes, entry.function, entry.scan);
  };
  std::sort(entries.begin(), entries.end(),
            [&](const RunEntry& a, const RunEntry& b) { return key(a) < key(b); });
}

const std::optional<std::string>* Find(const std::vector<MetadataItem>& items, const std::string& key) {
  const auto item =
      std::find_if(items.begin(), items.end(), [&](const MetadataItem& each) { return each.key == key; });
  return item == items.end() ? nullptr : &item->value;
}

// Items of the sample and its first function. Items that have another value in a different function, or are
// only there, name that function. The folder's name does not depend on how its path was typed.
std::vector<MetadataItem> CollectMetadata(Source& source, int sample) {
  const std::span<const Function> functions = source.Functions(sample);
  const std::vector<MetadataItem> first =
      Merged(source.SampleMetadata(sample),
             functions.empty() ? std::vector<MetadataItem>() : source.FunctionMetadata(sample, 0));
  std::vector<MetadataItem> items = first;
  for (MetadataItem& item : items) {
    if (item.key == kFolderKey && item.value) item.value = PathText(NameOf(FolderOfSource(source.Path())));
  }
  for (std::size_t i = 1; i < functions.size(); ++i) {
    for (MetadataItem& item : source.FunctionMetadata(sample, static_cast<int>(i))) {
      const std::optional<std::string>* const known = Find(first, item.key);
      if (!item.value || (known != nullptr && *known == item.value)) continue;
      items.push_back({item.key + " of function " + TextOf(functions[i].id), std::move(item.value)});
    }
  }
  return items;
}

// The trace of the total absorbance, which is always there, is made of the times and totals of the index; the
// function is listed if its data file is there.
bool IsOfTotalAbsorbance(const Finding& finding) {
  constexpr FindingCode kOfIndex[] = {
      FindingCode::kIndexMissing, FindingCode::kIndexCut,         FindingCode::kIndexEmpty,
      FindingCode::kIndexZeroed,  FindingCode::kTimesLost,        FindingCode::kIndexDisordered,
      FindingCode::kTimesReturn,  FindingCode::kDataUnreferenced, FindingCode::kDataMissing,
  };
  return finding.subject.kind == FindingSubject::Kind::kAbsorbance &&
         std::ranges::find(kOfIndex, finding.code) != std::end(kOfIndex);
}

}  // namespace

FunctionKey KeyOf(const source::FunctionId& id) {
  return {id.process, id.process == 0 ? id.number : id.repeat};
}

FunctionKey KeyOf(const FindingSubject& subject) {
  return KeyOf(source::FunctionId{subject.function, subject.process, subject.repeat});
}

ConvertedSubjects::ConvertedSubjects(Source& source, int sample, const Selection& selection, Format format)
    : source_(source),
      sample_(sample),
      selection_(selection),
      format_(format),
      hasUnlisted_(!IsOneFunction(source)) {
  isAbsorbanceAlone_ = hasUnlisted_ && !HasWantedScans(source, sample, selection, format);
  for (const Function& function : source.Functions(sample)) {
    const bool isWanted = IsAbsorbance(function)
                              ? IsTaken(UseOfAbsorbance(function, selection, format, isAbsorbanceAlone_))
                              : IsFunctionWanted(function, selection, format);
    functions_.emplace(KeyOf(function.id), isWanted);
  }
  if (source.HasAbsorbance(sample)) absorbance_ = source.AbsorbanceFunction(sample);
}

// A function that is not listed, since its files are lost, is judged by its number.
bool ConvertedSubjects::HasFunction(const FindingSubject& subject) const {
  const auto listed = functions_.find(KeyOf(subject));
  if (listed != functions_.end()) return listed->second;
  return hasUnlisted_ && selection_.functions.Has({subject.function, subject.process, subject.repeat});
}

// The same for absorbance; where its number is unknown, no list of functions requests it.
bool ConvertedSubjects::HasAbsorbance(const FindingSubject& subject) const {
  Function function;
  function.id.number = subject.function;
  if (absorbance_) function = *absorbance_;
  const bool isKnown = function.id.number != 0 || selection_.functions.IsAll();
  return isKnown && IsTaken(UseOfAbsorbance(function, selection_, format_, isAbsorbanceAlone_));
}

// A minute for each scan of a function that is listed.
std::vector<double> ConvertedSubjects::MinutesOf(const FindingSubject& subject) const {
  if (subject.kind == FindingSubject::Kind::kAbsorbance) return AbsorbanceMinutes(source_, sample_);
  const std::span<const Function> functions = source_.Functions(sample_);
  for (std::size_t i = 0; i < functions.size(); ++i) {
    if (KeyOf(functions[i].id) == KeyOf(subject)) return source_.Minutes(sample_, static_cast<int>(i));
  }
  return {};
}

// Of some scans only where a part of all is asked for.
bool ConvertedSubjects::HasScans(const Finding& finding) const {
  const bool isPart = !selection_.scans.IsAll() || selection_.minutes;
  if (!isPart || finding.scans.IsEmpty()) return true;
  const std::vector<double> minutes = MinutesOf(finding.subject);
  return finding.scans.HasAny([&](std::uint64_t number) {
    const auto scan = static_cast<std::size_t>(number - 1);
    return scan >= minutes.size() || selection_.Has(static_cast<int>(scan), minutes[scan]);
  });
}

bool ConvertedSubjects::Has(const Finding& finding) const {
  return (HasSubject(finding.subject) && HasScans(finding)) ||
         (TakesChromatograms(format_) && IsOfTotalAbsorbance(finding));
}

bool ConvertedSubjects::HasSubject(const FindingSubject& subject) const {
  if (subject.sample != 0 && subject.sample != sample_ + 1) return false;
  switch (subject.kind) {
    case FindingSubject::Kind::kFunction:
      return HasFunction(subject);
    case FindingSubject::Kind::kAbsorbance:
      return HasAbsorbance(subject);
    case FindingSubject::Kind::kTraces:
      return TakesChromatograms(format_);
    case FindingSubject::Kind::kSample:
    case FindingSubject::Kind::kSource:
      break;
  }
  return true;
}

bool HasPoints(Source& source, int sample, const Selection& selection, Format format) {
  Selection profiles = selection;
  profiles.hasProfiles = true;  // whether they are refused does not matter here
  const RunPlan plan = PlanRun(source, sample, profiles, format, {});
  return std::any_of(plan.entries.begin(), plan.entries.end(), [&](const RunEntry& entry) {
    return source.ScanAt(sample, plan.FunctionOf(entry).position, entry.scan).points > 0;
  });
}

RunPlan PlanRun(Source& source, int sample, const Selection& selection, Format format, const Cancel& cancel) {
  RunPlan plan;
  plan.sourceFormat = source.GetFormat();
  plan.sample = sample;
  plan.name = RunName(source, sample);
  plan.sampleName = source.SampleName(sample);
  plan.metadata = CollectMetadata(source, sample);
  plan.selection = selection;
  Planner planner(source, plan, format, cancel);
  planner.AddFunctions();
  if (planner.HasFoundNothing()) {
    throw Error(ErrorKind::kNothingSelected, format == Format::kMgf
                                                 ? "none of its scans is an MS/MS scan that is asked for"
                                                 : "none of its scans is asked for");
  }
  if (format == Format::kMgf && !selection.hasProfiles) RefuseProfiles(source, plan);
  if (format != Format::kParquet) SortByTime(plan.entries);
  return plan;
}

}  // namespace zrml::convert
