// One sample of a source into one file of an open format.
#pragma once

#include <cstddef>
#include <functional>
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
  std::vector<std::wstring> losses = {};  // a line each
};

/// What the format takes of a run.
Content ContentOf(Format format);

/// Told now and then how many of how many spectra are done.
using Progress = std::function<void(std::size_t done, std::size_t all)>;

/// Writes the sample at position `sample` to `out` and finishes it. `sources` are the same source opened once
/// per worker. Throws a Failure, or Interrupted.
ConvertedRun ConvertRun(const std::vector<Source>& sources, int sample, const std::wstring& name,
                        const ConvertOptions& options, ByteSink& out, const Progress& progress);

}  // namespace zrml
