// The mzML terms for the spectra of a function.
#pragma once

#include "convert/cv_terms.h"
#include "convert/plan.h"

namespace zrml::convert {

const CvTerm& SpectrumType(const RunFunction& function);

}  // namespace zrml::convert
