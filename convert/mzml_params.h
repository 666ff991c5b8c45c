// Elements used in every part of an mzML document. All append to a text.
#pragma once

#include <string>
#include <string_view>

#include "convert/cv_terms.h"
#include "source/source.h"

namespace zrml::convert {

/// `value` is XML text already.
void AppendCvParam(std::string& out, const CvTerm& term, std::string_view value = {},
                   const CvTerm* unit = nullptr);
void AppendCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit = nullptr);
/// Left out when `value` is not finite: readers disagree on the spelling of such numbers.
void AppendFiniteCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit = nullptr);
void AppendUserParam(std::string& out, std::string_view name, std::string_view value);

/// name="value", preceded by a blank.
void AppendAttribute(std::string& out, std::string_view name, std::string_view xmlText);
void AppendAttribute(std::string& out, std::string_view name, std::size_t number);

/// The native id of a spectrum: the numbers of the files, `scan` from 1. Process numbers have 16 bits;
/// repetitions are counted in the bits above, so that ids are unique.
std::string NativeId(const source::FunctionId& function, int scan);

}  // namespace zrml::convert
