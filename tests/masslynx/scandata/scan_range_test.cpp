// The points of a mass range, found without decoding the others, equal those of the decoded scan: for random
// scans in all layouts and random calibrations. Where masses may not ascend, no range is searched.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/scan_decoder.h"
#include "tests/masslynx/scandata/decoded_scan.h"

namespace zrml::masslynx {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Raw masses are multiples of a unit, `keys`.
struct Encoding {
  int format;
  unsigned keyBits;
  double unit;
};

constexpr Encoding kEncodings[] = {
    {0, 21, 1.0 / 128}, {8, 28, 1.0 / 128}, {9, 23, 0x1p-12}, {12, 27, 0x1p-16}, {13, 27, 0x1p-16}};

using Keys = std::vector<std::uint32_t>;

FileBytes Write(int format, const Keys& keys) {
  ByteWriter out;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto value = static_cast<std::uint16_t>(1 + i * 40503 % 250);
    if (format == 0) out.U32(keys[i] << 11 | value << 3 | 1U);
    if (format == 8) out.U16(value).U32(keys[i] << 4 | 1);
    if (format == 9) out.U16(value).U32(keys[i] << 9 | 11 << 4 | 1);
    if (format >= 12) out.U32(value | 21U << 22).U32(11U << 27 | keys[i]);
    if (format == 13) out.U32(0);
  }
  return out.Take();
}

class ScanRangeTest : public testing::Test {
 protected:
  double Random(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double RandomPower(double low, double high) { return std::pow(10, Random(low, high)); }
  std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }
  std::size_t RandomCount() {
    constexpr std::size_t kCounts[] = {1, 2, 3, 15, 16, 17, 31, 32, 33, 500, 1023, 1024, 1025, 2048, 2100};
    return kCounts[Below(std::size(kCounts))];
  }

  // Keys that ascend by 1 to `most`, from `first` on.
  Keys Ascending(std::uint32_t first, std::uint32_t most, std::size_t count) {
    Keys keys;
    for (std::uint32_t key = first; keys.size() < count; key += 1 + Below(most)) keys.push_back(key);
    return keys;
  }

  // The step between two masses is 0.02 to 0.5.
  Keys Peaks(const Encoding& encoding) {
    const auto first = static_cast<std::uint32_t>(Random(50, 300) / encoding.unit);
    Keys keys = Ascending(first, static_cast<std::uint32_t>(0.48 / encoding.unit), RandomCount());
    const auto least = static_cast<std::uint32_t>(0.02 / encoding.unit);
    for (std::size_t i = 0; i < keys.size(); ++i) keys[i] += static_cast<std::uint32_t>(i) * least;
    return keys;
  }

  // A typical instrument calibration.
  CalibrationPolynomial NearIdentity(bool root) {
    CalibrationPolynomial polynomial{{Random(-1e-2, 1e-2), Random(0.99, 1.01), Random(-1e-6, 1e-6)}, root};
    if (Below(2) == 0) polynomial.coefficients.insert(polynomial.coefficients.end(), {1e-10, -1e-12});
    return polynomial;
  }

  // Anything: terms of all sizes and both signs.
  CalibrationPolynomial AnyPolynomial() {
    CalibrationPolynomial polynomial;
    polynomial.root = Below(2) == 0;
    const std::size_t count = 1 + Below(7);
    for (std::size_t i = 0; i < count; ++i) {
      const double size = RandomPower(-4, 3) * std::pow(10, -Random(1, 3.5) * static_cast<double>(i));
      polynomial.coefficients.push_back(Below(3) == 0 ? -size : size);
    }
    return polynomial;
  }

  void SetTemperature(float coefficient) {
    ScanIndexEntry& scan = function_.scanIndex[0];
    scan.temperatureValid = true;
    scan.temperature = 31;
    scan.temperatureCoefficient = coefficient;
  }

  // Whether a range was searched. If so, masses ascend and the points are those of the whole scan.
  bool Seek(MassRange range) {
    std::vector<double> within = {-1};
    const ScanRoom room = RoomOf(function_, 0).value();
    const bool isTaken = DecodeWithin(function_, 0, room, bytes_, range, within);
    if (!isTaken) return false;
    EXPECT_FALSE(all_.isUnsorted);
    EXPECT_GT(all_.count, 0u);
    const auto begin = std::lower_bound(masses_.begin(), masses_.end(), range.low) - masses_.begin();
    const auto end = std::upper_bound(masses_.begin(), masses_.end(), range.high) - masses_.begin();
    std::vector<double> expected;
    if (begin < end) expected.assign(intensities_.begin() + begin, intensities_.begin() + end);
    EXPECT_EQ(within, expected) << range.low << " to " << range.high;
    return true;
  }

  void Decode() {
    const ScanRoom room = RoomOf(function_, 0).value();
    masses_.assign(room.points, 0);
    intensities_.assign(room.points, 0);
    all_ = DecodeScan(function_, 0, room, bytes_, {masses_.data(), intensities_.data()});
    masses_.resize(all_.count);
    intensities_.resize(all_.count);
  }

  double RandomEnd() {
    const double mass = masses_[Below(static_cast<std::uint32_t>(masses_.size()))];
    switch (Below(6)) {
      case 0:
        return mass;
      case 1:
        return std::nextafter(mass, kInfinity);
      case 2:
        return std::nextafter(mass, -kInfinity);
      case 3:
        return std::nextafter(static_cast<float>(mass), static_cast<float>(Below(2) == 0 ? kInfinity : 0));
      case 4:
        return mass + Random(-1, 1);
      default:
        return Random(0, 2500);
    }
  }

  // Whether ranges of a scan of the function are searched; this does not depend on the range.
  bool SeekRanges(const Encoding& encoding, const Keys& keys) {
    function_.dataFormat = encoding.format;
    function_.scanIndex[0].pointCount = static_cast<std::uint32_t>(keys.size());
    bytes_ = Write(encoding.format, keys);
    Decode();
    const bool isTaken = Seek({-kInfinity, kInfinity});
    for (int i = 0; i < 12; ++i) EXPECT_EQ(Seek({RandomEnd(), RandomEnd()}), isTaken);
    for (const double low : {-kInfinity, -1.0, 0.0, masses_.front(), masses_.back(), kInfinity, kNaN}) {
      for (const double high : {-kInfinity, 0.0, masses_.front(), masses_.back(), 1e9, kInfinity, kNaN})
        EXPECT_EQ(Seek({low, high}), isTaken);
    }
    return isTaken;
  }

  std::mt19937 random_{1};
  FunctionRecord function_ = FunctionOf(0, 0);
  FileBytes bytes_;
  DecodedPoints all_;
  std::vector<double> masses_;
  std::vector<double> intensities_;
};

TEST_F(ScanRangeTest, IsLookedForInPeaksUnderUsualCalibrations) {
  for (int round = 0; round < 40; ++round) {
    for (const Encoding& encoding : kEncodings) {
      for (const bool isRoot : {false, true}) {
        function_ = FunctionOf(0, 0);
        EXPECT_TRUE(SeekRanges(encoding, Peaks(encoding)));
        SetTemperature(2.5F);
        EXPECT_TRUE(SeekRanges(encoding, Peaks(encoding)));
        function_.staticCal = NearIdentity(isRoot);
        EXPECT_TRUE(SeekRanges(encoding, Peaks(encoding)));
        function_.modificationCal = NearIdentity(Below(2) == 0);
        EXPECT_TRUE(SeekRanges(encoding, Peaks(encoding)));
      }
    }
  }
}

// All neighbouring values of the layouts: masses without a calibration ascend as long as single precision
// resolves them.
TEST_F(ScanRangeTest, IsLookedForWithoutCalibrationWhereverMassesAscend) {
  int taken = 0;
  int refused = 0;
  for (int round = 0; round < 100; ++round) {
    for (const Encoding& encoding : kEncodings) {
      const Keys keys = Ascending(Below(1U << (encoding.keyBits - 1)), 1 + Below(20), RandomCount());
      const bool isTaken = SeekRanges(encoding, keys);
      EXPECT_EQ(isTaken, !all_.isUnsorted);
      ++(isTaken ? taken : refused);
    }
  }
  EXPECT_GT(taken, 250);
  EXPECT_GT(refused, 20);
}

TEST_F(ScanRangeTest, IsNotLookedForInPointsOutOfOrder) {
  for (int round = 0; round < 200; ++round) {
    for (const Encoding& encoding : kEncodings) {
      function_ = FunctionOf(0, 0);
      if (Below(2) == 0) function_.staticCal = NearIdentity(Below(2) == 0);
      Keys keys = Peaks(encoding);
      if (keys.size() < 2) continue;
      const std::uint32_t place = 1 + Below(static_cast<std::uint32_t>(keys.size() - 1));
      switch (Below(3)) {
        case 0:
          std::swap(keys[place - 1], keys[place]);
          break;
        case 1:
          keys[place] = keys[place - 1];
          break;
        default:  // a second sub-scan
          std::copy_n(keys.begin(), keys.size() - place, keys.begin() + place);
      }
      EXPECT_FALSE(SeekRanges(encoding, keys));
      EXPECT_TRUE(all_.isUnsorted);
    }
  }
}

TEST_F(ScanRangeTest, IsNotLookedForAcrossTheBordersOfBlocksOutOfOrder) {
  Keys keys = Ascending(100000, 100, 3000);
  EXPECT_TRUE(SeekRanges(kEncodings[2], keys));
  for (const std::size_t border : {1024U, 2048U}) {
    Keys turned = keys;
    std::rotate(turned.begin(), turned.begin() + static_cast<std::ptrdiff_t>(border), turned.end());
    EXPECT_FALSE(SeekRanges(kEncodings[2], turned));
    turned = keys;
    turned[border] = turned[border - 1];
    EXPECT_FALSE(SeekRanges(kEncodings[2], turned));
  }
}

// Calibrations of every shape. Seek() checks that none is accepted under which masses do not ascend.
TEST_F(ScanRangeTest, IsLookedForOnlyWithCalibrationsThatAscend) {
  std::map<std::string, int> counts;
  for (int round = 0; round < 4000; ++round) {
    const Encoding& encoding = kEncodings[Below(std::size(kEncodings))];
    function_ = FunctionOf(0, 0);
    function_.staticCal = AnyPolynomial();
    if (Below(3) == 0) function_.modificationCal = AnyPolynomial();
    if (Below(3) == 0) SetTemperature(static_cast<float>(RandomPower(0, 5)));
    const bool isDense = Below(2) == 0;
    const Keys keys = isDense ? Ascending(Below(1U << (encoding.keyBits - 1)), 1 + Below(20), RandomCount())
                              : Peaks(encoding);
    const bool isTaken = SeekRanges(encoding, keys);
    ++counts[all_.isUnsorted ? "unsorted" : isTaken ? "taken" : "refused"];
    if (isTaken) ++counts[isDense ? "dense and taken" : "peaks and taken"];
  }
  EXPECT_GT(counts["unsorted"], 1000);
  EXPECT_GT(counts["peaks and taken"], 400);
  EXPECT_GT(counts["dense and taken"], 20);
  EXPECT_LT(counts["refused"], counts["taken"]);
}

// Masses too close to stay distinct: the flatter the calibration, the more are equal.
TEST_F(ScanRangeTest, IsLookedForInFlatCalibrationsWhileMassesStayApart) {
  int taken = 0;
  int unsorted = 0;
  for (int round = 0; round < 1000; ++round) {
    function_ = FunctionOf(0, 0);
    function_.staticCal = {{RandomPower(-3, 4), RandomPower(-9, 0)}, Below(2) == 0};
    const Encoding& encoding = kEncodings[Below(std::size(kEncodings))];
    taken += SeekRanges(encoding, Peaks(encoding)) ? 1 : 0;
    unsorted += all_.isUnsorted ? 1 : 0;
  }
  EXPECT_GT(taken, 100);
  EXPECT_GT(unsorted, 300);
}

// Each step of a calibration makes differences smaller, until an offset puts them below the resolution of
// single precision.
TEST_F(ScanRangeTest, IsLookedForWhileDifferencesAreNotLost) {
  int taken = 0;
  int unsorted = 0;
  for (int round = 0; round < 8000; ++round) {
    const Encoding& encoding = kEncodings[3 + Below(2)];
    const double first = RandomPower(0, 2);
    const double factor = Below(2) == 0 ? 1 : RandomPower(-4, -0.1);
    const bool isRoot = Below(2) == 0;
    const double lowest = isRoot ? std::sqrt(first * factor) : first * factor;
    function_ = FunctionOf(0, 0);
    function_.staticCal = {{lowest * (RandomPower(-3, 0) - 1), RandomPower(-2, 0)}, isRoot};
    if (Below(2) == 0) function_.staticCal.coefficients[1] = 1;
    function_.modificationCal = {{RandomPower(-2, 6), RandomPower(-2, 0)}, Below(2) == 0};
    SetTemperature(static_cast<float>((1 - factor) * 1e6 / 31));
    const auto step = static_cast<std::uint32_t>(RandomPower(-3, 0) / encoding.unit);
    Keys keys(2 + RandomCount() % 600, static_cast<std::uint32_t>(first / encoding.unit));
    for (std::size_t i = 1; i < keys.size(); ++i) keys[i] = keys[i - 1] + step;
    taken += SeekRanges(encoding, keys) ? 1 : 0;
    unsorted += all_.isUnsorted ? 1 : 0;
  }
  EXPECT_GT(taken, 1000);
  EXPECT_GT(unsorted, 1000);
}

// A large offset that a modification removes again: digits lost in double precision stay lost.
TEST_F(ScanRangeTest, IsLookedForWhileRoundingErrorsAreSmall) {
  int taken = 0;
  int unsorted = 0;
  for (int round = 0; round < 2000; ++round) {
    const double offset = RandomPower(6, 15);
    function_ = FunctionOf(0, 0);
    function_.staticCal = {{offset, 1}, false};
    function_.modificationCal = {{-offset, 1}, false};
    const auto most = static_cast<std::uint32_t>(RandomPower(0, 4));
    taken += SeekRanges(kEncodings[3], Ascending(1 << 18, most, 2 + RandomCount() % 600)) ? 1 : 0;
    unsorted += all_.isUnsorted ? 1 : 0;
  }
  EXPECT_GT(taken, 200);
  EXPECT_GT(unsorted, 200);
}

// A slope that overflows says nothing about the result after the modification.
TEST_F(ScanRangeTest, IsNotLookedForWithBoundlessSlopes) {
  function_.staticCal = {{0, 0, 0, 0, 0, 0, 1e308}, false};
  function_.modificationCal = {{1e18, 1e-300}, false};
  EXPECT_FALSE(SeekRanges(kEncodings[3], Ascending(1 << 16, 4, 1000)));
  EXPECT_TRUE(all_.isUnsorted);
}

TEST_F(ScanRangeTest, IsNotLookedForWithOddCalibrations) {
  const Keys keys = Ascending(400000, 12000, 500);  // to 800
  const CalibrationPolynomial odd[] = {
      {{0, -1}, false},                  // descends
      {{3000, -1}, false},               // the same, above 0
      {{40, -0.5}, true},                // the same for roots
      {{-150, 1}, false},                // from below 0
      {{-12, 1}, true},                  // the same for roots, whose squares turn
      {{500}, false},                    // flat
      {{500}, true},                     //
      {{0, 1e-300}, false},              // below the resolution of single precision
      {{0, 1e300}, false},               // beyond its range
      {{1e18, 1}, false},                // lost in a large number
      {{100, 1, -1e-3}, false},          // turns at 500
      {{400, 2, -1e-2, 1.6e-5}, false},  // turns twice
      {{kNaN, 1}, false},
      {{0, kNaN}, false},
      {{kInfinity, 1}, false},
      {{0, kInfinity}, true},
      {{0, 1, -kInfinity}, true},
  };
  for (const CalibrationPolynomial& polynomial : odd) {
    function_.staticCal = polynomial;
    EXPECT_FALSE(SeekRanges(kEncodings[2], keys)) << testing::PrintToString(polynomial.coefficients);
  }
  function_.staticCal = {{0, 1}, false};
  EXPECT_TRUE(SeekRanges(kEncodings[2], keys));
  for (const float coefficient : {2e5F, 1e30F, -1e38F, static_cast<float>(kNaN)}) {
    SetTemperature(coefficient);
    EXPECT_FALSE(SeekRanges(kEncodings[2], keys)) << coefficient;
  }
}

// A file that ends within the scan: existing points count, and without any point nothing is searched.
TEST_F(ScanRangeTest, IsLookedForInThePointsThatAreThere) {
  function_ = FunctionOf(9, 1000);
  const FileBytes whole = Write(9, Ascending(400000, 4000, 1000));
  for (const std::size_t size : {6000U, 5999U, 3001U, 6U}) {
    bytes_.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    Decode();
    EXPECT_TRUE(Seek({0, masses_[masses_.size() / 2]}));
  }
  for (const std::size_t size : {5U, 0U}) {
    bytes_.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    Decode();
    EXPECT_FALSE(Seek({0, 1000}));
  }
}

TEST_F(ScanRangeTest, IsNotLookedForInOtherLayouts) {
  for (const int format : {1, 2, 3, 4, 5, 6, 7, 11, 14}) {
    function_ = FunctionOf(format, 20, AscendingMasses(20), AscendingMasses(20));
    bytes_.assign(240, std::byte{0x11});
    Decode();
    EXPECT_FALSE(Seek({0, 1000})) << format;
  }
}

}  // namespace
}  // namespace zrml::masslynx
