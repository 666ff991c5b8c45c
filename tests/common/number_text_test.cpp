#include "common/number_text.h"

#include <limits>

#include <gtest/gtest.h>

namespace zrml {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct NumberCase {
  double value;
  const char* number;
  const char* isShort;
};

// 0.1F is 0.100000001490116; between 2^20 and 2^21 singles are an eighth apart, above 2^24 they are whole.
TEST(NumberText, ShortNumbersAreThoseOfSinglePrecision) {
  const NumberCase cases[] = {
      {0.1F, "0.10000000149011612", "0.1"},
      {0.1, "0.1", "0.1"},
      {137.99786376953125, "137.99786376953125", "137.99786"},
      {137.997863769531, "137.997863769531", "137.997863769531"},
      {445.125, "445.125", "445.125"},
      {-0.1F, "-0.10000000149011612", "-0.1"},
      {1048576.125, "1048576.125", "1048576.1"},
      {16777217, "16777217", "16777217"},
      {1e-7F, "1.0000000116860974e-07", "1e-07"},
      {0, "0", "0"},
      {-0.0, "-0", "-0"},
      {5e-324, "5e-324", "5e-324"},
      {1e300, "1e+300", "1e+300"},
      {kInfinity, "inf", "inf"},
      {-kInfinity, "-inf", "-inf"},
      {std::numeric_limits<double>::quiet_NaN(), "nan", "nan"},
  };
  for (const NumberCase& one : cases) {
    EXPECT_EQ(Number(one.value), one.number);
    EXPECT_EQ(ShortNumber(one.value), one.isShort) << one.number;
  }
}

}  // namespace
}  // namespace zrml
