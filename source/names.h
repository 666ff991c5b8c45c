// Names for what a source holds, for people and programs.
#pragma once

#include "source/source.h"

namespace zrml::source {

/// "MS", "MS/MS", "absorbance", "ion monitoring", "other".
const char* NameOf(FunctionKind kind);
/// The same, but functions of ion monitoring are always "ion monitoring" or "reaction monitoring", whatever
/// their kind in the files.
const char* KindNameOf(const Function& function);
/// "none", "precursor", "product", "neutral loss", "neutral gain".
const char* NameOf(ScanType scanType);
/// "unknown", "positive", "negative".
const char* NameOf(Polarity polarity);

}  // namespace zrml::source
