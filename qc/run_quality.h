// What is known about the quality of a run, from one pass over its points. A sample of a source is a run.
// Holds about a hundred bytes a spectrum while it reads, and afterwards some kilobytes a run.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "common/findings.h"
#include "source/source.h"

namespace zrml::qc {

/// A trace and the range of its values.
struct TraceRange {
  std::string name;
  source::Range values;
};

/// Deviations of the lock mass in the reference spectra, in parts per million.
struct LockMassCourse {
  std::size_t spectra = 0;  ///< of reference functions
  std::size_t found = 0;    ///< spectra that have the peak
  std::optional<double> median = {};
  source::Range range = {};         ///< only with a median
  source::Chromatogram curve = {};  ///< by time, deviations in place of intensities; a few hundred at most
};

struct RunQuality {
  std::string started;     ///< an xs:dateTime on the instrument's clock; empty where no file has it
  std::string instrument;  ///< its name
  std::string sampleName;
  std::vector<std::vector<double>> metrics;  ///< in the order of Metrics(); empty where there is no value
  std::vector<TraceRange> traces;
  LockMassCourse lockMass;
  source::Chromatogram totals;  ///< of MS1 spectra; of neighbours the highest, a few hundred at most
  std::vector<Finding> findings;
};

/// The worst of the findings; no value without any.
std::optional<Severity> WorstOf(const std::vector<Finding>& findings);

struct Wishes {
  std::optional<double> lockMass = {};
};

/// Every sample of the source. A metric is about mass spectra as they were acquired: not of reference
/// functions, of ion monitoring, of absorbance, or processed. Throws an Error or Cancelled.
std::vector<RunQuality> AssessRuns(source::Source& source, const Wishes& wishes,
                                   const source::Cancel& cancel = {});

}  // namespace zrml::qc
