// The plug-in interface's numbers for what a source holds.
#pragma once

#include <string>

#include "source/source.h"

namespace zrml::tool {

std::string ProviderName(source::Format format);
/// The interface's number of a kind; 0 for one without a number.
int KindCode(source::FunctionKind kind);

}  // namespace zrml::tool
