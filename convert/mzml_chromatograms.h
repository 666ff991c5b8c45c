// The chromatograms of a run in mzML: total ion current, the sample's traces, the traces of its functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "convert/losses.h"
#include "convert/mzml_arrays.h"
#include "convert/plan.h"

namespace zrml::convert {

struct RunChromatogram {
  std::string id;
  const CvTerm* type = nullptr;
  std::vector<double> minutes = {};
  std::vector<double> intensities = {};
};

/// Whether there are mass spectra, and so a total ion current.
bool HasTotalIonCurrent(const RunPlan& plan);

/// The traces of the sample, then those of the functions that are converted. Those that cannot be read are
/// left out once the losses know of them.
std::vector<RunChromatogram> ReadTraces(source::Source& source, const RunPlan& plan, Losses& losses);

/// One point for each mass spectrum that is written, in their order: what its function's own total ion
/// chromatogram has for it. Left out once the losses know of it when that cannot be read, and where no file
/// tells it.
RunChromatogram ReadTotalIonCurrent(source::Source& source, const RunPlan& plan, Losses& losses);

/// The term for a trace that is called `name`.
const CvTerm& TraceType(std::string_view name);

void AppendChromatogram(std::string& out, std::size_t index, const RunChromatogram& chromatogram,
                        const ArrayOptions& options, ArrayWriter& arrays);

}  // namespace zrml::convert
