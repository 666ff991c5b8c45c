// The mzML terms for the spectra of a function.
#pragma once

#include "convert/cv_terms.h"
#include "convert/plan.h"

namespace zrml::convert {

/// The ids of how spectra were processed whose profiles became centroids, and of others that lack points.
inline constexpr std::string_view kCentroiding = "centroiding";
inline constexpr std::string_view kFiltering = "filtering";

const CvTerm& SpectrumType(const RunFunction& function);

}  // namespace zrml::convert
