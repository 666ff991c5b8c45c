// One pass through a spectrum's block: its values, and where its points begin.
#include <gtest/gtest.h>

#include "openlynx/report_values.h"
#include "tests/support/temp_directory.h"

namespace zrml::openlynx {
namespace {

class SpectrumHeadTest : public testing::Test {
 protected:
  // The head of the block at the start of `text`.
  SpectrumHead Head(const std::string& text) {
    directory_.WriteText("report.rpt", text);
    stream_ = ReportStream::Open(platform::ToSystemPath(directory_.WidePath("report.rpt")));
    return ReadSpectrumHead(stream_, 0);
  }

  TempDirectory directory_{"reports"};
  ReportStream stream_;
};

constexpr const char* kKeys = "Time 1\nBPI 2\nTIC 3\nContinuum FALSE\n";
constexpr const char* kList = "[MS]\n{\n5 50\n6 100\n}\n";

TEST_F(SpectrumHeadTest, PassEndsWhereThePointsBegin) {
  const std::string front = std::string("[SPECTRUM]\n{\n") + kKeys + "[MS]\n";
  const SpectrumHead head = Head(front + "{\n5 50\n}\n}\n");
  EXPECT_EQ(head.minutes, 1.0);
  EXPECT_EQ(head.basePeak, 2.0);
  EXPECT_EQ(head.totalIons, 3.0);
  EXPECT_TRUE(head.isCentroided);
  EXPECT_EQ(head.list, front.size());
  EXPECT_EQ(stream_.Position(), front.size());
  EXPECT_EQ(CountSpectrumLines(stream_, head), 1U);
}

TEST_F(SpectrumHeadTest, KeysMayBeOnEitherSideOfTheList) {
  for (const std::string& text : {std::string(kKeys) + kList, std::string(kList) + kKeys}) {
    const SpectrumHead head = Head("[SPECTRUM]\n{\n" + text + "}\nTime 9\n[MS]\n7 7\n");
    EXPECT_EQ(head.minutes, 1.0);
    EXPECT_EQ(head.totalIons, 3.0);
    const Points points = ReadSpectrumPoints(stream_, head);
    EXPECT_EQ(points.x, (std::vector<double>{5, 6}));
    EXPECT_EQ(points.intensities, (std::vector<double>{1, 2}));
  }
}

TEST_F(SpectrumHeadTest, FirstOfSeveralListsCounts) {
  const SpectrumHead head = Head(std::string("[SPECTRUM]\n{\n") + kKeys + kList + "[MS]\n{\n8 8\n}\n}\n");
  EXPECT_EQ(ReadSpectrumPoints(stream_, head).x, (std::vector<double>{5, 6}));
}

TEST_F(SpectrumHeadTest, ListOutsideTheBlockIsNotItsOwn) {
  for (const char* const text :
       {"[SPECTRUM]\n[MS]\n{\n1 1\n}\n", "[SPECTRUM]\n{\n}\n[MS]\n1 1\n", "[MS]\n{\n1 1\n}\n"}) {
    const SpectrumHead head = Head(text);
    EXPECT_FALSE(head.list) << text;
    EXPECT_EQ(CountSpectrumLines(stream_, head), 0U);
    EXPECT_TRUE(ReadSpectrumPoints(stream_, head).x.empty());
  }
}

}  // namespace
}  // namespace zrml::openlynx
