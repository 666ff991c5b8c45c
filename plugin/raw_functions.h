// The functions of a raw directory as the contract lists them: by position, without those that have no data
// file.
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml::plugin {

/// Takes absorbance functions and those without a data file out of the list; the others keep their order.
void RemoveUnlisted(std::vector<masslynx::FunctionRecord>& functions);

/// Reduces the list to the one function that a data file's lower-case name ("_func002.dat") means. False,
/// with the list unchanged, when there is none.
bool SelectFunction(const std::wstring& fileName, std::vector<masslynx::FunctionRecord>& functions);

}  // namespace zrml::plugin
