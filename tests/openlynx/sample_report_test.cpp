// The sample report, read by the provider.
#include "tests/openlynx/literal_reader.h"
#include "tests/openlynx/report_fixture.h"
#include "tests/openlynx/server_questions.h"
#include "tests/support/sample/report.h"

namespace zrml {
namespace {

using SampleReportTest = ReportTest;

TEST_F(SampleReportTest, HasInjectionsAndFunctionsOfEveryKind) {
  Open(sample::Report(LineEnd::kCrLf));
  EXPECT_TRUE(server_.ValidateSource(directory_.WidePath("report.rpt")));
  ASSERT_EQ(server_.GetSampleCount(), 3);
  for (int sample = 0; sample < 3; ++sample) {
    ASSERT_EQ(server_.GetFunctionCount(sample), 3);
    EXPECT_EQ(server_.GetFunctionName(sample, 0), L"ES+ MS survey");
    EXPECT_EQ(server_.GetPolarity(sample, 1), 2);
    EXPECT_EQ(server_.GetFunctionKind(sample, 2), 32);
    EXPECT_EQ(server_.GetTraceCount(sample), 3);  // two of the diode array, one analog
  }
  EXPECT_EQ(server_.GetTraceName(2, 2), L"System Pressure");
  EXPECT_TRUE(server_.IsCentroided(2, 0));
  EXPECT_FALSE(server_.IsCentroided(2, 1));
}

// Caffeine, C8H10N4O2, elutes at 1.85 min, second of the compounds: 8 x 12 + 10 x 1.00782503 + 4 x
// 14.00307400 + 2 x 15.99491462 + 1.00727647 = 195.08765, written with four decimals. The blank has only the
// background.
TEST_F(SampleReportTest, ShowsCaffeineWhereThereIsSome) {
  Open(sample::Report(LineEnd::kLf));
  CZRMassSpectrum spectrum = Spectrum(1, 0, 2);
  EXPECT_EQ(spectrum.GetStartTime(), 1.85);
  EXPECT_EQ(spectrum.GetBasePeakMass(), 195.0877);
  spectrum = Spectrum(1, 0, 0);
  EXPECT_NEAR(spectrum.GetBasePeakMass(), 391.2843, 1e-3);
}

TEST_F(SampleReportTest, LineEndsChangeTheFunctionTextOnly) {
  const std::wstring lf = Write(sample::Report(LineEnd::kLf), "lf.rpt");
  const std::wstring crLf = Write(sample::Report(LineEnd::kCrLf), "crlf.rpt");
  ASSERT_TRUE(server_.Open(lf));
  plugin::COpenLynxRptDataServerImpl other;
  ASSERT_TRUE(other.Open(crLf));
  int differences = 0;
  for (int sample = -1; sample <= 3; ++sample) {
    for (int function = -1; function <= 3; ++function) {
      for (int index = -1; index <= 19; ++index) {
        for (int operation = 0; operation < kOperations; ++operation) {
          const Question question = {operation, sample, function, index};
          const std::string answer = Answer(server_, question);
          if (answer == Answer(other, question)) continue;
          ++differences;
          EXPECT_TRUE(answer.starts_with("GetMetadataValue")) << answer;
        }
      }
    }
  }
  EXPECT_EQ(differences, 3 * 3 * 2);  // the text of three functions in three samples, found at two indices
}

TEST_F(SampleReportTest, IsReadAsTheLiteralReaderReadsIt) {
  const std::wstring path = Write(sample::Report(LineEnd::kCrLf));
  LiteralReader literal;
  ASSERT_TRUE(literal.Open(path));
  ASSERT_TRUE(server_.Open(path));
  EXPECT_EQ(AllAnswers(server_), AllAnswers(literal));
}

}  // namespace
}  // namespace zrml
