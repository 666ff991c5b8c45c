// What a conversion calls back while it runs.
#pragma once

#include "source/source.h"

namespace zrml::convert {

using source::Cancel;
using source::Cancelled;
using source::ThrowIfCancelled;

struct Hooks {
  Cancel cancel = {};  ///< true to give up, which throws Cancelled; called by all workers at once
  /// Spectra written so far, of all. Parquet reads them twice: each counts once more when it is read first.
  source::Progress progress = {};
};

}  // namespace zrml::convert
