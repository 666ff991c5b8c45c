// A look at every point of a source, for damage that the structure of the files does not show. docs/check.md
#pragma once

#include "source/source.h"

namespace zrml::source {

/// What the source's own findings do not say: scans that cannot be read or have lost points, points that
/// cannot be measured values, spectra without points. Reads each scan and trace once; throws nothing but
/// Cancelled.
Findings LookAtPoints(Source& source, const Cancel& cancel = {}, const Progress& progress = {});

}  // namespace zrml::source
