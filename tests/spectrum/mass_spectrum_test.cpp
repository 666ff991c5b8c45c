// Construction, sizing, optional arrays, elements and attributes of a mass spectrum.
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/mass_spectrum_fixture.h"

namespace zrml {
namespace {

// --- Construction

TEST(MassSpectrum, ANewOneIsEmptyWithDefaultAttributes) {
  CZRMassSpectrum s;
  EXPECT_EQ(s.GetCount(), 0);
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 0));
  EXPECT_EQ(PresenceFlags(s), std::vector<bool>(4, false));
  EXPECT_EQ(s.GetMasses(), nullptr);
  EXPECT_EQ(s.GetIntensities(), nullptr);
  EXPECT_EQ(s.GetPointFlags(), nullptr);
  EXPECT_EQ(s.GetPointData(), nullptr);
  EXPECT_EQ(s.GetPointValues(), nullptr);
  EXPECT_EQ(s.GetPointMarks(), nullptr);

  EXPECT_TRUE(s.IsCentroided());
  EXPECT_TRUE(s.AreStatisticsStale());
  EXPECT_EQ(s.GetMSLevel(), 1);
  EXPECT_EQ(s.GetPolarity(), 1);
  EXPECT_EQ(s.GetScanType(), 1);
  EXPECT_EQ(s.GetScale(), 1.0);
  EXPECT_EQ(s.GetTitle(), HostString());
  EXPECT_EQ(s.GetLabel(), HostString());
  EXPECT_EQ(s.GetPrecursorMass(), 0.0);
  EXPECT_EQ(s.GetStartTime(), 0.0);
  EXPECT_EQ(s.GetEndTime(), 0.0);
  EXPECT_EQ(s.GetFirstScan(), 0);
  EXPECT_EQ(s.GetLastScan(), 0);
  EXPECT_EQ(s.GetFirstDriftBin(), 0);
  EXPECT_EQ(s.GetLastDriftBin(), 0);
  EXPECT_EQ(s.GetFirstDriftValue(), 0.0);
  EXPECT_EQ(s.GetLastDriftValue(), 0.0);
  EXPECT_EQ(s.GetScanAuxValue(), 0.0);
}

TEST(MassSpectrum, MembersWithoutOperationsStartAtZero) {
  CZRMassSpectrum s;
  EXPECT_EQ(ContractMember<std::int16_t>(s, 248), 0);
  EXPECT_TRUE(ContractMember<HostVector<SpectrumPair>>(s, 256).empty());
  for (const std::size_t offset : {280, 312, 336, 360})
    EXPECT_TRUE(ContractMember<HostDoubles>(s, offset).empty());
  for (const std::size_t offset : {432, 440, 448, 456, 464, 472, 536}) {
    EXPECT_EQ(ContractMember<std::int64_t>(s, offset), 0) << offset;
  }
  EXPECT_EQ(ContractMember<std::uint8_t>(s, 520), 0);
}

TEST(MassSpectrum, OneOfAGivenCountHasZeroedPointsAndNoOptionalArrays) {
  CZRMassSpectrum s(3U);
  EXPECT_EQ(s.GetCount(), 3);
  EXPECT_EQ(s.MassVector(), HostDoubles(3, 0.0));
  EXPECT_EQ(s.IntensityVector(), HostDoubles(3, 0.0));
  EXPECT_EQ(PresenceFlags(s), std::vector<bool>(4, false));
  EXPECT_EQ(CZRMassSpectrum(0U).GetCount(), 0);
}

// --- Sizing

TEST(MassSpectrumResize, ANegativeCountGivesFalseAndChangesNothing) {
  CZRMassSpectrum s = WithAllArrays();
  CZRMassSpectrum before = s;
  s.UpdateStatistics();
  EXPECT_FALSE(s.Resize(-1, false, false, false, false));
  EXPECT_FALSE(s.Resize(std::numeric_limits<int>::min(), true, true, true, true));
  ExpectSamePoints(s, before);
  EXPECT_FALSE(s.AreStatisticsStale());
}

TEST(MassSpectrumResize, ExtendsWithZeroesAndTruncates) {
  CZRMassSpectrum s = WithAllArrays();
  s.UpdateStatistics();
  EXPECT_TRUE(s.Resize(4, true, true, true, true));
  EXPECT_EQ(s.GetCount(), 4);
  EXPECT_EQ(s.MassVector(), (HostDoubles{100, 200, 0, 0}));
  EXPECT_EQ(s.IntensityVector(), (HostDoubles{3, 4, 0, 0}));
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 4));
  EXPECT_EQ(s.GetPointFlags()[1], 11);
  EXPECT_EQ(s.GetPointFlags()[3], 0);
  EXPECT_EQ(s.GetPointData()[3], nullptr);
  EXPECT_EQ(s.GetPointValues()[1], -12);
  EXPECT_EQ(s.GetPointValues()[3], 0);
  EXPECT_EQ(s.GetPointMarks()[1], 13);
  EXPECT_EQ(s.GetPointMarks()[3], 0);
  EXPECT_TRUE(s.AreStatisticsStale());

  EXPECT_TRUE(s.Resize(1, true, true, true, true));
  EXPECT_EQ(s.MassVector(), HostDoubles{100});
  EXPECT_EQ(s.IntensityVector(), HostDoubles{3});
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 1));
}

TEST(MassSpectrumResize, EachArgumentRulesItsOwnArray) {
  for (int chosen = 0; chosen < 16; ++chosen) {
    SCOPED_TRACE(chosen);
    const auto has = [&](int bit) { return (chosen >> bit & 1) != 0; };
    const std::vector<bool> flags = {has(0), has(1), has(2), has(3)};
    std::vector<std::size_t> lengths = {3, 3};
    for (const bool flag : flags) lengths.push_back(flag ? 3 : 0);

    CZRMassSpectrum fresh;
    CZRMassSpectrum full = WithAllArrays();
    for (CZRMassSpectrum* s : {&fresh, &full}) {
      EXPECT_TRUE(s->Resize(3, has(0), has(1), has(2), has(3)));
      EXPECT_EQ(PresenceFlags(*s), flags);
      EXPECT_EQ(Lengths(*s), lengths);
    }
  }
}

TEST(MassSpectrumResize, ToZeroClears) {
  CZRMassSpectrum s = WithAllArrays();
  s.UpdateStatistics();
  EXPECT_TRUE(s.Resize(0, true, true, true, true));
  EXPECT_EQ(s.GetCount(), 0);
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 0));
  EXPECT_TRUE(s.AreStatisticsStale());
}

TEST(MassSpectrumSetSize, KeepsTheOptionalArraysInUse) {
  CZRMassSpectrum s = WithAllArrays();
  s.EnablePointData(false);
  s.EnablePointMarks(false);
  EXPECT_TRUE(s.SetSize(3));
  EXPECT_EQ(s.GetCount(), 3);
  EXPECT_EQ(Lengths(s), (std::vector<std::size_t>{3, 3, 3, 0, 3, 0}));
}

TEST(MassSpectrumSetSize, MakesTheStatisticsStaleEvenAtTheSameCount) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  EXPECT_TRUE(s.SetSize(2));
  EXPECT_TRUE(s.AreStatisticsStale());
  EXPECT_EQ(s.MassVector(), (HostDoubles{1, 2}));
}

TEST(MassSpectrumSetSize, RepairsArraysOfAnotherLengthAtTheSameCount) {
  for (const std::size_t length : {0U, 1U, 2U, 4U, 9U}) {
    SCOPED_TRACE(length);
    CZRMassSpectrum masses = MakeSpectrum({1, 2, 3}, {4, 5, 6});
    masses.AssignMasses(HostDoubles(length, 8));
    CZRMassSpectrum intensities = MakeSpectrum({1, 2, 3}, {4, 5, 6});
    intensities.AssignIntensities(HostDoubles(length, 8));
    for (CZRMassSpectrum* s : {&masses, &intensities}) {
      EXPECT_TRUE(s->SetSize(3));
      EXPECT_EQ(s->GetCount(), 3);
      EXPECT_EQ(s->MassVector().size(), 3U);
      EXPECT_EQ(s->IntensityVector().size(), 3U);
    }
    EXPECT_EQ(masses.GetMass(2), length > 2 ? 8.0 : 0.0);
  }
}

TEST(MassSpectrumSetSize, MinusOneDeliberatelySetsTheCountAndKeepsThePoints) {
  CZRMassSpectrum s = WithAllArrays();
  s.UpdateStatistics();
  EXPECT_FALSE(s.SetSize(-1));
  EXPECT_EQ(s.GetCount(), -1);
  EXPECT_TRUE(s.AreStatisticsStale());
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 2));
}

TEST(MassSpectrumSetSize, AtCountMinusOneNothingIsAPointUntilTheNextSizing) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.SetSize(-1);
  double low = 7;
  double high = 8;
  int first = 0;
  int last = 0;
  EXPECT_FALSE(s.GetMassRange(low, high));
  EXPECT_FALSE(s.FindIndexRange(0, 9, first, last));
  EXPECT_EQ(s.GetMaxIntensityInRange(0, 9), 0.0);
  EXPECT_EQ(s.GetIntensitySumInRange(0, 9), 0.0);
  EXPECT_EQ(s.GetMass(0), 0.0);
  EXPECT_FALSE(s.SetMass(0, 5));
  EXPECT_EQ(s.GetTotalIntensity(), 0.0);
  EXPECT_TRUE(s.SetSize(3));
  EXPECT_EQ(s.MassVector(), (HostDoubles{1, 2, 0}));
}

TEST(MassSpectrumClear, FreesThePointsAndKeepsTheAttributes) {
  CZRMassSpectrum s = WithAllArrays();
  for (const MemberCase& member : kAttributes) member.change(s);
  s.UpdateStatistics();
  s.Clear();
  EXPECT_EQ(s.GetCount(), 0);
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 0));
  EXPECT_EQ(s.GetMasses(), nullptr);
  EXPECT_TRUE(s.AreStatisticsStale());
  for (const MemberCase& member : kAttributes) {
    if (std::string(member.name) == "statistics stale") continue;  // set above
    EXPECT_TRUE(member.isChanged(s)) << member.name;
  }
}

TEST(MassSpectrumClear, KeepsTheUseOfOptionalArraysForTheNextSize) {
  CZRMassSpectrum s = WithAllArrays();
  s.Clear();
  EXPECT_EQ(PresenceFlags(s), std::vector<bool>(4, true));
  EXPECT_TRUE(s.SetSize(2));
  EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 2));
  EXPECT_EQ(s.GetPointFlags()[1], 0);
}

// --- Optional arrays

struct OptionalArray {
  const char* name;
  std::size_t index;  // in Lengths
  void (CZRMassSpectrum::*enable)(bool);
  bool (CZRMassSpectrum::*has)() const;
};

const OptionalArray kOptionalArrays[] = {
    {"flags", 2, &CZRMassSpectrum::EnablePointFlags, &CZRMassSpectrum::HasPointFlags},
    {"data", 3, &CZRMassSpectrum::EnablePointData, &CZRMassSpectrum::HasPointData},
    {"values", 4, &CZRMassSpectrum::EnablePointValues, &CZRMassSpectrum::HasPointValues},
    {"marks", 5, &CZRMassSpectrum::EnablePointMarks, &CZRMassSpectrum::HasPointMarks},
};

TEST(MassSpectrumOptionalArrays, EnableAddsOneArrayAndDisableFreesIt) {
  for (const OptionalArray& array : kOptionalArrays) {
    SCOPED_TRACE(array.name);
    CZRMassSpectrum s(3U);
    std::vector<std::size_t> lengths = {3, 3, 0, 0, 0, 0};
    (s.*array.enable)(true);
    lengths[array.index] = 3;
    EXPECT_TRUE((s.*array.has)());
    EXPECT_EQ(Lengths(s), lengths);

    (s.*array.enable)(false);
    lengths[array.index] = 0;
    EXPECT_FALSE((s.*array.has)());
    EXPECT_EQ(Lengths(s), lengths);
    EXPECT_EQ(PresenceFlags(s), std::vector<bool>(4, false));
  }
}

TEST(MassSpectrumOptionalArrays, EnableOnAnEmptySpectrumDoesNothing) {
  for (const OptionalArray& array : kOptionalArrays) {
    CZRMassSpectrum s;
    (s.*array.enable)(true);
    EXPECT_FALSE((s.*array.has)()) << array.name;
    EXPECT_EQ(Lengths(s), std::vector<std::size_t>(6, 0)) << array.name;
  }
}

TEST(MassSpectrumOptionalArrays, EnabledArraysStartZeroedAndKeepTheirValuesWhenEnabledAgain) {
  CZRMassSpectrum s(2U);
  for (const OptionalArray& array : kOptionalArrays) (s.*array.enable)(true);
  EXPECT_EQ(s.GetPointFlags()[1], 0);
  EXPECT_EQ(s.GetPointData()[1], nullptr);
  EXPECT_EQ(s.GetPointValues()[1], 0);
  EXPECT_EQ(s.GetPointMarks()[1], 0);
  s.GetPointFlags()[1] = 1;
  s.GetPointData()[1] = &s;
  s.GetPointValues()[1] = 2;
  s.GetPointMarks()[1] = 3;
  for (const OptionalArray& array : kOptionalArrays) (s.*array.enable)(true);
  EXPECT_EQ(s.GetPointFlags()[1], 1);
  EXPECT_EQ(s.GetPointData()[1], &s);
  EXPECT_EQ(s.GetPointValues()[1], 2);
  EXPECT_EQ(s.GetPointMarks()[1], 3);
}

TEST(MassSpectrumOptionalArrays, PresenceFlagsStandInTheContractsOrder) {
  // Offsets 156 to 159: flags, values, data, marks.
  CZRMassSpectrum s(1U);
  s.EnablePointValues(true);
  EXPECT_TRUE(ContractMember<bool>(s, 157));
  s.EnablePointData(true);
  EXPECT_TRUE(ContractMember<bool>(s, 158));
  EXPECT_FALSE(ContractMember<bool>(s, 156));
  EXPECT_FALSE(ContractMember<bool>(s, 159));
}

TEST(MassSpectrum, SwapPointsExchangesPointsAndMakesBothStatisticsStale) {
  CZRMassSpectrum one(2);
  CZRMassSpectrum other(3);
  one.SetTitle(HostString(L"one"));
  one.EnablePointMarks(true);
  one.UpdateStatistics();
  other.UpdateStatistics();
  one.SwapPoints(other);
  EXPECT_EQ(one.GetCount(), 3);
  EXPECT_EQ(other.GetCount(), 2);
  EXPECT_FALSE(one.HasPointMarks());
  EXPECT_TRUE(other.HasPointMarks());
  EXPECT_EQ(one.GetTitle(), HostString(L"one"));
  EXPECT_TRUE(one.AreStatisticsStale());
  EXPECT_TRUE(other.AreStatisticsStale());
}

// --- Elements

TEST(MassSpectrumElements, IndexesOutsideTheCountAreRefused) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  for (const int i : {-1, 2, 3, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(s.GetMass(i), 0.0) << i;
    EXPECT_FALSE(s.SetMass(i, 9)) << i;
    EXPECT_FALSE(s.SetIntensity(i, 9)) << i;
  }
  EXPECT_FALSE(s.AreStatisticsStale());
  EXPECT_EQ(s.MassVector(), (HostDoubles{1, 2}));
  EXPECT_EQ(s.IntensityVector(), (HostDoubles{3, 4}));
}

TEST(MassSpectrumElements, SettersStoreAndMakeTheStatisticsStale) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  EXPECT_TRUE(s.SetMass(1, 8));
  EXPECT_TRUE(s.AreStatisticsStale());
  s.UpdateStatistics();
  EXPECT_TRUE(s.SetIntensity(0, 9));
  EXPECT_TRUE(s.AreStatisticsStale());
  EXPECT_EQ(s.GetMass(1), 8.0);
  EXPECT_EQ(s.GetMasses()[1], 8.0);
  EXPECT_EQ(s.GetIntensities()[0], 9.0);
}

TEST(MassSpectrumElements, CopyFillsWhatTheArrayHolds) {
  const double values[] = {7, 8, 9};
  CZRMassSpectrum s(2U);
  s.UpdateStatistics();
  s.CopyMasses(values);
  EXPECT_EQ(s.MassVector(), (HostDoubles{7, 8}));
  EXPECT_TRUE(s.AreStatisticsStale());
  s.UpdateStatistics();
  s.CopyIntensities(values + 1);
  EXPECT_EQ(s.IntensityVector(), (HostDoubles{8, 9}));
  EXPECT_TRUE(s.AreStatisticsStale());
}

TEST(MassSpectrumElements, CopyIntoAnEmptySpectrumChangesNothing) {
  CZRMassSpectrum s;
  s.UpdateStatistics();
  s.CopyMasses(nullptr);
  s.CopyIntensities(nullptr);
  EXPECT_FALSE(s.AreStatisticsStale());
  EXPECT_EQ(s.GetMasses(), nullptr);
}

TEST(MassSpectrumElements, AssignReplacesTheArrayAndLeavesTheCount) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  s.AssignMasses({5, 6, 7});
  EXPECT_TRUE(s.AreStatisticsStale());
  s.UpdateStatistics();
  s.AssignIntensities({8});
  EXPECT_TRUE(s.AreStatisticsStale());
  EXPECT_EQ(s.GetCount(), 2);
  EXPECT_EQ(s.MassVector(), (HostDoubles{5, 6, 7}));
  EXPECT_EQ(s.IntensityVector(), HostDoubles{8});
}

// --- Attributes

TEST(MassSpectrumAttributes, SettersStoreAtTheContractsOffsets) {
  CZRMassSpectrum s;
  s.SetCentroided(false);
  s.SetMSLevel(2);
  s.SetScanType(4);
  s.SetPolarity(3);
  s.SetPrecursorMass(500.25);
  s.SetStartTime(1.5);
  s.SetEndTime(2.5);
  s.SetFirstScan(10);
  s.SetLastScan(11);
  s.SetScanAuxValue(35.5);
  s.SetTitle(L"title");
  s.SetLabel(L"label");
  EXPECT_FALSE(s.IsCentroided());
  EXPECT_FALSE(ContractMember<bool>(s, 192));
  EXPECT_EQ(s.GetMSLevel(), 2);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 236), 2);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 304), 4);
  EXPECT_EQ(s.GetPolarity(), 3);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 252), 3);
  EXPECT_EQ(ContractMember<double>(s, 240), 500.25);
  EXPECT_EQ(s.GetStartTime(), 1.5);
  EXPECT_EQ(ContractMember<double>(s, 384), 1.5);
  EXPECT_EQ(ContractMember<double>(s, 392), 2.5);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 416), 10);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 420), 11);
  EXPECT_EQ(s.GetScanAuxValue(), 35.5);
  EXPECT_EQ(ContractMember<double>(s, 512), 35.5);
  EXPECT_EQ(ContractMember<HostString>(s, 160), L"title");
  EXPECT_EQ(ContractMember<HostString>(s, 480), L"label");
}

TEST(MassSpectrumAttributes, AFirstDriftBinIsAlsoTheLastWhileThatIsUnset) {
  CZRMassSpectrum s;
  s.SetFirstDriftBin(5);
  EXPECT_EQ(s.GetFirstDriftBin(), 5);
  EXPECT_EQ(s.GetLastDriftBin(), 5);
  s.SetLastDriftBin(9);
  s.SetFirstDriftBin(3);
  EXPECT_EQ(s.GetFirstDriftBin(), 3);
  EXPECT_EQ(s.GetLastDriftBin(), 9);
  for (const int unset : {0, -4}) {
    s.SetLastDriftBin(unset);
    s.SetFirstDriftBin(7);
    EXPECT_EQ(s.GetLastDriftBin(), 7) << unset;
  }
  s.SetLastDriftBin(1);
  s.SetFirstDriftBin(2);
  EXPECT_EQ(s.GetLastDriftBin(), 1);
}

TEST(MassSpectrumAttributes, AFirstDriftValueIsAlsoTheLastWhileThatIsNotPositive) {
  CZRMassSpectrum s;
  s.SetFirstDriftValue(5.5);
  EXPECT_EQ(s.GetFirstDriftValue(), 5.5);
  EXPECT_EQ(s.GetLastDriftValue(), 5.5);
  s.SetLastDriftValue(0.001);
  s.SetFirstDriftValue(3.5);
  EXPECT_EQ(s.GetFirstDriftValue(), 3.5);
  EXPECT_EQ(s.GetLastDriftValue(), 0.001);
  s.SetLastDriftValue(-1);
  s.SetFirstDriftValue(2.5);
  EXPECT_EQ(s.GetLastDriftValue(), 2.5);
}

}  // namespace
}  // namespace zrml
