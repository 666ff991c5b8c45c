#include "masslynx/scandata/scan_facts.h"

#include "masslynx/function_types.h"

namespace zrml::masslynx {

using scan_facts::UnlessZero;

bool HasPrecursors(const FunctionRecord& function) {
  return FunctionKindOfType(function.typeCode) == FunctionKind::kMsMs;
}

MethodFacts::MethodFacts(const FunctionRecord& function)
    : scanMinutes(function.scanTime / 60.0F),
      hasPrecursors(HasPrecursors(function)),
      setMass(UnlessZero(function.setMass)),
      value(UnlessZero(function.defaultScanValue)) {}

}  // namespace zrml::masslynx
