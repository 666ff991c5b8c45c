// Reads "_extern.inf": labels of functions, from the acquisition method's print-out. docs/labels.md
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml {

/// Applies the file of `directory`, if there is one, to the functions that it numbers by position.
void ApplyLabels(const std::wstring& directory, std::vector<FunctionRecord>& functions);

}  // namespace zrml
