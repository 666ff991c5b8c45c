// What a source holds, as records: samples, functions, traces, metadata, findings.

#include "library/handle.h"
#include "source/names.h"
#include "source/position.h"

namespace zrml::library {
namespace {

using source::Source;

// Words for an absent value become empty.
template <class Enumeration>
const char* NameOrEmpty(Enumeration value) {
  return value == Enumeration() ? "" : NameOf(value);
}

zrml_function RecordOf(const source::Function& function, zrml_source& handle) {
  const source::Range range = function.massRange.value_or(source::Range{kAbsent, kAbsent});
  return {
      .size = 0,
      .number = function.id.number,
      .process = function.id.process,
      .repeat = function.id.repeat,
      .id = handle.Text(TextOf(function.id)),
      .file = handle.Text(function.file),
      .name = handle.Text(function.name),
      .kind = static_cast<zrml_kind>(function.kind),
      .monitoring = static_cast<zrml_monitoring>(function.monitoring),
      .scan_type = static_cast<zrml_scan_type>(function.scanType),
      .polarity = static_cast<zrml_polarity>(function.polarity),
      .ms_level = function.msLevel.value_or(0),
      .is_lock_mass = function.isLockMass ? 1 : 0,
      .has_mobility = function.hasMobility ? 1 : 0,
      .mass_low = range.low,
      .mass_high = range.high,
      .kind_name = KindNameOf(function),
      .scan_type_name = NameOrEmpty(function.scanType),
      .polarity_name = NameOrEmpty(function.polarity),
  };
}

static_assert(static_cast<int>(source::FunctionKind::kOther) == ZRML_KIND_OTHER);
static_assert(static_cast<int>(source::Monitoring::kReactions) == ZRML_MONITORING_REACTIONS);
static_assert(static_cast<int>(source::ScanType::kNeutralGain) == ZRML_SCAN_TYPE_NEUTRAL_GAIN);
static_assert(static_cast<int>(source::Polarity::kNegative) == ZRML_POLARITY_NEGATIVE);
static_assert(static_cast<int>(FindingSubject::Kind::kSample) == ZRML_ABOUT_SAMPLE);

// Lists are kept, so that callers can ask for one item after the other without reading all of them each time.
template <class Item, class Read>
const std::vector<Item>& Kept(std::optional<std::pair<std::pair<int, int>, std::vector<Item>>>& kept,
                              int sample, int function, Read read) {
  const std::pair place(sample, function);
  if (!kept || kept->first != place) kept.emplace(place, read());
  return kept->second;
}

const std::vector<source::Trace>& TracesOf(zrml_source& handle, int sample, int function) {
  Source& source = *handle.source;
  RequireSample(source, sample);
  return Kept(handle.traces, sample, function, [&] {
    if (function == ZRML_OF_SAMPLE) return source.Traces(sample);
    source::At(source.Functions(sample), function, "function");
    return source.FunctionTraces(sample, function);
  });
}

const std::vector<source::MetadataItem>& MetadataOf(zrml_source& handle, int sample, int function) {
  Source& source = *handle.source;
  RequireSample(source, sample);
  return Kept(handle.metadata, sample, function, [&] {
    if (function == ZRML_OF_SAMPLE) return source.SampleMetadata(sample);
    source::At(source.Functions(sample), function, "function");
    return source::Merged(source.SampleMetadata(sample), source.FunctionMetadata(sample, function));
  });
}

// In the order of the enumeration.
std::string FunctionOf(const FindingSubject& subject) {
  const source::FunctionId id = {subject.function, subject.process, subject.repeat};
  return id.number == 0 && id.process == 0 ? "" : TextOf(id);
}

zrml_finding RecordOf(const Finding& finding, zrml_source& handle) {
  return {
      .size = 0,
      .code = handle.Text(std::string(NameOf(finding.code))),
      .severity = NameOf(SeverityOf(finding.code)).data(),
      .file = handle.Text(finding.file),
      .message = handle.Text(finding.problem),
      .subject = static_cast<zrml_subject>(finding.subject.kind),
      .sample = finding.subject.sample,
      .function = handle.Text(FunctionOf(finding.subject)),
      .count = finding.count,
      .first = finding.first,
  };
}

}  // namespace
}  // namespace zrml::library

using namespace zrml::library;

zrml_status zrml_sample_count(zrml_source* source, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    *count = held.SampleCount();
  });
}

zrml_status zrml_get_sample(zrml_source* source, int sample, zrml_sample* record) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    Fill(record, {.size = 0, .number = sample + 1, .name = source->Text(held.SampleName(sample))});
  });
}

zrml_status zrml_function_count(zrml_source* source, int sample, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireSample(held, sample);
    *count = CountOf(held.Functions(sample).size());
  });
}

zrml_status zrml_get_function(zrml_source* source, int sample, int function, zrml_function* record) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    Fill(record, RecordOf(zrml::source::At(held.Functions(sample), function, "function"), *source));
  });
}

zrml_status zrml_function_text(zrml_source* source, int sample, int function, const char** text,
                               size_t* length) {
  return Run(source, [&](Source& held) {
    Require(text, "text");
    Require(length, "length");
    RequireSample(held, sample);
    zrml::source::At(held.Functions(sample), function, "function");
    std::optional<std::string> read = held.FunctionText(sample, function);
    source->functionText = read ? std::move(*read) : std::string();
    *text = read ? source->functionText.c_str() : nullptr;
    *length = source->functionText.size();
  });
}

zrml_status zrml_trace_count(zrml_source* source, int sample, int function, int* count) {
  return Run(source, [&](Source&) {
    Require(count, "count");
    *count = CountOf(TracesOf(*source, sample, function).size());
  });
}

zrml_status zrml_get_trace(zrml_source* source, int sample, int function, int trace, zrml_trace* record) {
  return Run(source, [&](Source&) {
    const auto& found = zrml::source::At(std::span(TracesOf(*source, sample, function)), trace, "trace");
    Fill(record, {.size = 0, .number = found.number, .name = source->Text(found.name)});
  });
}

zrml_status zrml_metadata_count(zrml_source* source, int sample, int function, int* count) {
  return Run(source, [&](Source&) {
    Require(count, "count");
    *count = CountOf(MetadataOf(*source, sample, function).size());
  });
}

zrml_status zrml_get_metadata(zrml_source* source, int sample, int function, int item,
                              zrml_metadata* record) {
  return Run(source, [&](Source&) {
    const auto& found = zrml::source::At(std::span(MetadataOf(*source, sample, function)), item, "item");
    Fill(record, {.size = 0,
                  .key = source->Text(found.key),
                  .value = found.value ? source->Text(*found.value) : nullptr});
  });
}

zrml_status zrml_get_absorbance_function(zrml_source* source, int sample, zrml_function* record) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    if (!held.HasAbsorbance(sample)) ThrowWrongArgument("there is no absorbance function");
    Fill(record, RecordOf(held.AbsorbanceFunction(sample), *source));
  });
}

zrml_status zrml_finding_count(zrml_source* source, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    *count = CountOf(held.Findings().size());
  });
}

zrml_status zrml_get_finding(zrml_source* source, int finding, zrml_finding* record) {
  return Run(source, [&](Source& held) {
    Fill(record, RecordOf(zrml::source::At(held.Findings(), finding, "finding"), *source));
  });
}
