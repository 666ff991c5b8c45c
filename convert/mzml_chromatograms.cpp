#include "convert/mzml_chromatograms.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "common/text.h"
#include "convert/mzml_params.h"
#include "convert/xml.h"

namespace zrml::convert {
namespace {

struct TraceWord {
  std::string_view word;
  bool isWhole;  // not inside another word
  const CvTerm& term;
};

// What names of traces say; the first that fits counts.
constexpr TraceWord kTraceWords[] = {
    {"pressure", false, cv::kPressureChromatogram}, {"flow", false, cv::kFlowChromatogram},
    {"absorb", false, cv::kAbsorptionChromatogram}, {"absorption", false, cv::kAbsorptionChromatogram},
    {"uv", true, cv::kAbsorptionChromatogram},      {"tuv", true, cv::kAbsorptionChromatogram},
    {"pda", true, cv::kAbsorptionChromatogram},     {"dad", true, cv::kAbsorptionChromatogram},
};

bool IsLetter(char c) { return c >= 'a' && c <= 'z'; }

bool HasWord(std::string_view lowerName, const TraceWord& word) {
  for (std::size_t at = lowerName.find(word.word); at != std::string_view::npos;
       at = lowerName.find(word.word, at + 1)) {
    const std::size_t end = at + word.word.size();
    const bool isInside =
        (at > 0 && IsLetter(lowerName[at - 1])) || (end < lowerName.size() && IsLetter(lowerName[end]));
    if (!word.isWhole || !isInside) return true;
  }
  return false;
}

// Intensities must have one of a few units; traces of which none is known take the plainest.
const CvTerm* UnitOf(const CvTerm& type) {
  return &type == &cv::kAbsorptionChromatogram ? &cv::kAbsorbanceUnit : &cv::kDetectorCounts;
}

std::string TraceId(const std::string& owner, const source::Trace& trace) {
  const std::string id = owner + "trace " + std::to_string(trace.number);
  return trace.name.empty() ? id : id + ": " + trace.name;
}

// The points within the minutes that are asked for.
void TakePoints(const source::Chromatogram& from, const Selection& selection, RunChromatogram& to) {
  const std::size_t count = std::min(from.minutes.size(), from.intensities.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (!selection.HasTime(from.minutes[i])) continue;
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

}  // namespace

bool HasTotalIonCurrent(const RunPlan& plan) {
  return std::any_of(plan.entries.begin(), plan.entries.end(),
                     [&](const RunEntry& entry) { return !plan.FunctionOf(entry).isAbsorbance; });
}

std::vector<RunChromatogram> ReadTraces(source::Source& source, const RunPlan& plan, Losses& losses) {
  std::vector<RunChromatogram> chromatograms;
  const auto add = [&](const std::string& owner, const source::FunctionId& function, int position,
                       const source::Trace& trace, const std::optional<source::Chromatogram>& points) {
    if (!points) return losses.Add(Loss::Kind::kTrace, function, position + 1);
    RunChromatogram& added = chromatograms.emplace_back();
    added.id = TraceId(owner, trace);
    added.type = &TraceType(trace.name);
    TakePoints(*points, plan.selection, added);
  };
  int position = 0;
  for (const source::Trace& trace : source.Traces(plan.sample)) {
    const auto points = TryRead([&] { return source.ReadTrace(plan.sample, position); });
    add("", {}, position++, trace, points);
  }
  for (const RunFunction& function : plan.functions) {
    if (function.isAbsorbance) continue;
    position = 0;
    for (const source::Trace& trace : source.FunctionTraces(plan.sample, function.position)) {
      const auto points =
          TryRead([&] { return source.ReadFunctionTrace(plan.sample, function.position, position); });
      add("function " + TextOf(function.info.id) + " ", function.info.id, position++, trace, points);
    }
  }
  return chromatograms;
}

RunChromatogram ReadTotalIonCurrent(source::Source& source, const RunPlan& plan, Losses& losses) {
  std::vector<std::optional<source::Chromatogram>> ofFunctions(plan.functions.size());
  for (std::size_t i = 0; i < plan.functions.size(); ++i) {
    const RunFunction& function = plan.functions[i];
    if (function.isAbsorbance) continue;
    ofFunctions[i] = TryRead([&] { return source.TotalIons(plan.sample, function.position); });
  }
  RunChromatogram total = {"TIC", &cv::kTicChromatogram};
  for (const RunEntry& entry : plan.entries) {
    const RunFunction& function = plan.FunctionOf(entry);
    if (function.isAbsorbance) continue;
    const auto& chromatogram = ofFunctions[static_cast<std::size_t>(entry.function)];
    const auto scan = static_cast<std::size_t>(entry.scan);
    if (!chromatogram || scan >= chromatogram->intensities.size()) {
      losses.Add(Loss::Kind::kTotal, function.info.id, entry.scan + 1);
    } else if (const double intensity = chromatogram->intensities[scan]; !std::isnan(intensity)) {
      total.minutes.push_back(entry.minutes);
      total.intensities.push_back(intensity);
    }
  }
  return total;
}

const CvTerm& TraceType(std::string_view name) {
  const std::string lower = ToLower(name);
  for (const TraceWord& word : kTraceWords) {
    if (HasWord(lower, word)) return word.term;
  }
  return cv::kIonCurrentChromatogram;
}

void AppendChromatogram(std::string& out, std::size_t index, const RunChromatogram& chromatogram,
                        const ArrayOptions& options, ArrayWriter& arrays) {
  out += "<chromatogram";
  AppendAttribute(out, "index", index);
  AppendAttribute(out, "id", XmlText(chromatogram.id));
  AppendAttribute(out, "defaultArrayLength", chromatogram.minutes.size());
  out += ">\n";
  AppendCvParam(out, *chromatogram.type);
  out += "<binaryDataArrayList count=\"2\">\n";
  arrays.Append(out, {cv::kTimeArray, &cv::kMinute, options.times}, chromatogram.minutes);
  arrays.Append(out, {cv::kIntensityArray, UnitOf(*chromatogram.type), options.intensities},
                chromatogram.intensities);
  out += "</binaryDataArrayList>\n</chromatogram>\n";
}

}  // namespace zrml::convert
