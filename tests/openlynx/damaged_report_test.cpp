// Incomplete reports: the rest is read as the literal reader reads it.
#include <array>

#include "tests/openlynx/literal_reader.h"
#include "tests/openlynx/report_fixture.h"
#include "tests/openlynx/server_questions.h"

namespace zrml {
namespace {

using DamagedReportTest = ReportTest;

ReportLines SmallReport() {
  return SampleBlock(Keys({{"FileName", "a"}, {"Date", "1-Jan-2026"}}) +
                     MsFunction(SpectrumBlock(Keys({{"Time", "1.5"}, {"BPI", "200"}, {"TIC", "9"}}),
                                              {{100, 50}, {200.25, 12.5}}) +
                                ChromatogramBlock(Keys({{"Description", "TIC"}}), {{1, 2}})) +
                     AnalogFunction(ChromatogramBlock(Keys({{"MaxIntensity", "7"}}), {{3, 4}}))) +
         SampleBlock(MsFunction(OneSpectrum()));
}

TEST_F(DamagedReportTest, CutAtEveryByte) {
  for (const LineEnd lineEnd : {LineEnd::kLf, LineEnd::kCrLf}) {
    const std::string text = ReportText(SmallReport(), lineEnd);
    for (std::size_t size = 0; size <= text.size(); ++size) {
      const std::wstring path = Write(text.substr(0, size));
      LiteralReader literal;
      ASSERT_TRUE(literal.Open(path));
      server_.Close();
      ASSERT_TRUE(server_.Open(path));
      ASSERT_EQ(AllAnswers(server_), AllAnswers(literal)) << "cut at " << size;
    }
  }
}

// Worked out by hand, as the literal reader might also be wrong: the last bytes are the braces of the second
// sample, its function, its spectrum and its list, each with a line feed, after the data line "100<tab>50".
TEST_F(DamagedReportTest, UnterminatedBlocksAreReadToTheEnd) {
  const std::string text = ReportText(SmallReport());
  const std::size_t dataEnd = text.size() - 4 * 2;
  ASSERT_EQ(text.substr(dataEnd - 7), "100\t50\n}\n}\n}\n}\n");
  for (std::size_t size = dataEnd - 1; size <= text.size(); ++size) {
    Open(text.substr(0, size));
    EXPECT_EQ(Spectrum(0, 0, 1).GetIntensities()[0], 50.0) << size;
  }
  Open(text.substr(0, dataEnd - 2));
  EXPECT_EQ(Spectrum(0, 0, 1).GetIntensities()[0], 5.0);
  Open(text.substr(0, dataEnd - 3));
  CZRMassSpectrum spectrum;
  EXPECT_FALSE(server_.GetSpectrum(1, 0, 0, spectrum));
}

TEST_F(DamagedReportTest, EveryByteReplaced) {
  const std::string text = ReportText(SmallReport());
  constexpr std::array<char, 6> kBytes = {'\0', '\n', '{', '}', '[', '\xff'};
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string damaged = text;
    damaged[at] = kBytes[at % kBytes.size()];
    const std::wstring path = Write(damaged);
    LiteralReader literal;
    ASSERT_TRUE(literal.Open(path));
    server_.Close();
    ASSERT_TRUE(server_.Open(path));
    ASSERT_EQ(AllAnswers(server_), AllAnswers(literal)) << "byte " << at;
  }
}

TEST_F(DamagedReportTest, BytesWithoutAnyLine) {
  for (const char c : {'\0', '[', '{', '}', '\xff', '\n', '\r', ' '}) {
    Open(std::string(300000, c));
    EXPECT_EQ(server_.GetSampleCount(), 0);
    Open("[SAMPLE]\n{\n[FUNCTION]\n{\n[SPECTRUM]\n{\n[MS]\n" + std::string(300000, c));
    AllAnswers(server_);
    EXPECT_EQ(server_.GetFunctionCount(0), 1);
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  }
}

// A hundred thousand braces deep, then a hundred thousand surplus closing ones.
TEST_F(DamagedReportTest, DepthHasNoLimit) {
  std::string opening;
  std::string closing;
  for (int i = 0; i < 100000; ++i) {
    opening += "{\n";
    closing += "}\n";
  }
  Open("[SAMPLE]\n" + opening + ReportText(MsFunction(OneSpectrum())) + closing +
       ReportText(MsFunction(OneSpectrum())) + closing);
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  EXPECT_EQ(Spectrum().GetCount(), 1);
}

}  // namespace
}  // namespace zrml
