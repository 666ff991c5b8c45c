// What mzML calls the spectra of a function.
#pragma once

#include "tools/zrml/convert/cv_terms.h"
#include "tools/zrml/convert/run_plan.h"

namespace zrml {

const CvTerm& SpectrumType(const RunFunction& function);

}  // namespace zrml
