// Chromatograms of many ions: those of a function are read in one pass over its scans.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "convert/selection.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/targets.h"

namespace zrml::tool {

struct ChromatogramPeak {
  double minutes = 0;
  double intensity = 0;
};

/// The first of the largest intensities; no value when none is above 0.
std::optional<ChromatogramPeak> ApexOf(const source::Chromatogram& chromatogram);

/// Under the straight lines between points, in the order of their times: intensity times minutes. Points
/// without a time or an intensity are passed over.
double AreaOf(const source::Chromatogram& chromatogram);

struct IonRequest {
  std::vector<Target> targets = {};
  source::Within within = source::Within::kSum;
  convert::Selection scans = {};  ///< functions, levels, minutes
};

/// The functions that are chosen by name or level; without either those of level 1, or an only one. Throws a
/// Failure when there is none.
std::vector<FunctionPosition> FunctionsForIons(source::Source& source, int sample,
                                               const convert::Selection& selection);

/// Calls `use` for each target in order, with its points within the times of the request and its own.
void ReadIons(source::Source& source, const FunctionPosition& at, const IonRequest& request,
              const std::function<void(const Target& target, const source::Chromatogram& points)>& use);

/// Names on standard error the targets that are outside of the m/z range that the function was set to.
void NameTargetsOutside(source::Source& source, const FunctionPosition& at, std::span<const Target> targets);

}  // namespace zrml::tool
