// What the codes of function types, ionisation modes and processing steps mean.
#pragma once

#include <string_view>

namespace zrml {

// Type codes that rules refer to.
enum FunctionType : int {
  kMs2Type = 11,
  kDadType = 12,   // the absorbance function
  kMtofType = 17,  // its table record holds a mass range instead of channel lists
};

/// Name of a type with its trailing blank; "Unknown " for other codes.
std::wstring_view FunctionTypeText(int typeCode);

/// A FunctionKind and a MsMsScanType of the interface.
int FunctionKindOfType(int typeCode);
int MsMsScanTypeOfType(int typeCode);

/// Whether the MS2 (not the MS1) calibration lines of the header are the function's. Not the same set as kind
/// MS/MS.
bool UsesMs2Calibration(int typeCode);

/// "EI+" and so on; empty for codes that have no text.
std::wstring_view IonModeText(int ionMode);

/// A Polarity of the interface.
int PolarityOfIonMode(int ionMode);

/// "Combined" and so on; empty for codes that have no text.
std::wstring_view ProcessText(unsigned processCode);

}  // namespace zrml
