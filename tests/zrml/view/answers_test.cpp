#include <gtest/gtest.h>

#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/view/opened_source.h"

namespace zrml::view {
namespace {

using Doubles = std::vector<double>;

class RawAnswers : public testing::Test {
 protected:
  Answer Ask(const std::string& question) const { return source_.Ask(question); }
  Json FactsOf(const std::string& question) const { return Ask(question).facts; }

  const OpenedSource source_{test::SmallAcquisition()};
};

TEST_F(RawAnswers, RunIsItsNameAndItsSamples) {
  const Json run = FactsOf("run");
  EXPECT_EQ(run["name"], "run.raw");
  EXPECT_EQ(run["isReport"], false);
  EXPECT_EQ(run["samples"].dump(), R"(["Injection 1"])");
}

TEST_F(RawAnswers, NameOfARunIsWithoutSeparatorsAtTheEnd) {
  const auto source = source::Source::Open((source_.Folder().Path() / "").string());
  EXPECT_EQ(AnswerTo(*source, *Question::Parse("run")).facts["name"], "run.raw");
}

TEST_F(RawAnswers, SampleHasFunctionsTracesAndMetadata) {
  const Json sample = FactsOf("sample?sample=0");
  ASSERT_EQ(sample["functions"].size(), 6U);
  const Json& survey = sample["functions"][0];
  EXPECT_EQ(survey["id"], "1");
  EXPECT_EQ(survey["file"], "_FUNC001.DAT");
  EXPECT_EQ(survey["polarity"], "positive");
  EXPECT_EQ(survey["scans"], 3);
  EXPECT_EQ(survey["minutes"].dump(), "[0.5,1.5]");
  EXPECT_EQ(survey["massRange"].dump(), "[50.0,1200.5]");
  EXPECT_EQ(survey["isCentroided"], false);
  EXPECT_EQ(sample["functions"][1]["msLevel"], 2);
  EXPECT_EQ(sample["functions"][2]["scans"], 0);
  EXPECT_TRUE(sample["functions"][2]["minutes"].is_null());
  EXPECT_EQ(sample["functions"][4]["isLockMass"], true);
  EXPECT_EQ(sample["functions"][5]["id"], "p1");
  EXPECT_EQ(sample["absorbance"].dump(), R"({"id":"5","file":"_FUNC005.DAT","scans":2})");
  EXPECT_EQ(sample["traces"][1]["name"], "UV\x1B[31m 254");
}

TEST_F(RawAnswers, ChromatogramsHaveAPointAndAPositionPerScan) {
  const Answer total = Ask("chromatogram?function=0&kind=tic&sample=0");
  EXPECT_EQ(total.curve.x, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(total.curve.y, (Doubles{1'000'013, 5, 0}));
  EXPECT_EQ(total.curve.scans, (std::vector<std::int32_t>{0, 1, 2}));
  EXPECT_EQ(Ask("chromatogram?function=0&kind=bpc&sample=0").curve.y, (Doubles{1'000'000, 5, 0}));
  EXPECT_EQ(Ask("chromatogram?function=0&kind=sum&low=100&high=200.5&sample=0").curve.y, (Doubles{13, 5, 0}));
  EXPECT_EQ(Ask("chromatogram?function=0&kind=largest&low=100&high=200.5&sample=0").curve.y,
            (Doubles{10, 5, 0}));
}

TEST_F(RawAnswers, APartOfAChromatogramReachesOnePointBeyondItsEnds) {
  const Answer part = Ask("chromatogram?function=0&kind=tic&sample=0&from=1.2&to=1.6");
  EXPECT_EQ(part.curve.x, (Doubles{1, 1.5}));
  EXPECT_EQ(part.curve.scans, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(part.facts["points"], 2);
}

TEST_F(RawAnswers, APartWithoutPointsHasTheEndsOfItsLine) {
  EXPECT_EQ(Ask("chromatogram?function=0&kind=tic&sample=0&from=0.6&to=0.7").curve.x, (Doubles{0.5, 1}));
  EXPECT_EQ(Ask("chromatogram?function=0&kind=tic&sample=0&from=2&to=3").curve.x, (Doubles{}));
}

TEST_F(RawAnswers, APartOfATraceIsCutToo) {
  const Answer part = Ask("trace?from=0.75&sample=0&to=1&trace=0");
  EXPECT_EQ(part.curve.x, (Doubles{0.5, 1}));
  EXPECT_EQ(part.curve.y, (Doubles{5, 2}));
  EXPECT_TRUE(part.curve.scans.empty());
}

TEST_F(RawAnswers, LongChromatogramsAreThinnedToTheirLimit) {
  const Answer total = Ask("chromatogram?function=0&kind=tic&sample=0&limit=2");
  EXPECT_EQ(total.curve.y, (Doubles{1'000'013, 0}));
  EXPECT_EQ(total.facts["points"], 3);
}

TEST_F(RawAnswers, SpectrumHasItsPointsAndWhatIsSaidOfTheScan) {
  const Answer spectrum = Ask("spectrum?function=0&sample=0&scan=0");
  EXPECT_EQ(spectrum.curve.x, (Doubles{100, 200.5, 300.0625}));
  EXPECT_EQ(spectrum.curve.y, (Doubles{10, 3, 1'000'000}));
  EXPECT_EQ(spectrum.facts["total"], 1'000'013);
  EXPECT_EQ(spectrum.facts["basePeakMz"], 300.0625);
  EXPECT_EQ(spectrum.facts["minutes"], 0.5);
  EXPECT_EQ(spectrum.facts["scanValue"], 2.5);
  EXPECT_EQ(spectrum.facts["areCentroids"], false);
  EXPECT_TRUE(Ask("spectrum?function=0&sample=0&scan=2").facts["basePeak"].is_null());
}

TEST_F(RawAnswers, FragmentsAndTheirSurveyPointToEachOther) {
  // The survey's scan at 1 min is the last one before the products at 1.125 min.
  const Json products = FactsOf("spectrum?function=1&sample=0&scan=1");
  EXPECT_EQ(products["precursor"].dump(), R"({"function":0,"scan":1})");
  EXPECT_EQ(products["precursorMz"], 445.125);
  const Json survey = FactsOf("spectrum?function=0&sample=0&scan=1");
  EXPECT_EQ(survey["products"].dump(), R"([{"function":1,"scan":1,"precursorMz":445.125}])");
  EXPECT_EQ(FactsOf("spectrum?function=0&sample=0&scan=0")["products"].dump(), "[]");
}

TEST_F(RawAnswers, AverageCountsItsScans) {
  const Answer average = Ask("average?function=1&sample=0&from=0&to=2");
  EXPECT_EQ(average.curve.y, (Doubles{7.5}));
  EXPECT_EQ(average.facts["scans"], 2);
  EXPECT_EQ(average.facts["leftOut"], 0);
  EXPECT_EQ(average.facts["lost"], 0);
  EXPECT_EQ(average.facts["backgroundScans"], 0);
}

TEST_F(RawAnswers, TracesHaveTimesAsStored) {
  const Answer trace = Ask("trace?sample=0&trace=0");
  EXPECT_EQ(trace.curve.x, (Doubles{0.5, 1}));
  EXPECT_EQ(trace.curve.y, (Doubles{5, 2}));
}

TEST_F(RawAnswers, PeaksAreThoseOfTheBasePeaks) {
  EXPECT_EQ(FactsOf("peaks?function=0&sample=0")["peaks"].dump(),
            R"([{"scan":0,"minutes":0.5,"intensity":1000000.0}])");
}

TEST_F(RawAnswers, AbsorbanceHasALargestValueASpectrumAndAWavelength) {
  const Answer largest = Ask("absorbance-largest?sample=0");
  EXPECT_EQ(largest.curve.x, (Doubles{0.125, 0.25}));
  EXPECT_EQ(largest.curve.y, (Doubles{3, 4}));
  EXPECT_EQ(largest.facts["wavelength"], 210);
  EXPECT_EQ(largest.facts["scan"], 1);
  EXPECT_EQ(Ask("absorbance?sample=0&scan=0").curve.y, (Doubles{0, 3}));
  EXPECT_EQ(Ask("wavelength?sample=0&low=209&high=210.2").curve.y, (Doubles{0, 4}));
  EXPECT_EQ(Ask("absorbance-map?sample=0&columns=2&rows=3").facts["largest"], 4);
}

TEST_F(RawAnswers, MapHasTheRangeOfTheMethod) {
  EXPECT_EQ(FactsOf("map?function=0&sample=0&columns=3&rows=5")["ordinate"].dump(), "[50.0,1200.5]");
}

TEST_F(RawAnswers, WhatIsNotThereIsAWrongQuestion) {
  for (const char* question :
       {"files", "sample?sample=1", "sample", "chromatogram?function=0&kind=none&sample=0",
        "chromatogram?function=6&kind=tic&sample=0", "spectrum?function=0&sample=0&scan=3",
        "map?function=0&sample=0&columns=9999&rows=1", "map?function=0&sample=0&columns=9&rows=9&from=2&to=1",
        "absorbance?sample=0&scan=2", "chromatogram?function=0&kind=tic&sample=0&from=2&to=1",
        "chromatogram?function=0&kind=sum&low=2&high=1&sample=0", "wavelength?sample=0&low=2&high=1",
        "average?function=0&sample=0&from=2&to=1", "map?function=0&sample=0&columns=9&rows=9&low=1&high=1"}) {
    EXPECT_THROW(Ask(question), WrongQuestion) << question;
  }
  EXPECT_THROW(Ask("trace?sample=0&trace=3"), source::Error);
}

TEST_F(RawAnswers, ScansThatCannotBeReadAreAnError) {
  EXPECT_THROW(Ask("spectrum?function=3&sample=0&scan=0"), source::Error);  // of an unknown format
}

TEST_F(RawAnswers, FindingsOfPointsNeedALookAtThem) {
  const auto has = [](const Json& facts, const char* code) {
    return facts.dump().find(code) != std::string::npos;
  };
  EXPECT_FALSE(has(FactsOf("findings?points=0"), "scans-unreadable"));
  EXPECT_TRUE(has(FactsOf("findings?points=1"), "scans-unreadable"));
}

TEST(ReportAnswers, FunctionsHaveTheirOwnTraces) {
  const OpenedSource source(test::Vials());
  const Json run = source.Ask("run").facts;
  EXPECT_EQ(run["name"], "vials.rpt");
  EXPECT_EQ(run["samples"].size(), 3U);
  const Json sample = source.Ask("sample?sample=0").facts;
  EXPECT_EQ(sample["functions"][0]["traces"][0]["name"], "TIC");
  EXPECT_EQ(source.Ask("trace?sample=0&function=0&trace=0").curve.y, (Doubles{50, 0}));
}

TEST(ReportAnswers, OfTimesThatDoNotAscendAreFoundWhereverTheyAre) {
  ReportLines spectra = Keys({{"Type", "MS"}});
  for (const char* minutes : {"4", "3", "2", "1"}) {
    spectra =
        spectra + SpectrumBlock(Keys({{"Time", minutes}, {"Continuum", "FALSE"}, {"BPI", "8"}}), {{50, 100}});
  }
  const OpenedSource source(SampleBlock(FunctionBlock(spectra)));
  const Answer part = source.Ask("chromatogram?function=0&from=1.5&kind=bpc&sample=0&to=2.5");
  EXPECT_EQ(part.curve.x, (Doubles{3, 2, 1}));
  EXPECT_EQ(part.curve.scans, (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(source.Ask("average?from=2&function=0&sample=0&to=4").facts["scans"], 3);
}

TEST(Questions, ThatNeedManyPointsAreLong) {
  const auto isLong = [](const char* text) { return IsLong(*Question::Parse(text)); };
  EXPECT_TRUE(isLong("chromatogram?kind=bpc"));
  EXPECT_TRUE(isLong("findings?points=1"));
  EXPECT_TRUE(isLong("map?function=0"));
  EXPECT_FALSE(isLong("chromatogram?kind=tic"));
  EXPECT_TRUE(isLong("findings?points=0"));  // which reads a report to its end
  EXPECT_FALSE(isLong("spectrum?scan=1"));
  EXPECT_FALSE(isLong("nothing"));
}

}  // namespace
}  // namespace zrml::view
