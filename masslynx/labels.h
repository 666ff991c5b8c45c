// Reads "_extern.inf": labels of functions, from the printed acquisition method. docs/labels.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Applies the labels in `folder`, if any, to the functions; the file numbers them by position.
void ApplyLabels(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                 Findings* findings = nullptr, std::string* refusal = nullptr);

}  // namespace zrml::masslynx
