// The page of `zrml qc`: small charts of the runs by date, a table, and the details of a run when it is
// chosen. One file without scripts; links within it choose a run.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "convert/native_path.h"
#include "convert/xml.h"
#include "qc/metrics.h"
#include "tools/zrml/format.h"
#include "tools/zrml/qc/charts.h"
#include "tools/zrml/qc/reports.h"

namespace zrml::tool {
namespace {

constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>Quality of runs</title>
<style>
:root { --ink: #1d2125; --quiet: #68707a; --rule: #dfe3e8; --ground: #fff; --sound: #2f6f9f; --suspect: #b07300; --damaged: #c2342b; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e3e6ea; --quiet: #98a1ab; --rule: #353b43; --ground: #16191d; --sound: #6fb1e0; --suspect: #e0a640; --damaged: #f0786e; }
}
body { margin: 2rem auto; padding: 0 1.5rem; max-width: 76rem; background: var(--ground); color: var(--ink); font: 15px/1.45 system-ui, sans-serif; }
h1 { font-size: 1.5rem; font-weight: 600; margin: 0; }
h2 { font-size: 1.1rem; font-weight: 600; margin: 2rem 0 .5rem; overflow-wrap: anywhere; }
p { margin: .3rem 0 1rem; color: var(--quiet); }
a { color: inherit; text-decoration-color: var(--quiet); text-underline-offset: .15em; }
.charts { display: grid; grid-template-columns: repeat(auto-fill, minmax(17rem, 1fr)); gap: 1.2rem 1.8rem; }
figure { margin: 0; }
figcaption { font-size: .85rem; color: var(--quiet); }
svg { display: block; width: 100%; height: auto; overflow: visible; }
svg text { font-size: 9px; fill: var(--quiet); }
svg .line { stroke: var(--rule); stroke-width: 1; }
svg .median { stroke: var(--quiet); stroke-width: 1; stroke-dasharray: 2 3; }
svg .curve { fill: none; stroke: var(--sound); stroke-width: 1; }
circle { fill: var(--sound); }
circle.suspect { fill: var(--suspect); }
circle.damaged { fill: var(--ground); stroke: var(--damaged); stroke-width: 1.5; }
svg a:hover circle, svg a:focus circle { stroke: var(--ink); stroke-width: 2; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { text-align: left; vertical-align: top; padding: .25rem 1.2rem .25rem 0; border-bottom: 1px solid var(--rule); }
th { font-weight: 500; color: var(--quiet); font-size: .85rem; }
td.number, th.number { text-align: right; }
td.number { white-space: nowrap; }
td.name { overflow-wrap: anywhere; min-width: 9rem; }
td.date { white-space: nowrap; }
.suspect { color: var(--suspect); }
.damaged, .unreadable { color: var(--damaged); }
.run { display: none; }
.run:target { display: block; }
ul { padding-left: 1.2rem; }
</style>
</head>
<body>
)";

std::string Escaped(std::string_view text) { return convert::XmlText(VisibleText(text)); }

// Four digits, for people.
std::string Rough(double value) {
  std::array<char, 32> text{};
  constexpr int kDigits = 4;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, kDigits).ptr;
  const std::string rough(text.data(), end);
  const bool isWhole = std::trunc(value) == value && std::abs(value) < 1e6;
  return isWhole ? Number(value) : rough;
}

std::string DateText(const std::string& started) {
  std::string text = started.substr(0, started.rfind(':'));  // without seconds
  std::replace(text.begin(), text.end(), 'T', ' ');
  return text;
}

using ValueOfRun = std::optional<double> (*)(const qc::RunQuality& quality);

// The first value of a metric.
template <const char* kAccession>
std::optional<double> MetricOf(const qc::RunQuality& quality) {
  const std::span<const qc::Metric> metrics = qc::Metrics();
  for (std::size_t i = 0; i < quality.metrics.size(); ++i) {
    if (metrics[i].term.accession == kAccession && !quality.metrics[i].empty())
      return quality.metrics[i].front();
  }
  return std::nullopt;
}

std::optional<double> MedianOfLockMass(const qc::RunQuality& quality) { return quality.lockMass.median; }

constexpr char kMs1Area[] = "MS:4000029";
constexpr char kMs2Area[] = "MS:4000030";
constexpr char kBasePeak[] = "MS:4000202";
constexpr char kMs1Count[] = "MS:4000059";
constexpr char kMs2Count[] = "MS:4000060";
constexpr char kDuration[] = "MS:4000067";
constexpr char kCycle[] = "MS:4000192";
constexpr char kJumps[] = "MS:4000097";
constexpr char kFalls[] = "MS:4000098";
constexpr char kEmpty[] = "MS:4000099";

struct Compared {
  const char* title;
  ValueOfRun valueOf;
  bool isInTable;
};

constexpr std::array<Compared, 11> kCompared = {{
    {"Area under the TIC, MS1", MetricOf<kMs1Area>, true},
    {"Area under the TIC, MS2", MetricOf<kMs2Area>, false},
    {"Highest base peak", MetricOf<kBasePeak>, true},
    {"MS1 spectra", MetricOf<kMs1Count>, true},
    {"MS2 spectra", MetricOf<kMs2Count>, true},
    {"Duration, s", MetricOf<kDuration>, true},
    {"Time between MS1 spectra, s", MetricOf<kCycle>, false},
    {"Tenfold jumps of the MS1 signal", MetricOf<kJumps>, false},
    {"Tenfold falls of the MS1 signal", MetricOf<kFalls>, false},
    {"Empty MS1 spectra", MetricOf<kEmpty>, false},
    {"Lock mass, median ppm", MedianOfLockMass, true},
}};

// Runs in the order of the page; their positions name their sections.
using OrderedRuns = std::vector<const AssessedRun*>;

OrderedRuns ByDate(AssessedRuns runs) {
  OrderedRuns ordered;
  for (const AssessedRun& run : runs) ordered.push_back(&run);
  std::stable_sort(ordered.begin(), ordered.end(), [](const AssessedRun* a, const AssessedRun* b) {
    const std::string& first = a->quality.started;
    const std::string& second = b->quality.started;
    return first.empty() != second.empty() ? second.empty() : first < second;
  });
  return ordered;
}

std::string Anchor(std::size_t index) { return "run-" + std::to_string(index + 1); }

bool HasAny(const OrderedRuns& runs, ValueOfRun valueOf) {
  return std::any_of(runs.begin(), runs.end(),
                     [&](const AssessedRun* run) { return valueOf(run->quality).has_value(); });
}

void WriteChart(const OrderedRuns& runs, const Compared& compared, Output& out) {
  std::vector<ChartPoint> points;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::optional<double> value = compared.valueOf(runs[i]->quality);
    if (!value || !std::isfinite(*value)) continue;
    points.push_back({.x = static_cast<double>(i),
                      .y = *value,
                      .link = Anchor(i),
                      .look = std::string(NameOf(runs[i]->state)),
                      .label = Escaped(runs[i]->name) + ": " + Rough(*value)});
  }
  if (points.empty()) return;
  out.Text(std::string("<figure><figcaption>") + compared.title + "</figcaption>");
  out.Text(PointChart(points, static_cast<double>(runs.size() - 1), Rough));
  out.Text("</figure>\n");
}

void WriteSummary(const OrderedRuns& runs, Output& out) {
  out.Text("<h1>Quality of " + Counted(std::ssize(runs), "run") + "</h1>\n<p>");
  std::vector<std::string> dates;
  for (const AssessedRun* run : runs) {
    if (!run->quality.started.empty()) dates.push_back(run->quality.started.substr(0, 10));
  }
  if (!dates.empty())
    out.Text(dates.front() + (dates.back() == dates.front() ? "" : " to " + dates.back()) + ": ");
  std::string states;
  for (const RunState state :
       {RunState::kSound, RunState::kSuspect, RunState::kDamaged, RunState::kUnreadable}) {
    const auto count =
        std::count_if(runs.begin(), runs.end(), [&](const AssessedRun* run) { return run->state == state; });
    if (count > 0)
      states += (states.empty() ? "" : ", ") + std::to_string(count) + ' ' + std::string(NameOf(state));
  }
  out.Text(states + ". A point or a name shows the run.</p>\n");
}

std::string StateCell(const AssessedRun& run) {
  const std::string name(NameOf(run.state));
  return "<td class=\"" + name + "\">" + name + "</td>";
}

void WriteRunTable(const OrderedRuns& runs, Output& out) {
  out.Text(
      "<h2 id=\"runs\">Runs by date</h2>\n<div class=\"wide\"><table>\n"
      "<tr><th>Started</th><th>Run</th><th>State</th><th>Sample</th>");
  for (const Compared& compared : kCompared) {
    if (compared.isInTable && HasAny(runs, compared.valueOf))
      out.Text(std::string("<th class=\"number\">") + compared.title + "</th>");
  }
  out.Text("</tr>\n");
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const AssessedRun& run = *runs[i];
    out.Text("<tr><td class=\"date\">" + DateText(run.quality.started) +
             "</td><td class=\"name\"><a href=\"#" + Anchor(i) + "\">" + Escaped(run.name) + "</a></td>" +
             StateCell(run) + "<td class=\"name\">" + Escaped(run.quality.sampleName) + "</td>");
    for (const Compared& compared : kCompared) {
      if (!compared.isInTable || !HasAny(runs, compared.valueOf)) continue;
      const std::optional<double> value = compared.valueOf(run.quality);
      out.Text("<td class=\"number\">" + (value ? Rough(*value) : std::string()) + "</td>");
    }
    out.Text("</tr>\n");
  }
  out.Text("</table></div>\n");
}

void WriteFindings(const AssessedRun& run, Output& out) {
  if (!run.problem.empty()) out.Text("<p class=\"damaged\">" + Escaped(run.problem) + "</p>\n");
  if (run.quality.findings.empty()) return;
  out.Text("<ul>\n");
  for (const Finding& finding : run.quality.findings)
    out.Text("<li>" + Escaped(std::string(NameOf(SeverityOf(finding.code))) + ": " + TextOf(finding)) +
             "</li>\n");
  out.Text("</ul>\n");
}

void WriteMetricRows(const AssessedRun& run, Output& out) {
  const std::span<const qc::Metric> metrics = qc::Metrics();
  out.Text("<table>\n<tr><th>Metric</th><th>Accession</th><th>Value</th><th>Unit</th></tr>\n");
  for (std::size_t i = 0; i < run.quality.metrics.size(); ++i) {
    std::string values;
    for (const double value : run.quality.metrics[i]) values += (values.empty() ? "" : ", ") + Rough(value);
    if (values.empty()) continue;
    const auto& [term, unit, column, shape, compute] = metrics[i];
    out.Text("<tr><td>" + std::string(term.name) + "</td><td>" + std::string(term.accession) + "</td><td>" +
             values + "</td><td>" + std::string(unit.name) + "</td></tr>\n");
  }
  for (const qc::TraceRange& trace : run.quality.traces)
    out.Text("<tr><td>trace " + Escaped(trace.name) + "</td><td></td><td>" + Rough(trace.values.low) +
             " to " + Rough(trace.values.high) + "</td><td></td></tr>\n");
  out.Text("</table>\n");
}

void WriteCurve(const char* title, const source::Chromatogram& curve, Output& out) {
  if (curve.minutes.size() < 2) return;
  out.Text(std::string("<figure><figcaption>") + title + "</figcaption>" +
           CurveChart(curve.minutes, curve.intensities, Rough) + "</figure>\n");
}

void WriteRunSection(const AssessedRun& run, std::size_t index, Output& out) {
  const qc::RunQuality& quality = run.quality;
  out.Text("<section class=\"run\" id=\"" + Anchor(index) + "\">\n<h2>" + Escaped(run.name) + "</h2>\n<p>");
  for (const std::string& fact : {DateText(quality.started), quality.instrument, quality.sampleName}) {
    if (!fact.empty()) out.Text(Escaped(fact) + " · ");
  }
  const std::string state(NameOf(run.state));
  out.Text("<span class=\"" + state + "\">" + state + "</span>");
  if (!run.page.empty()) {
    const std::string here = run.page.starts_with('/') ? "" : "./";  // a name may begin as a scheme does
    out.Text(" · <a href=\"" + here + convert::UriPath(run.page) + "\">its spectra and chromatograms</a>");
  }
  out.Text(" · <a href=\"#runs\">all runs</a></p>\n");
  WriteFindings(run, out);
  out.Text("<div class=\"charts\">\n");
  WriteCurve("Total ion chromatogram of MS1, min", quality.totals, out);
  WriteCurve("Lock mass, ppm by minute", quality.lockMass.curve, out);
  out.Text("</div>\n");
  if (!quality.metrics.empty()) WriteMetricRows(run, out);
  out.Text("</section>\n");
}

}  // namespace

void WriteQcPage(AssessedRuns runs, Output& out) {
  const OrderedRuns ordered = ByDate(runs);
  out.Text(kHead);
  WriteSummary(ordered, out);
  out.Text("<div class=\"charts\">\n");
  for (const Compared& compared : kCompared) WriteChart(ordered, compared, out);
  out.Text("</div>\n");
  WriteRunTable(ordered, out);
  for (std::size_t i = 0; i < ordered.size(); ++i) WriteRunSection(*ordered[i], i, out);
  out.Text("</body>\n</html>\n");
}

}  // namespace zrml::tool
