#include "plugin/analog_traces.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zrml::plugin {

using openlynx::Run;

bool AnalogTraces::Look::operator==(const Look& other) const {
  return positions == other.positions &&
         std::equal(runs.begin(), runs.end(), other.runs.begin(), other.runs.end(),
                    [](const Run& a, const Run& b) { return a.first == b.first && a.last == b.last; });
}

void AnalogTraces::Add(Look look) {
  std::vector<std::size_t> ends;
  std::size_t count = 0;
  for (const Run& run : look.runs) ends.push_back(count += run.Size());
  // Positions count modulo the traces of one look, so another look with the same result needs no storage.
  if (count != 0 && (looks_.empty() || !(looks_.back().look == look))) {
    looks_.push_back({std::move(look), std::move(ends), count_});
  }
  lastCount_ = count;
  count_ += count;
}

std::optional<std::uint64_t> AnalogTraces::Position(std::size_t number) const {
  if (number >= count_) return std::nullopt;
  const Looks& looks =
      *std::prev(std::upper_bound(looks_.begin(), looks_.end(), number,
                                  [](std::size_t value, const Looks& entry) { return value < entry.first; }));
  const std::size_t at = (number - looks.first) % looks.ends.back();
  const auto end = std::upper_bound(looks.ends.begin(), looks.ends.end(), at);
  const Run& run = looks.look.runs[static_cast<std::size_t>(end - looks.ends.begin())];
  return looks.look.positions[run.last - (*end - at)];
}

}  // namespace zrml::plugin
