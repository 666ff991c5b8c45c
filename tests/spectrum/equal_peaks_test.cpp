#include "spectrum/equal_peaks.h"

#include <bit>
#include <limits>

#include <gtest/gtest.h>

#include "spectrum/add_spectrum.h"
#include "tests/spectrum/random_numbers.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

struct Lists {
  Doubles masses;
  Doubles intensities;
};

Lists SumOf(EqualPeaks& sum) {
  Lists lists = {Doubles(sum.Count()), Doubles(sum.Count())};
  sum.CopyTo(lists.masses.data(), lists.intensities.data());
  return lists;
}

TEST(EqualPeaks, PeaksOfOneMassBecomeOne) {
  EqualPeaks sum;
  EXPECT_EQ(SumOf(sum).masses, Doubles());
  EXPECT_TRUE(sum.Add(Doubles{100, 200}, Doubles{1, 2}));
  EXPECT_TRUE(sum.Add(Doubles{150, 200, 300}, Doubles{4, 8, 16}));
  EXPECT_TRUE(sum.Add({}, {}));
  EXPECT_EQ(SumOf(sum).masses, (Doubles{100, 150, 200, 300}));
  EXPECT_EQ(SumOf(sum).intensities, (Doubles{1, 4, 10, 16}));
  EXPECT_TRUE(sum.Add(Doubles{100}, Doubles{32}));
  EXPECT_EQ(SumOf(sum).intensities, (Doubles{33, 4, 10, 16}));
}

// In another order the sum would be 0, or 1.
TEST(EqualPeaks, AddsInTheOrderOfTheLists) {
  EqualPeaks sum;
  for (const double intensity : {1.0, 1e300, -1e300, 2.0}) {
    EXPECT_TRUE(sum.Add(Doubles{100}, Doubles{intensity}));
  }
  EXPECT_EQ(SumOf(sum).intensities, (Doubles{2}));
}

TEST(EqualPeaks, ListsThatAreNotStrictlyAscendingAreLeft) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  EqualPeaks sum;
  EXPECT_TRUE(sum.Add(Doubles{50}, Doubles{7}));
  for (const Doubles& masses :
       {Doubles{100, 100}, Doubles{100, 99}, Doubles{0, 1}, Doubles{-1, 1}, Doubles{kNaN}, Doubles{1, kNaN}})
    EXPECT_FALSE(sum.Add(masses, Doubles(masses.size(), 1))) << masses[0];
  EXPECT_EQ(SumOf(sum).masses, (Doubles{50}));
}

// Enough points that they are added up meanwhile.
TEST(EqualPeaks, IsTheSumOfSpectra) {
  RandomNumbers random(1);
  EqualPeaks sum;
  CZRMassSpectrum spectrum;
  constexpr int kLists = 60;
  constexpr int kPoints = 30'000;
  for (int list = 0; list < kLists; ++list) {
    Doubles masses;
    Doubles intensities;
    double mass = 100;
    for (int i = 0; i < kPoints; ++i) {
      mass += 0.01 * (1 + random.Below(3));
      masses.push_back(mass);
      intensities.push_back(random.Below(1000) / 7.0);
    }
    ASSERT_TRUE(sum.Add(masses, intensities));
    CZRMassSpectrum source;
    source.SetSize(kPoints);
    source.CopyMasses(masses.data());
    source.CopyIntensities(intensities.data());
    list == 0 ? void(spectrum = source) : void(AddSpectrum(true, 0, source, spectrum));
  }
  const Lists lists = SumOf(sum);
  ASSERT_EQ(lists.masses.size(), static_cast<std::size_t>(spectrum.GetCount()));
  EXPECT_EQ(lists.masses, Doubles(spectrum.MassVector().begin(), spectrum.MassVector().end()));
  EXPECT_EQ(lists.intensities, Doubles(spectrum.IntensityVector().begin(), spectrum.IntensityVector().end()));
}

}  // namespace
}  // namespace zrml
