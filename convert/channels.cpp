#include "convert/channels.h"

#include <algorithm>
#include <cmath>

#include "convert/spectrum_reader.h"

namespace zrml::convert {
namespace {

// Far more than instruments have: the channels of a function are held in memory together.
constexpr std::size_t kMostChannels = 4096;

struct ScanPoints {
  std::vector<double> mz;
  std::vector<double> intensities;
};

// Whether all points of a scan are present. One that has lost its time with its points has lost its record.
bool ReadWhole(source::Source& source, int sample, int position, int scan, ScanPoints& points) {
  try {
    const source::PointsRead read = source.ReadPoints(sample, position, scan, points.mz, points.intensities);
    const bool isRecordLost = read.count == 0 && std::isnan(source.ScanAt(sample, position, scan).minutes);
    return read.lost == 0 && !isRecordLost;
  } catch (const source::Error&) {
    return false;
  }
}

}  // namespace

bool ChannelSearch::Add(std::span<const double> mz) {
  if (isOver_) return false;
  if (channels_.empty() && mz.size() <= kMostChannels) channels_.assign(mz.begin(), mz.end());
  isOver_ = mz.empty() || !std::equal(mz.begin(), mz.end(), channels_.begin(), channels_.end());
  if (isOver_) channels_.clear();
  return !isOver_;
}

std::vector<double> FindChannels(source::Source& source, int sample, int position, const Cancel& cancel) {
  ChannelSearch search;
  ScanPoints points;
  const int scans = source.ScanCount(sample, position);
  for (int scan = 0; scan < scans; ++scan) {
    ThrowIfCancelled(cancel);
    if (!ReadWhole(source, sample, position, scan, points)) continue;
    if (!search.Add(points.mz)) break;
  }
  return search.Channels();
}

std::vector<source::Chromatogram> ReadChannels(source::Source& source, const RunPlan& plan,
                                               std::int32_t function, Losses& losses) {
  const RunFunction& own = plan.functions[static_cast<std::size_t>(function)];
  std::vector<source::Chromatogram> channels(own.channels.size());
  Losses known(Losses::Policy::kCounted);  // by the spectra
  SpectrumReader reader(source, plan, plan.selection.hasMonitoredSpectra ? known : losses);
  const std::vector<double> minutes = source.Minutes(plan.sample, own.position);
  for (std::size_t scan = 0; scan < minutes.size(); ++scan) {
    const auto number = static_cast<std::int32_t>(scan);
    if (!plan.selection.Has(number, minutes[scan])) continue;
    const Spectrum spectrum = reader.ReadMeasured({minutes[scan], function, number});
    if (std::isnan(minutes[scan])) continue;  // no point of a chromatogram
    std::size_t channel = 0;
    for (std::size_t i = 0; i < spectrum.positions.size(); ++i) {
      while (channel < channels.size() && own.channels[channel] != spectrum.positions[i]) ++channel;
      if (channel == channels.size()) break;
      channels[channel].minutes.push_back(minutes[scan]);
      channels[channel++].intensities.push_back(spectrum.intensities[i]);
    }
  }
  return channels;
}

}  // namespace zrml::convert
