// Data that no function refers to: what is left of a function table or history that has lost entries.
#pragma once

#include <span>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Data, indices and drift bins in `folder` of neither a function nor one that the history names; of each
/// stem the first. Empty files hold nothing that is lost.
void NoticeUnownedFiles(const platform::SystemPath& folder, std::span<const FunctionRecord> functions,
                        Findings& findings);

}  // namespace zrml::masslynx
