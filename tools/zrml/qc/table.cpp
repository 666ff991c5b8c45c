// The table of `zrml qc`: a row for each run, the vocabulary's metrics and the other values.
#include "qc/metrics.h"
#include "tools/zrml/format.h"
#include "tools/zrml/qc/reports.h"

namespace zrml::tool {
namespace {

std::string TitlesText() {
  std::string line = "run\tsource";
  for (const Attribute& fact : FactsOf({})) line.append("\t").append(fact.key);
  for (const qc::Metric& metric : qc::Metrics()) {
    for (const std::string& column : qc::ColumnsOf(metric)) line += '\t' + column;
  }
  return line + "\ttraces\n";
}

// "System Pressure: 101.2 to 388; %B: 5 to 95"
std::string TracesText(const AssessedRun& run) {
  std::string text;
  for (const qc::TraceRange& trace : run.quality.traces)
    text += (text.empty() ? "" : "; ") + trace.name + ": " + TextOf(Value(trace.values));
  return text;
}

std::string RowText(const AssessedRun& run) {
  std::string line = VisibleText(run.name) + '\t' + VisibleText(run.source);
  for (const Attribute& fact : FactsOf(run)) line += '\t' + TextOf(fact.value);
  for (std::size_t i = 0; i < qc::Metrics().size(); ++i) {
    const std::size_t width = qc::ColumnsOf(qc::Metrics()[i]).size();
    const bool hasValues = i < run.quality.metrics.size() && !run.quality.metrics[i].empty();
    for (std::size_t k = 0; k < width; ++k) {
      line += '\t';
      if (hasValues) AppendNumber(run.quality.metrics[i][k], line);
    }
  }
  return line + '\t' + VisibleText(TracesText(run)) + '\n';
}

}  // namespace

void WriteQcTable(AssessedRuns runs, Output& out) {
  out.Text(TitlesText());
  for (const AssessedRun& run : runs) out.Text(RowText(run));
}

}  // namespace zrml::tool
