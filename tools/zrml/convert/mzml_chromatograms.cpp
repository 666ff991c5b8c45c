#include "tools/zrml/convert/mzml_chromatograms.h"

#include <algorithm>
#include <optional>

#include "common/text.h"
#include "tools/zrml/convert/mzml_params.h"
#include "tools/zrml/convert/xml.h"

namespace zrml {
namespace {

using Kind = ChromatogramSource::Kind;

struct Points {
  std::vector<double> times;
  std::vector<double> intensities;
};

struct TraceWord {
  std::wstring_view word;
  bool isWhole;  // not inside another word
  const CvTerm& term;
};

// What names of traces say; the first that fits counts.
constexpr TraceWord kTraceWords[] = {
    {L"pressure", false, cv::kPressureChromatogram}, {L"flow", false, cv::kFlowChromatogram},
    {L"absorb", false, cv::kAbsorptionChromatogram}, {L"absorption", false, cv::kAbsorptionChromatogram},
    {L"uv", true, cv::kAbsorptionChromatogram},      {L"tuv", true, cv::kAbsorptionChromatogram},
    {L"pda", true, cv::kAbsorptionChromatogram},     {L"dad", true, cv::kAbsorptionChromatogram},
};

bool IsLetter(wchar_t c) { return c >= L'a' && c <= L'z'; }

bool HasWord(std::wstring_view lowerName, const TraceWord& word) {
  for (std::size_t at = lowerName.find(word.word); at != std::wstring_view::npos;
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

const CvTerm& TypeOf(const ChromatogramSource& source) {
  return source.kind == Kind::kTotalIonCurrent ? cv::kTicChromatogram : TraceType(source.name);
}

std::wstring TraceId(const std::wstring& owner, int trace, const std::wstring& name) {
  const std::wstring id = owner + L"trace " + std::to_wstring(trace + 1);
  return name.empty() ? id : id + L": " + name;
}

// The reader may be true without points: a trace that the source does not give.
bool Read(CDataServerImpl& server, int sample, const ChromatogramSource& source, CZRChromatogram& points) {
  return source.kind == Kind::kSampleTrace
             ? server.GetTrace(sample, source.trace, points)
             : server.GetFunctionTrace(sample, source.function, source.trace, points);
}

void AddLoss(const ChromatogramSource& source, Losses& losses) {
  const int function = source.kind == Kind::kFunctionTrace ? source.function + 1 : 0;
  losses.Add(function, {L"trace", L"traces", Losses::Owner(function)}, source.trace + 1);
}

Points ReadTrace(CDataServerImpl& server, const RunPlan& plan, const ChromatogramSource& source) {
  CZRChromatogram trace;
  Points points;
  if (!Read(server, plan.sample, source, trace)) {
    AddLoss(source, *plan.losses);
    return points;
  }
  const std::size_t count = std::min(trace.Times().size(), trace.Intensities().size());
  for (std::size_t i = 0; i < count; ++i) {
    if (!plan.selection.HasTime(trace.Times()[i])) continue;
    points.times.push_back(trace.Times()[i]);
    points.intensities.push_back(trace.Intensities()[i]);
  }
  return points;
}

// Without points when it cannot be read.
CZRChromatogram ReadTotalIonCurrent(CDataServerImpl& server, const RunPlan& plan,
                                    const RunFunction& function) {
  CZRChromatogram chromatogram;
  return server.GetTotalIonChromatogram(true, plan.sample, function.position, chromatogram)
             ? chromatogram
             : CZRChromatogram();
}

// One point for each mass spectrum that is written, in their order: what its function's own total ion
// chromatogram has for it.
Points TotalIonCurrent(CDataServerImpl& server, const RunPlan& plan) {
  std::vector<std::optional<CZRChromatogram>> ofFunctions(plan.functions.size());
  Points points;
  for (const RunEntry& entry : plan.entries) {
    const RunFunction& function = plan.FunctionOf(entry);
    if (function.isAbsorbance) continue;
    const auto at = static_cast<std::size_t>(entry.function);
    if (!ofFunctions[at]) ofFunctions[at] = ReadTotalIonCurrent(server, plan, function);
    const CZRChromatogram& chromatogram = *ofFunctions[at];
    const auto scan = static_cast<std::size_t>(entry.scan);
    if (scan >= chromatogram.Intensities().size()) {
      const Losses::Kind kind{L"the total ion current of scan", L"total ion currents",
                              Losses::Owner(function.number)};
      plan.losses->Add(function.number, kind, entry.scan + 1);
      continue;
    }
    points.times.push_back(entry.minutes);
    points.intensities.push_back(chromatogram.Intensities()[scan]);
  }
  return points;
}

}  // namespace

bool HasTotalIonCurrent(const RunPlan& plan) {
  return std::any_of(plan.entries.begin(), plan.entries.end(),
                     [&](const RunEntry& entry) { return !plan.FunctionOf(entry).isAbsorbance; });
}

std::vector<ChromatogramSource> ListChromatograms(CDataServerImpl& server, const RunPlan& plan) {
  std::vector<ChromatogramSource> sources;
  const auto add = [&](ChromatogramSource source) {
    CZRChromatogram probe;
    if (Read(server, plan.sample, source, probe)) {
      sources.push_back(std::move(source));
    } else if (!plan.isReport) {
      AddLoss(source, *plan.losses);
    }
  };
  if (HasTotalIonCurrent(plan)) sources.push_back({.id = L"TIC"});
  for (int trace = 0; trace < plan.traces; ++trace) {
    const std::wstring name = server.GetTraceName(plan.sample, trace);
    add({.kind = Kind::kSampleTrace, .trace = trace, .id = TraceId(L"", trace, name), .name = name});
  }
  for (const RunFunction& function : plan.functions) {
    if (function.isAbsorbance || !plan.selection.functions.Has(function.number)) continue;
    const std::wstring owner = L"function " + std::to_wstring(function.number) + L" ";
    const int functionTraces = server.GetFunctionTraceCount(plan.sample, function.position);
    for (int trace = 0; trace < functionTraces; ++trace) {
      const std::wstring name = server.GetFunctionTraceName(plan.sample, function.position, trace);
      add({Kind::kFunctionTrace, function.position, trace, TraceId(owner, trace, name), name});
    }
  }
  return sources;
}

const CvTerm& TraceType(std::wstring_view name) {
  const std::wstring lower = ToLower(name);
  for (const TraceWord& word : kTraceWords) {
    if (HasWord(lower, word)) return word.term;
  }
  return cv::kIonCurrentChromatogram;
}

ChromatogramRenderer::ChromatogramRenderer(CDataServerImpl& server, const RunPlan& plan,
                                           const ArrayOptions& options)
    : server_(server), plan_(plan), options_(options), arrays_(options.isCompressed) {}

void ChromatogramRenderer::Append(std::string& out, std::size_t index, const ChromatogramSource& source) {
  const bool isTotal = source.kind == Kind::kTotalIonCurrent;
  const Points points = isTotal ? TotalIonCurrent(server_, plan_) : ReadTrace(server_, plan_, source);
  const CvTerm& type = TypeOf(source);
  out += "<chromatogram";
  AppendAttribute(out, "index", index);
  AppendAttribute(out, "id", XmlText(source.id));
  AppendAttribute(out, "defaultArrayLength", points.times.size());
  out += ">\n";
  AppendCvParam(out, type);
  out += "<binaryDataArrayList count=\"2\">\n";
  arrays_.Append(out, {cv::kTimeArray, &cv::kMinute, options_.times}, points.times);
  arrays_.Append(out, {cv::kIntensityArray, UnitOf(type), options_.intensities}, points.intensities);
  out += "</binaryDataArrayList>\n</chromatogram>\n";
}

}  // namespace zrml
