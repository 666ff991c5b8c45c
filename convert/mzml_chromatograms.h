// The chromatograms of a run in mzML: total ion currents, channels of ion monitoring, traces of the sample
// and of its functions.
#pragma once

#include <cstdint>
#include <optional>
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
  std::string functionName = {};       // of a channel
  std::optional<double> channel = {};  // its m/z
};

/// The sample's total ion current (total_ions.h), then that of each function with scans of masses: the value
/// stored for each requested scan. Left out where no values are stored. Unreadable ones are recorded as
/// losses and left out.
std::vector<RunChromatogram> ReadTotals(source::Source& source, const RunPlan& plan, Losses& losses);

/// The traces of the sample, then those of the functions that are converted. Unreadable ones are recorded
/// as losses and left out.
std::vector<RunChromatogram> ReadTraces(source::Source& source, const RunPlan& plan, Losses& losses,
                                        const Cancel& cancel);

/// Selected ion monitoring, or reaction monitoring.
const CvTerm& ChannelType(const source::Function& function);

/// One for each channel of a function, given by its index in the plan.
std::vector<RunChromatogram> ReadChannelChromatograms(source::Source& source, const RunPlan& plan,
                                                      std::int32_t function, Losses& losses);

void AppendChromatogram(std::string& out, std::size_t index, const RunChromatogram& chromatogram,
                        const ArrayOptions& options, ArrayWriter& arrays);

}  // namespace zrml::convert
