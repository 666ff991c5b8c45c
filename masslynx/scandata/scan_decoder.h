// Decodes the points of one scan. docs/data-layouts.md
#pragma once

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Decodes scan `scan` (a position of the function's index) from the function's data file into the points of
/// `spectrum` and tells through `unsorted` whether the masses do not ascend. False, with the points
/// untouched, for an unknown data format or a mass list that cannot serve. Bytes that the file lacks count as
/// zero.
bool DecodeScan(const platform::File& file, const FunctionRecord& function, int scan,
                CZRMassSpectrum& spectrum, bool& unsorted);

}  // namespace zrml
