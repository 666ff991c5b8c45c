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
#include <vector>

#include "convert/selection.h"
#include "source/names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {
namespace {

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
  std::string sample;
  std::string function;
  std::string msLevel;
  std::string polarity;
};

struct Row {
  const FunctionTexts& texts;
  int number = 0;
  const source::Scan& scan;
  const PointFacts& points;
};

/// Appends one value of a row; an absent value is empty.
class Cell {
 public:
  /// Text has short numbers, JSON exact ones.
  Cell(std::string& line, bool isShort) : line_(line), isShort_(isShort) {}

  void Put(std::string_view text) { line_ += text; }
  void Put(std::int64_t value) { line_ += std::to_string(value); }
  void Put(double value) {
    if (!std::isfinite(value)) return;
    isShort_ ? AppendShortNumber(value, line_) : AppendNumber(value, line_);
  }
  void Put(const std::optional<double>& value) {
    if (value) Put(*value);
  }

 private:
  std::string& line_;
  bool isShort_;
};

struct ScanColumn {
  std::string_view name;
  void (*put)(const Row& row, Cell cell);
};

constexpr std::array<ScanColumn, 16> kColumns = {{
    {"source", [](const Row& row, Cell cell) { cell.Put(row.texts.source); }},
    {"sample", [](const Row& row, Cell cell) { cell.Put(row.texts.sample); }},
    {"function", [](const Row& row, Cell cell) { cell.Put(row.texts.function); }},
    {"scan", [](const Row& row, Cell cell) { cell.Put(std::int64_t{row.number}); }},
    {"minutes", [](const Row& row, Cell cell) { cell.Put(row.scan.minutes); }},
    {"msLevel", [](const Row& row, Cell cell) { cell.Put(row.texts.msLevel); }},
    {"polarity", [](const Row& row, Cell cell) { cell.Put(row.texts.polarity); }},
    {"precursorMz", [](const Row& row, Cell cell) { cell.Put(row.scan.precursorMz); }},
    {"points", [](const Row& row, Cell cell) { cell.Put(std::int64_t{row.scan.points}); }},
    {"totalIntensity", [](const Row& row, Cell cell) { cell.Put(row.scan.totalIntensity); }},
    {"scanValue", [](const Row& row, Cell cell) { cell.Put(row.scan.scanValue); }},
    {"sum", [](const Row& row, Cell cell) { cell.Put(row.points.sum); }},
    {"basePeakMz", [](const Row& row, Cell cell) { cell.Put(row.points.basePeakMz); }},
    {"basePeakIntensity", [](const Row& row, Cell cell) { cell.Put(row.points.basePeakIntensity); }},
    {"lowestMz",
     [](const Row& row, Cell cell) {
       if (row.points.range) cell.Put(row.points.range->low);
     }},
    {"highestMz",
     [](const Row& row, Cell cell) {
       if (row.points.range) cell.Put(row.points.range->high);
     }},
}};
constexpr std::size_t kWithoutPoints = 11;

using ScanColumns = std::span<const ScanColumn>;

void AppendLine(ScanColumns columns, const Row& row, std::string& line) {
  for (const ScanColumn& column : columns) {
    column.put(row, Cell(line, true));
    line += &column == &columns.back() ? '\n' : '\t';
  }
}

// Empty cells of a line are null.
void AppendObject(ScanColumns columns, const Row& row, std::string& line) {
  for (const ScanColumn& column : columns) {
    line += &column == columns.data() ? "{\"" : ", \"";
    line.append(column.name).append("\": ");
    const std::size_t before = line.size();
    column.put(row, Cell(line, false));
    if (line.size() == before) line += "null";
  }
  line += '}';
}

class ScansCommand : public Command {
 public:
  explicit ScansCommand(CLI::App& parser) : Command(parser, "scans", "Print a table of scans") {
    CLI::App& options = Options();
    AddSourceArguments(options, sources_);
    options.add_flag("--json", isJson_, "Print JSON, for programs: an object, or a list of several");
    options.add_flag("--points", hasPoints_, "Read the points, too: their sum, base peak and range");
    AddSelectionOptions(options, selection_);
  }

  /// Rows read before a failure are printed.
  void Run(Output& out) override {
    if (!isJson_) PrintTitles(out);
    PrintEachSource(sources_, isJson_, "are not shown in full", out,
                    [&](const std::string& path, JsonWriter& json) {
                      isJson_ ? PrintObject(path, json) : PrintLines(path, out);
                    });
  }

 private:
  void PrintTitles(Output& out) const {
    for (const ScanColumn& column : AllColumns()) {
      out.Text(column.name);
      out.Text(&column == &AllColumns().back() ? "\n" : "\t");
    }
  }

  void PrintLines(const std::string& path, Output& out) {
    std::string line;
    ForEachScan(*OpenListed(path), [&](const Row& row) {
      line.clear();
      AppendLine(AllColumns(), row, line);
      out.Text(line);
    });
  }

  void PrintObject(const std::string& path, JsonWriter& json) {
    const std::unique_ptr<source::Source> source = OpenListed(path);
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

  template <class Visit>
  void ForEachScan(source::Source& source, Visit visit) {
    const int samples = Reading(source, [&] { return source.SampleCount(); });
    std::vector<int> all(static_cast<std::size_t>(samples));
    std::iota(all.begin(), all.end(), 0);
    Reading(source,
            [&] { RequireFunctions(source, all, selection_.functions, AbsorbanceFunction::kIsNotMeant); });
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
    const auto text = [&](const Value& value) { return isJson_ ? JsonOf(value) : TextOf(value); };
    const FunctionTexts texts = {
        .source = text(source.Path()),
        .sample = std::to_string(at.sample + 1),
        .function = text(ValueOf(function.id)),
        .msLevel = HasLevel(function) ? std::to_string(function.msLevel) : "",
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
  bool isJson_ = false;
  bool hasPoints_ = false;
  convert::Selection selection_;
  std::vector<double> mz_;
  std::vector<double> intensities_;
};

}  // namespace

std::unique_ptr<Command> MakeScansCommand(CLI::App& parser) { return std::make_unique<ScansCommand>(parser); }

}  // namespace zrml::tool
