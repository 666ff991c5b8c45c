// The grammar: markers, braces, keys and data lines, as seen through the provider.
#include "tests/openlynx/report_fixture.h"

namespace zrml {
namespace {

class ReportLinesTest : public ReportTest {
 protected:
  // The time of a spectrum block with these lines between its brace and its data.
  double TimeOf(const ReportLines& keys) {
    OpenSpectrum(SpectrumBlock(keys, {{100, 50}}));
    return Spectrum().GetStartTime();
  }

  // The masses and percentages of a spectrum with these data lines.
  std::vector<std::pair<double, double>> PointsOf(const std::vector<std::string>& dataLines) {
    OpenSpectrum(Block("[SPECTRUM]", Line("[MS]") + Line("{") + ReportLines{dataLines} + Line("}")));
    CZRMassSpectrum spectrum;
    std::vector<std::pair<double, double>> points;
    if (!server_.GetSpectrum(0, 0, 0, spectrum)) return points;
    for (int i = 0; i < spectrum.GetCount(); ++i) {
      points.emplace_back(spectrum.GetMasses()[i], spectrum.GetIntensities()[i]);
    }
    return points;
  }
};

using Points = std::vector<std::pair<double, double>>;

TEST_F(ReportLinesTest, ValueFollowsItsKeyWithAnySeparatorOrNone) {
  for (const char* line : {"Time 1.25", "Time\t1.25", "Time1.25", "Time \t 1.25 \v\f\r"}) {
    EXPECT_EQ(TimeOf(Line(line)), 1.25) << line;
  }
}

TEST_F(ReportLinesTest, KeyIsCaseSensitiveAndInColumn0) {
  EXPECT_EQ(TimeOf(Line("time 1.25")), 0.0);
  EXPECT_EQ(TimeOf(Line(" Time 1.25")), 0.0);
  EXPECT_EQ(TimeOf(Line("\tTime 1.25")), 0.0);
}

// Deliberate: reports rely on a matching prefix, and nothing guards against a longer key.
TEST_F(ReportLinesTest, KeyMatchesALongerKeyThatBeginsWithIt) {
  EXPECT_EQ(TimeOf(Line("Timestamp 3") + Line("Time 1.25")), 0.0);  // "stamp 3" is not a number
  Open(SampleBlock(Line("DateAndMore 5") + Line("Timestamp 3")));
  EXPECT_EQ(Metadata(L"AnalysisDateTime"), L"AndMore 5Tstamp 3+00:00");
}

TEST_F(ReportLinesTest, KeyWithoutValueStaysOpenForALaterLine) {
  EXPECT_EQ(TimeOf(Line("Time")), 0.0);
  EXPECT_EQ(TimeOf(Line("Time") + Line("Time \t\r") + Line("Time 1.25")), 1.25);
}

TEST_F(ReportLinesTest, FirstValueCounts) { EXPECT_EQ(TimeOf(Line("Time 1.25") + Line("Time 9")), 1.25); }

TEST_F(ReportLinesTest, KeyIsFoundInNestedBlocksToo) {
  Open(SampleBlock(
      FunctionBlock(Line("Type MS") + SpectrumBlock(Line("IonMode ES-") + Line("Time 2.5"), {{100, 50}}))));
  EXPECT_EQ(server_.GetPolarity(0, 0), 2);
  EXPECT_EQ(Metadata(L"AnalysisDateTime"), L"T2.5+00:00");  // a sample without a time takes its spectrum's
}

TEST_F(ReportLinesTest, KeyAfterTheBlockIsNotFound) {
  Open(SampleBlock(MsFunction(SpectrumBlock({}, {{100, 50}}) + SpectrumBlock(Line("Time 7"), {{100, 50}}))));
  EXPECT_EQ(Spectrum(0).GetStartTime(), 0.0);
  EXPECT_EQ(Spectrum(1).GetStartTime(), 7.0);
}

// Keys are tried on the marker line and on opening braces, which begin with no key, and on the line in place
// of the opening brace, although the block is then empty.
TEST_F(ReportLinesTest, KeyInPlaceOfTheOpeningBraceIsTheLastOneTried) {
  Open("[SAMPLE]\nFileName first\nSampleID second\n{\n}\n");
  EXPECT_EQ(server_.GetSampleName(0), L"first");
  EXPECT_EQ(Metadata(L"SampleName"), L"");
  Open("[SAMPLE]\n}\nSampleID second\n{\n}\n");
  EXPECT_EQ(Metadata(L"SampleName"), L"");
}

TEST_F(ReportLinesTest, LinesThatBeginWithABraceCountAsOneWhateverFollows) {
  EXPECT_EQ(TimeOf(Line("{ more") + Line("}more") + Line("Time 1.25")), 1.25);
  EXPECT_EQ(TimeOf(Line("x{") + Line("x}") + Line(" {") + Line("Time 1.25")), 1.25);
  EXPECT_EQ(TimeOf(Line("{}") + Line("}{") + Line("Time 1.25")), 1.25);
}

TEST_F(ReportLinesTest, NulEndsTheTextOfItsLine) {
  using namespace std::string_literals;
  EXPECT_EQ(TimeOf(Line("Time 1.25\0007"s)), 1.25);
  EXPECT_EQ(TimeOf(Line("Time\0 1.25"s) + Line("Time 2"s)), 2.0);
  EXPECT_EQ(TimeOf(Line("\0Time 1.25"s)), 0.0);
  EXPECT_EQ(PointsOf({"100\0 5"s, "200 5\0006"s}), (Points{{200, 5}}));
}

TEST_F(ReportLinesTest, DataLineNeedsTwoNumbers) {
  EXPECT_EQ(PointsOf({"12.5 7", "12.5", "abc def", ";13 7", "; 14 7", "", "15 x", "x 15", " \t16.25\t\v8 9\r",
                      "17,5 7", "+18 .5", "19e-1 2E1", "0x14 0x1p-1", "21 7x"}),
            (Points{{12.5, 7}, {16.25, 8}, {18, 0.5}, {1.9, 20}, {20, 0.5}, {21, 7}}));
  EXPECT_EQ(PointsOf({"100+50", "1.5.25", "7-8"}), (Points{{100, 50}, {1.5, 0.25}}));  // -8 is no intensity
}

// Deliberate: braces inside are not counted, the list ends with the first closing one.
TEST_F(ReportLinesTest, DataListEndsWithTheFirstClosingBrace) {
  EXPECT_EQ(PointsOf({"1 2", "{", "3 4", "{5 6", "}", "7 8"}), (Points{{1, 2}, {3, 4}}));
  EXPECT_EQ(PointsOf({"1 2", " }", "3 4"}), (Points{{1, 2}, {3, 4}}));
}

TEST_F(ReportLinesTest, DataListNeedsNoBraceOfItsOwn) {
  OpenSpectrum(Block("[SPECTRUM]", Line("[MS] of these") + Line("100 50")));
  EXPECT_EQ(Spectrum().GetCount(), 1);
}

TEST_F(ReportLinesTest, DataListIsSearchedInsideItsBlockOnly) {
  Open(SampleBlock(
      MsFunction(Block("[SPECTRUM]", Line("Time 1")) + Line("[MS]") + Line("100 50") + Line("}"))));
  CZRMassSpectrum spectrum;
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
}

TEST_F(ReportLinesTest, IndentedMarkerIsNoMarker) {
  Open(SampleBlock(Line(" [FUNCTION]") + Line("{") + Line("}") + MsFunction(OneSpectrum())));
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  Open(Line(" [SAMPLE]") + SampleBlock({}));
  EXPECT_EQ(server_.GetSampleCount(), 1);
}

TEST_F(ReportLinesTest, MarkersAreCaseSensitiveAndMayBeFollowedByText) {
  Open(Line("[sample]") + Line("[SAMPLE]2 of 3") + Line("{") + Line("[Function]") + Line("[FUNCTION] a") +
       Line("{") + Line("[SPECTRUM]x") + Line("{") + Line("[ms]") + Line("[MS]x") + Line("100 50") +
       Line("}") + Line("}") + Line("}") + Line("}"));
  EXPECT_EQ(server_.GetSampleCount(), 1);
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  EXPECT_EQ(Spectrum().GetCount(), 1);
}

TEST_F(ReportLinesTest, SecondLineWithoutABraceLeavesTheBlockEmpty) {
  for (const char* second : {"", " {", "FileName x", "}", "[FUNCTION]"}) {
    SCOPED_TRACE(second);
    Open(Line("[SAMPLE]") + Line(second) + Line("{") + MsFunction(OneSpectrum()) + Line("}"));
    EXPECT_EQ(server_.GetSampleCount(), 1);
    EXPECT_EQ(server_.GetFunctionCount(0), 0);
    EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  }
}

TEST_F(ReportLinesTest, BlockWithoutItsClosingBraceExtendsToTheEndOfTheFile) {
  Open(Line("[SAMPLE]") + Line("{") + MsFunction(OneSpectrum()) + SampleBlock(MsFunction(OneSpectrum())));
  EXPECT_EQ(server_.GetSampleCount(), 2);
  EXPECT_EQ(server_.GetFunctionCount(0), 2);
  EXPECT_EQ(server_.GetFunctionCount(1), 1);
}

// A line of `size` characters that begins with `start`.
std::string LongLine(const std::string& start, std::size_t size) {
  return start + std::string(size - start.size(), ' ');
}

constexpr std::size_t kSizes[] = {998, 999, 1000, 1001, 5000};

// The rest of a long marker line is the block's second line, which opens no brace. With 999 characters even
// the line feed alone is.
TEST_F(ReportLinesTest, LongMarkerLineHasNoBlock) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    const bool fits = size == 998;
    Open(Line(LongLine("[SAMPLE]", size)) + Line("{") + MsFunction(OneSpectrum()) + Line("}"));
    EXPECT_EQ(server_.GetSampleCount(), 1);
    EXPECT_EQ(server_.GetFunctionCount(0), fits ? 1 : 0);
    Open(SampleBlock(Line(LongLine("[FUNCTION]", size)) + Line("{") + OneSpectrum() + Line("}")));
    EXPECT_EQ(server_.GetFunctionCount(0), fits ? 1 : 0);
    OpenSpectrum(Line(LongLine("[SPECTRUM]", size)) + Line("{") + Line("[MS]") + Line("100 50") + Line("}") +
                 Line("}"));
    EXPECT_EQ(server_.GetScanCount(0, 0), 1);
    CZRMassSpectrum spectrum;
    EXPECT_EQ(server_.GetSpectrum(0, 0, 0, spectrum), fits);
  }
}

// A long list marker only gives the list a line that is skipped.
TEST_F(ReportLinesTest, LongListMarkerHasItsList) {
  for (const std::size_t size : kSizes) {
    OpenSpectrum(Block("[SPECTRUM]", Line(LongLine("[MS]", size)) + Line("100 50") + Line("}")));
    EXPECT_EQ(Spectrum().GetCount(), 1) << size;
  }
}

TEST_F(ReportLinesTest, LongMarkersOfChromatogramsActLikeThoseOfSpectra) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    const bool fits = size == 998;
    const ReportLines list = Line("[TRACE]") + Line("1 2") + Line("}");
    OpenSpectrum(Line(LongLine("[CHROMATOGRAM]", size)) + Line("{") + Line("Description d") + list +
                 Line("}"));
    EXPECT_EQ(server_.GetFunctionTraceCount(0, 0), 1);
    CZRChromatogram chromatogram;
    EXPECT_EQ(server_.GetFunctionTrace(0, 0, 0, chromatogram), fits);
    OpenSpectrum(Block("[CHROMATOGRAM]", Line(LongLine("[TRACE]", size)) + Line("1 2") + Line("}")));
    EXPECT_TRUE(server_.GetFunctionTrace(0, 0, 0, chromatogram));
    EXPECT_EQ(chromatogram.Times().size(), 1U);
  }
}

// The value ends at 999 characters; blanks at its end do not matter.
TEST_F(ReportLinesTest, LongKeyLinesOfFunctionsSpectraAndChromatograms) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    Open(SampleBlock(FunctionBlock(Line(LongLine("Type MS2", size)) + Line(LongLine("IonMode ES-", size)) +
                                   SpectrumBlock(Line(LongLine("Time 2.5", size)), {{100, 50}}) +
                                   ChromatogramBlock(Line(LongLine("Description d", size)), {{1, 2}}))));
    EXPECT_EQ(server_.GetFunctionKind(0, 0), 4);
    EXPECT_EQ(server_.GetPolarity(0, 0), 2);
    EXPECT_EQ(Spectrum().GetStartTime(), 2.5);
    EXPECT_EQ(server_.GetFunctionTraceName(0, 0, 0), L"d");
    EXPECT_EQ(TimeOf(Line("Time" + std::string(size - 5, ' ') + "7")), size <= 999 ? 7.0 : 0.0);
  }
}

TEST_F(ReportLinesTest, LongCommentsOfBlanksAreSkipped) {
  for (const std::size_t size : kSizes)
    EXPECT_EQ(PointsOf({LongLine(";1 2", size), "3 4"}), (Points{{3, 4}})) << size;
}

TEST_F(ReportLinesTest, LongBraceLineIsABraceAndOtherLines) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    Open(Line("[SAMPLE]") + Line(LongLine("{", size)) + Line("FileName x") + MsFunction(OneSpectrum()) +
         Line(LongLine("}", size)) + Line("UserName y"));
    EXPECT_EQ(server_.GetFunctionCount(0), 1);
    EXPECT_EQ(server_.GetSampleName(0), L"x");
    EXPECT_EQ(Metadata(L"OperatorName"), L"");
  }
}

TEST_F(ReportLinesTest, LongValueIsCutAndItsRestIsASeparateLine) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    Open(SampleBlock(Line("FileName" + std::string(size - 8, 'v')) + Line("UserName y")));
    EXPECT_EQ(server_.GetSampleName(0), std::wstring(std::min<std::size_t>(size, 999) - 8, L'v'));
    EXPECT_EQ(Metadata(L"OperatorName"), L"y");
  }
}

TEST_F(ReportLinesTest, SecondPieceIsTestedAsASeparateLine) {
  const std::string filler(999, 'x');
  EXPECT_EQ(TimeOf(Line(filler + "Time 1.25")), 1.25);
  EXPECT_EQ(TimeOf(Line(filler + "x" + "Time 1.25")), 0.0);
  EXPECT_EQ(TimeOf(Line(filler + filler + "Time 1.25")), 1.25);
  Open(SampleBlock(Line(filler + "[FUNCTION]") + Line("{") + OneSpectrum() + Line("}")));
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  Open(Line(filler + "[SAMPLE]") + Line("{") + Line(filler + "}") + Line("UserName y"));
  EXPECT_EQ(server_.GetSampleCount(), 1);
  EXPECT_EQ(Metadata(L"OperatorName"), L"");
  EXPECT_EQ(
      PointsOf({filler + "100 50", std::string().append(999, ' ').append("200 50"), filler + "}", "300 50"}),
      (Points{{100, 50}, {200, 50}}));
}

TEST_F(ReportLinesTest, LineOf1200CharactersIsReadAsTwoLines) {
  const std::string line =
      "Time 1" + std::string().append(993, ' ').append("BPI 200") + std::string(194, ' ');
  ASSERT_EQ(line.size(), 1200U);
  EXPECT_EQ(TimeOf(Line(line)), 1.0);
  EXPECT_EQ(Spectrum().GetIntensities()[0], 100.0);  // 50 % of 200
}

// The last number counts up to the border; the rest begins a separate data line.
TEST_F(ReportLinesTest, LongDataLineIsCutBetweenItsDigits) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    const std::string line = "100" + std::string(size - 6, ' ') + "789";
    const std::vector<std::pair<std::size_t, Points>> expected = {
        {998, {{100, 789}}}, {999, {{100, 789}}}, {1000, {{100, 78}}}, {1001, {{100, 7}}}, {5000, {}}};
    const auto row =
        std::find_if(expected.begin(), expected.end(), [&](const auto& e) { return e.first == size; });
    EXPECT_EQ(PointsOf({line}), row->second);
  }
}

TEST_F(ReportLinesTest, LongCommentContinuesAsData) {
  EXPECT_EQ(PointsOf({";" + std::string().append(998, ' ').append("100 50")}), (Points{{100, 50}}));
}

TEST_F(ReportLinesTest, CrLfReadsAsLf) {
  const ReportLines report = SampleBlock(
      Keys({{"FileName", "a"}}) +
      MsFunction(SpectrumBlock(Keys({{"Time", "1.5"}, {"Continuum", "FALSE"}}), {{100, 50}, {200, 25}})));
  for (const LineEnd lineEnd : {LineEnd::kLf, LineEnd::kCrLf}) {
    Open(ReportText(report, lineEnd));
    EXPECT_EQ(server_.GetSampleName(0), L"a");
    EXPECT_EQ(server_.GetFunctionName(0, 0), L"ES+ MS survey");
    EXPECT_EQ(Spectrum().GetCount(), 2);
    EXPECT_TRUE(Spectrum().IsCentroided());
  }
}

}  // namespace
}  // namespace zrml
