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
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/names.h"
#include "tools/zrml/progress_bar.h"
#include "tools/zrml/source_list.h"
#include "tools/zrml/text_table.h"

namespace zrml::tool {
namespace {

using Align = TextTable::Align;
using Metadata = std::vector<source::MetadataItem>;

// A fact about a function: a member of the JSON form, and a column of the text unless it has no title.
struct Field {
  std::string_view key;
  std::string_view title = {};
  Align align = Align::kLeft;
  std::string_view nothing = {};  // the text that means no value
};

constexpr std::string_view kLevelKey = "msLevel";

constexpr std::array<Field, 14> kFields = {{
    {"number", "No", Align::kRight},
    {"file", "File"},
    {"name", "Name"},
    {"kind", "Kind"},
    {"kindCode"},
    {kLevelKey, "Level", Align::kRight},
    {"scanType", "Scan type", Align::kLeft, "none"},
    {"polarity", "Polarity"},
    {"scans", "Scans", Align::kRight},
    {"minutes", "Minutes", Align::kRight},
    {"massRange", "m/z", Align::kRight},
    {"centroided", "Data"},
    {"dimensions"},
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
    isCentroided = ValueOrAbsent(IsCentroided(source.ScanAt(at.sample, at.function, 0)));
  }
  const int driftBins = function.hasMobility ? source.DriftBinCount(at.sample, at.function) : 0;
  return {
      ValueOf(function.id),
      function.file.empty() ? Value() : Value(function.file),
      function.name,
      KindNameOf(function),
      KindCode(function.kind),
      ValueOrAbsent(function.msLevel),
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

// The facts about a source, all read before any is printed.
struct FunctionInfo {
  std::string name;  // "p2"
  std::array<Value, kFields.size()> values = {};
  std::vector<source::Trace> traces = {};
  Metadata metadata = {};
  bool hasLevel = true;  // for people: ion monitoring is neither survey nor fragments
};

struct SampleInfo {
  int number = 0;
  std::string name = {};
  std::vector<FunctionInfo> functions = {};
  std::int64_t scans = 0;
  std::vector<source::Trace> traces = {};
  std::optional<source::Function> absorbance = {};
  int absorbanceScans = 0;
  Metadata metadata = {};
};

struct SourceInfo {
  std::string path;
  source::Format format = source::Format::kRawDirectory;
  std::vector<SampleInfo> samples = {};
  bool isPlate = false;  // it has several samples, and none is chosen

  bool IsReport() const { return format == source::Format::kReport; }
};

// Without the item for the text of a report's function, which would repeat the report.
SampleInfo ReadSample(source::Source& source, int sample, const source::Progress& progress) {
  SampleInfo info = {.number = sample + 1, .name = source.SampleName(sample)};
  const Metadata items = source.SampleMetadata(sample);
  const int functions = static_cast<int>(source.Functions(sample).size());
  for (int i = 0; i < functions; ++i) {
    info.scans += source.ScanCount(sample, i);
    const source::Function function = FunctionAt(source, {sample, i});
    info.functions.push_back({TextOf(function.id), ValuesOf(source, {sample, i}),
                              source.FunctionTraces(sample, i),
                              source::Merged(items, source.FunctionMetadata(sample, i)),
                              function.monitoring == source::Monitoring::kNone});
    progress(info.functions.size(), static_cast<std::size_t>(functions));
  }
  info.traces = source.Traces(sample);
  if (source.HasAbsorbance(sample)) {
    info.absorbance = source.AbsorbanceFunction(sample);
    info.absorbanceScans = source.AbsorbanceScanCount(sample);
  }
  info.metadata =
      info.functions.empty() ? items : info.functions.front().metadata;  // those of the first function
  return info;
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

void WriteFunction(const FunctionInfo& function, JsonWriter& json) {
  json.Object([&] {
    for (std::size_t i = 0; i < kFields.size(); ++i) json.Key(kFields[i].key).Put(function.values[i]);
    WriteNames(function.traces, json.Key("traces"));
    WriteMetadata(function.metadata, json.Key("metadata"));
  });
}

void WriteSample(const SampleInfo& sample, JsonWriter& json) {
  json.Object([&] {
    json.Members({{"number", sample.number}, {"name", sample.name}});
    json.Key("functions").Array([&] {
      for (const FunctionInfo& function : sample.functions) WriteFunction(function, json);
    });
    WriteNames(sample.traces, json.Key("traces"));
    const bool hasAbsorbance = sample.absorbance.has_value();
    json.Members({{"absorbanceFunction", hasAbsorbance ? ValueOf(sample.absorbance->id) : Value()},
                  {"absorbanceFile", hasAbsorbance ? Value(sample.absorbance->file) : Value()},
                  {"absorbanceScans", hasAbsorbance ? Value(sample.absorbanceScans) : Value()}});
    WriteMetadata(sample.metadata, json.Key("metadata"));
  });
}

void WriteSource(const SourceInfo& source, JsonWriter& json) {
  json.Object([&] {
    json.Members(
        {{"source", source.path}, {"provider", ProviderName(source.format)}, {"report", source.IsReport()}});
    json.Key("samples").Array([&] {
      for (const SampleInfo& sample : source.samples) WriteSample(sample, json);
    });
  });
}

// Text

std::string OrNothing(const std::string& text) { return text.empty() ? TextTable::kNothing : text; }

std::string CellText(const Field& field, const Value& value) {
  if (const auto* const range = std::get_if<source::Range>(&value))
    return RoundedNumber(range->low) + " to " + RoundedNumber(range->high);
  if (const auto* const isCentroided = std::get_if<bool>(&value))
    return *isCentroided ? "centroid" : "continuum";
  const std::string text = TextOf(value);
  return text == field.nothing ? TextTable::kNothing : OrNothing(text);
}

void PrintFunctions(const SampleInfo& sample, Output& out) {
  if (sample.functions.empty()) {
    out.Text("\n  No functions\n");
    return;
  }
  std::vector<TextTable::Column> columns;
  for (const Field& field : kFields) {
    if (!field.title.empty()) columns.push_back({std::string(field.title), field.align});
  }
  TextTable table(columns);
  for (const FunctionInfo& function : sample.functions) {
    std::vector<std::string> row;
    for (std::size_t i = 0; i < kFields.size(); ++i) {
      const bool isShown = function.hasLevel || kFields[i].key != kLevelKey;
      if (!kFields[i].title.empty())
        row.push_back(CellText(kFields[i], isShown ? function.values[i] : Value()));
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

// The values of one key, each with the functions that have it.
using ValueUses = std::vector<std::pair<std::string_view, std::vector<std::string>>>;

ValueUses UsesOf(const source::MetadataItem& item, const std::vector<FunctionInfo>& functions) {
  constexpr std::string_view kNone;
  const auto textOf = [&](const source::MetadataItem& any) {
    return any.value ? std::string_view(*any.value) : kNone;
  };
  ValueUses uses = {{textOf(item), {}}};  // the first function's, or the sample's without functions
  std::unordered_map<std::string_view, std::size_t> places = {{textOf(item), 0}};
  for (const FunctionInfo& function : functions) {
    for (const source::MetadataItem& own : function.metadata) {
      if (own.key != item.key) continue;
      const auto [place, isNew] = places.emplace(textOf(own), uses.size());
      if (isNew) uses.emplace_back(place->first, std::vector<std::string>());
      uses[place->second].second.push_back(function.name);
    }
  }
  return uses;
}

// Text shows the beginning of a long value.
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

void PrintMetadata(const SampleInfo& sample, Output& out) {
  if (sample.metadata.empty()) return;
  TextTable table({{""}, {""}});
  for (const source::MetadataItem& item : sample.metadata) {
    const ValueUses uses = UsesOf(item, sample.functions);
    std::string key = OrNothing(VisibleText(item.key));
    for (const auto& [value, users] : uses) {
      table.AddRow({key, uses.size() == 1 ? ShownValue(value) : ShownValue(value) + FunctionList(users)});
      key.clear();
    }
  }
  out.Text("\n  Metadata\n");
  table.Print("    ", out);
}

void PrintSample(const SampleInfo& sample, Output& out) {
  out.Text("\nSample " + std::to_string(sample.number) + ": " + OrNothing(VisibleText(sample.name)) + "\n");
  PrintFunctions(sample, out);
  for (const FunctionInfo& function : sample.functions)
    PrintNames("Traces of function " + function.name, function.traces, out);
  PrintNames("Traces", sample.traces, out);
  if (sample.absorbance) {
    out.Text("\n  Absorbance\n    function " + TextOf(sample.absorbance->id) + ", " +
             VisibleText(sample.absorbance->file) + ": " + Counted(sample.absorbanceScans, "scan") + "\n");
  }
  PrintMetadata(sample, out);
}

// One line per sample: a plate has many, and people look at one of them next.
void PrintPlate(const SourceInfo& source, Output& out) {
  TextTable table({{"No", Align::kRight},
                   {"Name"},
                   {"Functions", Align::kRight},
                   {"Scans", Align::kRight},
                   {"Traces", Align::kRight}});
  for (const SampleInfo& sample : source.samples) {
    std::size_t traces = sample.traces.size();
    for (const FunctionInfo& function : sample.functions) traces += function.traces.size();
    table.AddRow({std::to_string(sample.number), OrNothing(VisibleText(sample.name)),
                  std::to_string(sample.functions.size()), std::to_string(sample.scans),
                  std::to_string(traces)});
  }
  out.Text("\nSamples\n");
  table.Print("  ", out);
  out.Text("\n--sample N shows what is in one of them.\n");
}

void PrintSource(const SourceInfo& source, Output& out) {
  TextTable table({{""}, {""}});
  table.AddRow({"Source", VisibleText(source.path)});
  table.AddRow({"Provider", ProviderName(source.format)});
  table.AddRow({"Content", source.IsReport() ? "processed report" : "raw acquisition"});
  table.Print("", out);
  if (source.isPlate) return PrintPlate(source, out);
  for (const SampleInfo& sample : source.samples) PrintSample(sample, out);
}

class InfoCommand : public Command {
 public:
  explicit InfoCommand(CLI::App& parser)
      : Command(parser, "info", "Show what data sources hold: samples, functions, traces, metadata") {
    AddSourceArguments(Options(), sources_);
    Options().add_flag("--json", wantsJson_, "Print JSON, for programs: an object, or a list of several");
    AddNumber(Options(), "--sample", sample_, "The sample, counted from 1; all by default");
  }

  void Run(Output& out) override {
    PrintEachSource(sources_, wantsJson_, "are not shown", out,
                    [&](const std::string& path, JsonWriter& json) { Show(path, json, out); });
  }

 private:
  void Show(const std::string& path, JsonWriter& json, Output& out) {
    const SourceInfo info = Read(path);
    if (wantsJson_) return WriteSource(info, json);
    if (shown_++ > 0) out.Text("\n");
    PrintSource(info, out);
  }

  SourceInfo Read(const std::string& path) const {
    constexpr std::size_t kParts = 1000;  // of a sample, for the bar
    const std::unique_ptr<source::Source> source = OpenListed(path);
    ProgressBar bar(IsErrorTerminal(), path);
    try {
      const std::vector<int> samples = Samples(*source);
      SourceInfo info = {.path = path, .format = source->GetFormat()};
      info.isPlate = samples.size() > 1;
      for (const int sample : samples) {
        info.samples.push_back(ReadSample(*source, sample, [&](std::size_t done, std::size_t all) {
          bar.Update(info.samples.size() * kParts + kParts * done / all, samples.size() * kParts);
        }));
      }
      return info;
    } catch (const source::Error& error) {
      throw FailureOf(error);
    }
  }

  std::vector<int> Samples(source::Source& source) const {
    if (sample_ != 0) return {FindSample(source, sample_)};
    std::vector<int> samples(static_cast<std::size_t>(source.SampleCount()));
    std::iota(samples.begin(), samples.end(), 0);
    return samples;
  }

  SourceArguments sources_;
  bool wantsJson_ = false;
  int sample_ = 0;
  int shown_ = 0;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand(CLI::App& parser) { return std::make_unique<InfoCommand>(parser); }

}  // namespace zrml::tool
