#include "spectrum/mass_spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/contract_member.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CZRMassSpectrum MakeSpectrum(const Doubles& masses, const Doubles& intensities) {
  CZRMassSpectrum spectrum;
  spectrum.AssignMasses(masses);
  spectrum.AssignIntensities(intensities);
  spectrum.SetSize(static_cast<int>(masses.size()));
  return spectrum;
}

/// The lengths of the six point arrays: masses, intensities, flags, data, values, marks.
std::vector<std::size_t> Lengths(CZRMassSpectrum& s) {
  return {s.MassVector().size(),
          s.IntensityVector().size(),
          ContractMember<HostVector<std::uint8_t>>(s, 56).size(),
          ContractMember<HostVector<void*>>(s, 80).size(),
          ContractMember<HostVector<std::int32_t>>(s, 104).size(),
          ContractMember<HostVector<std::uint8_t>>(s, 128).size()};
}

std::vector<bool> PresenceFlags(const CZRMassSpectrum& s) {
  return {s.HasPointFlags(), s.HasPointData(), s.HasPointValues(), s.HasPointMarks()};
}

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
    EXPECT_TRUE(ContractMember<Doubles>(s, offset).empty());
  for (const std::size_t offset : {432, 440, 448, 456, 464, 472, 536}) {
    EXPECT_EQ(ContractMember<std::int64_t>(s, offset), 0) << offset;
  }
  EXPECT_EQ(ContractMember<std::uint8_t>(s, 520), 0);
}

TEST(MassSpectrum, OneOfAGivenCountHasZeroedPointsAndNoOptionalArrays) {
  CZRMassSpectrum s(3U);
  EXPECT_EQ(s.GetCount(), 3);
  EXPECT_EQ(s.MassVector(), Doubles(3, 0.0));
  EXPECT_EQ(s.IntensityVector(), Doubles(3, 0.0));
  EXPECT_EQ(PresenceFlags(s), std::vector<bool>(4, false));
  EXPECT_EQ(CZRMassSpectrum(0U).GetCount(), 0);
}

// --- Members that are copied

/// One member at its offset in the contract, with ways to change it and to see whether it holds the changed
/// value.
struct MemberCase {
  const char* name;
  void (*change)(CZRMassSpectrum&);
  bool (*isChanged)(CZRMassSpectrum&);
};

template <class T, std::size_t offset>
MemberCase Number(const char* name) {
  return {name, [](CZRMassSpectrum& s) { ContractMember<T>(s, offset) = static_cast<T>(7); },
          [](CZRMassSpectrum& s) { return ContractMember<T>(s, offset) == static_cast<T>(7); }};
}

template <std::size_t offset>
MemberCase Flag(const char* name, bool (*initial)()) {
  return initial() ? MemberCase{name, [](CZRMassSpectrum& s) { ContractMember<bool>(s, offset) = false; },
                                [](CZRMassSpectrum& s) { return !ContractMember<bool>(s, offset); }}
                   : MemberCase{name, [](CZRMassSpectrum& s) { ContractMember<bool>(s, offset) = true; },
                                [](CZRMassSpectrum& s) { return ContractMember<bool>(s, offset); }};
}

template <std::size_t offset>
MemberCase Text(const char* name) {
  return {name,
          [](CZRMassSpectrum& s) { ContractMember<HostString>(s, offset) = L"a text of more than seven"; },
          [](CZRMassSpectrum& s) {
            return ContractMember<HostString>(s, offset) == L"a text of more than seven";
          }};
}

template <class T, std::size_t offset>
MemberCase Vector(const char* name) {
  return {name, [](CZRMassSpectrum& s) { ContractMember<HostVector<T>>(s, offset).resize(5); },
          [](CZRMassSpectrum& s) { return ContractMember<HostVector<T>>(s, offset).size() == 5; }};
}

bool True() { return true; }

/// What CopyAttributes copies: all of it, whatever the points.
const std::vector<MemberCase> kAttributes = {
    Text<160>("title"),
    Flag<192>("centroided", True),
    Flag<193>("statistics stale", True),
    Number<double, 200>("total intensity"),
    Number<double, 208>("base peak mass"),
    Number<double, 216>("base peak intensity"),
    Number<double, 224>("min intensity"),
    Number<std::int32_t, 232>("base peak index"),
    Number<std::int32_t, 236>("MS level"),
    Number<double, 240>("precursor mass"),
    Number<std::int16_t, 248>("precursor companion"),
    Number<std::int32_t, 252>("polarity"),
    Vector<SpectrumPair, 256>("reserved pairs"),
    Vector<double, 280>("reserved values"),
    Number<std::int32_t, 304>("scan type"),
    Number<double, 384>("start time"),
    Number<double, 392>("end time"),
    Number<double, 400>("first drift value"),
    Number<double, 408>("last drift value"),
    Number<std::int32_t, 416>("first scan"),
    Number<std::int32_t, 420>("last scan"),
    Number<std::int32_t, 424>("first drift bin"),
    Number<std::int32_t, 428>("last drift bin"),
    Text<480>("label"),
    Number<double, 512>("aux value"),
    Number<std::uint8_t, 520>("reserved byte"),
    Number<double, 528>("scale"),
    Number<std::int64_t, 536>("reserved word"),
};

/// What copying a whole spectrum copies besides.
const std::vector<MemberCase> kWholeCopyOnly = {
    Vector<double, 312>("uncopied vector 1"),
    Vector<double, 336>("uncopied vector 2"),
    Vector<double, 360>("uncopied vector 3"),
    {"release function", [](CZRMassSpectrum& s) { s.SetPointDataRelease([](void*, void*) {}, nullptr); },
     [](CZRMassSpectrum& s) { return ContractMember<std::int64_t>(s, 432) != 0; }},
    Number<std::int64_t, 440>("release context"),
};

/// The points: masses, intensities, the optional arrays, count and presence flags.
CZRMassSpectrum WithAllArrays() {
  CZRMassSpectrum s = MakeSpectrum({100, 200}, {3, 4});
  s.Resize(2, true, true, true, true);
  s.GetPointFlags()[1] = 11;
  s.GetPointData()[1] = &s;
  s.GetPointValues()[1] = -12;
  s.GetPointMarks()[1] = 13;
  return s;
}

void ExpectSamePoints(CZRMassSpectrum& a, CZRMassSpectrum& b) {
  EXPECT_EQ(a.GetCount(), b.GetCount());
  EXPECT_EQ(a.MassVector(), b.MassVector());
  EXPECT_EQ(a.IntensityVector(), b.IntensityVector());
  EXPECT_EQ(PresenceFlags(a), PresenceFlags(b));
  for (const std::size_t offset : {56, 128}) {
    EXPECT_EQ(ContractMember<HostVector<std::uint8_t>>(a, offset),
              ContractMember<HostVector<std::uint8_t>>(b, offset));
  }
  EXPECT_EQ(ContractMember<HostVector<void*>>(a, 80), ContractMember<HostVector<void*>>(b, 80));
  EXPECT_EQ(ContractMember<HostVector<std::int32_t>>(a, 104),
            ContractMember<HostVector<std::int32_t>>(b, 104));
}

/// Hands a spectrum with one changed member to `copy` for every case, and expects the change in the result or
/// not.
template <class Copy>
void ExpectCopied(const std::vector<MemberCase>& cases, bool copied, Copy copy) {
  for (const MemberCase& member : cases) {
    CZRMassSpectrum source;
    EXPECT_FALSE(member.isChanged(source)) << member.name;
    member.change(source);
    CZRMassSpectrum result;
    copy(source, result);
    EXPECT_EQ(member.isChanged(result), copied) << member.name;
    EXPECT_TRUE(member.isChanged(source)) << member.name;
  }
}

TEST(MassSpectrumCopy, CopyAttributesCopiesEveryAttributeAndNothingElse) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) { to.CopyAttributes(from); };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, false, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum target = MakeSpectrum({1, 2, 3}, {4, 5, 6});
  CZRMassSpectrum before = target;
  target.CopyAttributes(source);
  ExpectSamePoints(target, before);
}

TEST(MassSpectrumCopy, CopyAttributesOfItselfChangesNothing) {
  CZRMassSpectrum s = WithAllArrays();
  for (const MemberCase& member : kAttributes) member.change(s);
  CZRMassSpectrum before = s;
  s.CopyAttributes(s);
  ExpectSamePoints(s, before);
  for (const MemberCase& member : kAttributes) EXPECT_TRUE(member.isChanged(s)) << member.name;
}

TEST(MassSpectrumCopy, CopyConstructionCopiesEveryMember) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum made(from);
    to.Swap(made);
  };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, true, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum made(source);
  ExpectSamePoints(made, source);
}

TEST(MassSpectrumCopy, AssignmentCopiesEveryMember) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) { to = from; };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, true, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum target = MakeSpectrum({1, 2, 3}, {4, 5, 6});
  target = source;
  ExpectSamePoints(target, source);
}

TEST(MassSpectrumCopy, MoveTakesEveryMember) {
  const auto construct = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum copy(from);
    CZRMassSpectrum made(std::move(copy));
    to.Swap(made);
  };
  const auto assign = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum copy(from);
    to = std::move(copy);
  };
  for (const auto& cases : {kAttributes, kWholeCopyOnly}) {
    ExpectCopied(cases, true, construct);
    ExpectCopied(cases, true, assign);
  }

  CZRMassSpectrum expected = WithAllArrays();
  CZRMassSpectrum source = expected;
  const double* const masses = source.GetMasses();
  CZRMassSpectrum made(std::move(source));
  ExpectSamePoints(made, expected);
  EXPECT_EQ(made.GetMasses(), masses);  // taken, not copied
}

TEST(MassSpectrumCopy, CopiesAreDeep) {
  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum copy(source);
  CZRMassSpectrum assigned;
  assigned = source;
  source.SetMass(0, 555);
  source.SetIntensity(1, 666);
  source.GetPointFlags()[1] = 77;
  for (CZRMassSpectrum* other : {&copy, &assigned}) {
    EXPECT_EQ(other->MassVector(), (Doubles{100, 200}));
    EXPECT_EQ(other->IntensityVector(), (Doubles{3, 4}));
    EXPECT_EQ(other->GetPointFlags()[1], 11);
  }
}

TEST(MassSpectrumCopy, SelfAssignmentChangesNothing) {
  CZRMassSpectrum s = WithAllArrays();
  s.SetTitle(L"title");
  CZRMassSpectrum before = s;
  const CZRMassSpectrum& same = s;
  s = same;
  ExpectSamePoints(s, before);
  EXPECT_EQ(s.GetTitle(), L"title");
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
  EXPECT_EQ(s.MassVector(), (Doubles{100, 200, 0, 0}));
  EXPECT_EQ(s.IntensityVector(), (Doubles{3, 4, 0, 0}));
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
  EXPECT_EQ(s.MassVector(), Doubles{100});
  EXPECT_EQ(s.IntensityVector(), Doubles{3});
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
  EXPECT_EQ(s.MassVector(), (Doubles{1, 2}));
}

TEST(MassSpectrumSetSize, RepairsArraysOfAnotherLengthAtTheSameCount) {
  for (const std::size_t length : {0U, 1U, 2U, 4U, 9U}) {
    SCOPED_TRACE(length);
    CZRMassSpectrum masses = MakeSpectrum({1, 2, 3}, {4, 5, 6});
    masses.AssignMasses(Doubles(length, 8));
    CZRMassSpectrum intensities = MakeSpectrum({1, 2, 3}, {4, 5, 6});
    intensities.AssignIntensities(Doubles(length, 8));
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
  EXPECT_EQ(s.MassVector(), (Doubles{1, 2, 0}));
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

// --- Release of point data

/// Data of one spectrum and a record of how often each was released.
class DataOwner {
 public:
  static constexpr int kPoints = 5;

  /// A spectrum whose point i holds datum i.
  CZRMassSpectrum Make() {
    CZRMassSpectrum s(kPoints);
    s.EnablePointData(true);
    for (int i = 0; i < kPoints; ++i) s.GetPointData()[i] = &releases_[i];
    s.SetPointDataRelease(&DataOwner::Release, this);
    return s;
  }

  /// How often each datum was released, as text: "00011".
  std::string Releases() const {
    std::string text;
    for (const int count : releases_) text += static_cast<char>('0' + count);
    return text;
  }

  int NullReleases() const { return nullReleases_; }

 private:
  static void Release(void* datum, void* context) {
    auto* const owner = static_cast<DataOwner*>(context);
    ++*(datum ? static_cast<int*>(datum) : &owner->nullReleases_);
  }

  int releases_[kPoints] = {};
  int nullReleases_ = 0;
};

TEST(MassSpectrumRelease, HandsOutWhatASizingRemoves) {
  const struct {
    const char* name;
    void (*act)(CZRMassSpectrum&);
    const char* releases;
  } cases[] = {
      {"shrink", [](CZRMassSpectrum& s) { s.Resize(3, false, true, false, false); }, "00011"},
      {"shrink by SetSize", [](CZRMassSpectrum& s) { s.SetSize(1); }, "01111"},
      {"same size", [](CZRMassSpectrum& s) { s.Resize(5, true, true, true, true); }, "00000"},
      {"grow", [](CZRMassSpectrum& s) { s.SetSize(9); }, "00000"},
      {"without data", [](CZRMassSpectrum& s) { s.Resize(5, false, false, false, false); }, "11111"},
      {"grow without data", [](CZRMassSpectrum& s) { s.Resize(9, false, false, false, false); }, "11111"},
      {"to zero", [](CZRMassSpectrum& s) { s.Resize(0, false, true, false, false); }, "11111"},
      {"to minus one", [](CZRMassSpectrum& s) { s.Resize(-1, false, false, false, false); }, "00000"},
      {"clear", [](CZRMassSpectrum& s) { s.Clear(); }, "11111"},
      {"disable", [](CZRMassSpectrum& s) { s.EnablePointData(false); }, "11111"},
      {"enable again", [](CZRMassSpectrum& s) { s.EnablePointData(true); }, "00000"},
      {"twice",
       [](CZRMassSpectrum& s) {
         s.Clear();
         s.Clear();
       },
       "11111"},
      {"unset",
       [](CZRMassSpectrum& s) {
         s.SetPointDataRelease(nullptr, nullptr);
         s.Clear();
       },
       "00000"},
      {"copy attributes", [](CZRMassSpectrum& s) { s.CopyAttributes(CZRMassSpectrum()); }, "00000"},
      {"assign an empty one",
       [](CZRMassSpectrum& s) { s = static_cast<const CZRMassSpectrum&>(CZRMassSpectrum()); }, "11111"},
      {"assign itself", [](CZRMassSpectrum& s) { s = static_cast<const CZRMassSpectrum&>(s); }, "00000"},
  };
  for (const auto& expected : cases) {
    DataOwner owner;
    CZRMassSpectrum s = owner.Make();
    ASSERT_EQ(owner.Releases(), "00000");
    expected.act(s);
    EXPECT_EQ(owner.Releases(), expected.releases) << expected.name;
    EXPECT_EQ(owner.NullReleases(), 0) << expected.name;
  }
}

TEST(MassSpectrumRelease, TheDestructorHandsOutEveryDatumOnce) {
  DataOwner owner;
  { const CZRMassSpectrum s = owner.Make(); }
  EXPECT_EQ(owner.Releases(), "11111");
}

TEST(MassSpectrumRelease, NullDataAreHandedOutToo) {
  DataOwner owner;
  CZRMassSpectrum s = owner.Make();
  s.SetSize(7);
  s.Clear();
  EXPECT_EQ(owner.Releases(), "11111");
  EXPECT_EQ(owner.NullReleases(), 2);
}

TEST(MassSpectrumRelease, WithoutPointDataNothingIsHandedOut) {
  DataOwner owner;
  CZRMassSpectrum s = owner.Make();
  s.EnablePointData(false);
  s.Resize(2, true, false, true, true);
  s.Clear();
  EXPECT_EQ(owner.Releases(), "11111");
  EXPECT_EQ(owner.NullReleases(), 0);
}

TEST(MassSpectrumRelease, AMovedSpectrumHandsOutEachDatumOnce) {
  DataOwner taken;
  DataOwner replaced;
  {
    CZRMassSpectrum source = taken.Make();
    CZRMassSpectrum constructed(std::move(source));
    EXPECT_EQ(taken.Releases(), "00000");
    CZRMassSpectrum target = replaced.Make();
    target = std::move(constructed);
    EXPECT_EQ(taken.Releases(), "00000");
  }
  EXPECT_EQ(taken.Releases(), "11111");
  EXPECT_EQ(replaced.Releases(), "11111");
}

TEST(MassSpectrumRelease, ACopyHoldsTheSameDataAndReleasesThemAgain) {
  // Deliberate: data are not duplicated, and whoever sets the function answers for a single release.
  DataOwner owner;
  {
    CZRMassSpectrum copy(owner.Make());
    const CZRMassSpectrum second(copy);
  }
  EXPECT_EQ(owner.Releases(), "22222");
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
  EXPECT_EQ(s.MassVector(), (Doubles{1, 2}));
  EXPECT_EQ(s.IntensityVector(), (Doubles{3, 4}));
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
  EXPECT_EQ(s.MassVector(), (Doubles{7, 8}));
  EXPECT_TRUE(s.AreStatisticsStale());
  s.UpdateStatistics();
  s.CopyIntensities(values + 1);
  EXPECT_EQ(s.IntensityVector(), (Doubles{8, 9}));
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
  EXPECT_EQ(s.MassVector(), (Doubles{5, 6, 7}));
  EXPECT_EQ(s.IntensityVector(), Doubles{8});
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

// --- Statistics

struct Statistics {
  double total;
  double baseMass;
  double baseIntensity;
  int baseIndex;
  double min;
};

/// Reads the cached values without updating them.
void ExpectStatistics(CZRMassSpectrum& s, const Statistics& expected) {
  EXPECT_EQ(ContractMember<double>(s, 200), expected.total);
  EXPECT_EQ(ContractMember<double>(s, 208), expected.baseMass);
  EXPECT_EQ(ContractMember<double>(s, 216), expected.baseIntensity);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 232), expected.baseIndex);
  EXPECT_EQ(ContractMember<double>(s, 224), expected.min);
}

TEST(MassSpectrumStatistics, DescribeTheIntensities) {
  const struct {
    const char* name;
    Doubles intensities;  // of masses 100, 101, ...
    Statistics expected;
  } cases[] = {
      {"one point", {5}, {5, 100, 5, 0, 5}},
      {"several", {2, 8, 1, 4}, {15, 101, 8, 1, 1}},
      {"the first of equal highest", {2, 8, 8, 1}, {19, 101, 8, 1, 1}},
      {"all equal", {3, 3, 3}, {9, 100, 3, 0, 3}},
      {"all zero", {0, 0}, {0, 100, 0, 0, 0}},
      {"all negative", {-2, -1, -3}, {-6, 101, -1, 1, -3}},
      {"infinite", {1, kInfinity, 2}, {kInfinity, 101, kInfinity, 1, 1}},
      // Nothing is above the start of the search, the lowest finite number.
      {"lowest", {-kLargest}, {-kLargest, 0, -kLargest, 0, -kLargest}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    Doubles masses;
    for (std::size_t i = 0; i < test.intensities.size(); ++i)
      masses.push_back(100.0 + static_cast<double>(i));
    CZRMassSpectrum s = MakeSpectrum(masses, test.intensities);
    s.UpdateStatistics();
    ExpectStatistics(s, test.expected);
    EXPECT_FALSE(s.AreStatisticsStale());
  }
}

TEST(MassSpectrumStatistics, NanIsNeitherHighestNorLowest) {
  CZRMassSpectrum s = MakeSpectrum({1, 2, 3, 4}, {kNan, 7, kNan, 5});
  EXPECT_EQ(s.GetBasePeakIntensity(), 7.0);
  EXPECT_EQ(s.GetBasePeakMass(), 2.0);
  EXPECT_EQ(s.GetBasePeakIndex(), 1);
  EXPECT_EQ(s.GetMinIntensity(), 5.0);
  EXPECT_TRUE(std::isnan(s.GetTotalIntensity()));
}

TEST(MassSpectrumStatistics, OfNanAloneAreTheStartsOfTheSearch) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {kNan, kNan});
  EXPECT_EQ(s.GetBasePeakIntensity(), -kLargest);
  EXPECT_EQ(s.GetMinIntensity(), kLargest);
  EXPECT_EQ(s.GetBasePeakMass(), 0.0);
  EXPECT_EQ(s.GetBasePeakIndex(), 0);
}

TEST(MassSpectrumStatistics, OfAnEmptySpectrumAreZeroAndCurrent) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  s.Clear();
  s.UpdateStatistics();
  ExpectStatistics(s, {0, 0, 0, 0, 0});
  EXPECT_FALSE(s.AreStatisticsStale());
}

TEST(MassSpectrumStatistics, StayCachedUntilInvalidated) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  EXPECT_EQ(s.GetBasePeakIntensity(), 4.0);
  s.GetIntensities()[0] = 10;  // past the spectrum's knowledge
  EXPECT_EQ(s.GetBasePeakIntensity(), 4.0);
  EXPECT_EQ(s.GetMinIntensity(), 3.0);
  s.InvalidateStatistics();
  EXPECT_EQ(s.GetBasePeakIntensity(), 10.0);
  EXPECT_EQ(s.GetMinIntensity(), 4.0);
}

TEST(MassSpectrumStatistics, CountOnlyThePointsWithinTheCount) {
  CZRMassSpectrum longer = MakeSpectrum({1, 2}, {3, 4});
  longer.AssignMasses({1, 2, 3});
  longer.AssignIntensities({3, 4, 99});
  longer.UpdateStatistics();
  ExpectStatistics(longer, {7, 2, 4, 1, 3});

  CZRMassSpectrum shorter = MakeSpectrum({1, 2, 3}, {3, 4, 99});
  shorter.AssignMasses({1, 2});
  shorter.AssignIntensities({3, 4});
  shorter.UpdateStatistics();
  ExpectStatistics(shorter, {7, 2, 4, 1, 3});
}

TEST(MassSpectrumStatistics, OfAnEmptiedArrayAreZero) {
  CZRMassSpectrum masses = MakeSpectrum({1, 2}, {3, 4});
  masses.AssignMasses({});
  CZRMassSpectrum intensities = MakeSpectrum({1, 2}, {3, 4});
  intensities.AssignIntensities({});
  for (CZRMassSpectrum* s : {&masses, &intensities}) {
    s->UpdateStatistics();
    ExpectStatistics(*s, {0, 0, 0, 0, 0});
  }
}

// --- Ranges

TEST(MassSpectrumRange, MassRangeIsTheFirstAndLastMass) {
  double low = 7;
  double high = 8;
  EXPECT_FALSE(CZRMassSpectrum().GetMassRange(low, high));
  EXPECT_EQ(low, 7.0);
  EXPECT_EQ(high, 8.0);
  EXPECT_TRUE(MakeSpectrum({5}, {1}).GetMassRange(low, high));
  EXPECT_EQ(low, 5.0);
  EXPECT_EQ(high, 5.0);
  EXPECT_TRUE(MakeSpectrum({9, 1, 4}, {1, 1, 1}).GetMassRange(low, high));
  EXPECT_EQ(low, 9.0);
  EXPECT_EQ(high, 4.0);
}

struct RangeCase {
  const char* name;
  double low;
  double high;
  bool found;
  int first;
  int last;
};

// Of masses 10, 20, 20, 30, 40.
const RangeCase kRanges[] = {
    {"all", 0, 99, true, 0, 4},
    {"all finite numbers", -kLargest, kLargest, true, 0, 4},
    {"all numbers", -kInfinity, kInfinity, true, 0, 4},
    {"exactly the edges", 10, 40, true, 0, 4},
    {"just inside the edges", 10.001, 39.999, true, 1, 3},
    {"one mass", 30, 30, true, 3, 3},
    {"first mass", 10, 10, true, 0, 0},
    {"last mass", 40, 40, true, 4, 4},
    {"below first mass to it", 0, 10, true, 0, 0},
    {"last mass to above", 40, 99, true, 4, 4},
    {"equal masses", 20, 20, true, 1, 2},
    {"around one", 25, 35, true, 3, 3},
    {"from between to the end", 25, 99, true, 3, 4},
    {"from the start to between", 0, 25, true, 0, 2},
    {"between two adjacent masses", 31, 39, false, 0, 0},
    {"a point between two masses", 35, 35, false, 0, 0},
    {"below", 0, 9.999, false, 0, 0},
    {"above", 40.001, 99, false, 0, 0},
    {"reversed", 35, 15, false, 0, 0},
    {"reversed beyond both ends", 99, 0, false, 0, 0},
};

TEST(MassSpectrumRange, IndexRangeHoldsTheMassesFromLowToHigh) {
  const CZRMassSpectrum s = MakeSpectrum({10, 20, 20, 30, 40}, {1, 2, 3, 4, 5});
  for (const RangeCase& range : kRanges) {
    int first = -7;
    int last = -8;
    ASSERT_EQ(s.FindIndexRange(range.low, range.high, first, last), range.found) << range.name;
    if (!range.found) continue;
    EXPECT_EQ(first, range.first) << range.name;
    EXPECT_EQ(last, range.last) << range.name;
  }
}

TEST(MassSpectrumRange, LargestAndSummedIntensityAreOfTheIndexRange) {
  const Doubles intensities = {8, 2, 64, 4, 16};
  const CZRMassSpectrum s = MakeSpectrum({10, 20, 20, 30, 40}, intensities);
  for (const RangeCase& range : kRanges) {
    double max = 0;
    double sum = 0;
    for (int i = range.first; range.found && i <= range.last; ++i) {
      const double intensity = intensities[static_cast<std::size_t>(i)];
      max = std::max(max, intensity);
      sum += intensity;
    }
    EXPECT_EQ(s.GetMaxIntensityInRange(range.low, range.high), max) << range.name;
    EXPECT_EQ(s.GetIntensitySumInRange(range.low, range.high), sum) << range.name;
  }
}

TEST(MassSpectrumRange, OfAnEmptySpectrumIsNothing) {
  const CZRMassSpectrum s;
  int first = 0;
  int last = 0;
  EXPECT_FALSE(s.FindIndexRange(-kLargest, kLargest, first, last));
  EXPECT_EQ(s.GetMaxIntensityInRange(-kLargest, kLargest), 0.0);
  EXPECT_EQ(s.GetIntensitySumInRange(-kLargest, kLargest), 0.0);
}

TEST(MassSpectrumRange, LargestIntensityMayBeNegativeAndIsZeroWithoutAny) {
  EXPECT_EQ(MakeSpectrum({1, 2}, {-5, -3}).GetMaxIntensityInRange(1, 2), -3.0);
  EXPECT_EQ(MakeSpectrum({1, 2}, {kNan, -3}).GetMaxIntensityInRange(1, 2), -3.0);
  EXPECT_EQ(MakeSpectrum({1, 2}, {kNan, kNan}).GetMaxIntensityInRange(1, 2), 0.0);
  EXPECT_EQ(MakeSpectrum({1}, {-kLargest}).GetMaxIntensityInRange(1, 2), 0.0);
  EXPECT_TRUE(std::isnan(MakeSpectrum({1, 2}, {kNan, -3}).GetIntensitySumInRange(1, 2)));
}

TEST(MassSpectrumRange, QueriesDoNotDependOnTheStatistics) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  EXPECT_EQ(s.GetMaxIntensityInRange(1, 1), 3.0);
  EXPECT_TRUE(s.AreStatisticsStale());
}

/// An index range that is given lies within the points.
void ExpectIndexesWithin(const CZRMassSpectrum& s, double low, double high, int points) {
  int first = 0;
  int last = 0;
  if (!s.FindIndexRange(low, high, first, last)) return;
  EXPECT_LE(0, first);
  EXPECT_LE(first, last);
  EXPECT_LT(last, points);
}

TEST(MassSpectrumRange, NanAndUnsortedMassesGiveIndexesWithinThePoints) {
  const Doubles limits = {-kInfinity, 0, 15, 20, 35, 99, kInfinity, kNan};
  const Doubles masses[] = {{10, 20, 30},   {30, 20, 10},   {20, 10, 30},       {kNan, 20, 30},
                            {10, kNan, 30}, {10, 20, kNan}, {kNan, kNan, kNan}, {30, 30, 10}};
  for (const Doubles& values : masses) {
    const CZRMassSpectrum s = MakeSpectrum(values, {1, 1, 1});
    for (const double low : limits) {
      for (const double high : limits) {
        SCOPED_TRACE(testing::Message() << low << " to " << high << " of " << testing::PrintToString(values));
        ExpectIndexesWithin(s, low, high, 3);
        EXPECT_LE(s.GetMaxIntensityInRange(low, high), 1.0);
        EXPECT_LE(s.GetIntensitySumInRange(low, high), 3.0);
      }
    }
  }
}

TEST(MassSpectrumRange, ReplacedArraysAreReadWithinTheirLengthAndTheCount) {
  for (const std::size_t masses : {0U, 1U, 2U, 3U, 6U}) {
    for (const std::size_t intensities : {0U, 1U, 2U, 3U, 6U}) {
      SCOPED_TRACE(testing::Message() << masses << " masses, " << intensities << " intensities");
      CZRMassSpectrum s = MakeSpectrum({1, 2, 3}, {1, 1, 1});
      Doubles ascending;
      while (ascending.size() < masses) ascending.push_back(1.0 + static_cast<double>(ascending.size()));
      s.AssignMasses(ascending);
      s.AssignIntensities(Doubles(intensities, 1.0));
      const auto points = std::min({masses, intensities, std::size_t{3}});

      double low = 0;
      double high = 0;
      if (s.GetMassRange(low, high)) {
        EXPECT_GE(masses, 1U);
        EXPECT_LE(high, 3.0);
      }
      ExpectIndexesWithin(s, 0, 99, 3);
      EXPECT_EQ(s.GetIntensitySumInRange(0, 99), static_cast<double>(points));
      EXPECT_EQ(s.GetMaxIntensityInRange(0, 99), points > 0 ? 1.0 : 0.0);
      for (const int i : {0, 1, 2, 3, 5}) {
        EXPECT_EQ(s.GetMass(i), i < 3 && static_cast<std::size_t>(i) < masses ? i + 1.0 : 0.0);
        EXPECT_EQ(s.SetMass(i, i + 1.0), i < 3 && static_cast<std::size_t>(i) < masses);
        EXPECT_EQ(s.SetIntensity(i, 1.0), i < 3 && static_cast<std::size_t>(i) < intensities);
      }
    }
  }
}

}  // namespace
}  // namespace zrml
