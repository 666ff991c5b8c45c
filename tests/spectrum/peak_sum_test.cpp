#include "spectrum/peak_sum.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/add_spectrum.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

struct List {
  Doubles masses;
  Doubles intensities;
};

// The mass 100 and so many units of 1/2048 more; half of a width of 0.01 is 10.24 units.
double At(int units) { return 100 + units / 2048.0; }

std::vector<std::uint64_t> Bits(PeakSum::Values values) {
  std::vector<std::uint64_t> bits;
  for (const double value : values) bits.push_back(std::bit_cast<std::uint64_t>(value));
  return bits;
}

void ExpectSum(const PeakSum& sum, const List& expected) {
  EXPECT_EQ(Bits(sum.Masses()), Bits(expected.masses)) << testing::PrintToString(sum.Masses());
  EXPECT_EQ(Bits(sum.Intensities()), Bits(expected.intensities)) << testing::PrintToString(sum.Intensities());
}

PeakSum SumOf(const std::vector<List>& lists) {
  PeakSum sum(0.01, lists[0].masses, lists[0].intensities);
  for (std::size_t i = 1; i < lists.size(); ++i) sum.Add(lists[i].masses, lists[i].intensities);
  return sum;
}

TEST(PeakSum, CasesByHand) {
  const struct {
    const char* name;
    std::vector<List> lists;
    List expected;
  } cases[] = {
      {"the first list stays as it is", {{{At(0), At(8)}, {1, 3}}}, {{At(0), At(8)}, {1, 3}}},
      {"equal masses", {{{100, 200}, {1, 2}}, {{100, 150}, {3, 4}}}, {{100, 150, 200}, {4, 4, 2}}},
      {"near masses", {{{At(0), 200}, {1, 5}}, {{At(8)}, {3}}}, {{At(6), 200}, {4, 5}}},
      {"beyond the width", {{{At(0), 200}, {1, 5}}, {{At(11)}, {3}}}, {{At(0), At(11), 200}, {1, 3, 5}}},
      {"below and above all", {{{150}, {5}}, {{100, 200}, {1, 2}}}, {{100, 150, 200}, {1, 5, 2}}},
      // At 0 takes in 8 and moves to 4, within reach of 13, but 8 is in between.
      {"an absorbed peak is in between",
       {{{At(0), At(8), At(13)}, {4, 4, 4}}, {{200}, {1}}},
       {{At(4), At(13), 200}, {8, 4, 1}}},
      // (8 * 4 + 4 * 13) / 12 = 7
      {"what became near merges at the next addition, though that is far away",
       {{{At(0), At(8), At(13)}, {4, 4, 4}}, {{200}, {1}}, {{300}, {1}}},
       {{At(7), 200, 300}, {12, 1, 1}}},
      // What goes into a peak without an intensity above 0 is lost.
      {"negative intensities", {{{At(0), 200}, {-1, 5}}, {{At(8)}, {-3}}}, {{At(0), 200}, {-1, 5}}},
      {"a mass of 0 is dropped", {{{0, 200}, {1, 5}}, {{0}, {1}}}, {{200}, {5}}},
      {"but not when it is all there is", {{{0}, {1}}, {{0}, {2}}}, {{0}, {3}}},
      {"of 0 and -0 that of the stronger", {{{0}, {1}}, {{-0.0}, {2}}}, {{-0.0}, {3}}},
      {"of 0 and -0 that of the list", {{{0}, {2}}, {{-0.0}, {2}}}, {{-0.0}, {4}}},
      // 1e-200 times 1e-200 is 0.
      {"masses that underflow are dropped",
       {{{1e-200, 100}, {1e-200, 1}}, {{200}, {1}}},
       {{100, 200}, {1, 1}}},
      {"a list without peaks", {{{At(0), At(8)}, {1, 3}}, {{}, {}}}, {{At(6)}, {4}}},
  };
  for (const auto& oneCase : cases) {
    SCOPED_TRACE(oneCase.name);
    ExpectSum(SumOf(oneCase.lists), oneCase.expected);
  }
}

// 3 times 100.1, 0x1.9066666666666p+6, lies halfway between two doubles and is rounded down to
// 0x1.2c4ccccccccccp+8, a third of which is two thirds of a unit below 100.1.
TEST(PeakSum, APeakAloneIsWeighedByItselfDeliberately) {
  const double lower = 0x1.9066666666665p+6;
  ExpectSum(SumOf({{{100.1}, {3}}, {{200}, {1}}}), {{lower, 200}, {3, 1}});
  ExpectSum(SumOf({{{100.1}, {1}}, {{100.1}, {2}}}), {{100.1}, {3}});  // all there is
  ExpectSum(SumOf({{{100.1}, {1}}, {{100.1}, {2}}, {{200}, {1}}}), {{lower, 200}, {3, 1}});
  ExpectSum(SumOf({{{1e-200, 2e-200}, {1e-200, 1e-200}}, {{100.1}, {3}}}), {{lower}, {3}});
  // With 300, far away, at each addition, whichever is added first.
  ExpectSum(SumOf({{{100.1, 300}, {3, 1}}, {{300}, {1}}, {{300}, {1}}}), {{lower, 300}, {3, 3}});
  ExpectSum(SumOf({{{300}, {1}}, {{100.1}, {3}}}), {{lower, 300}, {3, 1}});
}

TEST(PeakSum, TellsWhetherTheSumHasChanged) {
  const Doubles masses = {100, 200};
  const Doubles zeros = {0, 0};
  PeakSum sum(0.01, masses, Doubles{1, 2});
  EXPECT_FALSE(sum.Add(masses, zeros));
  EXPECT_TRUE(sum.Add(masses, Doubles{0, 1}));
  EXPECT_FALSE(sum.Add(masses, zeros));
  EXPECT_TRUE(sum.Add(Doubles{300}, Doubles{0}));
  EXPECT_FALSE(sum.Add(Doubles{300}, Doubles{0}));
}

// Eight for an addition, one for a peak alone, each peak of a group of two three times, and one for every 16
// that are copied.
TEST(PeakSum, CountsItsWork) {
  Doubles masses;
  for (int i = 0; i < 32; ++i) masses.push_back(100 + i);
  PeakSum sum(0.01, masses, Doubles(32, 1));
  EXPECT_EQ(sum.Work(), 0U);
  sum.Add(Doubles{500}, Doubles{1});
  EXPECT_EQ(sum.Work(), 8U + 33);
  sum.Add(Doubles{500}, Doubles{1});
  EXPECT_EQ(sum.Work(), 41U + 8 + 2 + 1);
  sum.Add(Doubles{500.00390625}, Doubles{1});
  EXPECT_EQ(sum.Work(), 52U + 8 + 2 + 6);
  // From now on all 34 are one group.
  sum.Add(Doubles{500}, Doubles{-1});
  EXPECT_EQ(sum.Work(), 68U + 8 + 34 * (1 + 6));
}

// The work of adding `list` to `first`.
std::size_t WorkOf(const List& first, const List& list) {
  PeakSum sum(0.01, first.masses, first.intensities);
  sum.Add(list.masses, list.intensities);
  return sum.Work();
}

TEST(PeakSum, ListsThatAreNotOrdinaryAreOneGroup) {
  const std::size_t apart = 8 + 3;
  const std::size_t asOneGroup = 8 + 3 * (1 + 2);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 1}}, {{500}, {1}}), apart);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 0}}, {{500}, {0}}), apart);
  EXPECT_EQ(WorkOf({{100, 300}, {-1, 1}}, {{500}, {1}}), asOneGroup);
  EXPECT_EQ(WorkOf({{300, 100}, {1, 1}}, {{500}, {1}}), asOneGroup);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 1}}, {{500}, {1e201}}), asOneGroup);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 1}}, {{500}, {1e-201}}), asOneGroup);
  EXPECT_EQ(WorkOf({{1e-101, 300}, {1, 1}}, {{500}, {1}}), asOneGroup);
}

// The error, 2^-50 for each unit of mass and each of the five points and lists, is below 0.005 / 256 as long
// as the mass is below 4.39 * 10^9, whichever list it is in.
TEST(PeakSum, MassesSoHighThatRoundingMattersAreOneGroup) {
  const std::size_t apart = 8 + 3;
  const std::size_t asOneGroup = 8 + 3 * (1 + 2);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 1}}, {{4.3e9}, {1}}), apart);
  EXPECT_EQ(WorkOf({{100, 300}, {1, 1}}, {{4.5e9}, {1}}), asOneGroup);
  EXPECT_EQ(WorkOf({{100, 4.3e9}, {1, 1}}, {{500}, {1}}), apart);
  EXPECT_EQ(WorkOf({{100, 4.5e9}, {1, 1}}, {{500}, {1}}), asOneGroup);
  // Another list, though without points, is a sixth.
  PeakSum sum(0.01, Doubles{100, 4.3e9}, Doubles{1, 1});
  sum.Add({}, {});
  EXPECT_EQ(sum.Work(), 8U + 2);
  sum.Add(Doubles{500}, Doubles{1});
  EXPECT_EQ(sum.Work(), 10U + asOneGroup);
}

bool AreSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

bool AreSame(PeakSum::Values values, const double* expected, std::size_t count) {
  if (values.size() != count) return false;
  for (std::size_t i = 0; i < count; ++i) {
    if (!AreSame(values[i], expected[i])) return false;
  }
  return true;
}

CZRMassSpectrum ToSpectrum(const List& list) { return MakeCentroids(list.masses, list.intensities); }

// What there is to add, more or less like scans: `apart` is the mean distance of the masses of a list.
class RandomLists {
 public:
  RandomLists(std::uint32_t seed, double apart) : random_(seed), apart_(apart) {}  // seeds above 0

  List Next() {
    List list;
    double mass = 100;
    const int count = Below(60);
    for (int i = 0; i < count; ++i) {
      // Often a multiple of a sixteenth of the width, so that the bounds of windows are met.
      mass += Below(2) == 0 ? Uniform() * 2 * apart_ : 0.000625 * (1 + Below(40));
      list.masses.push_back(mass);
      list.intensities.push_back(Below(5) == 0 ? Below(3) : Uniform() * 1000);
    }
    return list;
  }

  void Spoil(List& list) {
    if (list.masses.empty()) return;
    const double values[] = {
        -1, 0, -0.0, 1e300, 1e-300, std::nan(""), std::numeric_limits<double>::infinity()};
    Doubles& column = Below(2) == 0 ? list.masses : list.intensities;
    column[static_cast<std::size_t>(Below(static_cast<int>(column.size())))] = values[Below(7)];
  }

  int Below(int count) { return random_.Below(count); }

 private:
  double Uniform() { return UnitNumber(random_); }

  RandomNumbers random_;
  double apart_;
};

void ExpectSameAsSpectra(std::uint32_t seed, double apart, bool isSpoilt) {
  RandomLists random(seed, apart);
  List list = random.Next();
  if (isSpoilt && random.Below(8) == 0) random.Spoil(list);
  PeakSum sum(0.01, list.masses, list.intensities);
  CZRMassSpectrum expected = ToSpectrum(list);
  for (int added = 0; added < 20; ++added) {
    // Now and then the same list again.
    if (random.Below(4) != 0) list = random.Next();
    if (isSpoilt && random.Below(8) == 0) random.Spoil(list);
    const CZRMassSpectrum before = expected;
    AddSpectrum(true, 0.01, ToSpectrum(list), expected);
    const bool hasChanged = sum.Add(list.masses, list.intensities);
    const std::size_t count = expected.UsablePoints();
    ASSERT_TRUE(AreSame(sum.Masses(), expected.GetMasses(), count)) << seed << ' ' << apart << ' ' << added;
    ASSERT_TRUE(AreSame(sum.Intensities(), expected.GetIntensities(), count)) << seed << ' ' << apart;
    const bool isAsBefore = AreSame(sum.Masses(), before.GetMasses(), before.UsablePoints()) &&
                            AreSame(sum.Intensities(), before.GetIntensities(), before.UsablePoints());
    ASSERT_TRUE(hasChanged || isAsBefore) << seed << ' ' << apart << ' ' << added;
  }
}

TEST(PeakSum, GivesTheBitsOfSpectraAddedOneByOne) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    for (const double apart : {0.0005, 0.004, 0.006, 0.05, 5.0}) ExpectSameAsSpectra(seed, apart, false);
  }
}

TEST(PeakSum, GivesThemAlsoOfListsThatAreNotOrdinary) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    for (const double apart : {0.0005, 0.006, 5.0}) ExpectSameAsSpectra(seed, apart, true);
  }
}

}  // namespace
}  // namespace zrml
