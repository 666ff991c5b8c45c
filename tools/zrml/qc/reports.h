// The forms in which `zrml qc` reports runs.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/zrml/output.h"
#include "tools/zrml/qc/assessed_run.h"

namespace zrml::tool {

using AssessedRuns = std::span<const AssessedRun>;

enum class Location { kNameOnly, kFullPath };

/// mzQC 1.0, of the runs that are whole: at least one.
void WriteMzqc(AssessedRuns runs, Location location, Output& out);
/// Whether a run is in an mzQC file.
bool IsForMzqc(const AssessedRun& run);

/// A row for each run.
void WriteQcTable(AssessedRuns runs, Output& out);

/// A file of custom content for MultiQC.
struct MultiqcFile {
  const char* name;
  void (*write)(AssessedRuns runs, Output& out);
  bool (*isWanted)(const AssessedRun& run);  ///< it is written when any run is
};
std::span<const MultiqcFile> MultiqcFiles();

/// Of the runs by date, those without one last.
void WriteQcPage(AssessedRuns runs, Output& out);

}  // namespace zrml::tool
