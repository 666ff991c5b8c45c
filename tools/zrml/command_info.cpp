// zrml info: what a data source holds.
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>
#include <string_view>
#include <unordered_map>

#include "source/names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/metadata.h"
#include "tools/zrml/names.h"
#include "tools/zrml/text_table.h"

namespace zrml::tool {
namespace {

using Align = TextTable::Align;
using Metadata = std::vector<source::MetadataItem>;

bool IsReport(const source::Source& source) { return source.GetFormat() == source::Format::kReport; }

int FunctionCount(source::Source& source, int sample) {
  return static_cast<int>(source.Functions(sample).size());
}

// As the first function has it.
Metadata SampleMetadataOf(source::Source& source, int sample) {
  return MetadataOf(source, sample, FunctionCount(source, sample) > 0 ? std::optional(0) : std::nullopt);
}

// What info says of a function: a member of the JSON form, and a column of the text unless that has no title.
struct Field {
  std::string_view key;
  std::string_view title = {};
  Align align = Align::kLeft;
  std::string_view nothing = {};  // the text that says as much as no value
};

constexpr std::array<Field, 14> kFields = {{
    {"number", "No", Align::kRight},
    {"file"},
    {"name", "Name"},
    {"kind", "Kind"},
    {"kindCode"},
    {"msLevel", "Level", Align::kRight},
    {"scanType", "Scan type", Align::kLeft, "none"},
    {"polarity", "Polarity"},
    {"scans", "Scans", Align::kRight},
    {"minutes", "Minutes", Align::kRight},
    {"massRange", "m/z", Align::kRight},
    {"centroided", "Data"},
    {"dimensions", "Dim", Align::kRight},
    {"driftBins", "Drift bins", Align::kRight},
}};

std::optional<source::Range> RangeOf(std::span<const double> minutes) {
  std::optional<source::Range> range;
  for (const double time : minutes) {
    if (std::isnan(time)) continue;
    if (!range) range = source::Range{time, time};
    range->low = std::min(range->low, time);
    range->high = std::max(range->high, time);
  }
  return range;
}

// In the order of kFields.
std::array<Value, kFields.size()> ValuesOf(source::Source& source, const FunctionPosition& at) {
  const source::Function function = FunctionAt(source, at);
  const int scans = source.ScanCount(at.sample, at.function);
  Value minutes;
  Value isCentroided;
  if (scans > 0) {
    minutes = ValueOrAbsent(RangeOf(source.Minutes(at.sample, at.function)));
    isCentroided = source.ScanAt(at.sample, at.function, 0).isCentroided;
  }
  const int driftBins = function.hasMobility ? source.DriftBinCount(at.sample, at.function) : 0;
  return {
      ValueOf(function.id),
      function.file.empty() ? Value() : Value(function.file),
      function.name,
      NameOf(function.kind),
      KindCode(function.kind),
      function.msLevel,
      NameOf(function.scanType),
      NameOf(function.polarity),
      scans,
      minutes,
      ValueOrAbsent(function.massRange),
      isCentroided,
      1 + (function.hasMobility ? 1 : 0) + (scans > 1 ? 1 : 0),  // m/z, drift and time
      function.hasMobility ? Value(driftBins) : Value(),
  };
}

// JSON

void WriteNames(const std::vector<source::Trace>& items, JsonWriter& json) {
  json.Array([&] {
    for (const source::Trace& item : items) {
      json.Object([&] { json.Members({{"number", item.number}, {"name", item.name}}); });
    }
  });
}

void WriteMetadata(const Metadata& items, JsonWriter& json) {
  json.Object([&] {
    for (const source::MetadataItem& item : items) json.Key(item.key).Put(ValueOrAbsent(item.value));
  });
}

void WriteFunction(source::Source& source, const FunctionPosition& at, JsonWriter& json) {
  json.Object([&] {
    const auto values = ValuesOf(source, at);
    for (std::size_t i = 0; i < kFields.size(); ++i) json.Key(kFields[i].key).Put(values[i]);
    WriteNames(source.FunctionTraces(at.sample, at.function), json.Key("traces"));
    WriteMetadata(MetadataOf(source, at.sample, at.function), json.Key("metadata"));
  });
}

void WriteSample(source::Source& source, int sample, JsonWriter& json) {
  json.Object([&] {
    json.Members({{"number", sample + 1}, {"name", source.SampleName(sample)}});
    json.Key("functions").Array([&] {
      for (int i = 0; i < FunctionCount(source, sample); ++i) WriteFunction(source, {sample, i}, json);
    });
    WriteNames(source.Traces(sample), json.Key("traces"));
    const bool hasAbsorbance = source.HasAbsorbance(sample);
    json.Key("absorbanceScans").Put(hasAbsorbance ? Value(source.AbsorbanceScanCount(sample)) : Value());
    WriteMetadata(SampleMetadataOf(source, sample), json.Key("metadata"));
  });
}

void PrintJson(source::Source& source, const std::vector<int>& samples, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    json.Members({{"source", source.Path()},
                  {"provider", ProviderName(source.GetFormat())},
                  {"report", IsReport(source)}});
    json.Key("samples").Array([&] {
      for (const int sample : samples) WriteSample(source, sample, json);
    });
  });
  json.Finish();
}

// Text

std::string OrNothing(const std::string& text) { return text.empty() ? TextTable::kNothing : text; }

std::string CellText(const Field& field, const Value& value) {
  if (const auto* const range = std::get_if<source::Range>(&value))
    return RoundedNumber(range->low) + " to " + RoundedNumber(range->high);
  if (const auto* const isCentroided = std::get_if<bool>(&value))
    return *isCentroided ? "centroid" : "continuum";
  const std::string text = TextOf(value);
  return text == field.nothing ? TextTable::kNothing : text;
}

void PrintFunctions(source::Source& source, int sample, Output& out) {
  const int count = FunctionCount(source, sample);
  if (count == 0) {
    out.Text("\n  No functions\n");
    return;
  }
  std::vector<TextTable::Column> columns;
  for (const Field& field : kFields) {
    if (!field.title.empty()) columns.push_back({std::string(field.title), field.align});
  }
  TextTable table(columns);
  for (int function = 0; function < count; ++function) {
    const auto values = ValuesOf(source, {sample, function});
    std::vector<std::string> row;
    for (std::size_t i = 0; i < kFields.size(); ++i) {
      if (!kFields[i].title.empty()) row.push_back(CellText(kFields[i], values[i]));
    }
    table.AddRow(std::move(row));
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

struct FunctionMetadata {
  std::string function;
  Metadata items;
};

std::vector<FunctionMetadata> MetadataOfFunctions(source::Source& source, int sample) {
  std::vector<FunctionMetadata> all(source.Functions(sample).size());
  for (int i = 0; i < static_cast<int>(all.size()); ++i)
    all[static_cast<std::size_t>(i)] = {TextOf(FunctionAt(source, {sample, i}).id),
                                        MetadataOf(source, sample, i)};
  return all;
}

// The values of one key, each with the functions that have it.
using ValueUses = std::vector<std::pair<std::string_view, std::vector<std::string>>>;

ValueUses UsesOf(const source::MetadataItem& item, const std::vector<FunctionMetadata>& functions) {
  constexpr std::string_view kNone;
  const auto textOf = [&](const source::MetadataItem& any) {
    return any.value ? std::string_view(*any.value) : kNone;
  };
  ValueUses uses = {{textOf(item), {}}};  // the first function's, or the sample's without functions
  std::unordered_map<std::string_view, std::size_t> places = {{textOf(item), 0}};
  for (const FunctionMetadata& function : functions) {
    for (const source::MetadataItem& own : function.items) {
      if (own.key != item.key) continue;
      const auto [place, isNew] = places.emplace(textOf(own), uses.size());
      if (isNew) uses.emplace_back(place->first, std::vector<std::string>());
      uses[place->second].second.push_back(function.function);
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

void PrintMetadata(source::Source& source, int sample, Output& out) {
  const std::vector<FunctionMetadata> functions = MetadataOfFunctions(source, sample);
  const Metadata items = functions.empty() ? source.SampleMetadata(sample) : functions.front().items;
  if (items.empty()) return;
  TextTable table({{""}, {""}});
  for (const source::MetadataItem& item : items) {
    const ValueUses uses = UsesOf(item, functions);
    std::string key = OrNothing(VisibleText(item.key));
    for (const auto& [value, users] : uses) {
      table.AddRow({key, uses.size() == 1 ? ShownValue(value) : ShownValue(value) + FunctionList(users)});
      key.clear();
    }
  }
  out.Text("\n  Metadata\n");
  table.Print("    ", out);
}

void PrintSample(source::Source& source, int sample, Output& out) {
  out.Text("\nSample " + std::to_string(sample + 1) + ": " +
           OrNothing(VisibleText(source.SampleName(sample))) + "\n");
  PrintFunctions(source, sample, out);
  for (int i = 0; i < FunctionCount(source, sample); ++i) {
    PrintNames("Traces of function " + TextOf(FunctionAt(source, {sample, i}).id),
               source.FunctionTraces(sample, i), out);
  }
  PrintNames("Traces", source.Traces(sample), out);
  if (source.HasAbsorbance(sample)) {
    out.Text("\n  Absorbance\n    " + std::to_string(source.AbsorbanceScanCount(sample)) + " scans\n");
  }
  PrintMetadata(source, sample, out);
}

void PrintText(source::Source& source, const std::vector<int>& samples, Output& out) {
  TextTable table({{""}, {""}});
  table.AddRow({"Source", VisibleText(source.Path())});
  table.AddRow({"Provider", ProviderName(source.GetFormat())});
  table.AddRow({"Content", IsReport(source) ? "processed report" : "raw acquisition"});
  table.Print("", out);
  for (const int sample : samples) PrintSample(source, sample, out);
}

class InfoCommand : public SourceCommand {
 public:
  explicit InfoCommand(CLI::App& parser)
      : SourceCommand(parser, "info", "Show what a data source holds: samples, functions, traces, metadata") {
    AddNumber(Options(), "--sample", sample_, "The sample, counted from 1; all by default");
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
