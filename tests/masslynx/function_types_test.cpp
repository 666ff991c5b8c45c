#include "masslynx/function_types.h"

#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "plugin/raw_spectra.h"
#include "tests/masslynx/function_type_rows.h"

namespace zrml::masslynx {
namespace {

FunctionRecord OfType(int typeCode) {
  FunctionRecord function;
  function.typeCode = typeCode;
  return function;
}

constexpr int kUnknownTypes[] = {-1, 32, 33, 255, 65536};

TEST(FunctionTypeText, NamesAllTypesWithATrailingBlank) {
  ASSERT_EQ(std::size(kFunctionTypeRows), 32u);
  for (const FunctionTypeRow& row : kFunctionTypeRows) EXPECT_EQ(FunctionTypeText(row.code), row.text);
}

TEST(FunctionTypeText, IsUnknownForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_EQ(FunctionTypeText(code), L"Unknown ") << code;
}

TEST(FunctionKindOfType, MapsAllTypes) {
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    EXPECT_EQ(plugin::KindOf(OfType(row.code)), row.kind) << row.code;
  }
}

TEST(FunctionKindOfType, IsMsForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_EQ(plugin::KindOf(OfType(code)), 2) << code;
}

TEST(ScanTypeOfType, MapsAllTypes) {
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    EXPECT_EQ(static_cast<int>(ScanTypeOfType(row.code)), row.scanType) << row.code;
  }
}

TEST(ScanTypeOfType, IsNoneForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_EQ(ScanTypeOfType(code), ScanType::kNone) << code;
}

TEST(MonitoringOfType, IsThatOfSixTypes) {
  for (int code = -1; code < 40; ++code) {
    const bool isOfIons = code == 1 || code == 22 || code == 23;       // SIR, ASPEC VSIR and Magnet SIR
    const bool isOfReactions = code == 9 || code == 29 || code == 31;  // MRM, ASPEC MRM and MRMQ
    EXPECT_EQ(MonitoringOfType(code), isOfIons        ? Monitoring::kIons
                                      : isOfReactions ? Monitoring::kReactions
                                                      : Monitoring::kNone)
        << code;
  }
}

TEST(UsesMs2Calibration, MapsAllTypes) {
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    EXPECT_EQ(UsesMs2Calibration(row.code), row.ms2Calibration) << row.code;
  }
}

TEST(UsesMs2Calibration, IsFalseForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_FALSE(UsesMs2Calibration(code)) << code;
}

TEST(IonModeText, NamesSixteenModes) {
  ASSERT_EQ(std::size(kIonModeTexts), 16u);
  for (int mode = 0; mode < 16; ++mode) EXPECT_EQ(IonModeText(mode), kIonModeTexts[mode]) << mode;
}

TEST(IonModeText, IsEmptyAboveFifteen) {
  for (int mode = 16; mode <= 32; ++mode) EXPECT_EQ(IonModeText(mode), L"") << mode;
}

TEST(PolarityOfIonMode, IsPositiveForEvenAndNegativeForOddModes) {
  for (int mode = 0; mode < 16; mode += 2) EXPECT_EQ(PolarityOfIonMode(mode), Polarity::kPositive) << mode;
  for (int mode = 1; mode < 16; mode += 2) EXPECT_EQ(PolarityOfIonMode(mode), Polarity::kNegative) << mode;
}

TEST(PolarityOfIonMode, IsUnknownAboveFifteen) {
  for (int mode = 16; mode <= 32; ++mode) EXPECT_EQ(PolarityOfIonMode(mode), Polarity::kUnknown) << mode;
}

// Codes 1 and 9 share a text, deliberately.
TEST(ProcessText, NamesAllCodes) {
  const wchar_t* const texts[] = {L"",
                                  L"Refined",
                                  L"Combined",
                                  L"Smoothed",
                                  L"Centroided",
                                  L"Peak-topped",
                                  L"Edited",
                                  L"Transformed",
                                  L"Database",
                                  L"Refined",
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
                                  L"Acc Mass Auto Peak Det"};
  ASSERT_EQ(std::size(texts), 28u);
  for (unsigned code = 0; code < 28; ++code) EXPECT_EQ(ProcessText(code), texts[code]) << code;
}

TEST(ProcessText, IsEmptyAboveTwentySeven) {
  for (const unsigned code : {28u, 29u, 255u, 256u + 27u, 0xffffu}) EXPECT_EQ(ProcessText(code), L"") << code;
}

}  // namespace
}  // namespace zrml::masslynx
