#include "masslynx/scandata/scan_times.h"

#include <algorithm>
#include <optional>

namespace zrml::masslynx {
namespace {

bool IsTime(float time, const std::optional<float>& before) {
  const bool mayBeZero = !before || *before < kLeastTime;
  return MayBeTime(time) && (mayBeZero || time >= kLeastTime);
}

}  // namespace

Places StandInForLostTimes(std::span<ScanIndexEntry> entries, const Places& zeroRecords) {
  Places lost;
  std::optional<float> before;
  const auto isZeroRecord = [&](std::size_t place) {
    return std::binary_search(zeroRecords.begin(), zeroRecords.end(), place);
  };
  for (std::size_t place = 0; place < entries.size(); ++place) {
    float& time = entries[place].retentionTime;
    // Zeros of the records behind it may begin in this one. The first scan may be at 0 all the same.
    const bool isCut = time == 0 && (place > 0 || entries.size() == 1) && isZeroRecord(place + 1);
    if (isCut || isZeroRecord(place) || !IsTime(time, before)) lost.push_back(place);
    if (lost.empty() || lost.back() != place) before = time;
    time = before.value_or(0);
  }
  std::size_t first = 0;  // that has a time
  while (first < lost.size() && lost[first] == first) ++first;
  for (std::size_t place = 0; place < first && first < entries.size(); ++place)
    entries[place].retentionTime = entries[first].retentionTime;
  return lost;
}

Places ReturningTimes(std::span<const ScanIndexEntry> entries) {
  Places returning;
  for (std::size_t place = 1; place < entries.size(); ++place) {
    if (entries[place].retentionTime < entries[place - 1].retentionTime) returning.push_back(place);
  }
  return returning;
}

}  // namespace zrml::masslynx
