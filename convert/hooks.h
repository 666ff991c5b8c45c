// What a conversion calls back while it runs.
#pragma once

#include "source/source.h"

namespace zrml::convert {

using source::Cancel;
using source::Cancelled;

struct Hooks {
  Cancel cancel = {};              ///< true to give up, which throws Cancelled; called by all workers at once
  source::Progress progress = {};  ///< spectra that are written, and all
};

inline void ThrowIfCancelled(const Cancel& cancel) {
  if (cancel && cancel()) throw Cancelled();
}

}  // namespace zrml::convert
