// The meaning of each function type code, as one table for the tests of the lookups and of the interface.
#pragma once

#include "plugin/data_server.h"

namespace zrml {

struct FunctionTypeRow {
  int code;
  const wchar_t* text;
  int kind;
  int scanType;
  int msLevel;
  bool ms2Calibration;
};

inline constexpr FunctionTypeRow kFunctionTypeRows[] = {
    {0, L"MS ", kMsFunction, kNoMsMsScan, 1, false},
    {1, L"SIR ", kMsFunction, kNoMsMsScan, 1, false},
    {2, L"DLY ", kMsFunction, kNoMsMsScan, 1, false},
    {3, L"CAT ", kMsFunction, kNoMsMsScan, 1, false},
    {4, L"OFF ", kMsFunction, kNoMsMsScan, 1, false},
    {5, L"PAR ", kMsFunction, kPrecursorIonScan, 1, false},
    {6, L"DAU ", kMsMsFunction, kProductIonScan, 2, true},
    {7, L"NL ", kMsFunction, kNeutralLossScan, 1, true},  // kind MS, yet calibrated by the MS2 lines
    {8, L"NG ", kMsFunction, kNeutralGainScan, 1, true},
    {9, L"MRM ", kMsFunction, kNoMsMsScan, 1, true},
    {10, L"Q1F ", kMsFunction, kNoMsMsScan, 1, false},
    {11, L"MS2 ", kMsMsFunction, kProductIonScan, 2, true},
    {12, L"DAD ", kAbsorbanceFunction, kNoMsMsScan, 1, false},
    {13, L"TOF ", kMsFunction, kNoMsMsScan, 1, false},
    {14, L"PSD ", kMsFunction, kNoMsMsScan, 1, false},
    {15, L"TOF Survey ", kMsFunction, kNoMsMsScan, 1, false},
    {16, L"TOF MS/MS ", kMsMsFunction, kProductIonScan, 2, true},
    {17, L"MTOF ", kMsFunction, kNoMsMsScan, 1, false},
    {18, L"TOF MS ", kMsFunction, kNoMsMsScan, 1, false},
    {19, L"TOF Parent ", kMsFunction, kNoMsMsScan, 1, false},
    {20, L"ASPEC VSCAN ", kMsFunction, kNoMsMsScan, 1, false},
    {21, L"ASPEC Magnet ", kMsFunction, kNoMsMsScan, 1, false},
    {22, L"ASPEC VSIR ", kMsFunction, kNoMsMsScan, 1, false},
    {23, L"ASPEC Magnet SIR ", kMsFunction, kNoMsMsScan, 1, false},
    {24, L"Quad Auto DAU ", kMsFunction, kNoMsMsScan, 1, false},
    {25, L"ASPEC BE ", kMsFunction, kNoMsMsScan, 1, false},
    {26, L"ASPEC B2E ", kMsFunction, kNoMsMsScan, 1, false},
    {27, L"ASPEC CNL ", kMsFunction, kNoMsMsScan, 1, false},
    {28, L"ASPEC MIKES ", kMsFunction, kNoMsMsScan, 1, false},
    {29, L"ASPEC MRM ", kMsFunction, kNoMsMsScan, 1, false},
    {30, L"ASPEC NRMS ", kMsFunction, kNoMsMsScan, 1, false},
    {31, L"ASPEC MRMQ ", kMsFunction, kNoMsMsScan, 1, false},
};

/// Texts of the ionisation modes 0 to 15. Even modes are positive, odd ones negative.
inline constexpr const wchar_t* kIonModeTexts[] = {L"EI+", L"EI-", L"CI+", L"CI-", L"FB+", L"FB-",
                                                   L"TS+", L"TS-", L"ES+", L"ES-", L"AI+", L"AI-",
                                                   L"LD+", L"LD-", L"FI+", L"FI-"};

}  // namespace zrml
