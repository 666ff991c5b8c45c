// The vocabulary's term for an instrument that a source names in words.
#pragma once

#include <string_view>

#include "convert/cv_terms.h"

namespace zrml::convert {

/// The model whose name `text` is, up to upper and lower case, blanks and punctuation, and without a serial
/// number behind '#'. Otherwise the term for the maker's instruments in general.
const CvTerm& InstrumentModel(std::string_view text);

}  // namespace zrml::convert
