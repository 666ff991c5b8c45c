// Words for the interface's enumerations, as the output shows them; "other" for codes without one.
#pragma once

#include <string_view>

namespace zrml {

std::wstring_view KindName(int kind);
std::wstring_view ScanTypeName(int scanType);
std::wstring_view PolarityName(int polarity);

}  // namespace zrml
