// Words for what a source holds, as the output shows them.
#pragma once

#include <string>

#include "source/source.h"

namespace zrml::tool {

std::string ProviderName(source::Format format);
std::string KindName(source::FunctionKind kind);
/// The interface's number of a kind; 0 for one that it has no number for.
int KindCode(source::FunctionKind kind);
std::string ScanTypeName(source::ScanType scanType);
std::string PolarityName(source::Polarity polarity);

}  // namespace zrml::tool
