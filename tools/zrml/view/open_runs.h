// The sources that a worker has open: a few of many runs, as their files are now.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "convert/source_files.h"
#include "source/source.h"

namespace zrml::view {

class OpenRuns {
 public:
  static constexpr std::size_t kMost = 16;

  /// `paths` must outlive this.
  explicit OpenRuns(const std::vector<std::string>& paths) : paths_(paths) {}

  /// Opens the run unless it is open and its files are those of then. May close the one that was asked for
  /// longest ago. Throws a source::Error.
  source::Source& Open(std::size_t run);
  void Close(std::size_t run);
  std::set<std::size_t> All() const;

 private:
  struct OpenRun {
    std::size_t run;
    convert::SourceStamp stamp;
    std::unique_ptr<source::Source> source;
  };

  const std::vector<std::string>& paths_;
  std::list<OpenRun> runs_;  // the one that was asked for last is first
};

}  // namespace zrml::view
