#include "spectrum/elementary.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Distance in units of the last place of `expected`.
double UlpsBetween(double value, double expected) {
  const double ulp = std::nextafter(std::fabs(expected), kInfinity) - std::fabs(expected);
  return std::fabs(value - expected) / ulp;
}

TEST(Elementary, ExactCases) {
  EXPECT_EQ(PortableLog(1), 0);
  EXPECT_EQ(PortableExp(0), 1);
  EXPECT_EQ(PortableExp(-0.0), 1);
}

TEST(Elementary, EndsOfTheRange) {
  EXPECT_EQ(PortableLog(0), -kInfinity);
  EXPECT_EQ(PortableLog(kInfinity), kInfinity);
  EXPECT_TRUE(std::isnan(PortableLog(-1)));
  EXPECT_TRUE(std::isnan(PortableLog(std::nan(""))));
  EXPECT_EQ(PortableExp(1000), kInfinity);
  EXPECT_EQ(PortableExp(kInfinity), kInfinity);
  EXPECT_EQ(PortableExp(-1000), 0);
  EXPECT_EQ(PortableExp(-kInfinity), 0);
  EXPECT_TRUE(std::isnan(PortableExp(std::nan(""))));
  // ln 2^-1074 and e^709 from tables.
  EXPECT_LE(UlpsBetween(PortableLog(0x1p-1074), -744.4400719213812), 1);
  EXPECT_LE(UlpsBetween(PortableExp(709), 8.218407461554972e307), 1);
  EXPECT_LE(UlpsBetween(PortableExp(-708), 3.307553003638408e-308), 1);
  // The smallest normal number is e^-708.39641853226410622.
  EXPECT_LE(UlpsBetween(PortableExp(-708.392), 2.23492717170118e-308), 1);
  EXPECT_LE(UlpsBetween(PortableExp(-708.3964185322641), 2.2250738585072626e-308), 1);
  EXPECT_EQ(PortableExp(-708.3964185322642), 0);
}

// The C library's are good to a unit in the last place; ours may be off by two more.
TEST(Elementary, FollowTheCLibraryWithinUnitsOfTheLastPlace) {
  RandomNumbers random(7);
  for (int i = 0; i < 200000; ++i) {
    const double exponent = 1400 * (UnitNumber(random) - 0.5);
    ASSERT_LE(UlpsBetween(PortableExp(exponent), std::exp(exponent)), 3) << exponent;
    const double x = std::ldexp(1 + UnitNumber(random), random.Below(2000) - 1000);
    ASSERT_LE(UlpsBetween(PortableLog(x), std::log(x)), 2.5) << x;
    const double nearOne = 0.5 + UnitNumber(random);
    ASSERT_LE(UlpsBetween(PortableLog(nearOne), std::log(nearOne)), 2.5) << nearOne;
  }
}

// The doubles nearest to the true values, computed to 60 digits; elsewhere a result may be a unit off.
TEST(Elementary, NearestDoubles) {
  EXPECT_EQ(PortableLog(2), 0x1.62e42fefa39efp-1);
  EXPECT_EQ(PortableLog(10), 0x1.26bb1bbb55516p+1);
  EXPECT_EQ(PortableLog(500), 0x1.8dbc239b0b862p+2);
  EXPECT_EQ(PortableLog(5000), 0x1.108cd8bc5b177p+3);
  // These depend on the last two terms of the series.
  EXPECT_EQ(PortableLog(1.395953), 0x1.55954c15d512fp-2);
  EXPECT_EQ(PortableLog(1.394139), 0x1.54406d5fb8985p-2);
  EXPECT_EQ(PortableExp(0.5), 0x1.a61298e1e069cp+0);
  EXPECT_EQ(PortableExp(-1), 0x1.78b56362cef38p-2);
  EXPECT_EQ(PortableExp(6.25), 0x1.0301a43d1d8e3p+9);
  EXPECT_EQ(PortableExp(8.5), 0x1.332c4d2b7c4a1p+12);
}

}  // namespace
}  // namespace zrml
