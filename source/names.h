// Words for what a source holds, as people and programs see them.
#pragma once

#include "source/source.h"

namespace zrml::source {

/// "MS", "MS/MS", "absorbance", "ion monitoring", "other".
const char* NameOf(FunctionKind kind);
/// The same, but for functions of ion monitoring: "ion monitoring", or "reaction monitoring", whatever kind
/// the files give them.
const char* KindNameOf(const Function& function);
/// "none", "precursor", "product", "neutral loss", "neutral gain".
const char* NameOf(ScanType scanType);
/// "unknown", "positive", "negative".
const char* NameOf(Polarity polarity);

}  // namespace zrml::source
