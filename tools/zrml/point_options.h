// Options that say what becomes of the points of mass spectra.
#pragma once

#include <CLI/CLI.hpp>

#include "convert/selection.h"

namespace zrml::tool {

/// --areas, of `centroid`, an option that asks for centroids; then --mz, --drop-zeros, --min-intensity, --top
/// and --polarity.
void AddPointOptions(CLI::App& options, CLI::Option* centroid, convert::Selection& selection);

}  // namespace zrml::tool
