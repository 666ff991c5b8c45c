// The metrics of a run that the PSI-MS vocabulary has terms for: accession, name and unit are the
// vocabulary's, and so is the definition. docs/qc.md
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "qc/spectra.h"

namespace zrml::qc {

struct Term {
  std::string_view accession;
  std::string_view name;
};

/// How many values a metric has, and what each is called.
enum class Shape { kSingle, kRange, kQuartiles, kRatios, kQuarters };

struct Metric {
  Term term;
  Term unit;  ///< without an accession where the vocabulary gives none
  std::string_view column;
  Shape shape;
  /// Empty where the run does not have what the metric is about.
  std::vector<double> (*compute)(const RunSpectra& run);
};

/// Every metric once.
std::span<const Metric> Metrics();

/// The names of a metric's columns in a table: "ms1TicArea", or "ms1Q1" to "ms1Q3".
std::vector<std::string> ColumnsOf(const Metric& metric);

}  // namespace zrml::qc
