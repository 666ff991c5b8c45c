// Reads "_extern.inf": labels of functions, from the acquisition method's print-out. docs/labels.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Applies the file of `folder`, if there is one, to the functions that it numbers by position.
void ApplyLabels(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                 Findings* findings = nullptr, std::string* refusal = nullptr);

}  // namespace zrml::masslynx
