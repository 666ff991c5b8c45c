// Data files that no function refers to, left over when a function table or history loses entries.
#pragma once

#include <span>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Reports data, index and drift-bin files in `folder` that belong neither to a function nor to one named in
/// the history; the first of each stem. Empty files are left out: nothing is lost with them.
void NoticeUnownedFiles(const platform::SystemPath& folder, std::span<const FunctionRecord> functions,
                        Findings& findings);

}  // namespace zrml::masslynx
