// zrml info: what a data source holds.
#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "tools/zrml/command.h"
#include "tools/zrml/description.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/names.h"
#include "tools/zrml/text_table.h"

namespace zrml::tool {
namespace {

using Align = TextTable::Align;

bool IsReport(const source::Source& source) { return source.GetFormat() == source::Format::kReport; }

// JSON

void WriteNames(const std::vector<source::Trace>& items, JsonWriter& json) {
  json.Array([&] {
    for (const source::Trace& item : items) {
      json.Object([&] {
        json.Key("number").Integer(item.number);
        json.Key("name").String(item.name);
      });
    }
  });
}

void WriteMetadata(const std::vector<source::MetadataItem>& items, JsonWriter& json) {
  json.Object([&] {
    for (const source::MetadataItem& item : items) WriteJson(ValueOrAbsent(item.value), json.Key(item.key));
  });
}

void WriteFunction(const FunctionDescription& description, JsonWriter& json) {
  const source::Function& function = description.function;
  json.Object([&] {
    WriteJson(ValueOf(function.id), json.Key("number"));
    WriteJson(function.file.empty() ? Value() : Value(function.file), json.Key("file"));
    json.Key("name").String(function.name);
    json.Key("kind").String(KindName(function.kind));
    json.Key("kindCode").Integer(KindCode(function.kind));
    json.Key("msLevel").Integer(function.msLevel);
    json.Key("scanType").String(ScanTypeName(function.scanType));
    json.Key("polarity").String(PolarityName(function.polarity));
    json.Key("scans").Integer(description.scans);
    WriteJson(ValueOrAbsent(description.minutes), json.Key("minutes"));
    WriteJson(ValueOrAbsent(function.massRange), json.Key("massRange"));
    WriteJson(ValueOrAbsent(description.isCentroided), json.Key("centroided"));
    json.Key("dimensions").Integer(description.dimensions);
    WriteJson(ValueOrAbsent(description.driftBins), json.Key("driftBins"));
    WriteNames(description.traces, json.Key("traces"));
    WriteMetadata(description.metadata, json.Key("metadata"));
  });
}

void WriteSample(const SampleDescription& sample, JsonWriter& json) {
  json.Object([&] {
    json.Key("number").Integer(sample.number);
    json.Key("name").String(sample.name);
    json.Key("functions").Array([&] {
      for (const FunctionDescription& function : sample.functions) WriteFunction(function, json);
    });
    WriteNames(sample.traces, json.Key("traces"));
    WriteJson(ValueOrAbsent(sample.absorbanceScans), json.Key("absorbanceScans"));
    WriteMetadata(sample.metadata, json.Key("metadata"));
  });
}

void PrintJson(source::Source& source, const std::vector<int>& samples, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    json.Key("source").String(source.Path());
    json.Key("provider").String(ProviderName(source.GetFormat()));
    json.Key("report").Bool(IsReport(source));
    json.Key("samples").Array([&] {
      for (const int sample : samples) WriteSample(DescribeSample(source, sample), json);
    });
  });
  json.Finish();
}

// Text

std::string OrNothing(const std::string& text) { return text.empty() ? TextTable::kNothing : text; }

std::string RangeText(const std::optional<source::Range>& range) {
  return range ? RoundedNumber(range->low) + " to " + RoundedNumber(range->high) : TextTable::kNothing;
}

std::string DataText(const std::optional<bool>& isCentroided) {
  if (!isCentroided) return TextTable::kNothing;
  return *isCentroided ? "centroid" : "continuum";
}

void PrintFunctions(const SampleDescription& sample, Output& out) {
  if (sample.functions.empty()) {
    out.Text("\n  No functions\n");
    return;
  }
  TextTable table({{"No", Align::kRight},
                   {"Name"},
                   {"Kind"},
                   {"Level", Align::kRight},
                   {"Scan type"},
                   {"Polarity"},
                   {"Scans", Align::kRight},
                   {"Minutes", Align::kRight},
                   {"m/z", Align::kRight},
                   {"Data"},
                   {"Dim", Align::kRight},
                   {"Drift bins", Align::kRight}});
  for (const FunctionDescription& description : sample.functions) {
    const source::Function& function = description.function;
    const bool hasScanType = function.scanType != source::ScanType::kNone;
    table.AddRow({source::TextOf(function.id), OrNothing(VisibleText(function.name)), KindName(function.kind),
                  std::to_string(function.msLevel),
                  hasScanType ? ScanTypeName(function.scanType) : TextTable::kNothing,
                  PolarityName(function.polarity), std::to_string(description.scans),
                  RangeText(description.minutes), RangeText(function.massRange),
                  DataText(description.isCentroided), std::to_string(description.dimensions),
                  description.driftBins ? std::to_string(*description.driftBins) : TextTable::kNothing});
  }
  out.Text("\n  Functions\n");
  table.Print("    ", out);
}

void PrintNames(const std::string& title, const std::vector<source::Trace>& items, Output& out) {
  if (items.empty()) return;
  TextTable table({{"", Align::kRight}, {""}});
  for (const source::Trace& item : items) {
    table.AddRow({std::to_string(item.number), OrNothing(VisibleText(item.name))});
  }
  out.Text("\n  " + title + "\n");
  table.Print("    ", out);
}

// The values of one key, each with the functions that have it.
using ValueUses = std::vector<std::pair<std::string_view, std::vector<std::string>>>;

ValueUses UsesOf(const source::MetadataItem& item, const std::vector<FunctionDescription>& functions) {
  constexpr std::string_view kNone;
  const auto textOf = [&](const source::MetadataItem& any) {
    return any.value ? std::string_view(*any.value) : kNone;
  };
  ValueUses uses = {{textOf(item), {}}};  // the first function's, or the sample's without functions
  std::unordered_map<std::string_view, std::size_t> places = {{textOf(item), 0}};
  for (const FunctionDescription& function : functions) {
    for (const source::MetadataItem& own : function.metadata) {
      if (own.key != item.key) continue;
      const auto [place, isNew] = places.emplace(textOf(own), uses.size());
      if (isNew) uses.emplace_back(place->first, std::vector<std::string>());
      uses[place->second].second.push_back(TextOf(function.function.id));
    }
  }
  return uses;
}

// A report's item can be all the text of a function; people see how it begins.
std::string ShownValue(std::string_view value) {
  constexpr std::size_t kShown = 60;
  const std::size_t size = CharacterCount(value);
  if (size <= kShown) return OrNothing(VisibleText(value));
  return VisibleText(FirstCharacters(value, kShown)) + "... (" + std::to_string(size) + " characters)";
}

std::string FunctionList(const std::vector<std::string>& names) {
  std::string text = names.size() == 1 ? " (function" : " (functions";
  for (const std::string& name : names) text += (&name == &names.front() ? " " : ", ") + name;
  return text + ")";
}

void PrintMetadata(const SampleDescription& sample, Output& out) {
  if (sample.metadata.empty()) return;
  TextTable table({{""}, {""}});
  for (const source::MetadataItem& item : sample.metadata) {
    const ValueUses uses = UsesOf(item, sample.functions);
    std::string key = OrNothing(VisibleText(item.key));
    for (const auto& [value, functions] : uses) {
      table.AddRow({key, uses.size() == 1 ? ShownValue(value) : ShownValue(value) + FunctionList(functions)});
      key.clear();
    }
  }
  out.Text("\n  Metadata\n");
  table.Print("    ", out);
}

void PrintSample(const SampleDescription& sample, Output& out) {
  out.Text("\nSample " + std::to_string(sample.number) + ": " + OrNothing(VisibleText(sample.name)) + "\n");
  PrintFunctions(sample, out);
  for (const FunctionDescription& function : sample.functions) {
    PrintNames("Traces of function " + TextOf(function.function.id), function.traces, out);
  }
  PrintNames("Traces", sample.traces, out);
  if (sample.absorbanceScans) {
    out.Text("\n  Absorbance\n    " + std::to_string(*sample.absorbanceScans) + " scans\n");
  }
  PrintMetadata(sample, out);
}

void PrintText(source::Source& source, const std::vector<int>& samples, Output& out) {
  TextTable table({{""}, {""}});
  table.AddRow({"Source", VisibleText(source.Path())});
  table.AddRow({"Provider", VisibleText(ProviderName(source.GetFormat()))});
  table.AddRow({"Content", IsReport(source) ? "processed report" : "raw acquisition"});
  table.Print("", out);
  for (const int sample : samples) PrintSample(DescribeSample(source, sample), out);
}

class InfoCommand : public SourceCommand {
 public:
  explicit InfoCommand(CLI::App& parser)
      : SourceCommand(parser, "info", "Show what a data source holds: samples, functions, traces, metadata") {
    AddNumber("--sample", sample_, "The sample, counted from 1; all by default");
  }

  void Run(Output& out) override {
    const std::unique_ptr<source::Source> source = OpenSource(Path());
    const std::vector<int> samples = Samples(*source);
    WantsJson() ? PrintJson(*source, samples, out) : PrintText(*source, samples, out);
  }

 private:
  std::vector<int> Samples(source::Source& source) const {
    if (sample_ != 0) return {FindSample(source, sample_)};
    std::vector<int> samples(static_cast<std::size_t>(source.SampleCount()));
    std::iota(samples.begin(), samples.end(), 0);
    return samples;
  }

  int sample_ = 0;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand(CLI::App& parser) { return std::make_unique<InfoCommand>(parser); }

}  // namespace zrml::tool
