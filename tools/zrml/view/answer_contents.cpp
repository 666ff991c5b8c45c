// What a source holds: samples, functions, metadata, findings.
#include <algorithm>
#include <cmath>

#include "common/findings.h"
#include "convert/native_path.h"
#include "source/names.h"
#include "source/points_look.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {
namespace {

using source::Source;

Json RangeJson(const std::optional<source::Range>& range) {
  return range ? Json{range->low, range->high} : Json();
}

std::optional<source::Range> ExtentOf(const std::vector<double>& minutes) {
  std::optional<source::Range> extent;
  for (const double time : minutes) {
    if (std::isnan(time)) continue;
    if (!extent) extent = {time, time};
    extent->low = std::min(extent->low, time);
    extent->high = std::max(extent->high, time);
  }
  return extent;
}

Json TracesJson(const std::vector<source::Trace>& traces) {
  Json json = Json::array();
  for (const source::Trace& trace : traces) json.push_back({{"number", trace.number}, {"name", trace.name}});
  return json;
}

Json MetadataJson(const std::vector<source::MetadataItem>& items) {
  Json json = Json::array();
  for (const source::MetadataItem& item : items)
    json.push_back({item.key, item.value ? Json(*item.value) : Json()});
  return json;
}

Json FunctionJson(Source& source, int sample, int position) {
  const source::Function function = source.Functions(sample)[static_cast<std::size_t>(position)];
  const int scans = source.ScanCount(sample, position);
  Json json = {{"position", position},
               {"id", source::TextOf(function.id)},
               {"name", function.name},
               {"file", function.file},
               {"kind", source::KindNameOf(function)},
               {"isAbsorbance", function.kind == source::FunctionKind::kAbsorbance},
               {"isMonitoring", function.monitoring != source::Monitoring::kNone},
               {"isLockMass", function.isLockMass},
               {"msLevel", function.msLevel ? Json(*function.msLevel) : Json()},
               {"scanType", source::NameOf(function.scanType)},
               {"polarity", source::NameOf(function.polarity)},
               {"scans", scans},
               {"massRange", RangeJson(function.massRange)},
               {"driftBins", function.hasMobility ? source.DriftBinCount(sample, position) : 0},
               {"traces", TracesJson(source.FunctionTraces(sample, position))},
               {"metadata", MetadataJson(source.FunctionMetadata(sample, position))}};
  json["minutes"] = scans > 0 ? RangeJson(ExtentOf(source.Minutes(sample, position))) : Json();
  json["isCentroided"] = Json();
  if (scans > 0) {
    const std::optional<bool> isCentroided = IsCentroided(source.ScanAt(sample, position, 0));
    if (isCentroided) json["isCentroided"] = *isCentroided;
  }
  return json;
}

// Without the folders before it, also when a separator ends the path.
std::string NameOf(const std::string& path) {
  std::string text = convert::PathText(platform::FromUtf8Path(path));
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text.substr(text.rfind('/') + 1);
}

}  // namespace

Answer AnswerRun(Source& source, const Question&, const Work&) {
  Answer answer;
  answer.facts = {{"path", source.Path()},
                  {"name", NameOf(source.Path())},
                  {"isReport", source.GetFormat() == source::Format::kReport},
                  {"samples", Json::array()}};
  const int samples = source.SampleCount();
  for (int sample = 0; sample < samples; ++sample)
    answer.facts["samples"].push_back(source.SampleName(sample));
  return answer;
}

Answer AnswerSample(Source& source, const Question& question, const Work&) {
  const int sample = question.Position("sample", source.SampleCount());
  Answer answer;
  Json& facts = answer.facts;
  facts = {{"name", source.SampleName(sample)},
           {"metadata", MetadataJson(source.SampleMetadata(sample))},
           {"functions", Json::array()},
           {"traces", TracesJson(source.Traces(sample))},
           {"absorbance", Json()}};
  const int functions = static_cast<int>(source.Functions(sample).size());
  for (int i = 0; i < functions; ++i) facts["functions"].push_back(FunctionJson(source, sample, i));
  if (source.HasAbsorbance(sample)) {
    const source::Function function = source.AbsorbanceFunction(sample);
    facts["absorbance"] = {{"id", source::TextOf(function.id)},
                           {"file", function.file},
                           {"scans", source.AbsorbanceScanCount(sample)}};
  }
  return answer;
}

Answer AnswerFindings(Source& source, const Question& question, const Work& work) {
  Findings findings;
  for (const Finding& finding : source.Findings()) findings.Add(finding);
  if (question.Word("points") == "1") {
    const Findings looked = LookAtPoints(source, work.cancel, work.progress);
    for (const Finding& finding : looked.List()) findings.Add(finding);
  }
  Answer answer;
  answer.facts["findings"] = Json::array();
  for (const Finding& finding : findings.List()) {
    answer.facts["findings"].push_back({{"severity", zrml::NameOf(SeverityOf(finding.code))},
                                        {"code", zrml::NameOf(finding.code)},
                                        {"message", TextOf(finding)}});
  }
  return answer;
}

}  // namespace zrml::view
