// Display names of functions.
#pragma once

#include <vector>

#include "masslynx/function_record.h"

namespace zrml {

/// Names every function: type, ionisation mode, processing steps, label. Names that occur more than once then
/// get the function's place in the list, counted from 1.
void BuildFunctionNames(std::vector<FunctionRecord>& functions);

}  // namespace zrml
