// Display names of functions.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Type, ionisation mode, processing steps, label.
std::wstring NameOf(const FunctionRecord& function);

/// Determines which functions share their name with another.
void MarkSharedNames(std::vector<FunctionRecord>& functions);

/// The name and, where it is shared, the function's place in the list, counted from 1. Names are made on
/// request: those of long chains of processing steps would take many times the size of the history file.
std::wstring FunctionName(const std::vector<FunctionRecord>& functions, std::size_t position);

}  // namespace zrml::masslynx
