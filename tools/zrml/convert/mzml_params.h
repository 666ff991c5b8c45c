// Elements that every part of an mzML document is made of. All append to a text.
#pragma once

#include <string>
#include <string_view>

#include "tools/zrml/convert/cv_terms.h"

namespace zrml {

/// `value` is XML text already.
void AppendCvParam(std::string& out, const CvTerm& term, std::string_view value = {},
                   const CvTerm* unit = nullptr);
void AppendCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit = nullptr);
/// Left out when `value` is not finite: readers disagree on how such numbers are spelt.
void AppendFiniteCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit = nullptr);
void AppendUserParam(std::string& out, std::wstring_view name, std::wstring_view value);

/// name="value", with a blank in front.
void AppendAttribute(std::string& out, std::string_view name, std::string_view xmlText);
void AppendAttribute(std::string& out, std::string_view name, std::size_t number);

/// The native id of a spectrum; numbers from 1.
std::string NativeId(int function, int scan);

}  // namespace zrml
