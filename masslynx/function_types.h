// The meaning of the codes of function types, ionisation modes and processing steps.
#pragma once

#include <string_view>

namespace zrml::masslynx {

// Type codes with rules of their own.
enum FunctionType : int {
  kMs2Type = 11,
  kDadType = 12,   // the absorbance function
  kMtofType = 17,  // its table record holds a mass range instead of channel lists
};

/// Name of a type with its trailing blank; "Unknown " for other codes.
std::wstring_view FunctionTypeText(int typeCode);

enum class FunctionKind { kMs, kMsMs, kAbsorbance };
enum class ScanType { kNone, kPrecursor, kProduct, kNeutralLoss, kNeutralGain };
/// What functions that record only selected ions record.
enum class Monitoring { kNone, kIons, kReactions };
enum class Polarity { kUnknown, kPositive, kNegative };

FunctionKind FunctionKindOfType(int typeCode);
ScanType ScanTypeOfType(int typeCode);
Monitoring MonitoringOfType(int typeCode);

/// 2 for kind MS/MS, else 1.
int MsLevelOfType(int typeCode);

/// Whether the MS2 (not the MS1) calibration lines of the header apply to the function. Not the same set as
/// kind MS/MS.
bool UsesMs2Calibration(int typeCode);

/// "EI+" and so on; empty for codes without a text.
std::wstring_view IonModeText(int ionMode);

Polarity PolarityOfIonMode(int ionMode);

/// "Combined" and so on; empty for codes without a text.
std::wstring_view ProcessText(unsigned processCode);

}  // namespace zrml::masslynx
