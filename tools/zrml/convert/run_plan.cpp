#include "tools/zrml/convert/run_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "tools/zrml/failure.h"

namespace zrml {
namespace {

// What the provider calls the reference functions of an acquisition.
constexpr std::wstring_view kLockMass = L"Lock Mass";
constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

RunFunction DescribeFunction(CDataServerImpl& server, int sample, int position) {
  RunFunction function = {.position = position, .number = position + 1};
  function.name = server.GetFunctionName(sample, position);
  function.kind = server.GetFunctionKind(sample, position);
  function.msLevel = server.GetMSLevel(sample, position);
  function.scanType = server.GetMSMSScanType(sample, position);
  function.polarity = server.GetPolarity(sample, position);
  NumberRange masses;
  if (server.GetFunctionMassRange(sample, position, masses.low, masses.high)) function.massRange = masses;
  if (server.HasMobility(sample, position))
    function.driftBins = std::max(server.GetMobilityBinCount(sample, position), 0);
  return function;
}

class Planner {
 public:
  Planner(CDataServerImpl& server, RunPlan& plan, Content content)
      : server_(server), plan_(plan), content_(content) {}

  void AddFunction(int position) {
    const RunFunction& function =
        plan_.functions.emplace_back(DescribeFunction(server_, plan_.sample, position));
    const int scans = std::max(server_.GetScanCount(plan_.sample, position), 0);
    foundScans_ += scans;
    if (scans == 0 || !IsFunctionWanted(server_, plan_.sample, position, plan_.selection, content_)) return;
    if (content_ == Content::kAll) NoteMissingBins(function);
    const std::vector<double> times = TimesOf(function, scans);
    for (int scan = 0; scan < scans; ++scan) {
      if (plan_.selection.scans.Has(scan + 1)) Add(times[static_cast<std::size_t>(scan)], scan);
    }
  }

  // The times of absorbance spectra stand in the spectra alone.
  void AddAbsorbance(int number) {
    const RunFunction& function = plan_.functions.emplace_back(
        RunFunction{.number = number, .isAbsorbance = true, .name = L"Absorbance"});
    const int scans = server_.GetAbsorbanceScanCount(plan_.sample);
    for (int scan = 0; scan < scans; ++scan) {
      CZRAbsorbanceSpectrum spectrum;
      const bool isRead = server_.GetAbsorbanceSpectrum(plan_.sample, scan, spectrum);
      if (!isRead) LoseSpectrum(plan_, function, scan);
      Add(isRead ? spectrum.StartTime() : kNoTime, scan);
    }
    foundScans_ += std::max(scans, 0);
  }

  bool HasFoundScans() const { return foundScans_ > 0; }

 private:
  void NoteMissingBins(const RunFunction& function) {
    if (function.driftBins > 0 || !server_.HasMobility(plan_.sample, function.position)) return;
    plan_.notes.push_back(L"the drift bins of function " + std::to_wstring(function.number) +
                          L" are left out: its provider tells of none");
  }

  // A time for each scan. Where the list of all has none, each scan is asked for its own.
  std::vector<double> TimesOf(const RunFunction& function, int scans) const {
    const std::wstring owner = Losses::Owner(function.number);
    HostVector<double> known;
    const bool isRead = server_.GetRetentionTimes(plan_.sample, function.position, known);
    if (!isRead) known.clear();
    std::vector<double> times(known.begin(), known.end());
    times.resize(static_cast<std::size_t>(scans), kNoTime);
    for (int scan = static_cast<int>(known.size()); scan < scans; ++scan) {
      plan_.losses->Add(function.number, {L"the listed time of scan", L"listed times", owner}, scan + 1);
      double& minutes = times[static_cast<std::size_t>(scan)];
      if (!server_.GetScanRetentionTime(plan_.sample, function.position, scan, minutes)) minutes = kNoTime;
    }
    return times;
  }

  void Add(double minutes, int scan) {
    if (!plan_.selection.HasTime(minutes)) return;
    plan_.entries.push_back({minutes, static_cast<std::int32_t>(plan_.functions.size()) - 1, scan});
  }

  CDataServerImpl& server_;
  RunPlan& plan_;
  Content content_;
  long long foundScans_ = 0;
};

void SortByTime(std::vector<RunEntry>& entries) {
  const auto key = [](const RunEntry& entry) {
    const bool isNan = std::isnan(entry.minutes);
    return std::tuple(isNan, isNan ? 0 : entry.minutes, entry.function, entry.scan);
  };
  std::sort(entries.begin(), entries.end(),
            [&](const RunEntry& a, const RunEntry& b) { return key(a) < key(b); });
}

// Items of the sample; those that differ between functions name the function. The source's own text of a
// whole function is no attribute of a run.
std::vector<MetadataItem> CollectMetadata(CDataServerImpl& server, int sample) {
  // Before the number of functions: a report's sample that has analog functions alone has no items after it.
  const std::vector<MetadataItem> ofFirst = ReadMetadata(server, sample, FunctionText::kLeftOut);
  const int functions = server.GetFunctionCount(sample);
  std::vector<MetadataItem> items = ofFirst;
  for (int function = 1; function < functions; ++function) {
    const auto own = ReadMetadata(server, sample, function, FunctionText::kLeftOut, ofFirst);
    for (std::size_t i = 0; i < std::min(own.size(), ofFirst.size()); ++i) {
      const bool differs = own[i].value && own[i].value != ofFirst[i].value;
      if (differs)
        items.push_back({own[i].key + L" of function " + std::to_wstring(function + 1), own[i].value});
    }
  }
  return items;
}

}  // namespace

bool IsFunctionWanted(CDataServerImpl& server, int sample, int position, const Selection& selection,
                      Content content) {
  const int msLevel = server.GetMSLevel(sample, position);
  if (!selection.functions.Has(position + 1) || !selection.msLevels.Has(msLevel)) return false;
  const bool isLockMass = server.GetFunctionName(sample, position).find(kLockMass) != std::wstring::npos;
  if (selection.isLockMassExcluded && isLockMass) return false;
  return content != Content::kFragmentSpectra || msLevel > 1;
}

bool IsAbsorbanceWanted(const Selection& selection, Content content) {
  return content == Content::kAll && !selection.IsForMassSpectra();
}

void LoseSpectrum(const RunPlan& plan, const RunFunction& function, int scan) {
  if (plan.isReport) return;
  const Losses::Kind kind = function.isAbsorbance
                                ? Losses::Kind{L"absorbance spectrum", L"absorbance spectra"}
                                : Losses::Kind{L"scan", L"scans", Losses::Owner(function.number)};
  plan.losses->Add(function.number, kind, scan + 1);
}

RunPlan PlanRun(CDataServerImpl& server, int sample, const Selection& selection, Content content,
                Losses& losses) {
  RunPlan plan;
  plan.sample = sample;
  // Before anything else is asked: of a report's sample without functions the list grows with each look at
  // it.
  plan.traces = server.GetTraceCount(sample);
  plan.sampleName = server.GetSampleName(sample);
  plan.isReport = server.IsReportSource();
  plan.losses = &losses;
  plan.provider = server.GetProviderName();
  plan.selection = selection;
  plan.metadata = CollectMetadata(server, sample);
  Planner planner(server, plan, content);
  const int functions = std::max(server.GetFunctionCount(sample), 0);
  for (int position = 0; position < functions; ++position) planner.AddFunction(position);
  if (IsAbsorbanceWanted(selection, content) && server.HasAbsorbanceData(sample))
    planner.AddAbsorbance(functions + 1);
  if (plan.entries.empty() && planner.HasFoundScans()) {
    throw Failure(ExitStatus::kWrongUsage, content == Content::kFragmentSpectra
                                               ? L"none of its scans is an MS/MS scan that is asked for"
                                               : L"none of its scans is asked for");
  }
  SortByTime(plan.entries);
  return plan;
}

}  // namespace zrml
