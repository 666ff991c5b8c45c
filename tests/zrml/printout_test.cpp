#include "tools/zrml/printout.h"

#include <array>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace zrml::tool {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::array<double, 5> kX = {1e-7, 0.1, 123456789, 1e15, 1.7976931348623157e308};
constexpr std::array<double, 5> kY = {kNan, kInfinity, -kInfinity, -0.0, 5e-324};

Printout Odd() {
  Printout printout;
  printout.Add(
      {{"name", std::string("Odd\tname\n\"\xC3\xA9\xF0\x9D\x84\x9E\\\" \xC2\x85 \xE2\x80\xAE \xFF!")},
       {"absent", {}},
       {"minutes", kNan},
       {"range", source::Range{0.1, 0.1 + 0.2}}});
  printout.columns = {{"x", "xs", kX}, {"y", "ys", kY}};
  return printout;
}

template <class Print>
std::string Printed(Print print) {
  testing::internal::CaptureStdout();
  Output out;
  print(Odd(), out);
  out.Finish();
  return testing::internal::GetCapturedStdout();
}

// Positional from 1e-5 up to 1e15, otherwise with an exponent; each is the shortest that reads back as the
// same double. A byte that is not UTF-8 becomes U+FFFD.
TEST(Printout, TextHasShortestNumbersAndPlainLines) {
  EXPECT_EQ(Printed([](const Printout& printout, Output& out) { PrintText(printout, out); }),
            "# name: Odd\\tname\\n\"\xC3\xA9\xF0\x9D\x84\x9E\\\" \\u0085 \\u202e \xEF\xBF\xBD!\n"
            "# minutes: nan\n"
            "# range: 0.1 to 0.30000000000000004\n"
            "x\ty\n"
            "1e-07\tnan\n"
            "0.1\tinf\n"
            "123456789\t-inf\n"
            "1e+15\t-0\n"
            "1.7976931348623157e+308\t5e-324\n");
}

TEST(Printout, JsonHasNullForNumbersWithoutAForm) {
  EXPECT_EQ(
      Printed([](const Printout& printout, Output& out) { PrintJson(printout, out); }),
      "{\n"
      "  \"name\": \"Odd\\tname\\n\\\"\xC3\xA9\xF0\x9D\x84\x9E\\\\\\\" \\u0085 \\u202e \xEF\xBF\xBD!\",\n"
      "  \"absent\": null,\n"
      "  \"minutes\": null,\n"
      "  \"range\": [0.1, 0.30000000000000004],\n"
      "  \"xs\": [1e-07, 0.1, 123456789, 1e+15, 1.7976931348623157e+308],\n"
      "  \"ys\": [null, null, null, -0, 5e-324]\n"
      "}\n");
}

}  // namespace
}  // namespace zrml::tool
