#include "tools/zrml/view/average.h"

namespace zrml::view {
namespace {

constexpr source::PeakWidth kPeakWidth = {20, true};  // on both sides together

std::vector<int> ScansWithin(const std::vector<double>& times, source::Range minutes) {
  std::vector<int> scans;
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (times[i] >= minutes.low && times[i] <= minutes.high) scans.push_back(static_cast<int>(i));
  }
  if (scans.empty()) throw source::Error(source::Status::kWrongArgument, "there is no scan in this time");
  return scans;
}

}  // namespace

Average AverageScans(source::Source& source, int sample, int function, source::Range minutes,
                     std::optional<source::Range> background, const Work& work) {
  const std::vector<double> times = source.Minutes(sample, function);
  const std::vector<int> front = ScansWithin(times, minutes);
  const std::vector<int> back = background ? ScansWithin(times, *background) : std::vector<int>();
  const source::Cancel cancel = work.Counting(front.size() + back.size());
  const auto add = [&](const std::vector<int>& scans) {
    return source::SumScans(source, sample, function, scans, kPeakWidth, source::Unsuited::kAreLeftOut,
                            cancel);
  };
  Average average = {add(front)};
  if (background) {
    const source::ScanSum taken = add(back);
    source::TakeOff(taken, kPeakWidth, average.mean);
    average.backgroundScans = static_cast<int>(taken.added.size());
  }
  source::MakeMean(average.mean);
  return average;
}

}  // namespace zrml::view
