// Where things are in a report: samples, the functions of a sample, the spectra and chromatograms of a
// function. Each level is looked for when it is needed, and only positions are kept.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "openlynx/report_stream.h"

namespace zrml {

/// A function that is not analog.
struct ReportFunctionRecord {
  std::uint64_t position = 0;  // of the "[FUNCTION]" line
  bool blocksIndexed = false;  // set once a block of either kind is found
  bool blocksSought = false;   // in vain, unless they are indexed
  std::vector<std::uint64_t> spectra;
  std::vector<std::uint64_t> chromatograms;

  // The function's own keys, once they have been asked for. A further open forgets them.
  struct Names {
    std::string description;
    std::string type;
  };
  std::optional<Names> names;
  std::optional<std::string> ionMode;
};

struct ReportSampleRecord {
  std::uint64_t position = 0;     // of the "[SAMPLE]" line
  bool functionsIndexed = false;  // set once a function is found
  bool functionsSought = false;   // in vain, unless they are indexed
  std::vector<ReportFunctionRecord> functions;
  std::vector<std::uint64_t> analogTraces;  // the "[CHROMATOGRAM]" lines of the analog functions
};

/// Every "[SAMPLE]" line of the report, inside blocks too.
std::vector<ReportSampleRecord> FindSamples(ReportStream& stream);

/// Adds the sample's functions and analog traces. A sample that still has no function afterwards is not
/// marked as indexed: each further pass deliberately adds its analog traces once more.
void IndexFunctions(ReportStream& stream, ReportSampleRecord& sample);

/// Finds the function's blocks unless that has been done.
void IndexBlocks(ReportStream& stream, ReportFunctionRecord& function);

}  // namespace zrml
