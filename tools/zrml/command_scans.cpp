// zrml scans: a row for each scan, from index and statistics and, if requested, from its points.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "common/text.h"
#include "convert/error.h"
#include "convert/parquet/row_table.h"
#include "convert/selection.h"
#include "source/names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {
namespace {

namespace parquet = convert::parquet;

// No values for a scan whose points are all lost.
struct PointFacts {
  std::optional<double> sum = {};
  std::optional<double> basePeakMz = {};
  std::optional<double> basePeakIntensity = {};
  std::optional<source::Range> range = {};
};

PointFacts FactsOf(const source::PointsRead& read, const std::vector<double>& mz,
                   const std::vector<double>& intensities) {
  if (source::AreAllLost(read)) return {};
  PointFacts facts = {.sum = std::accumulate(intensities.begin(), intensities.end(), 0.0)};
  if (mz.empty()) return facts;
  const auto base = std::max_element(intensities.begin(), intensities.end());
  facts.basePeakMz = mz[static_cast<std::size_t>(base - intensities.begin())];
  facts.basePeakIntensity = *base;
  facts.range = {mz.front(), mz.back()};
  return facts;
}

/// The values that all rows of a function share.
struct FunctionTexts {
  std::string source;
  std::int64_t sample = 0;
  std::string function;
  std::optional<std::int64_t> msLevel;
  std::string polarity;
};

struct Row {
  const FunctionTexts& texts;
  int number = 0;
  const source::Scan& scan;
  const PointFacts& points;
};

enum class TableForm { kTsv, kJson, kParquet };

using parquet::Type;

/// Appends one value of a row; an absent one and NaN are empty, and so are infinities in JSON.
class Cell {
 public:
  /// Text has short numbers, JSON exact ones, Parquet those of `type`.
  Cell(std::string& line, TableForm form, Type type) : line_(line), form_(form), type_(type) {}

  void Put(std::string_view text) {
    line_ += form_ == TableForm::kParquet && !text.empty() ? parquet::PlainText(text) : std::string(text);
  }
  void Put(std::int64_t value) {
    line_ += form_ == TableForm::kParquet ? parquet::PlainNumber(type_, static_cast<double>(value))
                                          : std::to_string(value);
  }
  void Put(double value) {
    if (std::isnan(value) || (form_ == TableForm::kJson && std::isinf(value))) return;
    if (form_ == TableForm::kTsv) AppendShortNumber(value, line_);
    if (form_ == TableForm::kJson) AppendNumber(value, line_);
    if (form_ == TableForm::kParquet) line_ += parquet::PlainNumber(type_, value);
  }
  template <class Value>
  void Put(const std::optional<Value>& value) {
    if (value) Put(*value);
  }

 private:
  std::string& line_;
  TableForm form_;
  Type type_;
};

struct ScanColumn {
  std::string_view name;
  Type type;
  void (*put)(const Row& row, Cell cell);
};

constexpr std::array<ScanColumn, 16> kColumns = {{
    {"source", Type::kText, [](const Row& row, Cell cell) { cell.Put(row.texts.source); }},
    {"sample", Type::kInt32, [](const Row& row, Cell cell) { cell.Put(row.texts.sample); }},
    {"function", Type::kText, [](const Row& row, Cell cell) { cell.Put(row.texts.function); }},
    {"scan", Type::kInt32, [](const Row& row, Cell cell) { cell.Put(std::int64_t{row.number}); }},
    {"minutes", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.scan.minutes); }},
    {"msLevel", Type::kInt32, [](const Row& row, Cell cell) { cell.Put(row.texts.msLevel); }},
    {"polarity", Type::kText, [](const Row& row, Cell cell) { cell.Put(row.texts.polarity); }},
    {"precursorMz", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.scan.precursorMz); }},
    {"points", Type::kInt64, [](const Row& row, Cell cell) { cell.Put(std::int64_t{row.scan.points}); }},
    {"totalIntensity", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.scan.totalIntensity); }},
    {"scanValue", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.scan.scanValue); }},
    {"sum", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.points.sum); }},
    {"basePeakMz", Type::kDouble, [](const Row& row, Cell cell) { cell.Put(row.points.basePeakMz); }},
    {"basePeakIntensity", Type::kDouble,
     [](const Row& row, Cell cell) { cell.Put(row.points.basePeakIntensity); }},
    {"lowestMz", Type::kDouble,
     [](const Row& row, Cell cell) {
       if (row.points.range) cell.Put(row.points.range->low);
     }},
    {"highestMz", Type::kDouble,
     [](const Row& row, Cell cell) {
       if (row.points.range) cell.Put(row.points.range->high);
     }},
}};
constexpr std::size_t kWithoutPoints = 11;

using ScanColumns = std::span<const ScanColumn>;

void AppendLine(ScanColumns columns, const Row& row, std::string& line) {
  for (const ScanColumn& column : columns) {
    column.put(row, Cell(line, TableForm::kTsv, column.type));
    line += &column == &columns.back() ? '\n' : '\t';
  }
}

// Empty cells of a line are null.
void AppendObject(ScanColumns columns, const Row& row, std::string& line) {
  for (const ScanColumn& column : columns) {
    line += &column == columns.data() ? "{\"" : ", \"";
    line.append(column.name).append("\": ");
    const std::size_t before = line.size();
    column.put(row, Cell(line, TableForm::kJson, column.type));
    if (line.size() == before) line += "null";
  }
  line += '}';
}

void AddRow(ScanColumns columns, const Row& row, std::vector<std::string>& cells, parquet::RowTable& table) {
  cells.assign(columns.size(), {});
  for (std::size_t i = 0; i < columns.size(); ++i)
    columns[i].put(row, Cell(cells[i], TableForm::kParquet, columns[i].type));
  table.Add(cells);
}

std::optional<TableForm> ParseForm(std::string_view text) {
  const std::string lower = ToLower(text);
  if (lower == "tsv") return TableForm::kTsv;
  if (lower == "json") return TableForm::kJson;
  return lower == "parquet" ? std::optional(TableForm::kParquet) : std::nullopt;
}

class ScansCommand : public Command {
 public:
  explicit ScansCommand(CLI::App& parser) : Command(parser, "scans", "Print a table of scans") {
    CLI::App& options = Options();
    AddSourceArguments(options, sources_);
    CLI::Option* const format = AddParsed(options, "--format", form_, ParseForm, "tsv, json or parquet",
                                          "tsv (default), json or parquet");
    format->option_text("FORMAT");
    options
        .add_flag_callback(
            "--json", [this] { form_ = TableForm::kJson; },
            "Print JSON, for programs: an object, or a list of several")
        ->excludes(format)
        ->option_text(" ");
    options
        .add_option("-b,-o,--file", file_, "The file of the table, as Parquet; standard output by default")
        ->option_text("FILE")
        ->check(IsNotEmpty());
    options.add_flag("--force", isForced_, "Replace a file that exists");
    options.add_flag("--points", hasPoints_, "Read the points, too: their sum, base peak and range");
    AddSelectionOptions(options, selection_);
  }

  /// Rows read before a failure are printed.
  void Run(Output& out) override {
    TakeForm();
    if (form_ == TableForm::kParquet) return WriteTable();
    const bool isJson = form_ == TableForm::kJson;
    PrintEachSource(sources_, isJson, "are not shown in full", out,
                    [&](const std::string& path, JsonWriter& json) {
                      isJson ? PrintObject(path, json) : PrintLines(path, out);
                    });
  }

 private:
  // The name of the file must match the content, since other programs rely on it.
  void TakeForm() {
    if (file_.empty()) return;
    const std::string_view name = file_;
    const std::size_t point = name.rfind('.');
    const auto named = point == name.npos ? std::nullopt : ParseForm(name.substr(point + 1));
    if (form_.value_or(TableForm::kParquet) != TableForm::kParquet ||
        named.value_or(TableForm::kParquet) != TableForm::kParquet)
      throw Failure(ExitStatus::kWrongUsage,
                    "only Parquet is written to a file; text goes to standard output");
    form_ = TableForm::kParquet;
  }

  // Without a row, a failure leaves no file.
  void WriteTable() {
    const std::vector<std::string> sources = ListSources(sources_);
    std::optional<Failure> failure;
    try {
      const InterruptionWatch watch;
      const std::unique_ptr<convert::ByteSink> target = MakeTableTarget(sources);
      convert::BufferedSink out(*target);
      parquet::RowTable table(ParquetColumns(), out);
      failure = AddSources(sources, table);
      if (failure && table.IsEmpty()) throw Failure(*failure);
      table.End();
      out.Finish();
    } catch (const convert::Error& error) {
      throw FailureOf(error);
    } catch (const source::Cancelled&) {
      EndByInterruption();
    }
    if (failure) throw Failure(*failure);
  }

  std::optional<Failure> AddSources(const std::vector<std::string>& sources, parquet::RowTable& table) {
    try {
      ForEachSource(sources, "are not shown in full", [&](const std::string& path) { AddRows(path, table); });
    } catch (const Failure& failure) {
      return failure;
    }
    return std::nullopt;
  }

  std::unique_ptr<convert::ByteSink> MakeTableTarget(const std::vector<std::string>& sources) const {
    if (file_.empty()) return std::make_unique<StandardOutput>();
    RefuseUnlessFile(file_);
    RefuseSourceAsTarget(file_, convert::SourceOwners(sources));
    return MakeTargetFile(file_, isForced_);
  }

  std::vector<parquet::Column> ParquetColumns() const {
    std::vector<parquet::Column> columns;
    for (const ScanColumn& column : AllColumns()) columns.push_back({column.name, column.type, true});
    return columns;
  }

  void AddRows(const std::string& path, parquet::RowTable& table) {
    std::vector<std::string> cells;
    ForEachScan(*OpenChosen(path), [&](const Row& row) {
      if (IsInterrupted()) throw source::Cancelled();
      AddRow(AllColumns(), row, cells, table);
    });
  }

  // Above the first source that can be shown.
  void PrintTitles(Output& out) {
    if (std::exchange(hasTitles_, true)) return;
    for (const ScanColumn& column : AllColumns()) {
      out.Text(column.name);
      out.Text(&column == &AllColumns().back() ? "\n" : "\t");
    }
  }

  void PrintLines(const std::string& path, Output& out) {
    const std::unique_ptr<source::Source> source = OpenChosen(path);
    PrintTitles(out);
    std::string line;
    ForEachScan(*source, [&](const Row& row) {
      line.clear();
      AppendLine(AllColumns(), row, line);
      out.Text(line);
    });
  }

  void PrintObject(const std::string& path, JsonWriter& json) {
    const std::unique_ptr<source::Source> source = OpenChosen(path);
    std::string object;
    const auto add = [&](const Row& row) {
      object.clear();
      AppendObject(AllColumns().subspan(1), row, object);  // without the source
      json.Raw(object);
    };
    json.Object([&] {
      json.Key("source").Put(path);
      json.Key("scans").Array([&] { ForEachScan(*source, add); });
    });
  }

  ScanColumns AllColumns() const {
    return ScanColumns(kColumns).first(hasPoints_ ? kColumns.size() : kWithoutPoints);
  }

  // A source that has the functions that are named.
  std::unique_ptr<source::Source> OpenChosen(const std::string& path) const {
    std::unique_ptr<source::Source> source = OpenListed(path);
    Reading(*source, [&] {
      std::vector<int> all(static_cast<std::size_t>(source->SampleCount()));
      std::iota(all.begin(), all.end(), 0);
      RequireFunctions(*source, all, selection_.functions, AbsorbanceFunction::kIsNotMeant);
    });
    return source;
  }

  template <class Visit>
  void ForEachScan(source::Source& source, Visit visit) {
    const int samples = Reading(source, [&] { return source.SampleCount(); });
    for (int sample = 0; sample < samples; ++sample) {
      const std::span<const source::Function> functions =
          Reading(source, [&] { return source.Functions(sample); });
      for (int function = 0; function < static_cast<int>(functions.size()); ++function) {
        const source::Function& described = functions[static_cast<std::size_t>(function)];
        if (Chooses(selection_, described)) ForEachScanOf(source, {sample, function}, described, visit);
      }
    }
  }

  template <class Visit>
  void ForEachScanOf(source::Source& source, const FunctionPosition& at, const source::Function& function,
                     Visit visit) {
    const bool isJson = form_ == TableForm::kJson;
    const auto text = [&](const Value& value) { return isJson ? JsonOf(value) : TextOf(value); };
    const FunctionTexts texts = {
        .source = text(source.Path()),
        .sample = at.sample + 1,
        .function = text(ValueOf(function.id)),
        .msLevel = HasLevel(function) ? std::optional<std::int64_t>(function.msLevel) : std::nullopt,
        .polarity = function.polarity == source::Polarity::kUnknown
                        ? ""
                        : text(std::string(source::NameOf(function.polarity))),
    };
    const int scans = Reading(source, [&] { return source.ScanCount(at.sample, at.function); });
    for (int position = 0; position < scans; ++position) {
      const source::Scan scan =
          Reading(source, [&] { return source.ScanAt(at.sample, at.function, position); });
      if (!selection_.HasTime(scan.minutes)) continue;
      PointFacts points;
      if (hasPoints_) {
        const source::PointsRead read = Reading(
            source, [&] { return source.ReadPoints(at.sample, at.function, position, mz_, intensities_); });
        points = FactsOf(read, mz_, intensities_);
      }
      visit(Row{texts, position + 1, scan, points});
    }
  }

  SourceArguments sources_;
  std::optional<TableForm> form_;
  std::string file_;  // empty for standard output
  bool isForced_ = false;
  bool hasTitles_ = false;
  bool hasPoints_ = false;
  convert::Selection selection_;
  std::vector<double> mz_;
  std::vector<double> intensities_;
};

}  // namespace

std::unique_ptr<Command> MakeScansCommand(CLI::App& parser) { return std::make_unique<ScansCommand>(parser); }

}  // namespace zrml::tool
