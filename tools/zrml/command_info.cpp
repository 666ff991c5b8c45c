// zrml info: what a data source holds.
#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "tools/zrml/code_names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/description.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/text_table.h"

namespace zrml {
namespace {

using Align = TextTable::Align;

// JSON

template <class T>
Value ValueOrAbsent(const std::optional<T>& value) {
  return value ? Value(*value) : Value();
}

void WriteNames(const std::vector<NamedItem>& items, JsonWriter& json) {
  json.Array([&] {
    for (const NamedItem& item : items) {
      json.Object([&] {
        json.Key("number").Integer(item.number);
        json.Key("name").String(item.name);
      });
    }
  });
}

void WriteMetadata(const std::vector<MetadataItem>& items, JsonWriter& json) {
  json.Object([&] {
    for (const MetadataItem& item : items) WriteJson(ValueOrAbsent(item.value), json.Key(item.key));
  });
}

void WriteFunction(const FunctionDescription& function, JsonWriter& json) {
  json.Object([&] {
    json.Key("number").Integer(function.number);
    json.Key("name").String(function.name);
    json.Key("kind").String(KindName(function.kind));
    json.Key("kindCode").Integer(function.kind);
    json.Key("msLevel").Integer(function.msLevel);
    json.Key("scanType").String(ScanTypeName(function.scanType));
    json.Key("polarity").String(PolarityName(function.polarity));
    json.Key("scans").Integer(function.scans);
    WriteJson(ValueOrAbsent(function.minutes), json.Key("minutes"));
    WriteJson(ValueOrAbsent(function.massRange), json.Key("massRange"));
    WriteJson(ValueOrAbsent(function.isCentroided), json.Key("centroided"));
    json.Key("dimensions").Integer(function.dimensions);
    WriteJson(ValueOrAbsent(function.driftBins), json.Key("driftBins"));
    WriteNames(function.traces, json.Key("traces"));
    WriteMetadata(function.metadata, json.Key("metadata"));
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

void PrintJson(const Source& source, const std::vector<int>& samples, Output& out) {
  CDataServerImpl& server = source.Server();
  JsonWriter json(out);
  json.Object([&] {
    json.Key("source").String(source.Path());
    json.Key("provider").String(server.GetProviderName());
    json.Key("report").Bool(server.IsReportSource());
    json.Key("samples").Array([&] {
      for (const int sample : samples) WriteSample(DescribeSample(server, sample), json);
    });
  });
  json.Finish();
}

// Text

std::string OrNothing(const std::string& text) { return text.empty() ? TextTable::kNothing : text; }

std::string RangeText(const std::optional<NumberRange>& range) {
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
  for (const FunctionDescription& function : sample.functions) {
    const bool isMsMs = function.scanType != kNoMsMsScan;
    table.AddRow({std::to_string(function.number), OrNothing(VisibleUtf8(function.name)),
                  Utf8(KindName(function.kind)), std::to_string(function.msLevel),
                  isMsMs ? Utf8(ScanTypeName(function.scanType)) : TextTable::kNothing,
                  Utf8(PolarityName(function.polarity)), std::to_string(function.scans),
                  RangeText(function.minutes), RangeText(function.massRange), DataText(function.isCentroided),
                  std::to_string(function.dimensions),
                  function.driftBins ? std::to_string(*function.driftBins) : TextTable::kNothing});
  }
  out.Text("\n  Functions\n");
  table.Print("    ", out);
}

void PrintNames(const std::string& title, const std::vector<NamedItem>& items, Output& out) {
  if (items.empty()) return;
  TextTable table({{"", Align::kRight}, {""}});
  for (const NamedItem& item : items) {
    table.AddRow({std::to_string(item.number), OrNothing(VisibleUtf8(item.name))});
  }
  out.Text("\n  " + title + "\n");
  table.Print("    ", out);
}

// The values of one key, each with the functions that have it.
using ValueUses = std::vector<std::pair<std::wstring_view, std::vector<int>>>;

ValueUses UsesOf(const MetadataItem& item, const std::vector<FunctionDescription>& functions) {
  constexpr std::wstring_view kNone;
  const auto textOf = [&](const MetadataItem& any) {
    return any.value ? std::wstring_view(*any.value) : kNone;
  };
  ValueUses uses = {{textOf(item), {}}};  // the first function's, or the sample's without functions
  std::unordered_map<std::wstring_view, std::size_t> places = {{textOf(item), 0}};
  for (const FunctionDescription& function : functions) {
    for (const MetadataItem& own : function.metadata) {
      if (own.key != item.key) continue;
      const auto [place, isNew] = places.emplace(textOf(own), uses.size());
      if (isNew) uses.emplace_back(place->first, std::vector<int>());
      uses[place->second].second.push_back(function.number);
    }
  }
  return uses;
}

// A report's item can be all the text of a function; people see how it begins.
std::string ShownValue(std::wstring_view value) {
  constexpr std::size_t kShown = 60;
  if (value.size() <= kShown) return OrNothing(VisibleUtf8(std::wstring(value)));
  return VisibleUtf8(std::wstring(value.substr(0, kShown))) + "... (" + std::to_string(value.size()) +
         " characters)";
}

std::string FunctionList(const std::vector<int>& numbers) {
  std::string text = numbers.size() == 1 ? " (function" : " (functions";
  for (const int number : numbers) text += (number == numbers.front() ? " " : ", ") + std::to_string(number);
  return text + ")";
}

void PrintMetadata(const SampleDescription& sample, Output& out) {
  if (sample.metadata.empty()) return;
  TextTable table({{""}, {""}});
  for (const MetadataItem& item : sample.metadata) {
    const ValueUses uses = UsesOf(item, sample.functions);
    std::string key = OrNothing(VisibleUtf8(item.key));
    for (const auto& [value, functions] : uses) {
      table.AddRow({key, uses.size() == 1 ? ShownValue(value) : ShownValue(value) + FunctionList(functions)});
      key.clear();
    }
  }
  out.Text("\n  Metadata\n");
  table.Print("    ", out);
}

void PrintSample(const SampleDescription& sample, Output& out) {
  out.Text("\nSample " + std::to_string(sample.number) + ": " + OrNothing(VisibleUtf8(sample.name)) + "\n");
  PrintFunctions(sample, out);
  for (const FunctionDescription& function : sample.functions) {
    PrintNames("Traces of function " + std::to_string(function.number), function.traces, out);
  }
  PrintNames("Traces", sample.traces, out);
  if (sample.absorbanceScans) {
    out.Text("\n  Absorbance\n    " + std::to_string(*sample.absorbanceScans) + " scans\n");
  }
  PrintMetadata(sample, out);
}

void PrintText(const Source& source, const std::vector<int>& samples, Output& out) {
  CDataServerImpl& server = source.Server();
  TextTable table({{""}, {""}});
  table.AddRow({"Source", VisibleUtf8(source.Path())});
  table.AddRow({"Provider", VisibleUtf8(server.GetProviderName())});
  table.AddRow({"Content", server.IsReportSource() ? "processed report" : "raw acquisition"});
  table.Print("", out);
  for (const int sample : samples) PrintSample(DescribeSample(server, sample), out);
}

class InfoCommand : public SourceCommand {
 public:
  explicit InfoCommand(CommandLine& line)
      : SourceCommand(line, "info", "Show what a data source holds: samples, functions, traces, metadata") {
    AddNumber("--sample", sample_, "The sample, counted from 1; all unless given");
  }

  void Run(Output& out) override {
    const Source source = OpenSource();
    const std::vector<int> samples = Samples(source.Server());
    WantsJson() ? PrintJson(source, samples, out) : PrintText(source, samples, out);
  }

 private:
  std::vector<int> Samples(CDataServerImpl& server) const {
    if (sample_ != 0) return {FindSample(server, sample_)};
    std::vector<int> samples(static_cast<std::size_t>(std::max(server.GetSampleCount(), 0)));
    std::iota(samples.begin(), samples.end(), 0);
    return samples;
  }

  int sample_ = 0;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand(CommandLine& line) { return std::make_unique<InfoCommand>(line); }

}  // namespace zrml
