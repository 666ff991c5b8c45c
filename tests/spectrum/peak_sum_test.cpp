#include "spectrum/peak_sum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
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

// The mass 100 plus `units` of 1/2048; half of a width of 0.01 is 10.24 units.
double At(int units) { return 100 + units / 2048.0; }

std::vector<std::uint64_t> Bits(const Doubles& values) {
  std::vector<std::uint64_t> bits;
  for (const double value : values) bits.push_back(std::bit_cast<std::uint64_t>(value));
  return bits;
}

List PeaksOf(const PeakSum& sum) {
  List list{Doubles(sum.Count()), Doubles(sum.Count())};
  sum.CopyTo(list.masses.data(), list.intensities.data());
  return list;
}

void ExpectSum(const PeakSum& sum, const List& expected) {
  const List list = PeaksOf(sum);
  EXPECT_EQ(Bits(list.masses), Bits(expected.masses)) << testing::PrintToString(list.masses);
  EXPECT_EQ(Bits(list.intensities), Bits(expected.intensities)) << testing::PrintToString(list.intensities);
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
      // A single peak stays, whatever its mass; of two without a mass above 0 neither stays.
      {"a peak alone without a mass above 0", {{{-1}, {5}}, {{-1}, {5}}}, {{-1}, {10}}},
      {"two without a mass above 0", {{{-1}, {5}}, {{-1}, {5}}, {{-1, -0.5}, {5, 5}}}, {{}, {}}},
      {"equal masses", {{{100, 200}, {1, 2}}, {{100, 150}, {3, 4}}}, {{100, 150, 200}, {4, 4, 2}}},
      {"near masses", {{{At(0), 200}, {1, 5}}, {{At(8)}, {3}}}, {{At(6), 200}, {4, 5}}},
      {"beyond the width", {{{At(0), 200}, {1, 5}}, {{At(11)}, {3}}}, {{At(0), At(11), 200}, {1, 3, 5}}},
      {"below and above all", {{{150}, {5}}, {{100, 200}, {1, 2}}}, {{100, 150, 200}, {1, 5, 2}}},
      // At 0 absorbs 8 and moves to 4, within reach of 13, but 8 is in between.
      {"an absorbed peak is in between",
       {{{At(0), At(8), At(13)}, {4, 4, 4}}, {{200}, {1}}},
       {{At(4), At(13), 200}, {8, 4, 1}}},
      // (8 * 4 + 4 * 13) / 12 = 7
      {"peaks that came near merge at the next addition, even of a distant peak",
       {{{At(0), At(8), At(13)}, {4, 4, 4}}, {{200}, {1}}, {{300}, {1}}},
       {{At(7), 200, 300}, {12, 1, 1}}},
      // Peaks absorbed by one without an intensity above 0 are lost.
      {"negative intensities", {{{At(0), 200}, {-1, 5}}, {{At(8)}, {-3}}}, {{At(0), 200}, {-1, 5}}},
      // (3 * 0 - 2 * 8) / 1 = -16 and (3 * 8 - 2 * 0) / 1 = 24
      {"a negative neighbour pushes a peak away",
       {{{50, At(0), At(100)}, {1, 3, 5}}, {{At(8)}, {-2}}},
       {{50, At(-16), At(100)}, {1, 1, 5}}},
      // At 0 and 8 merge at 24, visited first; At 26 then absorbs the result: (24 + 26) / 2.
      {"to where a weaker one takes it in",
       {{{50, At(8), At(26)}, {1, 3, 1}}, {{At(0)}, {-2}}},
       {{50, At(25)}, {1, 2}}},
      // At 29 was visited earlier, when nothing was near it, so the merge happens at the next addition.
      {"to where a stronger one is",
       {{{50, At(8), At(29)}, {1, 3, 4}}, {{At(0)}, {-2}}},
       {{50, At(24), At(29)}, {1, 1, 4}}},
      {"to where a stronger one takes it in later",
       {{{50, At(8), At(29)}, {1, 3, 4}}, {{At(0)}, {-2}}, {{}, {}}},
       {{50, At(28)}, {1, 5}}},
      // 24 is then placed before 20, and 22 before that. 20, the strongest, absorbs all that is not below its
      // window: (22 + 24 + 4 * 20) / 6.
      {"past its neighbour, so the added peak goes before it",
       {{{At(8), At(20)}, {3, 4}}, {{At(0)}, {-2}}, {{50, At(22)}, {1, 1}}},
       {{50, At(21)}, {1, 6}}},
      {"a mass of 0 is dropped", {{{0, 200}, {1, 5}}, {{0}, {1}}}, {{200}, {5}}},
      {"but not when it is all there is", {{{0}, {1}}, {{0}, {2}}}, {{0}, {3}}},
      {"and goes when it is not", {{{0}, {1}}, {{0}, {2}}, {{0, 100}, {1, 1}}}, {{100}, {1}}},
      {"two of them are not one", {{{}, {}}, {{-2, -1}, {1, 1}}}, {{}, {}}},
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
TEST(PeakSum, APeakWithoutNeighboursIsDeliberatelyWeighedByItself) {
  const double lower = 0x1.9066666666665p+6;
  ExpectSum(SumOf({{{100.1}, {3}}, {{200}, {1}}}), {{lower, 200}, {3, 1}});
  ExpectSum(SumOf({{{100.1}, {1}}, {{100.1}, {2}}}), {{100.1}, {3}});  // nothing else
  ExpectSum(SumOf({{{100.1}, {1}}, {{100.1}, {2}}, {{200}, {1}}}), {{lower, 200}, {3, 1}});
  ExpectSum(SumOf({{{1e-200, 2e-200}, {1e-200, 1e-200}}, {{100.1}, {3}}}), {{lower}, {3}});
  // With 300, far away, at each addition, whichever is added first.
  ExpectSum(SumOf({{{100.1, 300}, {3, 1}}, {{300}, {1}}, {{300}, {1}}}), {{lower, 300}, {3, 3}});
  ExpectSum(SumOf({{{300}, {1}}, {{100.1}, {3}}}), {{lower, 300}, {3, 1}});
}

TEST(PeakSum, ReturnsWhetherTheSumHasChanged) {
  const Doubles masses = {100, 200};
  const Doubles zeros = {0, 0};
  PeakSum sum(0.01, masses, Doubles{1, 2});
  EXPECT_FALSE(sum.Add(masses, zeros));
  EXPECT_TRUE(sum.Add(masses, Doubles{0, 1}));
  EXPECT_FALSE(sum.Add(masses, zeros));
  EXPECT_TRUE(sum.Add(Doubles{300}, Doubles{0}));
  EXPECT_FALSE(sum.Add(Doubles{300}, Doubles{0}));
}

bool AreSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

bool AreSame(const Doubles& a, const Doubles& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](double one, double other) { return AreSame(one, other); });
}

// The definition of an addition: all peaks of both in order, then all of them visited. Shares no code with
// the class under test.
class PlainSum {
 public:
  PlainSum(double width, List first, bool isPpm = false)
      : width_(width), isPpm_(isPpm), sum_(std::move(first)) {}

  void Add(const List& list) {
    sum_ = InOrder(list);
    if (sum_.masses.size() < 2) return;
    std::vector<std::size_t> order(sum_.masses.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      const double first = sum_.intensities[a];
      const double second = sum_.intensities[b];
      return first > second || (!std::isnan(first) && std::isnan(second));
    });
    for (const std::size_t i : order) {
      if (sum_.masses[i] > 0) Visit(i);
    }
    List left;
    for (std::size_t i = 0; i < sum_.masses.size(); ++i) {
      if (sum_.masses[i] > 0) Append(left, sum_.masses[i], sum_.intensities[i]);
    }
    sum_ = left;
  }

  const List& Peaks() const { return sum_; }

 private:
  static void Append(List& list, double mass, double intensity) {
    list.masses.push_back(mass);
    list.intensities.push_back(intensity);
  }

  List InOrder(const List& list) const {
    List both;
    std::size_t s = 0;
    std::size_t l = 0;
    while (s < sum_.masses.size() || l < list.masses.size()) {
      const bool isSumOver = s == sum_.masses.size();
      const bool isListOver = l == list.masses.size();
      if (!isSumOver && !isListOver && sum_.masses[s] == list.masses[l]) {
        const bool isSumStronger = sum_.intensities[s] > list.intensities[l];
        Append(both, isSumStronger ? sum_.masses[s] : list.masses[l],
               sum_.intensities[s] + list.intensities[l]);
        ++s;
        ++l;
      } else if (isSumOver || (!isListOver && sum_.masses[s] > list.masses[l])) {
        Append(both, list.masses[l], list.intensities[l]);
        ++l;
      } else {
        Append(both, sum_.masses[s], sum_.intensities[s]);
        ++s;
      }
    }
    return both;
  }

  void Visit(std::size_t i) {
    Doubles& masses = sum_.masses;
    const double half = std::min(isPpm_ ? masses[i] * width_ / 1000000 : width_, 1.0) * 0.5;
    const double low = masses[i] - half;
    const double high = masses[i] + half;
    double moment = sum_.intensities[i] * masses[i];
    double intensity = sum_.intensities[i];
    const auto take = [&](std::size_t j) {
      moment += sum_.intensities[j] * masses[j];
      intensity += sum_.intensities[j];
      masses[j] = 0;
    };
    for (std::size_t j = i; j > 0 && masses[j - 1] > 0 && masses[j - 1] >= low; --j) take(j - 1);
    for (std::size_t j = i + 1; j < masses.size() && masses[j] > 0 && masses[j] <= high; ++j) take(j);
    if (!(intensity > 0)) return;
    masses[i] = moment / intensity;
    sum_.intensities[i] = intensity;
  }

  double width_;
  bool isPpm_;
  List sum_;
};

CZRMassSpectrum ToSpectrum(const List& list) { return MakeCentroids(list.masses, list.intensities); }

constexpr double kEndless = std::numeric_limits<double>::infinity();

// Parameters of random lists.
struct Style {
  const char* name;
  double from = 100;             // the mass near which they start
  double apart = 0.05;           // the mean distance of masses
  double step = 0.000625;        // distances are often a multiple, so bounds of windows are hit
  int levels = 1000;             // range of intensities, whole or uniformly distributed
  int negative = 0;              // percentage of negative intensities
  std::vector<double> odd = {};  // values that occasionally replace a mass or an intensity
  double width = 0.01;
  int falls = 0;  // percentage of masses below the one before
};

class RandomLists {
 public:
  RandomLists(std::uint32_t seed, const Style& style) : random_(seed), style_(style) {}  // seeds above 0

  List Next() {
    List list;
    double mass = style_.from;
    const int count = Below(5) == 0 ? Below(4) : Below(60);
    for (int i = 0; i < count; ++i) {
      mass += Below(2) == 0 ? UnitNumber(random_) * 2 * style_.apart : style_.step * Below(40);
      if (style_.falls > 0 && Below(100) < style_.falls) {
        mass = std::max(style_.from, mass - UnitNumber(random_) * 8 * style_.apart);
      } else if (!list.masses.empty() && Below(20) != 0) {
        mass = std::max(mass, std::nextafter(list.masses.back(), kEndless));
      }
      list.masses.push_back(mass);
      list.intensities.push_back(NextIntensity());
    }
    if (!style_.odd.empty() && !list.masses.empty() && Below(4) == 0) Spoil(list);
    return list;
  }

  int Below(int count) { return random_.Below(count); }

 private:
  double NextIntensity() {
    const double intensity = Below(2) == 0 ? Below(style_.levels) : UnitNumber(random_) * style_.levels;
    return Below(100) < style_.negative ? -intensity : intensity;
  }

  void Spoil(List& list) {
    Doubles& column = Below(2) == 0 ? list.masses : list.intensities;
    column[static_cast<std::size_t>(Below(static_cast<int>(column.size())))] =
        style_.odd[static_cast<std::size_t>(Below(static_cast<int>(style_.odd.size())))];
  }

  RandomNumbers random_;
  Style style_;
};

void ExpectSameAsPlain(std::uint32_t seed, const Style& style) {
  RandomLists random(seed, style);
  List list = random.Next();
  PeakSum sum(style.width, list.masses, list.intensities);
  PlainSum plain(style.width, list);
  CZRMassSpectrum spectrum = ToSpectrum(list);
  for (int added = 0; added < 16; ++added) {
    // Occasionally the same list again, or one without peaks.
    if (random.Below(4) != 0) list = random.Next();
    if (random.Below(16) == 0) list = {};
    const List before = plain.Peaks();
    plain.Add(list);
    const bool hasChanged = sum.Add(list.masses, list.intensities);
    const List peaks = PeaksOf(sum);
    const List& expected = plain.Peaks();
    ASSERT_TRUE(AreSame(peaks.masses, expected.masses)) << style.name << ' ' << seed << ' ' << added;
    ASSERT_TRUE(AreSame(peaks.intensities, expected.intensities))
        << style.name << ' ' << seed << ' ' << added;
    const bool isAsBefore =
        AreSame(expected.masses, before.masses) && AreSame(expected.intensities, before.intensities);
    ASSERT_TRUE(hasChanged || isAsBefore) << style.name << ' ' << seed << ' ' << added;
    AddSpectrum(true, style.width, ToSpectrum(list), spectrum);
    ASSERT_TRUE(AreSame(Masses(spectrum), expected.masses)) << style.name << ' ' << seed << ' ' << added;
    ASSERT_TRUE(AreSame(Intensities(spectrum), expected.intensities)) << style.name << ' ' << seed;
  }
}

const double kNan = std::nan("");
const std::vector<double> kOdd = {-1, 0, -0.0, 1e300, 1e-300, 5e-324, kNan, kEndless, -kEndless};

const Style kStyles[] = {
    {.name = "dense", .apart = 0.0005},
    {.name = "near", .apart = 0.004},
    {.name = "just apart", .apart = 0.006},
    {.name = "loose"},
    {.name = "far", .apart = 5},
    {.name = "ties", .apart = 0.004, .levels = 3},
    {.name = "few negative", .apart = 0.004, .negative = 3},
    {.name = "negative", .apart = 0.004, .negative = 40},
    {.name = "negative, just apart", .apart = 0.006, .levels = 5, .negative = 40},
    {.name = "negative, loose", .negative = 40},
    {.name = "nearly all negative", .apart = 0.004, .levels = 4, .negative = 90},
    {.name = "negative, low masses", .from = 0.001, .apart = 0.004, .levels = 10, .negative = 40},
    {.name = "negative, wide", .apart = 0.3, .levels = 10, .negative = 40, .width = 5},
    {.name = "unsorted", .apart = 0.004, .falls = 20},
    {.name = "unsorted, loose", .falls = 5},
    {.name = "odd", .apart = 0.0005, .odd = kOdd},
    {.name = "odd, just apart", .apart = 0.006, .levels = 4, .odd = kOdd},
    {.name = "odd and negative", .apart = 0.004, .negative = 40, .odd = kOdd},
    {.name = "odd, far", .apart = 5, .odd = kOdd},
    {.name = "high", .from = 1e13, .apart = 0.004, .step = 0x1p-9, .levels = 1000},
    {.name = "high and negative", .from = 1e13, .apart = 0.004, .step = 0x1p-9, .negative = 40},
    // Half of the width is 2.5 units of the last place, so one peak can be near another without the reverse.
    {.name = "one-sided", .from = 1e13, .apart = 0.006, .step = 0x1p-9, .width = 5 * 0x1p-9},
    {.name = "one-sided and negative",
     .from = 1e13,
     .apart = 0.006,
     .step = 0x1p-9,
     .levels = 10,
     .negative = 30,
     .width = 5 * 0x1p-9},
    {.name = "too high for the width", .from = 1e16, .apart = 4, .step = 2, .negative = 10},
    {.name = "nearly endless", .from = 1e308, .apart = 1e305, .step = 1e303, .odd = kOdd},
    {.name = "nearly nothing", .from = 1e-310, .apart = 1e-310, .step = 5e-324, .odd = kOdd, .width = 1e-310},
    {.name = "around nothing", .from = -0.02, .apart = 0.02, .levels = 4, .negative = 20, .odd = kOdd},
    {.name = "narrow", .apart = 1e-9, .step = 0x1p-46, .negative = 20, .width = 1e-12},
};

TEST(PeakSum, EqualsPlainAdditionToTheBit) {
  for (const Style& style : kStyles) {
    for (std::uint32_t seed = 1; seed <= 50; ++seed) ExpectSameAsPlain(seed, style);
  }
}

// 100 parts per million of 100 are as wide as the lists are made for. The reach grows with the mass, so of
// two peaks the higher one may reach the lower, but not the other way round.
TEST(PeakSum, WidthsInPartsPerMillionEqualOtherAdditionsToTheBit) {
  for (const Style& style : kStyles) {
    for (std::uint32_t seed = 1; seed <= 50; ++seed) {
      RandomLists random(seed, style);
      List list = random.Next();
      const double ppm = style.width * 10'000;
      PeakSum sum(ppm, list.masses, list.intensities, false);
      CZRMassSpectrum spectrum = ToSpectrum(list);
      for (int added = 0; added < 16; ++added) {
        if (random.Below(4) != 0) list = random.Next();
        sum.Add(list.masses, list.intensities);
        AddSpectrum(false, ppm, ToSpectrum(list), spectrum);
        const List peaks = PeaksOf(sum);
        ASSERT_TRUE(AreSame(peaks.masses, Masses(spectrum))) << style.name << ' ' << seed << ' ' << added;
        ASSERT_TRUE(AreSame(peaks.intensities, Intensities(spectrum))) << style.name << ' ' << seed;
      }
    }
  }
}

// 10 parts per million of 100 and of 400 are 0.001 and 0.004.
TEST(PeakSum, WidthsInPartsPerMillionGrowWithTheMass) {
  const Doubles masses = {100, 400};
  PeakSum sum(10, masses, Doubles{1, 1}, false);
  sum.Add(Doubles{100.00075, 400.00175}, Doubles{1, 1});
  ExpectSum(sum, {{100, 100.00075, (400 + 400.00175) / 2}, {1, 1, 2}});
}

// Long enough for blocks of blocks, and for peaks that are far from each other and such that touch. Every
// other list has few peaks. Only without negative intensities peaks far from each other are independent.
void ExpectLongSumsAsPlain(int lowest, bool isPpm) {
  const double width = isPpm ? 60 : 0.01;
  RandomNumbers random(1);
  List first;
  for (int i = 0; i < 12000; ++i) {
    first.masses.push_back(100 + i / 64.0);
    first.intensities.push_back(random.Below(9) + std::max(lowest, -1));
  }
  PeakSum sum(width, first.masses, first.intensities, !isPpm);
  PlainSum plain(width, first, isPpm);
  for (int added = 0; added < 40; ++added) {
    List list;
    for (double mass = 100; mass < 280; mass += UnitNumber(random) * (added % 2 == 0 ? 0.5 : 50)) {
      const int kind = random.Below(8);
      if (kind == 0) mass = std::ceil(mass * 64) / 64;  // that of a peak
      list.masses.insert(list.masses.end(), kind == 1 ? 2 : 1, mass);
    }
    for (std::size_t i = 0; i < list.masses.size(); ++i) list.intensities.push_back(random.Below(9) + lowest);
    plain.Add(list);
    sum.Add(list.masses, list.intensities);
    const List peaks = PeaksOf(sum);
    ASSERT_TRUE(AreSame(peaks.masses, plain.Peaks().masses)) << added;
    ASSERT_TRUE(AreSame(peaks.intensities, plain.Peaks().intensities)) << added;
  }
}

TEST(PeakSum, EqualsPlainAdditionForLongLists) {
  for (const int lowest : {-4, 0}) {
    for (const bool isPpm : {false, true}) {
      SCOPED_TRACE(testing::Message() << "intensities from " << lowest << (isPpm ? ", ppm" : ""));
      ExpectLongSumsAsPlain(lowest, isPpm);
    }
  }
}

}  // namespace
}  // namespace zrml
