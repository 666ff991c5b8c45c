#include "masslynx/function_types.h"

#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tests/masslynx/function_type_rows.h"

namespace zrml {
namespace {

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
    EXPECT_EQ(FunctionKindOfType(row.code), row.kind) << row.code;
  }
}

TEST(FunctionKindOfType, IsMsForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_EQ(FunctionKindOfType(code), 2) << code;
}

TEST(MsMsScanTypeOfType, MapsAllTypes) {
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    EXPECT_EQ(MsMsScanTypeOfType(row.code), row.scanType) << row.code;
  }
}

TEST(MsMsScanTypeOfType, IsNoneForOtherCodes) {
  for (const int code : kUnknownTypes) EXPECT_EQ(MsMsScanTypeOfType(code), 0) << code;
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
  for (int mode = 0; mode < 16; mode += 2) EXPECT_EQ(PolarityOfIonMode(mode), 1) << mode;
  for (int mode = 1; mode < 16; mode += 2) EXPECT_EQ(PolarityOfIonMode(mode), 2) << mode;
}

TEST(PolarityOfIonMode, IsUnknownAboveFifteen) {
  for (int mode = 16; mode <= 32; ++mode) EXPECT_EQ(PolarityOfIonMode(mode), 0) << mode;
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
}  // namespace zrml
