// The meaning of keys and data: kinds, polarities, names, scaled points, series, metadata.
#include <bit>
#include <clocale>
#include <cstdint>

#include "tests/openlynx/report_fixture.h"

namespace zrml {
namespace {

class ReportValuesTest : public ReportTest {
 protected:
  void OpenFunction(const ReportLines& keys) { Open(SampleBlock(FunctionBlock(keys + OneSpectrum()))); }

  bool ReadFunctionTrace(const ReportLines& block, CZRChromatogram& chromatogram) {
    Open(SampleBlock(MsFunction(block)));
    return server_.GetFunctionTrace(0, 0, 0, chromatogram);
  }
};

TEST_F(ReportValuesTest, KindIsTheFirstPartThatTheTypeContains) {
  const std::vector<std::pair<std::string, int>> cases = {
      {"MS/MS", 4},        {"MSMS", 4},          {"MS2", 4},     {"MS3", 4},
      {"MS4", 4},          {"MS5", 4},           {"MS6", 4},     {"MS7", 2},
      {"MS1", 2},          {"SIM", 32},          {"MRM", 32},    {"MS", 2},
      {"TOF MS", 2},       {"MS2 Daughters", 4}, {"SIM MS", 32}, {"MRM MS", 32},
      {"MS SIM MS/MS", 4}, {"SIM MS2", 4},       {"ms", 1},      {"M S", 1},
      {"Scan", 1},         {"sim", 1},           {"MS /MS", 2},  {"xMS5x", 4},
  };
  for (const auto& [type, kind] : cases) {
    OpenFunction(Keys({{"Type", type}}));
    EXPECT_EQ(server_.GetFunctionKind(0, 0), kind) << type;
    const CZRMassSpectrum spectrum = Spectrum();
    EXPECT_EQ(spectrum.GetScanType(), kind) << type;
    EXPECT_EQ(spectrum.GetMSLevel(), kind == 4 ? 2 : 1) << type;
    EXPECT_EQ(server_.GetMSLevel(0, 0), kind == 4 ? 2 : 1) << type;
  }
  OpenFunction({});
  EXPECT_EQ(server_.GetFunctionKind(0, 0), 1);
}

TEST_F(ReportValuesTest, PolarityIsTheSignInTheIonMode) {
  const std::vector<std::pair<std::string, int>> cases = {{"ES+", 1}, {"ES-", 2}, {"+-", 1},
                                                          {"-+", 1},  {"ES", 0},  {"", 0}};
  for (const auto& [ionMode, polarity] : cases) {
    OpenFunction(Keys({{"IonMode", ionMode}}));
    EXPECT_EQ(server_.GetPolarity(0, 0), polarity) << ionMode;
    EXPECT_EQ(Spectrum().GetPolarity(), polarity == 2 ? 2 : 1) << ionMode;  // unknown is stored as positive
  }
}

TEST_F(ReportValuesTest, FunctionNameJoinsWhatThereIs) {
  OpenFunction(Keys({{"Description", "survey"}, {"IonMode", "ES+"}, {"Type", "MS"}}));
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"ES+ MS survey");
  OpenFunction(Keys({{"Description", "survey"}, {"Type", ""}, {"IonMode", "ES+"}}));
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"ES+ survey");
  OpenFunction(Keys({{"Type", "MS"}}));
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"MS");
}

TEST_F(ReportValuesTest, FunctionWithoutAnyNameIsNumbered) {
  Open(SampleBlock(MsFunction(OneSpectrum()) + FunctionBlock(OneSpectrum())));
  EXPECT_EQ(server_.GetFunctionName(0, 1), L"Function 2");
}

TEST_F(ReportValuesTest, SampleIsNamedByItsFileOrItsNumber) {
  Open(SampleBlock({}) + SampleBlock(Line("FileName\tMIX_01 ")) + SampleBlock({}));
  EXPECT_EQ(server_.GetSampleName(0), L"Sample 1");
  EXPECT_EQ(server_.GetSampleName(1), L"MIX_01");
  EXPECT_EQ(server_.GetSampleName(2), L"Sample 3");
}

// UTF-8 where the bytes are valid, Windows-1252 otherwise. Windows uses its own code page, which may be
// Windows-1252.
TEST_F(ReportValuesTest, TextComesThroughTheCodePage) {
#ifdef _WIN32
  GTEST_SKIP() << "The code page is the system's";
#endif
  Open(SampleBlock(Line("FileName 5 \xB5g") + Line("UserName Zo\xC3\xAB \xE2\x82\xAC") +
                   Line("SampleID \x80")));
  EXPECT_EQ(server_.GetSampleName(0), L"5 \u00B5g");
  EXPECT_EQ(Metadata(L"OperatorName"), L"Zo\u00EB \u20AC");
  EXPECT_EQ(Metadata(L"SampleName"), L"\u20AC");
}

TEST_F(ReportValuesTest, SpectrumHasScaledPointsAndTheScansAttributes) {
  OpenSpectrum(SpectrumBlock(Keys({{"Time", "2.25"}, {"Continuum", "FALSE"}, {"BPI", "5000"}, {"TIC", "9"}}),
                             {{300.5, 100}, {100.25, 12.5}, {300.5, 0.1}}));
  const CZRMassSpectrum spectrum = Spectrum();
  ASSERT_EQ(spectrum.GetCount(), 3);
  EXPECT_EQ(spectrum.MassVector(), (Doubles{300.5, 100.25, 300.5}));  // not sorted
  EXPECT_EQ(spectrum.IntensityVector(), (Doubles{5000, 625, 5}));
  EXPECT_EQ(spectrum.GetStartTime(), 2.25);
  EXPECT_EQ(spectrum.GetEndTime(), 2.25);
  EXPECT_EQ(spectrum.GetFirstScan(), 1);
  EXPECT_EQ(spectrum.GetLastScan(), 1);
  EXPECT_TRUE(spectrum.IsCentroided());
  EXPECT_TRUE(spectrum.AreStatisticsStale());
  EXPECT_EQ(spectrum.GetScanType(), 2);
  EXPECT_EQ(spectrum.GetPolarity(), 1);
}

// In doubles 0.1 x 3 is 0.30000000000000004, whose hundredth is one step above 0.1 x (3 / 100).
TEST_F(ReportValuesTest, IntensityIsMultipliedBeforeItIsDivided) {
  OpenSpectrum(SpectrumBlock(Line("BPI 3"), {{100, 0.1}}));
  EXPECT_EQ(Spectrum().GetIntensities()[0], 0x1.89374bc6a7efbp-9);
}

TEST_F(ReportValuesTest, BpiOfZeroOrNoneLeavesRelativeIntensities) {
  for (const char* line : {"BPI 0", "BPI", "BPI none", "BPI -0.0", "x"}) {
    OpenSpectrum(SpectrumBlock(Line(line), {{100, 12.5}}));
    EXPECT_EQ(Spectrum().GetIntensities()[0], 12.5) << line;
  }
  OpenSpectrum(SpectrumBlock(Line("BPI -200"), {{100, 12.5}}));
  EXPECT_EQ(Spectrum().GetIntensities()[0], -25.0);
}

TEST_F(ReportValuesTest, SpectrumPointsThatAreNotPositiveAreDropped) {
  OpenSpectrum(SpectrumBlock({}, {{100.5, 0}, {0, 5}, {-1, 5}, {5, -1}, {101.5, 1}}));
  EXPECT_EQ(Spectrum().MassVector(), (Doubles{101.5}));
}

TEST_F(ReportValuesTest, SpectrumWithoutPointsIsFalseAndLeavesTheContainer) {
  for (const ReportLines& block : {SpectrumBlock({}, {{100, 0}, {200, 0}}), SpectrumBlock({}, {}),
                                   Block("[SPECTRUM]", Line("Time 1"))}) {
    OpenSpectrum(block);
    CZRMassSpectrum spectrum(2);
    spectrum.SetMass(0, 7);
    spectrum.SetFirstScan(9);
    EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
    EXPECT_EQ(spectrum.GetCount(), 2);
    EXPECT_EQ(spectrum.GetMass(0), 7.0);
    EXPECT_EQ(spectrum.GetFirstScan(), 9);
  }
}

// Deliberate: FALSE in capitals alone means centroids.
TEST_F(ReportValuesTest, ContinuumUnlessExactlyFalse) {
  for (const char* line :
       {"Continuum false", "Continuum TRUE", "Continuum", "Continuum FALSE1", "Continuum 0", "x"}) {
    OpenSpectrum(SpectrumBlock(Line(line), {{100, 50}}));
    EXPECT_FALSE(Spectrum().IsCentroided()) << line;
    EXPECT_FALSE(server_.IsCentroided(0, 0)) << line;
  }
  OpenSpectrum(SpectrumBlock(Line("Continuum\tFALSE \r"), {{100, 50}}));
  EXPECT_TRUE(Spectrum().IsCentroided());
}

// Deliberate: unlike a spectrum, a trace keeps every point.
TEST_F(ReportValuesTest, TraceKeepsPointsThatAreNotPositive) {
  CZRChromatogram trace;
  ASSERT_TRUE(ReadFunctionTrace(ChromatogramBlock(Keys({{"Description", "TIC"}, {"MaxIntensity", "400"}}),
                                                  {{1.2, 0}, {-1, -50}, {1.4, 25}}),
                                trace));
  EXPECT_EQ(trace.Times(), (Doubles{1.2, -1, 1.4}));
  EXPECT_EQ(trace.Intensities(), (Doubles{0, -200, 100}));
  EXPECT_EQ(trace.Name(), L"TIC");
}

TEST_F(ReportValuesTest, MaxIntensityOfZeroOrNoneLeavesRelativeIntensities) {
  for (const char* line : {"MaxIntensity 0", "MaxIntensity", "x"}) {
    CZRChromatogram trace;
    ASSERT_TRUE(ReadFunctionTrace(ChromatogramBlock(Line(line), {{1, 12.5}}), trace));
    EXPECT_EQ(trace.Intensities(), (Doubles{12.5})) << line;
  }
}

TEST_F(ReportValuesTest, TraceWithoutPointsIsFalseAndLeavesTheContainer) {
  CZRChromatogram trace;
  trace.SetSize(2);
  trace.SetName(L"old");
  EXPECT_FALSE(ReadFunctionTrace(ChromatogramBlock(Line("Description new"), {}), trace));
  EXPECT_EQ(trace.Times().size(), 2U);
  EXPECT_EQ(trace.Name(), L"old");
}

// The container's name is only the description, even when that is empty; the numbered names are for the
// lists.
TEST_F(ReportValuesTest, TraceNamesAreNumberedInListsOnly) {
  Open(SampleBlock(AnalogFunction(OneTrace() + OneTrace()) +
                   MsFunction(OneTrace() + ChromatogramBlock(Line("Description UV 254"), {{1, 2}}))));
  EXPECT_EQ(server_.GetTraceName(0, 1), L"Analog Trace 2");
  EXPECT_EQ(server_.GetFunctionTraceName(0, 0, 0), L"Function Trace 1");
  EXPECT_EQ(server_.GetFunctionTraceName(0, 0, 1), L"UV 254");
  CZRChromatogram trace;
  trace.SetName(L"old");
  ASSERT_TRUE(server_.GetTrace(0, 1, trace));
  EXPECT_EQ(trace.Name(), L"");
  ASSERT_TRUE(server_.GetFunctionTrace(0, 0, 1, trace));
  EXPECT_EQ(trace.Name(), L"UV 254");
}

// Deliberate: series have no default, whereas a spectrum's zero BPI is 100.
TEST_F(ReportValuesTest, SeriesTakeWhatIsWritten) {
  Open(SampleBlock(
      MsFunction(SpectrumBlock(Keys({{"Time", "0.5"}, {"BPI", "7"}, {"TIC", "9"}}), {{100, 50}}) +
                 SpectrumBlock({}, {}) + SpectrumBlock(Keys({{"TIC", "1e3x"}, {"Time", "0.25"}}), {}))));
  Doubles times;
  ASSERT_TRUE(server_.GetRetentionTimes(0, 0, times));
  EXPECT_EQ(times, (Doubles{0.5, 0, 0.25}));
  CZRChromatogram chromatogram;
  chromatogram.SetName(L"kept");
  ASSERT_TRUE(server_.GetBasePeakChromatogram(false, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times(), (Doubles{0.5, 0, 0.25}));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{7, 0, 0}));
  ASSERT_TRUE(server_.GetTotalIonChromatogram(false, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times(), (Doubles{0.5, 0, 0.25}));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{9, 0, 1000}));
  EXPECT_EQ(chromatogram.Name(), L"kept");
}

TEST_F(ReportValuesTest, FunctionWithoutSpectraHasAnEmptySeries) {
  Open(SampleBlock(MsFunction(OneTrace())));
  Doubles times = {1};
  EXPECT_TRUE(server_.GetRetentionTimes(0, 0, times));
  EXPECT_TRUE(times.empty());
  CZRChromatogram chromatogram;
  chromatogram.SetSize(3);
  EXPECT_TRUE(server_.GetBasePeakChromatogram(false, 0, 0, chromatogram));
  EXPECT_TRUE(chromatogram.Times().empty());
  chromatogram.SetSize(3);
  EXPECT_TRUE(server_.GetTotalIonChromatogram(false, 0, 0, chromatogram));
  EXPECT_TRUE(chromatogram.Intensities().empty());
}

// The base's: from the points, 50 and 25 of the first spectrum in the range.
TEST_F(ReportValuesTest, ChromatogramsOfAMassRangeAreComputed) {
  OpenSpectrum(SpectrumBlock(Line("Time 1.5"), {{100, 50}, {200, 25}, {300, 100}}));
  CZRChromatogram chromatogram;
  ASSERT_TRUE(server_.GetMassRangeChromatogram(100, 250, true, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{75}));
  ASSERT_TRUE(server_.GetMassRangeBasePeakChromatogram(100, 250, true, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{50}));
  EXPECT_EQ(chromatogram.Times(), (Doubles{1.5}));
  EXPECT_FALSE(server_.GetMassRangeChromatogram(100, 250, false, 0, 0, chromatogram));
}

TEST_F(ReportValuesTest, PrecursorScanIsFoundAcrossFunctions) {
  const auto scanAt = [](const char* time) { return SpectrumBlock(Keys({{"Time", time}}), {{100, 50}}); };
  Open(SampleBlock(MsFunction(scanAt("1") + scanAt("2")) +
                   FunctionBlock(Line("Type MS2") + Line("IonMode ES+") + scanAt("1.5") + scanAt("2.5"))));
  int function = -1;
  int scan = -1;
  ASSERT_TRUE(server_.FindPrecursorScan(0, 1, 1, function, scan));
  EXPECT_EQ(function, 0);
  EXPECT_EQ(scan, 1);
}

TEST_F(ReportValuesTest, MetadataComesFromTheSample) {
  Open(SampleBlock(Keys({{"FileName", "MIX_01"},
                         {"SampleID", "mix 1"},
                         {"Date", "14-Nov-2026"},
                         {"Time", "9:15:00"},
                         {"UserName", "someone"},
                         {"Instrument", "QTOF"}}) +
                   MsFunction(OneSpectrum())));
  std::vector<std::wstring> keys = {L"old"};
  ASSERT_TRUE(server_.GetMetadataKeys(0, 0, keys));
  EXPECT_EQ(keys,
            (std::vector<std::wstring>{L"ProviderName", L"OperatorName", L"SampleName", L"AnalysisDateTime",
                                       L"InstrumentDescription", L"CompleteFunctionBlock"}));
  EXPECT_EQ(Metadata(L"ProviderName"), L"ZROpenLynxRptProvider");
  EXPECT_EQ(Metadata(L"OperatorName"), L"someone");
  EXPECT_EQ(Metadata(L"SampleName"), L"mix 1");
  EXPECT_EQ(Metadata(L"AnalysisDateTime"), L"14-Nov-2026T9:15:00+00:00");  // as they stand
  EXPECT_EQ(Metadata(L"InstrumentDescription"), L"QTOF");
}

TEST_F(ReportValuesTest, MissingMetadataIsEmptyAndTrue) {
  Open(SampleBlock({}));
  EXPECT_EQ(Metadata(L"OperatorName"), L"");
  EXPECT_EQ(Metadata(L"AnalysisDateTime"), L"T+00:00");
}

TEST_F(ReportValuesTest, MetadataKeysAreComparedExactly) {
  Open(SampleBlock(MsFunction(OneSpectrum())));
  for (const wchar_t* key : {L"Unknown", L"providername", L"ProviderName ", L"Provider", L""}) {
    std::wstring value = L"old";
    EXPECT_FALSE(server_.GetMetadataValue(0, 0, key, value));
    EXPECT_EQ(value, L"");
  }
  EXPECT_EQ(Metadata(std::wstring(L"ProviderName\0", 13)), L"?");
}

TEST_F(ReportValuesTest, KeyAndValueMayBeOneText) {
  Open(SampleBlock(Line("Instrument QTOF")));
  std::wstring text = L"InstrumentDescription";
  EXPECT_TRUE(server_.GetMetadataValue(0, 0, text, text));
  EXPECT_EQ(text, L"QTOF");
}

TEST_F(ReportValuesTest, CompleteFunctionBlockIsItsLinesWithTheirEnds) {
  using namespace std::string_literals;
  Open("[SAMPLE]\n{\n[FUNCTION] x\r\n{\r\nType MS\n[SPECTRUM]\n{\n}\n\n}  \r\nbehind\n}\n"s);
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock"), L"[FUNCTION] x\r\n{\r\nType MS\n[SPECTRUM]\n{\n}\n\n}  \r\n");
  Open("[SAMPLE]\n{\n[FUNCTION]\n{\nab\0cd\nef"s);  // a NUL takes the rest of its line with it
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock"), L"[FUNCTION]\n{\nabef");
}

// 10,000,000 characters are returned, one more is not. A character of two bytes counts once.
TEST_F(ReportValuesTest, CompleteFunctionBlockHasALargestSize) {
  constexpr std::size_t kLargest = 10000000;
  const std::string head = "[FUNCTION]\n{\n";
  const std::string tail = "}\n";
  const auto reportOf = [&](std::size_t characters) {
    std::string block = head;
    while (block.size() + 100 + tail.size() < characters) block += std::string(99, 'x') + '\n';
    block += std::string(characters - block.size() - tail.size() - 1, 'y') + '\n' + tail;
    return "[SAMPLE]\n{\n" + block + "}\n";
  };
  Open(reportOf(kLargest));
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock").size(), kLargest);
  Open(reportOf(kLargest + 1));
  std::wstring value = L"old";
  EXPECT_FALSE(server_.GetMetadataValue(0, 0, L"CompleteFunctionBlock", value));
  EXPECT_EQ(value, L"");
#ifndef _WIN32
  std::string text = reportOf(kLargest);
  text.replace(text.find("xx"), 1, "\xC2\xB5");
  Open(text);
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock").size(), kLargest);
#endif
}

// The worked example of docs/openlynx-report.md.
TEST_F(ReportValuesTest, DocumentedExample) {
  Open(
      BytesToText(HexToBytes("5B 53 41 4D 50 4C 45 5D 0D 0A 7B 0D 0A"
                             "46 69 6C 65 4E 61 6D 65 09 4D 49 58 5F 30 31 0D 0A"
                             "5B 46 55 4E 43 54 49 4F 4E 5D 0D 0A 7B 0D 0A"
                             "54 79 70 65 20 4D 53 32 0D 0A 49 6F 6E 4D 6F 64 65 20 45 53 2D 0D 0A"
                             "5B 53 50 45 43 54 52 55 4D 5D 0D 0A 7B 0D 0A"
                             "54 69 6D 65 20 30 2E 35 0D 0A 42 50 49 20 31 32 33 34 2E 35 0D 0A"
                             "5B 4D 53 5D 0D 0A 7B 0D 0A 34 34 35 2E 31 32 09 30 2E 33 0D 0A"
                             "34 34 36 2E 31 32 09 30 0D 0A 7D 0D 0A 7D 0D 0A 7D 0D 0A 7D 0D 0A")));
  EXPECT_EQ(server_.GetSampleName(0), L"MIX_01");
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"ES- MS2");
  EXPECT_EQ(server_.GetFunctionKind(0, 0), 4);
  const CZRMassSpectrum spectrum = Spectrum();
  ASSERT_EQ(spectrum.GetCount(), 1);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(spectrum.GetStartTime()), 0x3FE0000000000000);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(spectrum.GetMasses()[0]), 0x407BD1EB851EB852);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(spectrum.GetIntensities()[0]), 0x400DA0C49BA5E353);
  EXPECT_EQ(spectrum.GetFirstScan(), 1);
  EXPECT_EQ(spectrum.GetMSLevel(), 2);
  EXPECT_EQ(spectrum.GetPolarity(), 2);
  EXPECT_FALSE(spectrum.IsCentroided());
}

TEST_F(ReportValuesTest, HostsLocaleChangesNothing) {
  const char* const old = std::setlocale(LC_ALL, nullptr);
  const std::string kept = old != nullptr ? old : "C";
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "No locale with a decimal comma";
  OpenSpectrum(SpectrumBlock(Line("Time 1.5"), {{100.25, 12.5}}));
  const CZRMassSpectrum spectrum = Spectrum();
  std::setlocale(LC_ALL, kept.c_str());
  EXPECT_EQ(spectrum.GetStartTime(), 1.5);
  EXPECT_EQ(spectrum.MassVector(), (Doubles{100.25}));
  EXPECT_EQ(spectrum.IntensityVector(), (Doubles{12.5}));
}

}  // namespace
}  // namespace zrml
