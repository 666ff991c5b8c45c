#include "plugin/absorbance_spectrum.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/spectrum/contract_member.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

TEST(AbsorbanceSpectrum, ANewOneIsEmpty) {
  const CZRAbsorbanceSpectrum s;
  EXPECT_TRUE(s.Wavelengths().empty());
  EXPECT_TRUE(s.Absorbances().empty());
  EXPECT_EQ(s.StartTime(), 0.0);
  EXPECT_EQ(s.EndTime(), 0.0);
  EXPECT_EQ(s.FirstScan(), 0);
  EXPECT_EQ(s.LastScan(), 0);
}

TEST(AbsorbanceSpectrum, SizesKeepWhatFitsAndAddZeroes) {
  CZRAbsorbanceSpectrum s;
  s.SetSize(2);
  s.SetWavelength(1, 254.5);
  s.SetAbsorbance(1, 0.25);
  s.SetSize(3);
  EXPECT_EQ(s.Wavelengths(), (Doubles{0, 254.5, 0}));
  EXPECT_EQ(s.Absorbances(), (Doubles{0, 0.25, 0}));
  s.SetSize(1);
  EXPECT_EQ(s.Wavelengths(), Doubles{0});
  EXPECT_EQ(s.Absorbances(), Doubles{0});
}

TEST(AbsorbanceSpectrum, SizeZeroOrLessIsEmpty) {
  for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
    CZRAbsorbanceSpectrum s;
    s.SetSize(3);
    s.SetSize(count);
    EXPECT_TRUE(s.Wavelengths().empty()) << count;
    EXPECT_TRUE(s.Absorbances().empty()) << count;
  }
}

TEST(AbsorbanceSpectrum, IndexesOutsideTheSizeAreIgnored) {
  CZRAbsorbanceSpectrum s;
  s.SetWavelength(0, 9);
  s.SetAbsorbance(0, 9);
  s.SetSize(2);
  for (const int i : {-1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    s.SetWavelength(i, 9);
    s.SetAbsorbance(i, 9);
  }
  EXPECT_EQ(s.Wavelengths(), Doubles(2, 0.0));
  EXPECT_EQ(s.Absorbances(), Doubles(2, 0.0));
}

TEST(AbsorbanceSpectrum, TimesAndScansAreSetTogetherAtTheContractsOffsets) {
  CZRAbsorbanceSpectrum s;
  s.SetSize(1);
  s.SetWavelength(0, 254.5);
  s.SetAbsorbance(0, 0.25);
  s.SetTime(1.5);
  s.SetScan(7);
  EXPECT_EQ(s.StartTime(), 1.5);
  EXPECT_EQ(s.EndTime(), 1.5);
  EXPECT_EQ(s.FirstScan(), 7);
  EXPECT_EQ(s.LastScan(), 7);
  EXPECT_EQ(ContractMember<Doubles>(s, 0), Doubles{254.5});
  EXPECT_EQ(ContractMember<Doubles>(s, 24), Doubles{0.25});
  EXPECT_EQ(ContractMember<double>(s, 48), 1.5);
  EXPECT_EQ(ContractMember<double>(s, 56), 1.5);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 64), 7);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 68), 7);
  EXPECT_EQ(sizeof(CZRAbsorbanceSpectrum), 72U);
}

}  // namespace
}  // namespace zrml
