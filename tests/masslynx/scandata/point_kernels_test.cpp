// The passes over many points give the same bits as the functions for single points.
#include "masslynx/scandata/point_kernels.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/packed_point.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kSizes[] = {0, 1, 2, 3, 7, 8, 31, 255, 256, 257, 512, 1000, 1024};
constexpr int kRounds = 50;

std::uint64_t Bits(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

struct Case {
  std::string name;
  const PointKernels* kernels;
};

std::vector<Case> KernelsOfThisProcessor() {
  std::vector<Case> cases = {{"Portable", &kPortableKernels}};
  if (__builtin_cpu_supports("avx2")) cases.push_back({"Avx2", &kAvx2Kernels});
  return cases;
}

class PointKernelsTest : public testing::TestWithParam<Case> {
 protected:
  const PointKernels& Kernels() const { return *GetParam().kernels; }

  // Any bits; not aligned to anything.
  const std::byte* RandomBytes(std::size_t count) {
    bytes_.resize(count + 1);
    for (std::byte& byte : bytes_) byte = static_cast<std::byte>(random_());
    return bytes_.data() + 1;
  }

  double RandomDouble(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }

  void ExpectPoints(PointKernels::Unpack unpack, std::size_t pointSize,
                    PackedPoint (*reference)(const std::byte*)) {
    for (int round = 0; round < kRounds; ++round) {
      for (const std::size_t count : kSizes) {
        const std::byte* const points = RandomBytes(count * pointSize);
        std::vector<float> masses(count + 1, 7);
        std::vector<double> intensities(count + 1, 7);
        unpack(points, count, masses.data(), intensities.data());
        for (std::size_t i = 0; i < count; ++i) {
          const PackedPoint expected = reference(points + i * pointSize);
          ASSERT_EQ(Bits(masses[i]), Bits(expected.mass)) << i << " of " << count;
          ASSERT_EQ(Bits(intensities[i]), Bits(expected.intensity)) << i << " of " << count;
        }
        std::vector<float> massesAlone(count + 1, 7);
        unpack(points, count, massesAlone.data(), nullptr);
        ASSERT_EQ(massesAlone, masses);
        ASSERT_EQ(masses[count], 7) << "written beyond " << count;
        ASSERT_EQ(intensities[count], 7) << "written beyond " << count;
      }
    }
  }

  void ExpectGroups(PointKernels::Intensities groups, std::size_t perGroup) {
    for (int round = 0; round < kRounds; ++round) {
      for (const std::size_t count : kSizes) {
        const std::byte* const points = RandomBytes((count + perGroup - 1) / perGroup * 10);
        std::vector<double> intensities(count + 1, 7);
        groups(points, count, intensities.data());
        for (std::size_t i = 0; i < count; ++i) {
          const std::byte* const group = points + i / perGroup * 10;
          const std::size_t place = i % perGroup;
          const unsigned exponent = LoadU16(group + 8) >> (4 * place) & 0xFU;
          ASSERT_EQ(intensities[i], PackedIntensity(LoadI16(group + 2 * place), exponent))
              << i << " of " << count;
        }
        ASSERT_EQ(intensities[count], 7) << "written beyond " << count;
      }
    }
  }

  void ExpectLinearAxis(double start, double step, std::size_t count) {
    std::vector<double> values(count + 1, 7);
    Kernels().linearAxis(start, step, values.data(), count);
    double sum = start;
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_EQ(Bits(values[i]), Bits(double{static_cast<float>(sum)}))
          << start << " + " << i << " x " << step;
      sum += step;
    }
    ASSERT_EQ(values[count], 7);
  }

  std::mt19937_64 random_{1};
  std::vector<std::byte> bytes_;
};

TEST_P(PointKernelsTest, UnpackPointsAsSinglePointsAre) {
  ExpectPoints(Kernels().unpack0, 4, UnpackPoint0);
  ExpectPoints(Kernels().unpack8, 6, UnpackPoint8);
  ExpectPoints(Kernels().unpack9, 6, UnpackPoint9);
  ExpectPoints(Kernels().unpack12, 8, UnpackPoint12);
  ExpectPoints(Kernels().unpack13, 12, UnpackPoint12);
}

TEST_P(PointKernelsTest, UnpackPairsAsSinglePairsAre) {
  for (int round = 0; round < kRounds; ++round) {
    for (const std::size_t count : kSizes) {
      if (count % 2 != 0) continue;
      const std::byte* const pairs = RandomBytes(count / 2 * kPairSize);
      std::vector<float> masses(count + 1, 7);
      std::vector<double> intensities(count + 1, 7);
      const bool hasEverySecond = Kernels().unpackPairs(pairs, count, masses.data(), intensities.data());
      bool expected = true;
      for (std::size_t i = 0; i < count; ++i) {
        const PackedPair pair = UnpackPair(pairs + i / 2 * kPairSize);
        ASSERT_EQ(masses[i], static_cast<float>(pair.rawMass[i % 2]) / kPairMassScale);
        ASSERT_EQ(intensities[i], IntensityWord(pair.intensityWord[i % 2]));
        expected = expected && (i % 2 == 0 || pair.intensityWord[1] >> 3 != 0);
      }
      ASSERT_EQ(hasEverySecond, expected);
      ASSERT_EQ(masses[count], 7);
      ASSERT_EQ(intensities[count], 7);
    }
  }
}

// One second point in a thousand has none: mantissa 0 with whatever exponent.
TEST_P(PointKernelsTest, UnpackPairsReportsOneMissingSecondPoint) {
  std::vector<float> masses(1024);
  std::vector<double> intensities(1024);
  for (const std::size_t missing : {0U, 1U, 127U, 128U, 511U}) {
    std::vector<std::byte> pairs(512 * kPairSize, std::byte{0xFF});
    EXPECT_TRUE(Kernels().unpackPairs(pairs.data(), 1024, masses.data(), intensities.data()));
    pairs[missing * kPairSize] = pairs[missing * kPairSize + 1] =
        std::byte{0};  // a first point does not count
    EXPECT_TRUE(Kernels().unpackPairs(pairs.data(), 1024, masses.data(), intensities.data()));
    pairs[missing * kPairSize + 2] = std::byte{7};
    pairs[missing * kPairSize + 3] = std::byte{0};
    EXPECT_FALSE(Kernels().unpackPairs(pairs.data(), 1024, masses.data(), intensities.data()));
  }
}

TEST_P(PointKernelsTest, UnpackIntensitiesAlone) {
  for (const std::size_t count : kSizes) {
    const std::byte* const words = RandomBytes(2 * count);
    std::vector<double> intensities(count + 1, 7);
    Kernels().words(words, count, intensities.data());
    for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(intensities[i], IntensityWord(LoadU16(words + 2 * i)));
    ASSERT_EQ(intensities[count], 7);
  }
  ExpectGroups(Kernels().groupsOf4, 4);
  ExpectGroups(Kernels().groupsOf2, 2);
}

// Polynomials of each length and both kinds, alone, with each kind of modification, with and without a
// temperature correction, on masses that include invalid ones.
TEST_P(PointKernelsTest, ConvertAsSingleMassesAre) {
  const float odd[] = {0.0F,
                       -0.0F,
                       -1.0F,
                       std::numeric_limits<float>::infinity(),
                       std::numeric_limits<float>::quiet_NaN(),
                       FLT_MAX,
                       FLT_MIN,
                       1e-42F};
  for (std::size_t coefficients = 0; coefficients <= 7; ++coefficients) {
    for (unsigned kind = 0; kind < 32; ++kind) {
      FunctionRecord function;
      ScanIndexEntry scan;
      CalibrationPolynomial polynomial;
      double scale = 1;
      for (std::size_t k = 0; k < coefficients; ++k, scale /= 1000)
        polynomial.coefficients.push_back(RandomDouble(-2 * scale, 2 * scale));
      polynomial.root = (kind & 1) != 0;
      function.functionCal = polynomial;
      if ((kind & 2) != 0) {
        function.modificationCal.coefficients = {RandomDouble(-1, 1), RandomDouble(0.9, 1.1), 1e-7};
        function.modificationCal.root = (kind & 4) != 0;
      }
      scan.temperatureValid = (kind & 8) != 0;
      scan.temperature = 31;
      scan.temperatureCoefficient = 2.5F;
      scan.preCalibrated = (kind & 16) != 0;

      std::vector<float> raw;
      for (const float mass : odd) raw.push_back(mass);
      while (raw.size() < 1024) raw.push_back(static_cast<float>(RandomDouble(0, 5000)));
      std::vector<double> masses(raw.size());
      const ScanCalibration calibration(function, scan);
      std::vector<float> used = raw;
      calibration.Convert(Kernels(), used.data(), used.size(), masses.data());
      for (std::size_t i = 0; i < raw.size(); ++i)
        ASSERT_EQ(Bits(masses[i]), Bits(calibration(raw[i]))) << raw[i] << ' ' << coefficients << ' ' << kind;
    }
  }
}

TEST_P(PointKernelsTest, SeeAMassThatDoesNotAscendAnywhere) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> values(1000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i);
  EXPECT_FALSE(Kernels().descends(-DBL_MAX, values.data(), values.size()));
  EXPECT_FALSE(Kernels().descends(-1, values.data(), values.size()));
  EXPECT_TRUE(Kernels().descends(0, values.data(), values.size()));
  EXPECT_FALSE(Kernels().descends(5, values.data(), 0));
  for (const std::size_t i : {1U, 2U, 7U, 8U, 500U, 999U}) {
    const double before = values[i];
    values[i] = values[i - 1];
    EXPECT_TRUE(Kernels().descends(-1, values.data(), values.size())) << i;
    values[i] = kNan;  // neither above nor below
    EXPECT_FALSE(Kernels().descends(-1, values.data(), values.size())) << i;
    values[i] = before;
  }
}

TEST_P(PointKernelsTest, FindZeros) {
  for (const std::size_t count : kSizes) {
    std::vector<double> values(count, std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(Kernels().hasZero(values.data(), count)) << count;
    std::fill(values.begin(), values.end(), std::numeric_limits<double>::denorm_min());
    EXPECT_FALSE(Kernels().hasZero(values.data(), count)) << count;
    for (std::size_t i = 0; i < count; ++i) {
      for (const double zero : {0.0, -0.0}) {
        values[i] = zero;
        ASSERT_TRUE(Kernels().hasZero(values.data(), count)) << i << " of " << count;
        ASSERT_FALSE(Kernels().hasZero(values.data(), i)) << "what is behind the end does not count";
      }
      values[i] = -1;
    }
  }
}

TEST_P(PointKernelsTest, FindTheLeastStep) {
  for (const std::size_t count : kSizes) {
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<float>(i) / 2;
    EXPECT_EQ(Kernels().leastStep(values.data(), count), count < 2 ? FLT_MAX : 0.5F) << count;
    for (std::size_t i = 1; i < count; ++i) {
      const float before = values[i];
      for (const float step : {0.125F, FLT_MIN / 2, 0.0F, -0.25F, -1e30F}) {
        values[i] = values[i - 1] + step;
        const float least = Kernels().leastStep(values.data(), count);
        ASSERT_EQ(least, values[i] - values[i - 1] > 0 ? values[i] - values[i - 1] : std::min(least, 0.0F))
            << i << " of " << count;
      }
      values[i] = before;
    }
  }
}

TEST_P(PointKernelsTest, LinearAxisIsARepeatedAddition) {
  for (int round = 0; round < 300; ++round) {
    const double start = std::ldexp(RandomDouble(0.5, 1), static_cast<int>(random_() % 40) - 20);
    const double step = std::ldexp(RandomDouble(0.5, 1), static_cast<int>(random_() % 80) - 70);
    ExpectLinearAxis(start, step, 1000);
    ExpectLinearAxis(start, -step, 1000);
    ExpectLinearAxis(-start, step, 1000);
    ExpectLinearAxis(static_cast<float>(start), static_cast<float>(step), 1000);
  }
}

// In [1, 2) the unit in the last place is 2^-52: steps of an odd number of halves lie halfway between two
// multiples and are rounded to even, now up, now down.
TEST_P(PointKernelsTest, LinearAxisRoundsStepsHalfwayAsAdditionDoes) {
  for (const double halves : {1.0, 3.0, 1000001.0, 1099511627777.0}) {
    ExpectLinearAxis(1, halves * 0x1p-53, 1000);
    ExpectLinearAxis(1 + 0x1p-52, halves * 0x1p-53, 1000);
    ExpectLinearAxis(1.5, std::nextafter(halves * 0x1p-53, 1.0), 1000);
    ExpectLinearAxis(1.5, std::nextafter(halves * 0x1p-53, 0.0), 1000);
  }
}

TEST_P(PointKernelsTest, LinearAxisOfOddStartsAndSteps) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double start :
       {0.0, -0.0, 1.0, 50.0, -50.0, 5e-324, DBL_MIN, DBL_MAX, infinity, -infinity, double{NAN}}) {
    for (const double step :
         {0.0, 0.1, -0.1, 1.0, 49.0, 1e-300, 5e-324, 1e300, infinity, -infinity, double{NAN}}) {
      ExpectLinearAxis(start, step, 100);
    }
  }
  ExpectLinearAxis(50, 0.01, 100000);
}

INSTANTIATE_TEST_SUITE_P(Kernels, PointKernelsTest, testing::ValuesIn(KernelsOfThisProcessor()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace zrml::masslynx
