#include "plugin/chromatogram.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/spectrum/contract_member.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

// No operation puts the optional arrays in use: a host sets the members directly.
HostVector<std::uint8_t>& PointFlags(CZRChromatogram& c) {
  return ContractMember<HostVector<std::uint8_t>>(c, 48);
}
HostVector<std::uint16_t>& PointCodes(CZRChromatogram& c) {
  return ContractMember<HostVector<std::uint16_t>>(c, 72);
}
bool& HasPointFlags(CZRChromatogram& c) { return ContractMember<bool>(c, 96); }
bool& HasPointCodes(CZRChromatogram& c) { return ContractMember<bool>(c, 97); }

TEST(Chromatogram, ANewOneIsEmpty) {
  CZRChromatogram c;
  EXPECT_TRUE(c.Times().empty());
  EXPECT_TRUE(c.Intensities().empty());
  EXPECT_EQ(c.Name(), HostString());
  EXPECT_EQ(c.GetTimes(), nullptr);
  EXPECT_EQ(c.GetIntensities(), nullptr);
  EXPECT_TRUE(PointFlags(c).empty());
  EXPECT_TRUE(PointCodes(c).empty());
  EXPECT_FALSE(HasPointFlags(c));
  EXPECT_FALSE(HasPointCodes(c));
}

TEST(Chromatogram, SizesKeepWhatFitsAndAddZeroes) {
  CZRChromatogram c;
  c.SetSize(2);
  EXPECT_TRUE(c.SetTime(1, 0.5));
  EXPECT_TRUE(c.SetIntensity(1, 7));
  c.SetSize(3);
  EXPECT_EQ(c.Times(), (Doubles{0, 0.5, 0}));
  EXPECT_EQ(c.Intensities(), (Doubles{0, 7, 0}));
  EXPECT_TRUE(PointFlags(c).empty());
  EXPECT_TRUE(PointCodes(c).empty());
  c.SetSize(1);
  EXPECT_EQ(c.Times(), Doubles{0});
  EXPECT_EQ(c.Intensities(), Doubles{0});
}

TEST(Chromatogram, OptionalArraysInUseAreSizedToo) {
  for (int use = 0; use < 4; ++use) {
    CZRChromatogram c;
    HasPointFlags(c) = (use & 1) != 0;
    HasPointCodes(c) = (use & 2) != 0;
    c.SetSize(3);
    EXPECT_EQ(PointFlags(c), HostVector<std::uint8_t>((use & 1) != 0 ? 3 : 0, 0)) << use;
    EXPECT_EQ(PointCodes(c), HostVector<std::uint16_t>((use & 2) != 0 ? 3 : 0, 0)) << use;
  }
}

TEST(Chromatogram, SizeZeroFreesAllFourArraysAndKeepsTheName) {
  for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
    CZRChromatogram c;
    HasPointFlags(c) = HasPointCodes(c) = true;
    c.SetSize(3);
    c.SetName(L"kept");
    HasPointFlags(c) = HasPointCodes(c) = false;  // freed also when out of use
    c.SetSize(count);
    EXPECT_TRUE(c.Times().empty()) << count;
    EXPECT_TRUE(c.Intensities().empty()) << count;
    EXPECT_TRUE(PointFlags(c).empty()) << count;
    EXPECT_TRUE(PointCodes(c).empty()) << count;
    EXPECT_EQ(c.Name(), L"kept") << count;
  }
}

TEST(Chromatogram, IndexesOutsideTheSizeAreRefused) {
  CZRChromatogram c;
  EXPECT_FALSE(c.SetTime(0, 9));
  EXPECT_FALSE(c.SetIntensity(0, 9));
  c.SetSize(2);
  for (const int i : {-1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(c.SetTime(i, 9)) << i;
    EXPECT_FALSE(c.SetIntensity(i, 9)) << i;
  }
  EXPECT_EQ(c.Times(), Doubles(2, 0.0));
  EXPECT_EQ(c.Intensities(), Doubles(2, 0.0));
}

TEST(Chromatogram, AssignReplacesOneArray) {
  CZRChromatogram c;
  c.SetSize(5);
  c.AssignTimes({1, 2, 3});
  EXPECT_EQ(c.Times(), (Doubles{1, 2, 3}));
  EXPECT_EQ(c.Intensities(), Doubles(5, 0.0));
  c.AssignIntensities({4, 5});
  EXPECT_EQ(c.Intensities(), (Doubles{4, 5}));
  EXPECT_EQ(c.Times(), (Doubles{1, 2, 3}));
}

TEST(Chromatogram, IndexesFollowTheArrayThatIsSet) {
  CZRChromatogram c;
  c.AssignTimes({1, 2, 3});
  c.AssignIntensities({4});
  EXPECT_TRUE(c.SetTime(2, 9));
  EXPECT_FALSE(c.SetIntensity(2, 9));
  EXPECT_EQ(c.Intensities(), Doubles{4});
}

TEST(Chromatogram, PointersAreToTheFirstEntryAndNullWithoutTimes) {
  CZRChromatogram c;
  c.AssignIntensities({4, 5});
  EXPECT_EQ(c.GetTimes(), nullptr);
  EXPECT_EQ(c.GetIntensities(), nullptr);  // without times, whatever the intensities
  c.AssignTimes({1, 2});
  EXPECT_EQ(c.GetTimes(), c.Times().data());
  EXPECT_EQ(c.GetIntensities(), c.Intensities().data());
}

TEST(Chromatogram, MembersStandAtTheContractsOffsets) {
  CZRChromatogram c;
  c.AssignTimes({1});
  c.AssignIntensities({2});
  c.SetName(L"a name of more than seven characters");
  EXPECT_EQ(ContractMember<Doubles>(c, 0), Doubles{1});
  EXPECT_EQ(ContractMember<Doubles>(c, 24), Doubles{2});
  EXPECT_EQ(ContractMember<HostString>(c, 104), L"a name of more than seven characters");
  EXPECT_EQ(sizeof(CZRChromatogram), 136U);
}

}  // namespace
}  // namespace zrml
