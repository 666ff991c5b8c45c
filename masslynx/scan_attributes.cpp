#include "masslynx/scan_attributes.h"

#include "masslynx/function_types.h"
#include "plugin/data_server.h"

namespace zrml {

void SetScanAttributes(const FunctionRecord& function, const ScanIndexEntry& scan,
                       CZRMassSpectrum& spectrum) {
  const int kind = FunctionKindOfType(function.typeCode);
  spectrum.SetScanType(kind);
  spectrum.SetMSLevel(kind == kMsMsFunction ? 2 : 1);
  spectrum.SetCentroided(scan.centroided);
  const bool negative = PolarityOfIonMode(function.ionMode) == kNegativePolarity;
  spectrum.SetPolarity(negative ? kNegativePolarity : kPositivePolarity);
  spectrum.SetScanAuxValue(scan.auxValue != 0.0F ? scan.auxValue
                                                 : static_cast<float>(function.defaultScanValue));
}

bool HasPrecursor(const FunctionRecord& function) {
  return FunctionKindOfType(function.typeCode) == kMsMsFunction;
}

}  // namespace zrml
