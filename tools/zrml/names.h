// What the interface of plug-ins calls the things that a source holds.
#pragma once

#include <string>

#include "source/source.h"

namespace zrml::tool {

std::string ProviderName(source::Format format);
/// The interface's number of a kind; 0 for one that it has no number for.
int KindCode(source::FunctionKind kind);

}  // namespace zrml::tool
