// The vocabulary's term for an instrument named in a source.
#pragma once

#include <string_view>

#include "convert/cv_terms.h"

namespace zrml::convert {

/// The model named `text`, ignoring case, blanks, punctuation and a serial number after '#'.
/// Otherwise the term for the maker's instruments in general.
const CvTerm& InstrumentModel(std::string_view text);

}  // namespace zrml::convert
