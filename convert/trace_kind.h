// What a trace records, as far as its name and its function say.
#pragma once

#include <optional>
#include <string_view>

#include "convert/cv_terms.h"
#include "source/source.h"

namespace zrml::convert {

/// The term for a trace called `name`: of a function of the given kind, or of the sample. Words count
/// only as a whole, and only those of things that such a function records.
const CvTerm& TraceType(std::string_view name, std::optional<source::FunctionKind> function = {});

}  // namespace zrml::convert
