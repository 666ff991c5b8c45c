#include "convert/plan.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "common/text.h"
#include "convert/error.h"
#include "convert/native_path.h"
#include "convert/source_files.h"

namespace zrml::convert {
namespace {

using source::Function;
using source::MetadataItem;
using source::Source;

constexpr std::string_view kAbsorbance = "Absorbance";

bool TakesAbsorbance(Format format) { return format == Format::kMzml; }
bool TakesDriftBins(Format format) { return format == Format::kMzml; }
bool TakesTraces(Format format) { return format == Format::kMzml; }

bool IsFunctionWanted(const Function& function, const Selection& selection, Format format) {
  if (!selection.functions.Has(function.id) || !selection.msLevels.Has(function.msLevel)) return false;
  if (selection.isLockMassExcluded && function.isLockMass) return false;
  return format != Format::kMgf || function.msLevel > 1;
}

bool IsAbsorbanceWanted(const Function& function, const Selection& selection, Format format) {
  return TakesAbsorbance(format) && selection.functions.Has(function.id) && selection.msLevels.IsAll();
}

class Planner {
 public:
  Planner(Source& source, RunPlan& plan, Format format, const Cancel& cancel)
      : source_(source), plan_(plan), format_(format), cancel_(cancel) {}

  void AddFunctions() {
    const std::span<const Function> functions = source_.Functions(plan_.sample);
    for (std::size_t i = 0; i < functions.size(); ++i) {
      ThrowIfCancelled(cancel_);
      AddFunction(functions[i], static_cast<int>(i));
    }
    ThrowIfCancelled(cancel_);
    if (source_.HasAbsorbance(plan_.sample)) AddAbsorbance();
  }

  bool HasFoundScans() const { return hasFoundScans_; }

 private:
  void AddFunction(const Function& info, int position) {
    hasFoundScans_ = hasFoundScans_ || source_.ScanCount(plan_.sample, position) > 0;
    if (!IsFunctionWanted(info, plan_.selection, format_)) return;
    RunFunction& function = plan_.functions.emplace_back(RunFunction{info, position});
    if (info.hasMobility && TakesDriftBins(format_))
      function.driftBins = source_.DriftBinCount(plan_.sample, position);
    const std::vector<double> minutes = source_.Minutes(plan_.sample, position);
    for (std::size_t scan = 0; scan < minutes.size(); ++scan) AddScan(minutes[scan], static_cast<int>(scan));
  }

  void AddAbsorbance() {
    Function info = source_.AbsorbanceFunction(plan_.sample);
    info.name = kAbsorbance;
    info.massRange.reset();  // which is no range of masses
    const int scans = source_.AbsorbanceScanCount(plan_.sample);
    hasFoundScans_ = hasFoundScans_ || (scans > 0 && TakesAbsorbance(format_));
    if (!IsAbsorbanceWanted(info, plan_.selection, format_)) return;
    plan_.functions.push_back({.info = info, .isAbsorbance = true});
    for (int scan = 0; scan < scans; ++scan) AddScan(source_.AbsorbanceMinutes(plan_.sample, scan), scan);
  }

  // Of the function that was added last.
  void AddScan(double minutes, int scan) {
    if (!plan_.selection.scans.Has(scan + 1) || !plan_.selection.HasTime(minutes)) return;
    plan_.entries.push_back({minutes, static_cast<std::int32_t>(plan_.functions.size()) - 1, scan});
  }

  Source& source_;
  RunPlan& plan_;
  Format format_;
  const Cancel& cancel_;
  bool hasFoundScans_ = false;
};

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

// Items of the sample and its first function; those that are another's by another value, or its alone, name
// that one.
std::vector<MetadataItem> CollectMetadata(Source& source, int sample) {
  const std::span<const Function> functions = source.Functions(sample);
  const std::vector<MetadataItem> first =
      Merged(source.SampleMetadata(sample),
             functions.empty() ? std::vector<MetadataItem>() : source.FunctionMetadata(sample, 0));
  std::vector<MetadataItem> items = first;
  for (std::size_t i = 1; i < functions.size(); ++i) {
    for (MetadataItem& item : source.FunctionMetadata(sample, static_cast<int>(i))) {
      const std::optional<std::string>* const known = Find(first, item.key);
      if (!item.value || (known != nullptr && *known == item.value)) continue;
      items.push_back({item.key + " of function " + TextOf(functions[i].id), std::move(item.value)});
    }
  }
  return items;
}

// Whether the path is a data file, which leaves its own function alone.
bool IsOneFunction(Source& source) {
  if (source.GetFormat() == source::Format::kReport) return false;
  const std::span<const Function> functions = source.Functions(0);
  const SystemPath path = platform::FromUtf8Path(source.Path());
  if (functions.size() != 1 || !platform::IsFile(path)) return false;
  return ToLower(StemOf(path)) == ToLower(StemOf(platform::FromUtf8Path(functions.front().file)));
}

}  // namespace

FunctionKey KeyOf(const source::FunctionId& id) {
  return {id.process, id.process == 0 ? id.number : id.repeat};
}

FunctionKey KeyOf(const FindingSubject& subject) {
  return KeyOf(source::FunctionId{subject.function, subject.process, subject.repeat});
}

ConvertedSubjects::ConvertedSubjects(Source& source, int sample, const Selection& selection, Format format)
    : sample_(sample + 1), selection_(selection), format_(format), hasUnlisted_(!IsOneFunction(source)) {
  for (const Function& function : source.Functions(sample))
    functions_.emplace(KeyOf(function.id), IsFunctionWanted(function, selection, format));
  if (source.HasAbsorbance(sample)) absorbance_ = source.AbsorbanceFunction(sample);
}

// A function that is not listed, since its files are lost, is as wanted as its number.
bool ConvertedSubjects::HasFunction(const FindingSubject& subject) const {
  const auto listed = functions_.find(KeyOf(subject));
  if (listed != functions_.end()) return listed->second;
  return hasUnlisted_ && selection_.functions.Has({subject.function, subject.process, subject.repeat});
}

// The same of absorbance; where nobody knows its number no list of functions asks for it.
bool ConvertedSubjects::HasAbsorbance(const FindingSubject& subject) const {
  Function function;
  function.id.number = subject.function;
  if (absorbance_) function = *absorbance_;
  const bool isKnown = function.id.number != 0 || selection_.functions.IsAll();
  return isKnown && IsAbsorbanceWanted(function, selection_, format_);
}

bool ConvertedSubjects::Has(const FindingSubject& subject) const {
  if (subject.sample != 0 && subject.sample != sample_) return false;
  switch (subject.kind) {
    case FindingSubject::Kind::kFunction:
      return HasFunction(subject);
    case FindingSubject::Kind::kAbsorbance:
      return HasAbsorbance(subject);
    case FindingSubject::Kind::kTraces:
      return TakesTraces(format_);
    case FindingSubject::Kind::kSample:
    case FindingSubject::Kind::kSource:
      break;
  }
  return true;
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
  if (plan.entries.empty() && planner.HasFoundScans()) {
    throw Error(ErrorKind::kNothingSelected, format == Format::kMgf
                                                 ? "none of its scans is an MS/MS scan that is asked for"
                                                 : "none of its scans is asked for");
  }
  SortByTime(plan.entries);
  return plan;
}

}  // namespace zrml::convert
