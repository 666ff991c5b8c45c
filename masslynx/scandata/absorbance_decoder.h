// Decodes one absorbance (photodiode-array) scan. docs/data-layouts.md
#pragma once

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "plugin/absorbance_spectrum.h"

namespace zrml {

/// Decodes scan `scan` of the absorbance function from its data file. False, with `spectrum` untouched, for
/// other data formats than 1 and 9. The spectrum's scan number is deliberately the position, counted from 0.
bool DecodeAbsorbanceScan(const platform::File& file, const FunctionRecord& function, int scan,
                          CZRAbsorbanceSpectrum& spectrum);

}  // namespace zrml
