#include "tools/zrml/view/open_runs.h"

#include <algorithm>

namespace zrml::view {

source::Source& OpenRuns::Open(std::size_t run) {
  const auto found = std::ranges::find(runs_, run, &OpenRun::run);
  if (found != runs_.end()) runs_.splice(runs_.begin(), runs_, found);
  if (found == runs_.end() || found->stamp.FindChange()) {
    Close(run);
    convert::SourceStamp stamp(paths_[run]);
    runs_.push_front({run, std::move(stamp), source::Source::Open(paths_[run])});
    if (runs_.size() > kMost) runs_.pop_back();
  }
  return *runs_.front().source;
}

void OpenRuns::Close(std::size_t run) {
  std::erase_if(runs_, [run](const OpenRun& open) { return open.run == run; });
}

std::set<std::size_t> OpenRuns::All() const {
  std::set<std::size_t> all;
  for (const OpenRun& open : runs_) all.insert(open.run);
  return all;
}

}  // namespace zrml::view
