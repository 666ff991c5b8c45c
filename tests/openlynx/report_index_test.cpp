// Which samples, functions, spectra and traces are found, and when they are searched.
#include "tests/openlynx/report_fixture.h"

namespace zrml {
namespace {

class ReportIndexTest : public ReportTest {
 protected:
  CZRChromatogram Trace(int trace, int sample = 0) {
    CZRChromatogram chromatogram;
    EXPECT_TRUE(server_.GetTrace(sample, trace, chromatogram));
    return chromatogram;
  }
};

ReportLines Function(const std::string& description, const ReportLines& blocks) {
  return FunctionBlock(Keys({{"Description", description}, {"Type", "MS"}}) + blocks);
}

TEST_F(ReportIndexTest, SampleMarkerAnywhereStartsASample) {
  Open(SampleBlock(MsFunction(OneSpectrum() + Line("[SAMPLE]"))) + Line("}") + Line("[SAMPLE]"));
  EXPECT_EQ(server_.GetSampleCount(), 3);
}

TEST_F(ReportIndexTest, SamplesBackToBackHaveTheirOwnFunctions) {
  Open(SampleBlock(Function("a", OneSpectrum()) + Function("b", OneSpectrum())) +
       SampleBlock(Function("c", OneSpectrum())));
  EXPECT_EQ(server_.GetFunctionCount(0), 2);
  EXPECT_EQ(server_.GetFunctionCount(1), 1);
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"MS a");
  EXPECT_EQ(server_.GetFunctionName(0, 1), L"MS b");
  EXPECT_EQ(server_.GetFunctionName(1, 0), L"MS c");
}

TEST_F(ReportIndexTest, FunctionsOutsideSamplesAreIgnored) {
  Open(Function("a", OneSpectrum()) + SampleBlock({}) + Function("b", OneSpectrum()));
  EXPECT_EQ(server_.GetSampleCount(), 1);
  EXPECT_EQ(server_.GetFunctionCount(0), 0);
}

TEST_F(ReportIndexTest, FunctionWithoutBlocksDisappearsWithTheCount) {
  Open(SampleBlock(Function("a", OneSpectrum()) + Function("empty", {}) + Function("b", OneTrace())));
  EXPECT_EQ(server_.GetFunctionCount(0), 2);
  EXPECT_EQ(server_.GetFunctionName(0, 1), L"MS b");
  EXPECT_EQ(server_.GetFunctionName(0, 2), L"");
  EXPECT_EQ(server_.GetFunctionCount(0), 2);
}

// Deliberate: only the count removes functions.
TEST_F(ReportIndexTest, FunctionWithoutBlocksStaysUntilTheCountIsRequested) {
  Open(SampleBlock(Function("empty", {}) + Function("a", OneSpectrum())));
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"MS empty");
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  EXPECT_EQ(server_.GetScanCount(0, 1), 1);
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"MS a");
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);
  EXPECT_EQ(server_.GetScanCount(0, 1), 0);
}

TEST_F(ReportIndexTest, DescriptionWithAnalogOrTypeWithDadIsAnalog) {
  const auto functionOf = [](const std::string& description, const std::string& type) {
    return SampleBlock(FunctionBlock(Keys({{"Description", description}, {"Type", type}}) + OneTrace()));
  };
  Open(functionOf("MY ANALOG 1", "MS") + functionOf("Analog", "MS") +
       functionOf("MS survey", "DAD Spectrum") + functionOf("", "a DAD") + functionOf("DAD", "ANALOG") +
       functionOf("x", "dad"));
  const int functions[] = {0, 1, 0, 0, 1, 1};
  for (int sample = 0; sample < 6; ++sample) {
    SCOPED_TRACE(sample);
    EXPECT_EQ(server_.GetFunctionCount(sample), functions[sample]);
    EXPECT_EQ(server_.GetTraceCount(sample) > 0, functions[sample] == 0);
  }
}

TEST_F(ReportIndexTest, AnalogTracesComeFromAllAnalogFunctionsInFileOrder) {
  const auto trace = [](const std::string& name) {
    return ChromatogramBlock(Keys({{"Description", name}}), {{1, 2}});
  };
  Open(SampleBlock(AnalogFunction(trace("a") + OneSpectrum() + trace("b")) + MsFunction(trace("own")) +
                   AnalogFunction(trace("c"))));
  EXPECT_EQ(server_.GetTraceCount(0), 3);
  EXPECT_EQ(server_.GetTraceName(0, 0), L"a");
  EXPECT_EQ(server_.GetTraceName(0, 1), L"b");
  EXPECT_EQ(server_.GetTraceName(0, 2), L"c");
  EXPECT_EQ(server_.GetTraceCount(0), 3);
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  EXPECT_EQ(server_.GetFunctionTraceName(0, 0, 0), L"own");
}

// Deliberate: such a sample never counts as indexed, so each call that looks at its functions adds the analog
// traces again. Existing ones keep their places.
TEST_F(ReportIndexTest, TracesOfASampleWithAnalogFunctionsOnlyGrowWithEachPass) {
  Open(SampleBlock(AnalogFunction(OneTrace() + ChromatogramBlock(Line("Description b"), {{3, 4}}))));
  EXPECT_EQ(server_.GetTraceCount(0), 2);
  EXPECT_EQ(server_.GetTraceCount(0), 4);
  EXPECT_EQ(server_.GetFunctionCount(0), 0);  // this is a pass, too
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  EXPECT_EQ(server_.GetTraceCount(0), 10);
  EXPECT_EQ(server_.GetSampleName(0), L"Sample 1");  // no pass
  EXPECT_EQ(server_.GetTraceCount(0), 12);
  EXPECT_EQ(server_.GetTraceName(0, 1), L"b");
  EXPECT_EQ(Trace(3).GetTimes()[0], 3.0);
}

TEST_F(ReportIndexTest, RequestsForNameAndDataLookForTracesToo) {
  Open(SampleBlock(AnalogFunction(OneTrace()) + MsFunction(OneSpectrum())));
  EXPECT_EQ(server_.GetTraceName(0, 0), L"Analog Trace 1");
  Open(SampleBlock(AnalogFunction(OneTrace()) + MsFunction(OneSpectrum())));
  EXPECT_EQ(Trace(0).GetTimes()[0], 1.0);
}

TEST_F(ReportIndexTest, SampleWithOtherFunctionsIsIndexedOnce) {
  Open(SampleBlock(AnalogFunction(OneTrace()) + Function("empty", {})));
  EXPECT_EQ(server_.GetTraceCount(0), 1);
  EXPECT_EQ(server_.GetFunctionCount(0), 0);  // pruned, and still indexed
  EXPECT_EQ(server_.GetTraceCount(0), 1);
}

TEST_F(ReportIndexTest, FileWithoutSamplesIsSearchedOnEveryCall) {
  Open("nothing\n");
  EXPECT_EQ(server_.GetSampleCount(), 0);
  Write("nothing\n[SAMPLE]\n{\n}\n");  // the file that is open has grown
  EXPECT_EQ(server_.GetSampleCount(), 1);
  Write("");
  EXPECT_EQ(server_.GetSampleCount(), 1);  // known from here on
}

// Deliberate: keys are searched in nested blocks too, so a function without a description takes that of its
// first chromatogram, and is analog when that says so.
TEST_F(ReportIndexTest, FunctionWithoutDescriptionBecomesAnalogByItsChromatogram) {
  Open(SampleBlock(
      FunctionBlock(Line("Type MS") + ChromatogramBlock(Line("Description ANALOG 1"), {{1, 2}}))));
  EXPECT_EQ(server_.GetFunctionCount(0), 0);
  EXPECT_GT(server_.GetTraceCount(0), 0);
}

TEST_F(ReportIndexTest, FailedSearchesAreRepeatedInTheCurrentFile) {
  Open("xxxxxxxx\n{\n}\n");
  EXPECT_EQ(server_.GetSampleCount(), 0);
  Write("[SAMPLE]\n{\n}\n");
  EXPECT_EQ(server_.GetSampleCount(), 1);
  EXPECT_EQ(server_.GetFunctionCount(0), 0);

  const std::string begin = "[SAMPLE]\n{\n[FUNCTION]\n{\nType MS\n";
  Open(begin + "xxxxxxxxxx\n{\n}\n}\n}\n");
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  Write(begin + "[SPECTRUM]\n{\n}\n}\n}\n");
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);

  Open("[SAMPLE]\n{\nxxxxxxxxxx\n{\nType MS\n[SPECTRUM]\n{\n}\n}\n}\n");
  EXPECT_EQ(server_.GetFunctionCount(0), 0);
  Write("[SAMPLE]\n{\n[FUNCTION]\n{\nType MS\n[SPECTRUM]\n{\n}\n}\n}\n");
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
}

TEST_F(ReportIndexTest, FunctionWithoutBlocksIsSearchedOnEveryRequest) {
  const std::string text = "[SAMPLE]\n{\n[FUNCTION]\n{\nType MS\n";
  const std::string spectrum = "[SPECTRUM]\n{\n}\n";
  Open(text);
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  Write(text + spectrum);  // the report is still being written
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);
  Write(text + spectrum + spectrum);
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);  // known from here on
}

TEST_F(ReportIndexTest, SpectraAndChromatogramsAreDistinguished) {
  Open(SampleBlock(Function("a", OneTrace() + OneSpectrum() + OneTrace() + OneTrace() + OneSpectrum())));
  EXPECT_EQ(server_.GetScanCount(0, 0), 2);
  EXPECT_EQ(server_.GetFunctionTraceCount(0, 0), 3);
}

// 100,000 spectra, and numbers that hosts keep in 16 bits.
TEST_F(ReportIndexTest, HundredThousandSpectra) {
  constexpr int kSpectra = 100000;
  std::string text = "[SAMPLE]\n{\n[FUNCTION]\n{\nType MS\n";
  for (int i = 0; i < kSpectra; ++i) {
    text += "[SPECTRUM]\n{\nTime " + std::to_string(i) + "\nBPI 200\nTIC 3\n[MS]\n{\n100 50\n" +
            std::to_string(i + 1) + " 25\n}\n}\n";
  }
  Open(text + "}\n}\n");
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  EXPECT_EQ(server_.GetScanCount(0, 0), kSpectra);
  Doubles times;
  ASSERT_TRUE(server_.GetRetentionTimes(0, 0, times));
  ASSERT_EQ(times.size(), static_cast<std::size_t>(kSpectra));
  const std::vector<std::pair<int, int>> numbers = {{0, 1},          {32766, 32767}, {32767, -32768},
                                                    {32768, -32767}, {65534, -1},    {65535, 0},
                                                    {65536, 1},      {99999, -31072}};  // 100000 - 131072
  CZRMassSpectrum spectrum;
  for (const auto& [scan, number] : numbers) {
    SCOPED_TRACE(scan);
    ASSERT_TRUE(server_.GetSpectrum(0, 0, scan, spectrum));
    EXPECT_EQ(spectrum.GetFirstScan(), number);
    EXPECT_EQ(spectrum.GetLastScan(), number);
    EXPECT_EQ(spectrum.GetStartTime(), scan);
    EXPECT_EQ(times[static_cast<std::size_t>(scan)], scan);
    EXPECT_EQ(spectrum.GetMass(1), scan + 1.0);
    EXPECT_EQ(spectrum.GetIntensities()[1], 50.0);
  }
  EXPECT_FALSE(server_.GetSpectrum(0, 0, kSpectra, spectrum));
}

}  // namespace
}  // namespace zrml
