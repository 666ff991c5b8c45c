// Channels of ion monitoring: what a function records of one ion or reaction. No file lists them; where all
// scans of the function have the same masses, the k-th point of each is of the k-th channel.
#pragma once

#include <vector>

#include "convert/hooks.h"
#include "convert/losses.h"
#include "convert/plan.h"

namespace zrml::convert {

/// The m/z of each channel of the function at a position. None when its scans do not agree, whole ones
/// counted only, have no points, or more than anybody has channels.
std::vector<double> FindChannels(source::Source& source, int sample, int position, const Cancel& cancel);

/// The points of each channel of `function`, the index of one in the plan, in the order of its scans. Of a
/// scan that has lost points those that are left, by their masses.
std::vector<source::Chromatogram> ReadChannels(source::Source& source, const RunPlan& plan,
                                               std::int32_t function, Losses& losses);

}  // namespace zrml::convert
