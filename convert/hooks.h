// What a conversion calls back while it runs.
#pragma once

#include "source/source.h"

namespace zrml::convert {

using source::Cancel;
using source::Cancelled;
using source::ThrowIfCancelled;

struct Hooks {
  Cancel cancel = {};  ///< true to give up, which throws Cancelled; called by all workers at once
  /// Spectra written so far, of all. For Parquet each spectrum counts twice, when it is looked at and when it
  /// is written.
  source::Progress progress = {};
};

}  // namespace zrml::convert
