// One sample of a source into one file of an open format.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/zrml/convert/run_format.h"
#include "tools/zrml/source.h"

namespace zrml {

struct ConvertOptions {
  Format format = Format::kMzml;
  ArrayOptions arrays;
  Selection selection;
  bool isIndexed = true;
  bool isDamageAllowed = false;  // what cannot be read is empty or left out, and told
};

struct ConvertedRun {
  std::size_t spectra = 0;
  std::size_t chromatograms = 0;
  std::vector<std::wstring> notes = {};  // what is not as in the source, a line each
};

/// What the format takes of a run.
Content ContentOf(Format format);

/// Told now and then how many of how many spectra are done.
using Progress = std::function<void(std::size_t done, std::size_t all)>;

/// A source that is open: once for each worker, and its files as they were when they were looked at.
struct SourceInUse {
  std::vector<Source> workers;
  SourceStamp stamp;
  std::set<std::wstring> told = {};                 // names of files of which something has been said
  std::optional<SourceFiles> files = std::nullopt;  // once they have been looked at

  const Source& First() const { return workers.front(); }
};

/// Writes the sample at position `sample` to `out` and finishes it. Throws a Failure, also when the source
/// has changed meanwhile, or Interrupted.
ConvertedRun ConvertRun(SourceInUse& source, int sample, const std::wstring& name,
                        const ConvertOptions& options, ByteSink& out, const Progress& progress);

}  // namespace zrml
