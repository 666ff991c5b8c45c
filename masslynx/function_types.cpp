#include "masslynx/function_types.h"

#include <array>

#include "plugin/data_server.h"

namespace zrml {
namespace {

enum class Lines { kMs1, kMs2 };  // which calibration lines of the header apply

struct TypeRow {
  std::wstring_view text;
  int kind = kMsFunction;
  int scanType = kNoMsMsScan;
  Lines lines = Lines::kMs1;
};

constexpr std::array<TypeRow, 32> kTypes = {{
    {L"MS "},
    {L"SIR "},
    {L"DLY "},
    {L"CAT "},
    {L"OFF "},
    {L"PAR ", kMsFunction, kPrecursorIonScan},
    {L"DAU ", kMsMsFunction, kProductIonScan, Lines::kMs2},
    {L"NL ", kMsFunction, kNeutralLossScan, Lines::kMs2},
    {L"NG ", kMsFunction, kNeutralGainScan, Lines::kMs2},
    {L"MRM ", kMsFunction, kNoMsMsScan, Lines::kMs2},
    {L"Q1F "},
    {L"MS2 ", kMsMsFunction, kProductIonScan, Lines::kMs2},
    {L"DAD ", kAbsorbanceFunction},
    {L"TOF "},
    {L"PSD "},
    {L"TOF Survey "},
    {L"TOF MS/MS ", kMsMsFunction, kProductIonScan, Lines::kMs2},
    {L"MTOF "},
    {L"TOF MS "},
    {L"TOF Parent "},
    {L"ASPEC VSCAN "},
    {L"ASPEC Magnet "},
    {L"ASPEC VSIR "},
    {L"ASPEC Magnet SIR "},
    {L"Quad Auto DAU "},
    {L"ASPEC BE "},
    {L"ASPEC B2E "},
    {L"ASPEC CNL "},
    {L"ASPEC MIKES "},
    {L"ASPEC MRM "},
    {L"ASPEC NRMS "},
    {L"ASPEC MRMQ "},
}};
constexpr TypeRow kUnknownType = {L"Unknown "};

constexpr std::array<std::wstring_view, 16> kIonModes = {
    L"EI+", L"EI-", L"CI+", L"CI-", L"FB+", L"FB-", L"TS+", L"TS-",
    L"ES+", L"ES-", L"AI+", L"AI-", L"LD+", L"LD-", L"FI+", L"FI-",
};

constexpr std::array<std::wstring_view, 28> kProcesses = {
    L"",
    L"Refined",
    L"Combined",
    L"Smoothed",
    L"Centroided",
    L"Peak-topped",
    L"Edited",
    L"Transformed",
    L"Database",
    L"Refined",  // deliberately the text of code 1 again
    L"Filtered",
    L"MaxEnt",
    L"Bkgnd Sub",
    L"MaxEnt Mock",
    L"MaxEnt Recon",
    L"MaxEnt Recon Mock",
    L"Iso Model",
    L"Iso Model Cont",
    L"MaxEnt Seq",
    L"MaxEnt Seq Mock",
    L"Acc Mass Centroid",
    L"Extended Combine",
    L"",
    L"",
    L"",
    L"",
    L"",
    L"Acc Mass Auto Peak Det",
};

template <std::size_t N>
std::wstring_view TextOf(const std::array<std::wstring_view, N>& texts, std::size_t code) {
  return code < N ? texts[code] : std::wstring_view();
}

const TypeRow& Type(int typeCode) {
  const auto index = static_cast<std::size_t>(typeCode);  // negative codes become too large
  return index < kTypes.size() ? kTypes[index] : kUnknownType;
}

}  // namespace

std::wstring_view FunctionTypeText(int typeCode) { return Type(typeCode).text; }
int FunctionKindOfType(int typeCode) { return Type(typeCode).kind; }
int MsMsScanTypeOfType(int typeCode) { return Type(typeCode).scanType; }
bool UsesMs2Calibration(int typeCode) { return Type(typeCode).lines == Lines::kMs2; }
std::wstring_view IonModeText(int ionMode) { return TextOf(kIonModes, static_cast<std::size_t>(ionMode)); }

int PolarityOfIonMode(int ionMode) {
  if (IonModeText(ionMode).empty()) return kUnknownPolarity;
  return ionMode % 2 == 0 ? kPositivePolarity : kNegativePolarity;
}

std::wstring_view ProcessText(unsigned processCode) { return TextOf(kProcesses, processCode); }

}  // namespace zrml
