#include "masslynx/function_types.h"

#include <array>

namespace zrml::masslynx {
namespace {

enum class Lines { kMs1, kMs2 };  // which calibration lines of the header apply

struct TypeRow {
  std::wstring_view text;
  FunctionKind kind = FunctionKind::kMs;
  ScanType scanType = ScanType::kNone;
  Lines lines = Lines::kMs1;
  Monitoring monitoring = Monitoring::kNone;
};

constexpr auto kMs = FunctionKind::kMs;
constexpr auto kMsMs = FunctionKind::kMsMs;

constexpr TypeRow Monitors(std::wstring_view text, Monitoring monitoring) {
  return {text, kMs, ScanType::kNone, Lines::kMs1, monitoring};
}

constexpr std::array<TypeRow, 32> kTypes = {{
    {L"MS "},
    Monitors(L"SIR ", Monitoring::kIons),
    {L"DLY "},
    {L"CAT "},
    {L"OFF "},
    {L"PAR ", kMs, ScanType::kPrecursor},
    {L"DAU ", kMsMs, ScanType::kProduct, Lines::kMs2},
    {L"NL ", kMs, ScanType::kNeutralLoss, Lines::kMs2},
    {L"NG ", kMs, ScanType::kNeutralGain, Lines::kMs2},
    {L"MRM ", kMs, ScanType::kNone, Lines::kMs2, Monitoring::kReactions},
    {L"Q1F "},
    {L"MS2 ", kMsMs, ScanType::kProduct, Lines::kMs2},
    {L"DAD ", FunctionKind::kAbsorbance},
    {L"TOF "},
    {L"PSD "},
    {L"TOF Survey "},
    {L"TOF MS/MS ", kMsMs, ScanType::kProduct, Lines::kMs2},
    {L"MTOF "},
    {L"TOF MS "},
    {L"TOF Parent "},
    {L"ASPEC VSCAN "},
    {L"ASPEC Magnet "},
    Monitors(L"ASPEC VSIR ", Monitoring::kIons),
    Monitors(L"ASPEC Magnet SIR ", Monitoring::kIons),
    {L"Quad Auto DAU "},
    {L"ASPEC BE "},
    {L"ASPEC B2E "},
    {L"ASPEC CNL "},
    {L"ASPEC MIKES "},
    Monitors(L"ASPEC MRM ", Monitoring::kReactions),
    {L"ASPEC NRMS "},
    Monitors(L"ASPEC MRMQ ", Monitoring::kReactions),
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
FunctionKind FunctionKindOfType(int typeCode) { return Type(typeCode).kind; }
ScanType ScanTypeOfType(int typeCode) { return Type(typeCode).scanType; }
Monitoring MonitoringOfType(int typeCode) { return Type(typeCode).monitoring; }
int MsLevelOfType(int typeCode) { return FunctionKindOfType(typeCode) == FunctionKind::kMsMs ? 2 : 1; }
bool UsesMs2Calibration(int typeCode) { return Type(typeCode).lines == Lines::kMs2; }
std::wstring_view IonModeText(int ionMode) { return TextOf(kIonModes, static_cast<std::size_t>(ionMode)); }

Polarity PolarityOfIonMode(int ionMode) {
  if (IonModeText(ionMode).empty()) return Polarity::kUnknown;
  return ionMode % 2 == 0 ? Polarity::kPositive : Polarity::kNegative;
}

std::wstring_view ProcessText(unsigned processCode) { return TextOf(kProcesses, processCode); }

}  // namespace zrml::masslynx
