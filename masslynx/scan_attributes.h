// What the spectra of a scan and of its drift bins have in common.
#pragma once

#include "masslynx/function_record.h"
#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Sets scan type, MS level, centroid flag, polarity and aux value as the function and its scan say. The
/// polarity is never unknown: what is not negative counts as positive.
void SetScanAttributes(const FunctionRecord& function, const ScanIndexEntry& scan, CZRMassSpectrum& spectrum);

/// Whether spectra of the function have a precursor mass.
bool HasPrecursor(const FunctionRecord& function);

}  // namespace zrml
