// Custom content for MultiQC: a table of the runs, their total ion chromatograms, the course of the lock
// mass.
#include <algorithm>
#include <array>
#include <string_view>

#include "qc/metrics.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/qc/reports.h"
#include "tools/zrml/qc/unique_names.h"

namespace zrml::tool {
namespace {

struct MultiqcHead {
  const char* id;
  const char* title;
  const char* description;
  const char* plot;
};

constexpr MultiqcHead kTableHead = {"zrml_qc", "Quality of runs",
                                    "What zrml qc finds in the files, without identification.", "table"};
constexpr MultiqcHead kTotalsHead = {"zrml_tic", "Total ion chromatograms of MS1",
                                     "The highest of neighbouring spectra.", "linegraph"};
constexpr MultiqcHead kLockMassHead = {"zrml_lock_mass", "Lock mass",
                                       "Deviation of the lock mass in the reference spectra.", "linegraph"};

// MultiQC puts names into its page as they are.
std::string HarmlessName(std::string name) {
  constexpr std::string_view kMarkup = "<>&\"'`";
  std::replace_if(
      name.begin(), name.end(), [&](char c) { return kMarkup.find(c) != kMarkup.npos; }, '_');
  return name;
}

std::vector<std::string> HarmlessNames(AssessedRuns runs) {
  UniqueNames names;
  std::vector<std::string> harmless;
  for (const AssessedRun& run : runs) harmless.push_back(names.Unique(HarmlessName(run.name)));
  return harmless;
}

Value Harmless(const Value& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text == nullptr ? value : Value(HarmlessName(*text));
}

template <class Body>
void WriteContent(const MultiqcHead& head, Output& out, Body body) {
  JsonWriter json(out);
  json.Object([&] {
    json.Members({{"id", head.id},
                  {"section_name", head.title},
                  {"description", head.description},
                  {"plot_type", head.plot}});
    body(json);
  });
  json.Finish();
}

void PutHeaders(JsonWriter& json) {
  json.Key("headers").Object([&] {
    for (const Attribute& fact : FactsOf({})) {
      json.Key(fact.key).Object([&] { json.Members({{"title", std::string(fact.key)}}); });
    }
    for (const qc::Metric& metric : qc::Metrics()) {
      for (const std::string& column : qc::ColumnsOf(metric)) {
        json.Key(column).Object([&] {
          json.Members(
              {{"title", column},
               {"description", std::string(metric.term.name) + ", " + std::string(metric.term.accession)},
               {"format", "{:,.6g}"},
               {"hidden", metric.shape != qc::Shape::kSingle}});
        });
      }
    }
  });
}

void PutRow(const AssessedRun& run, JsonWriter& json) {
  for (const Attribute& fact : FactsOf(run)) {
    if (!IsAbsent(fact.value)) json.Members({{fact.key, Harmless(fact.value)}});
  }
  for (std::size_t i = 0; i < run.quality.metrics.size(); ++i) {
    const std::vector<std::string> columns = qc::ColumnsOf(qc::Metrics()[i]);
    const std::vector<double>& values = run.quality.metrics[i];
    for (std::size_t k = 0; k < values.size(); ++k) json.Members({{columns[k], values[k]}});
  }
}

void WriteMultiqcTable(AssessedRuns runs, Output& out) {
  WriteContent(kTableHead, out, [&](JsonWriter& json) {
    json.Key("pconfig").Object([&] {
      json.Members({{"id", "zrml_qc_table"}, {"title", "zrml: quality of runs"}});
    });
    PutHeaders(json);
    json.Key("data").Object([&] {
      const std::vector<std::string> names = HarmlessNames(runs);
      for (std::size_t i = 0; i < runs.size(); ++i) json.Key(names[i]).Object([&] { PutRow(runs[i], json); });
    });
  });
}

void PutCurve(const source::Chromatogram& curve, JsonWriter& json) {
  const std::vector<double>& minutes = curve.minutes;
  json.Object([&] {
    for (std::size_t i = 0; i < minutes.size(); ++i) {
      if (i == 0 || minutes[i] != minutes[i - 1]) json.Key(ShortNumber(minutes[i])).Put(curve.intensities[i]);
    }
  });
}

using CurveOf = const source::Chromatogram& (*)(const AssessedRun& run);

void WriteCurves(const MultiqcHead& head, const char* unit, AssessedRuns runs, CurveOf curveOf, Output& out) {
  WriteContent(head, out, [&](JsonWriter& json) {
    json.Key("pconfig").Object([&] {
      json.Members({{"id", std::string(head.id) + "_plot"},
                    {"title", std::string("zrml: ") + head.title},
                    {"xlab", "Retention time (min)"},
                    {"ylab", unit}});
    });
    json.Key("data").Object([&] {
      const std::vector<std::string> names = HarmlessNames(runs);
      for (std::size_t i = 0; i < runs.size(); ++i) {
        if (!curveOf(runs[i]).minutes.empty()) PutCurve(curveOf(runs[i]), json.Key(names[i]));
      }
    });
  });
}

const source::Chromatogram& TotalsOf(const AssessedRun& run) { return run.quality.totals; }
const source::Chromatogram& DeviationsOf(const AssessedRun& run) { return run.quality.lockMass.curve; }

void WriteMultiqcTotals(AssessedRuns runs, Output& out) {
  WriteCurves(kTotalsHead, "Intensity", runs, TotalsOf, out);
}

void WriteMultiqcLockMass(AssessedRuns runs, Output& out) {
  WriteCurves(kLockMassHead, "ppm", runs, DeviationsOf, out);
}

template <CurveOf kCurveOf>
bool HasCurve(const AssessedRun& run) {
  return !kCurveOf(run).minutes.empty();
}

constexpr std::array<MultiqcFile, 3> kMultiqcFiles = {{
    {"zrml_qc_mqc.json", WriteMultiqcTable, [](const AssessedRun&) { return true; }},
    {"zrml_tic_mqc.json", WriteMultiqcTotals, HasCurve<TotalsOf>},
    {"zrml_lock_mass_mqc.json", WriteMultiqcLockMass, HasCurve<DeviationsOf>},
}};

}  // namespace

std::span<const MultiqcFile> MultiqcFiles() { return kMultiqcFiles; }

}  // namespace zrml::tool
