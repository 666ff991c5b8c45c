// The functions of a raw directory as the contract lists them: by position, without those that lack a data
// file.
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml::plugin {

/// Removes absorbance functions and those without a data file; the others keep their order.
void RemoveUnlisted(std::vector<masslynx::FunctionRecord>& functions);

/// Reduces the list to the function of a data file, given by its lower-case name ("_func002.dat"). False,
/// with the list unchanged, when there is no such function.
bool SelectFunction(const std::wstring& fileName, std::vector<masslynx::FunctionRecord>& functions);

}  // namespace zrml::plugin
