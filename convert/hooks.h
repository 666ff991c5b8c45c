// What a conversion calls back while it runs.
#pragma once

#include "source/source.h"

namespace zrml::convert {

using source::Cancel;
using source::Cancelled;
using source::ThrowIfCancelled;

struct Hooks {
  Cancel cancel = {};  ///< true to give up, which throws Cancelled; called by all workers at once
  source::Progress progress =
      {};  ///< spectra written so far, of all; for Parquet also those that are read before, once more each
};

}  // namespace zrml::convert
