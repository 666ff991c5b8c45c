// Channels of ion monitoring: what a function records for one ion or reaction. No file lists them; where all
// scans of the function have the same masses, the k-th point of each belongs to the k-th channel.
#pragma once

#include <span>
#include <vector>

#include "convert/hooks.h"
#include "convert/losses.h"
#include "convert/plan.h"

namespace zrml::convert {

/// Finds the channels from the masses of complete scans, given one after the other.
class ChannelSearch {
 public:
  /// False once there are none.
  bool Add(std::span<const double> mz);
  /// The m/z of each; empty when the scans disagree, have no points, or have more points than any instrument
  /// has channels.
  const std::vector<double>& Channels() const { return channels_; }

 private:
  std::vector<double> channels_;
  bool isOver_ = false;
};

/// Those of the function at a position.
std::vector<double> FindChannels(source::Source& source, int sample, int position, const Cancel& cancel);

/// The points of each channel of `function`, the index of one in the plan, in the order of its scans. If a
/// scan has lost points, the remaining ones are matched by mass.
std::vector<source::Chromatogram> ReadChannels(source::Source& source, const RunPlan& plan,
                                               std::int32_t function, Losses& losses);

}  // namespace zrml::convert
