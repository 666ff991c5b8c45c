// Random operations on a spectrum and on a plain model of it.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/mass_spectrum.h"
#include "tests/spectrum/random_numbers.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

struct Model {
  Doubles masses;
  Doubles intensities;
  bool hasFlags = false;
  bool hasValues = false;
  std::vector<std::uint8_t> flags;
  std::vector<std::int32_t> values;

  int Count() const { return static_cast<int>(masses.size()); }

  void Size(int count, bool withFlags, bool withValues) {
    const auto size = static_cast<std::size_t>(count);
    masses.resize(size);
    intensities.resize(size);
    flags.resize(withFlags ? size : 0);
    values.resize(withValues ? size : 0);
    if (count == 0) return;  // clearing keeps the optional arrays in use
    hasFlags = withFlags;
    hasValues = withValues;
  }
};

Doubles RandomMasses(RandomNumbers& random, int count, bool sorted) {
  Doubles masses;
  for (int i = 0; i < count; ++i) masses.push_back(random.Below(50) * 0.5);
  if (sorted) std::sort(masses.begin(), masses.end());
  return masses;
}

Doubles RandomIntensities(RandomNumbers& random, int count) {
  Doubles intensities;
  for (int i = 0; i < count; ++i) intensities.push_back(random.Below(20) - 5.0);
  return intensities;
}

/// One random operation, on both.
void Step(RandomNumbers& random, CZRMassSpectrum& s, Model& model) {
  switch (random.Below(10)) {
    case 0: {
      const int count = random.Below(12);
      const bool flags = random.Below(2) == 0;
      const bool values = random.Below(2) == 0;
      EXPECT_TRUE(s.Resize(count, flags, false, values, false));
      model.Size(count, flags, values);
      break;
    }
    case 1: {
      const int count = random.Below(12);
      EXPECT_TRUE(s.SetSize(count));
      model.Size(count, model.hasFlags, model.hasValues);
      break;
    }
    case 2: {
      if (random.Below(4) != 0) break;
      s.Clear();
      model.Size(0, false, false);
      break;
    }
    case 3: {
      const bool enable = random.Below(2) == 0;
      s.EnablePointFlags(enable);
      if (enable && model.Count() == 0) break;
      model.hasFlags = enable;
      model.flags.resize(enable ? model.masses.size() : 0);
      break;
    }
    case 4: {
      const bool enable = random.Below(2) == 0;
      s.EnablePointValues(enable);
      if (enable && model.Count() == 0) break;
      model.hasValues = enable;
      model.values.resize(enable ? model.masses.size() : 0);
      break;
    }
    case 5: {
      const int i = random.Below(14) - 1;
      const bool valid = i >= 0 && i < model.Count();
      EXPECT_EQ(s.SetIntensity(i, i * 2.0), valid);
      if (valid) model.intensities[static_cast<std::size_t>(i)] = i * 2.0;
      break;
    }
    case 6: {
      const int i = random.Below(14) - 1;
      const bool valid = i >= 0 && i < model.Count();
      EXPECT_EQ(s.SetMass(i, i * 3.0), valid);
      if (valid) model.masses[static_cast<std::size_t>(i)] = i * 3.0;
      break;
    }
    case 7: {
      const int count = random.Below(12);
      model.Size(count, model.hasFlags, model.hasValues);
      model.masses = RandomMasses(random, count, random.Below(2) == 0);
      model.intensities = RandomIntensities(random, count);
      s.AssignMasses(model.masses);
      s.AssignIntensities(model.intensities);
      EXPECT_TRUE(s.SetSize(count));
      break;
    }
    case 8: {
      model.masses = RandomMasses(random, model.Count(), true);
      model.intensities = RandomIntensities(random, model.Count());
      s.CopyMasses(model.masses.data());
      s.CopyIntensities(model.intensities.data());
      break;
    }
    default: {
      for (std::size_t i = 0; i < model.flags.size(); ++i) {
        model.flags[i] = static_cast<std::uint8_t>(random.Next());
        s.GetPointFlags()[i] = model.flags[i];
      }
      for (std::size_t i = 0; i < model.values.size(); ++i) {
        model.values[i] = static_cast<std::int32_t>(random.Next());
        s.GetPointValues()[i] = model.values[i];
      }
    }
  }
}

void ExpectSameStatistics(CZRMassSpectrum& s, const Model& model) {
  double total = 0;
  for (const double intensity : model.intensities) total += intensity;
  EXPECT_EQ(s.GetTotalIntensity(), total);
  if (model.Count() == 0) {
    EXPECT_EQ(s.GetBasePeakIntensity(), 0.0);
    EXPECT_EQ(s.GetMinIntensity(), 0.0);
    return;
  }
  const auto highest = std::max_element(model.intensities.begin(), model.intensities.end());
  const auto index = highest - model.intensities.begin();
  EXPECT_EQ(s.GetBasePeakIntensity(), *highest);
  EXPECT_EQ(s.GetBasePeakIndex(), index);
  EXPECT_EQ(s.GetBasePeakMass(), model.masses[static_cast<std::size_t>(index)]);
  EXPECT_EQ(s.GetMinIntensity(), *std::min_element(model.intensities.begin(), model.intensities.end()));
}

void ExpectSameRanges(CZRMassSpectrum& s, const Model& model, RandomNumbers& random) {
  if (!std::is_sorted(model.masses.begin(), model.masses.end())) return;
  const double low = random.Below(60) * 0.5 - 2;
  const double high = low + random.Below(20) * 0.5 - 1;
  int expectedFirst = model.Count();
  int expectedLast = -1;
  double sum = 0;
  double max = 0;
  for (int i = 0; i < model.Count(); ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (model.masses[at] < low || model.masses[at] > high) continue;
    max = expectedLast < 0 ? model.intensities[at] : std::max(max, model.intensities[at]);
    sum += model.intensities[at];
    expectedFirst = std::min(expectedFirst, i);
    expectedLast = i;
  }
  int first = 0;
  int last = 0;
  ASSERT_EQ(s.FindIndexRange(low, high, first, last), expectedLast >= 0);
  if (expectedLast >= 0) {
    EXPECT_EQ(first, expectedFirst);
    EXPECT_EQ(last, expectedLast);
  }
  EXPECT_EQ(s.GetIntensitySumInRange(low, high), sum);
  EXPECT_EQ(s.GetMaxIntensityInRange(low, high), max);
}

void ExpectSame(CZRMassSpectrum& s, const Model& model, RandomNumbers& random) {
  ASSERT_EQ(s.GetCount(), model.Count());
  ASSERT_EQ(s.MassVector(), model.masses);
  ASSERT_EQ(s.IntensityVector(), model.intensities);
  ASSERT_EQ(s.HasPointFlags(), model.hasFlags);
  ASSERT_EQ(s.HasPointValues(), model.hasValues);
  ASSERT_EQ(s.GetPointFlags() != nullptr, !model.flags.empty());
  ASSERT_EQ(s.GetPointValues() != nullptr, !model.values.empty());
  EXPECT_TRUE(std::equal(model.flags.begin(), model.flags.end(), s.GetPointFlags()));
  EXPECT_TRUE(std::equal(model.values.begin(), model.values.end(), s.GetPointValues()));
  ExpectSameStatistics(s, model);
  ExpectSameRanges(s, model, random);
}

TEST(MassSpectrumModel, RandomOperationsKeepTheSpectrumEqualToTheModel) {
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed * 0x9E3779B97F4A7C15ULL);
    CZRMassSpectrum s;
    Model model;
    for (int step = 0; step < 60; ++step) {
      Step(random, s, model);
      ExpectSame(s, model, random);
      CZRMassSpectrum copy(s);
      ExpectSame(copy, model, random);
      if (testing::Test::HasFailure()) FAIL() << "at step " << step;
    }
  }
}

}  // namespace
}  // namespace zrml
