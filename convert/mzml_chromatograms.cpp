#include "convert/mzml_chromatograms.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "common/number_text.h"
#include "common/text.h"
#include "convert/channels.h"
#include "convert/mzml_params.h"
#include "convert/total_ions.h"
#include "convert/trace_kind.h"
#include "convert/xml.h"

namespace zrml::convert {
namespace {

std::string TraceId(const std::string& owner, const source::Trace& trace) {
  const std::string id = owner + "trace " + std::to_string(trace.number);
  return trace.name.empty() ? id : id + ": " + trace.name;
}

// The points within the requested minutes. One without a time is lost, whatever its value.
void TakePoints(const source::Chromatogram& from, const Selection& selection, RunChromatogram& to) {
  const std::size_t count = std::min(from.minutes.size(), from.intensities.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(from.minutes[i]) || !selection.HasTime(from.minutes[i])) continue;
    to.minutes.push_back(from.minutes[i]);
    to.intensities.push_back(from.intensities[i]);
  }
}

// What `call` returns; no value when it throws the source's error.
template <class Call>
auto TryRead(Call call) -> std::optional<decltype(call())> {
  try {
    return call();
  } catch (const source::Error&) {
    return std::nullopt;
  }
}

std::string OwnerText(const RunFunction& function) { return "function " + TextOf(function.info.id) + " "; }

// The stored values of the requested scans that have a time.
source::Chromatogram ReadTotal(source::Source& source, const RunPlan& plan, const RunFunction& function,
                               Losses& losses) {
  const auto total = TryRead([&] { return source.TotalIons(plan.sample, function.position); });
  const std::vector<double> minutes = total ? total->minutes : source.Minutes(plan.sample, function.position);
  source::Chromatogram known;
  for (std::size_t i = 0; i < minutes.size(); ++i) {
    const int scan = static_cast<int>(i);
    if (!plan.selection.Has(scan, minutes[i])) continue;
    if (!total || i >= total->intensities.size()) {
      losses.Add(Loss::Kind::kTotal, function.info.id, scan + 1);
    } else if (!std::isnan(total->intensities[i]) && !std::isnan(minutes[i])) {
      known.minutes.push_back(minutes[i]);
      known.intensities.push_back(total->intensities[i]);
    }
  }
  return known;
}

// A monitored ion is the one selected by the only quadrupole. For a reaction the files give one m/z, without
// saying whether it is the precursor's or the product's.
void AppendChannel(std::string& out, const RunChromatogram& chromatogram) {
  const bool isReaction = chromatogram.type == &cv::kSrmChromatogram;
  if (!chromatogram.functionName.empty()) AppendUserParam(out, "function name", chromatogram.functionName);
  if (!std::isfinite(*chromatogram.channel)) return;
  if (isReaction) return AppendUserParam(out, "channel m/z", Number(*chromatogram.channel));
  out += "<precursor>\n<isolationWindow>\n";
  AppendCvNumber(out, cv::kIsolationTarget, *chromatogram.channel, &cv::kMzUnit);
  out += "</isolationWindow>\n<activation/>\n</precursor>\n";
}

}  // namespace

std::vector<RunChromatogram> ReadTotals(source::Source& source, const RunPlan& plan, Losses& losses) {
  std::vector<RunChromatogram> totals;
  source::Chromatogram whole;
  TotalIonFunctions surveys;
  for (const RunFunction& function : plan.functions) {
    if (function.isAbsorbance) continue;
    source::Chromatogram own = ReadTotal(source, plan, function, losses);
    SortByTime(own);
    const bool hasScans = source.ScanCount(plan.sample, function.position) > 0;
    if (surveys.Take(function.info, hasScans)) Append(whole, own);
    if (own.minutes.empty()) continue;
    totals.push_back({OwnerText(function) + "TIC", &cv::kTicChromatogram, own.minutes, own.intensities});
  }
  if (whole.minutes.empty()) return totals;
  SortByTime(whole);
  totals.insert(totals.begin(), {"TIC", &cv::kTicChromatogram, whole.minutes, whole.intensities});
  return totals;
}

std::vector<RunChromatogram> ReadTraces(source::Source& source, const RunPlan& plan, Losses& losses,
                                        const Cancel& cancel) {
  std::vector<RunChromatogram> chromatograms;
  const auto add = [&](const RunFunction* owner, int position, const source::Trace& trace, auto read) {
    ThrowIfCancelled(cancel);
    const source::FunctionId id = owner != nullptr ? owner->info.id : source::FunctionId();
    const auto points = TryRead(read);
    if (!points) return losses.Add(Loss::Kind::kTrace, id, position + 1);
    RunChromatogram& added = chromatograms.emplace_back();
    added.id = TraceId(owner != nullptr ? OwnerText(*owner) : "", trace);
    added.type = &TraceType(trace.name, owner != nullptr ? std::optional(owner->info.kind) : std::nullopt);
    TakePoints(*points, plan.selection, added);
  };
  int position = 0;
  for (const source::Trace& trace : source.Traces(plan.sample)) {
    add(nullptr, position, trace, [&] { return source.ReadTrace(plan.sample, position); });
    ++position;
  }
  for (const RunFunction& function : plan.functions) {
    if (function.position == kNoPosition) continue;
    position = 0;
    for (const source::Trace& trace : source.FunctionTraces(plan.sample, function.position)) {
      add(&function, position, trace,
          [&] { return source.ReadFunctionTrace(plan.sample, function.position, position); });
      ++position;
    }
  }
  return chromatograms;
}

const CvTerm& ChannelType(const source::Function& function) {
  return function.monitoring == source::Monitoring::kReactions ? cv::kSrmChromatogram : cv::kSimChromatogram;
}

std::vector<RunChromatogram> ReadChannelChromatograms(source::Source& source, const RunPlan& plan,
                                                      std::int32_t function, Losses& losses) {
  const RunFunction& own = plan.functions[static_cast<std::size_t>(function)];
  std::vector<RunChromatogram> chromatograms;
  for (source::Chromatogram& points : ReadChannels(source, plan, function, losses)) {
    const std::size_t channel = chromatograms.size();
    const double mz = own.channels[channel];
    chromatograms.push_back(
        {OwnerText(own) + "channel " + std::to_string(channel + 1) + ": " + ShortNumber(mz),
         &ChannelType(own.info), std::move(points.minutes), std::move(points.intensities), own.info.name,
         mz});
  }
  return chromatograms;
}

void AppendChromatogram(std::string& out, std::size_t index, const RunChromatogram& chromatogram,
                        const ArrayOptions& options, ArrayWriter& arrays) {
  out += "<chromatogram";
  AppendAttribute(out, "index", index);
  AppendAttribute(out, "id", XmlText(chromatogram.id));
  AppendAttribute(out, "defaultArrayLength", chromatogram.minutes.size());
  out += ">\n";
  AppendCvParam(out, *chromatogram.type);
  if (chromatogram.channel) AppendChannel(out, chromatogram);
  out += "<binaryDataArrayList count=\"2\">\n";
  arrays.Append(out, {cv::kTimeArray, &cv::kMinute, options.times}, chromatogram.minutes);
  // Readers insist on one of a few units, and no file has one; this is the plainest.
  arrays.Append(out, {cv::kIntensityArray, &cv::kDetectorCounts, options.intensities},
                chromatogram.intensities);
  out += "</binaryDataArrayList>\n</chromatogram>\n";
}

}  // namespace zrml::convert
