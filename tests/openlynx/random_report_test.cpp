// The provider against the literal reader, on reports made at random.
#include "tests/openlynx/random_report.h"

#include <gtest/gtest.h>

#include "plugin/report_server.h"
#include "tests/openlynx/literal_reader.h"
#include "tests/openlynx/server_questions.h"
#include "tests/support/temp_directory.h"

namespace zrml {
namespace {

#ifdef _WIN32
constexpr int kComparedReports = 250;  // opening a file under Wine takes ten times as long
#else
constexpr int kComparedReports = 1000;
#endif

class RandomReportTest : public testing::TestWithParam<unsigned> {};

// Questions in random order, since earlier questions decide what is indexed.
TEST_P(RandomReportTest, EveryAnswerIsThatOfTheLiteralReader) {
  constexpr int kQuestions = 40;
  constexpr int kFullyAsked = 5;  // one report in five
  const TempDirectory directory;
  const std::wstring path = directory.WidePath("random.rpt");
  RandomReport random(GetParam());
  int spectra = 0;
  for (int report = 0; report < kComparedReports; ++report) {
    const std::string text = random.Next();
    directory.WriteText("random.rpt", text);
    plugin::COpenLynxRptDataServerImpl provider;
    LiteralReader literal;
    ASSERT_EQ(provider.Open(path), literal.Open(path));
    ASSERT_EQ(provider.ValidateSource(path), literal.ValidateSource(path)) << "report " << report;
    for (int i = 0; i < kQuestions; ++i) {
      const Question question = {random.Below(kOperations), random.Below(5) - 1, random.Below(5) - 1,
                                 random.Below(7) - 1};
      const std::string answer = Answer(literal, question);
      ASSERT_EQ(Answer(provider, question), answer) << "report " << report << ":\n" << text;
      const bool isTrue = answer.find("true") != std::string::npos;
      spectra += isTrue && answer.starts_with("GetSpectrum") ? 1 : 0;
    }
    if (report % kFullyAsked != 0) continue;
    ASSERT_EQ(AllAnswers(provider), AllAnswers(literal)) << "report " << report << ":\n" << text;
  }
  EXPECT_GT(spectra, 100);  // not all questions miss
}

// The file changes after positions were found: they stay and may be anywhere in the new file. Later functions
// are requested, too.
TEST_P(RandomReportTest, EveryAnswerAfterFurtherOpensIsThatOfTheLiteralReader) {
  constexpr int kQuestions = 40;
  const TempDirectory directory;
  const std::wstring path = directory.WidePath("random.rpt");
  RandomReport random(100 + GetParam());
  plugin::COpenLynxRptDataServerImpl provider;
  LiteralReader literal;
  int spectra = 0;
  for (int report = 0; report < kComparedReports; ++report) {
    const std::string text = random.Next();
    directory.WriteText("random.rpt", text);
    if (random.Below(4) == 0) {
      provider.Close();
      literal.Close();
    }
    ASSERT_EQ(provider.Open(path), literal.Open(path));
    for (int i = 0; i < kQuestions; ++i) {
      const int most = random.Below(3) == 0 ? 40 : 4;
      const Question question = {random.Below(kOperations), random.Below(5) - 1, random.Below(most) - 1,
                                 random.Below(most) - 1};
      const std::string answer = Answer(literal, question);
      ASSERT_EQ(Answer(provider, question), answer) << "report " << report << ":\n" << text;
      spectra += answer.starts_with("GetSpectrum") && answer.find("true") != std::string::npos ? 1 : 0;
    }
  }
  EXPECT_GT(spectra, 100);
}

// Functions that share spectra, and spectra at the same time: which scan counts is the base's rule.
TEST_P(RandomReportTest, PrecursorsAreThoseOfTheBase) {
  constexpr int kReports = 300;
  const TempDirectory directory;
  const std::wstring path = directory.WidePath("random.rpt");
  RandomReport random(200 + GetParam());
  int found = 0;
  for (int report = 0; report < kReports; ++report) {
    const std::string text = random.NextWithPrecursors();
    directory.WriteText("random.rpt", text);
    plugin::COpenLynxRptDataServerImpl provider;
    LiteralReader literal;
    ASSERT_EQ(provider.Open(path), literal.Open(path));
    for (int function = -1; function <= literal.GetFunctionCount(0); ++function) {
      for (int scan = -1; scan < 4; ++scan) {
        int theirs[2] = {-1, -2};
        int ours[2] = {-1, -2};
        const bool isFound = literal.FindPrecursorScan(0, function, scan, theirs[0], theirs[1]);
        ASSERT_EQ(provider.FindPrecursorScan(0, function, scan, ours[0], ours[1]), isFound) << text;
        ASSERT_EQ(ours[0], theirs[0]) << text;
        ASSERT_EQ(ours[1], theirs[1]) << text;
        found += isFound ? 1 : 0;
      }
    }
  }
  EXPECT_GT(found, kReports);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomReportTest, testing::Values(1U, 2U, 3U, 4U));

// Leaves its files open, hence fewer.
TEST(RandomReportCountTest, FileSampleCountIsThatOfTheLiteralReader) {
  constexpr int kReports = 200;
  const TempDirectory directory;
  RandomReport random(7);
  int samples = 0;
  for (int report = 0; report < kReports; ++report) {
    const std::string name = "random" + std::to_string(report) + ".rpt";
    const std::string text = random.Next();
    directory.WriteText(name, text);
    const std::wstring path = directory.WidePath(name);
    const int count = LiteralReader().GetFileSampleCount(path);
    ASSERT_EQ(plugin::COpenLynxRptDataServerImpl().GetFileSampleCount(path), count) << text;
    samples += count;
  }
  EXPECT_GT(samples, kReports);
}

}  // namespace
}  // namespace zrml
