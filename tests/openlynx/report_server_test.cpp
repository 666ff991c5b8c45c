// The provider as a host sees it: which files it accepts, opening and closing, and positions that do not
// exist.
#include "plugin/report_server.h"

#include <filesystem>

#include "tests/openlynx/report_fixture.h"
#include "tests/openlynx/server_questions.h"
#include "tests/support/held_open.h"

namespace zrml {
namespace {

using OpenLynxDataServerTest = ReportTest;

std::string SmallReport(int samples = 1) {
  ReportLines report;
  for (int i = 0; i < samples; ++i) report = report + SampleBlock(MsFunction(OneSpectrum() + OneTrace()));
  return ReportText(report);
}

TEST_F(OpenLynxDataServerTest, Identity) {
  EXPECT_EQ(server_.GetProviderName(), L"ZROpenLynxRptProvider");
  EXPECT_EQ(server_.GetProviderGuid(), L"{c1972a1b-f675-4d08-921a-3e6f8d107c76}");
  EXPECT_EQ(server_.GetFileFilter(), L"Waters OpenLynx Report (*.rpt)");
  EXPECT_TRUE(server_.IsReportSource());
}

TEST_F(OpenLynxDataServerTest, CanOpenGoesByTheName) {
  for (const char* name : {"a.rpt", "a.RPT", "a.rPt", ".rpt", "a.raw.rpt"}) {
    EXPECT_TRUE(server_.CanOpen(Write("anything", name))) << name;
  }
  for (const char* name : {"a.rp", "a.rptx", "arpt", "a.rpt ", "rpt"}) {
    EXPECT_FALSE(server_.CanOpen(Write(SmallReport(), name))) << name;
  }
  EXPECT_FALSE(server_.CanOpen(L""));
  EXPECT_FALSE(server_.CanOpen(L"rpt"));
  EXPECT_FALSE(server_.CanOpen(directory_.WidePath("missing.rpt")));
  directory_.MakeDirectory("folder.rpt");
  EXPECT_FALSE(server_.CanOpen(directory_.WidePath("folder.rpt")));
  EXPECT_FALSE(server_.ValidateSource(directory_.WidePath("folder.rpt")));
}

// U+0130 lower-cases to "i" in some locales and rules; only ASCII letters are mapped.
TEST_F(OpenLynxDataServerTest, ExtensionIsMappedInAsciiOnly) {
  EXPECT_FALSE(server_.CanOpen(Write("", "a.r") + L"\uFF30t"));  // a full-width P
}

TEST_F(OpenLynxDataServerTest, ValidSourceHasASampleInItsFirstTenLines) {
  const auto isValid = [&](const std::string& text) { return server_.ValidateSource(Write(text)); };
  EXPECT_TRUE(isValid("[SAMPLE]"));
  EXPECT_TRUE(isValid(std::string().append(9, '\n').append("[SAMPLE]\n")));
  EXPECT_FALSE(isValid(std::string().append(10, '\n').append("[SAMPLE]\n")));  // the eleventh line
  EXPECT_TRUE(isValid("a line with a [SAMPLE] in it"));
  EXPECT_FALSE(isValid("[Sample]\n[SAMPLE \n"));
  EXPECT_FALSE(isValid(""));
  EXPECT_FALSE(server_.ValidateSource(Write("[SAMPLE]", "report.txt")));
  EXPECT_FALSE(server_.ValidateSource(directory_.WidePath("missing.rpt")));
}

// Text mode, whatever the system: CR LF is one character, Ctrl-Z ends. The line buffer is one byte smaller
// than that of the parser: lines come in pieces of 998.
TEST_F(OpenLynxDataServerTest, ValidationReadsInTextModeThroughABufferOf999Bytes) {
  const auto isValid = [&](const std::string& text) { return server_.ValidateSource(Write(text)); };
  std::string blanks;
  for (int i = 0; i < 9; ++i) blanks += "\r\n";
  EXPECT_TRUE(isValid(blanks + "[SAMPLE]\r\n"));
  EXPECT_FALSE(isValid("\x1a[SAMPLE]"));
  EXPECT_FALSE(isValid(std::string("a\0[SAMPLE]", 10)));
  const std::string tenth(9 * 998, 'x');  // nine pieces, then the tenth
  EXPECT_TRUE(isValid(tenth + std::string().append(990, 'x').append("[SAMPLE]")));
  EXPECT_FALSE(
      isValid(tenth + std::string().append(991, 'x').append("[SAMPLE]")));   // across the end of the tenth
  EXPECT_FALSE(isValid(std::string().append(994, 'x').append("[SAMPLE]")));  // across two pieces
  std::string lines;
  for (int i = 0; i < 9; ++i) lines += std::string().append(997, 'x').append("\r\n");
  EXPECT_TRUE(isValid(lines + std::string().append(990, 'x').append("[SAMPLE]")));
  EXPECT_FALSE(isValid(lines + std::string().append(991, 'x').append("[SAMPLE]")));
}

TEST_F(OpenLynxDataServerTest, TestsOfAPathOpenNothing) {
  const std::wstring path = Write(SmallReport());
  EXPECT_TRUE(server_.CanOpen(path));
  EXPECT_TRUE(server_.ValidateSource(path));
  EXPECT_EQ(server_.GetSampleCount(), 0);
  Open(SmallReport(2));
  EXPECT_TRUE(server_.ValidateSource(Write(SmallReport(5), "other.rpt")));
  EXPECT_EQ(server_.GetFileSampleCount(directory_.WidePath("other.rpt")), 5);
  EXPECT_EQ(server_.GetSampleCount(), 2);
}

TEST_F(OpenLynxDataServerTest, FileSampleCountCountsLinesInTextMode) {
  const auto count = [&](const std::string& text) { return server_.GetFileSampleCount(Write(text)); };
  EXPECT_EQ(count(SmallReport(3)), 3);
  EXPECT_EQ(count("[SAMPLE]\r\n[SAMPLE]x\r\n [SAMPLE]\r\nx[SAMPLE]\r\n[SAMPLE]"), 3);
  EXPECT_EQ(count("[SAMPLE]\n\x1a\n[SAMPLE]\n"), 1);
  EXPECT_EQ(count(std::string().append(999, 'x').append("[SAMPLE]\n")), 1);
  EXPECT_EQ(count(std::string().append(998, 'x').append("[SAMPLE]\n")), 0);
  EXPECT_EQ(count(""), 0);
  EXPECT_EQ(server_.GetFileSampleCount(Write("[SAMPLE]", "any.txt")), 1);  // the name does not matter
  EXPECT_EQ(server_.GetFileSampleCount(directory_.WidePath("missing.rpt")), 0);
  EXPECT_EQ(server_.GetFileSampleCount(directory_.WidePath()), 0);
}

// Deliberate: hosts and the other operations do not expect the file to be closed again.
TEST_F(OpenLynxDataServerTest, FileSampleCountLeavesItsFileOpen) {
  const std::wstring path = Write(SmallReport());
  const std::filesystem::path file = directory_.Path() / "report.rpt";
  EXPECT_FALSE(IsHeldOpen(file));
  { EXPECT_EQ(plugin::COpenLynxRptDataServerImpl().GetFileSampleCount(path), 1); }
  EXPECT_TRUE(IsHeldOpen(file));
}

TEST_F(OpenLynxDataServerTest, NothingElseLeavesAFileOpen) {
  const std::wstring path = Write(SmallReport());
  const std::filesystem::path file = directory_.Path() / "report.rpt";
  {
    plugin::COpenLynxRptDataServerImpl server;
    EXPECT_TRUE(server.CanOpen(path));
    EXPECT_TRUE(server.ValidateSource(path));
    EXPECT_FALSE(IsHeldOpen(file));
    EXPECT_TRUE(server.Open(path));
    AllAnswers(server);
    EXPECT_TRUE(IsHeldOpen(file));
    EXPECT_TRUE(server.Close());
    EXPECT_FALSE(IsHeldOpen(file));
    EXPECT_TRUE(server.Open(path));
  }
  EXPECT_FALSE(IsHeldOpen(file));  // closed by the destructor
}

TEST_F(OpenLynxDataServerTest, CloseForgetsTheReport) {
  Open(SmallReport(2));
  EXPECT_EQ(server_.GetSampleCount(), 2);
  EXPECT_TRUE(server_.Close());
  EXPECT_EQ(server_.GetSampleCount(), 0);
  EXPECT_TRUE(server_.Close());
  Open(SmallReport(3));
  EXPECT_EQ(server_.GetSampleCount(), 3);
}

// Deliberate: the first file stays open for good, and what is known about it is used for the second.
TEST_F(OpenLynxDataServerTest, SecondOpenKeepsTheIndexAndLeavesTheFirstFileOpen) {
  Open(ReportText(SampleBlock(Line("FileName first")) + SampleBlock({})));
  EXPECT_EQ(server_.GetSampleCount(), 2);
  const std::wstring other = Write(ReportText(SampleBlock(Line("FileName other"))), "other.rpt");
  EXPECT_TRUE(server_.Open(other));
  EXPECT_EQ(server_.GetSampleCount(), 2);
  EXPECT_EQ(server_.GetSampleName(0), L"other");
  EXPECT_TRUE(IsHeldOpen(directory_.Path() / "report.rpt"));
  EXPECT_TRUE(server_.Close());
  EXPECT_TRUE(IsHeldOpen(directory_.Path() / "report.rpt"));
  EXPECT_FALSE(IsHeldOpen(directory_.Path() / "other.rpt"));
  EXPECT_TRUE(server_.Open(other));
  EXPECT_EQ(server_.GetSampleCount(), 1);
}

TEST_F(OpenLynxDataServerTest, SecondOpenReadsFunctionsAnewWhereTheyWere) {
  const auto report = [](const std::string& type, const std::string& point) {
    return "[SAMPLE]\n{\n[FUNCTION]\n{\nType " + type + "\nIonMode " + (type == "SIM" ? "-" : "+") +
           "\n[SPECTRUM]\n{\n[MS]\n" + point + "\n}\n}\n}\n}\n";
  };
  Open(report("MS2", "1 2"));
  EXPECT_EQ(server_.GetFunctionKind(0, 0), kMsMsFunction);
  EXPECT_EQ(server_.GetPolarity(0, 0), kPositivePolarity);
  EXPECT_TRUE(server_.Open(Write(report("SIM", "3 4"), "other.rpt")));
  EXPECT_EQ(server_.GetFunctionKind(0, 0), kIonMonitoringFunction);
  EXPECT_EQ(server_.GetFunctionName(0, 0), L"- SIM");
  EXPECT_EQ(server_.GetPolarity(0, 0), kNegativePolarity);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetMass(0), 3);
  EXPECT_EQ(spectrum.GetScanType(), kIonMonitoringFunction);
  EXPECT_EQ(spectrum.GetMSLevel(), 1);
}

TEST_F(OpenLynxDataServerTest, OpenThatFailsChangesNothing) {
  EXPECT_FALSE(server_.Open(directory_.WidePath("missing.rpt")));
  EXPECT_FALSE(server_.Open(directory_.WidePath()));
  EXPECT_EQ(server_.GetSampleCount(), 0);
  Open(SmallReport(2));
  EXPECT_FALSE(server_.Open(directory_.WidePath("missing.rpt")));
  EXPECT_EQ(server_.GetSampleCount(), 2);
  EXPECT_EQ(Spectrum().GetCount(), 1);
}

TEST_F(OpenLynxDataServerTest, OpenTakesAnyFile) {
  EXPECT_TRUE(server_.Open(Write("no report", "any.txt")));
  EXPECT_EQ(server_.GetSampleCount(), 0);
}

// The answer of each operation for a nonexistent sample or function, with outputs unchanged.
const char* const kNothing =
    "GetSampleName P: \"\"\n"
    "GetFunctionCount P: 0\n"
    "GetFunctionName P: \"\"\n"
    "GetFunctionKind P: 1\n"
    "GetPolarity P: 0\n"
    "GetMSLevel P: 1\n"
    "IsCentroided P: false\n"
    "GetScanCount P: 0\n"
    "GetBasePeakChromatogram P: true \"BPC\" ( ) ( )\n"  // the base's over no scans
    "GetTotalIonChromatogram P: true \"old\" ( ) ( )\n"
    "GetMassRangeChromatogram P: true \"old\" ( ) ( )\n"
    "GetRetentionTimes P: false ( bff0000000000000 )\n"
    "GetSpectrum P: false 1 ( bff0000000000000 ) ( 0 ) 0 0 0 0 true 1 1 1 true\n"
    "GetScanMassRange P: false bff0000000000000 c000000000000000\n"
    "FindPrecursorScan P: false -1 -2\n"
    "GetTraceCount P: 0\n"
    "GetTraceName P: \"\"\n"
    "GetTrace P: false \"old\" ( bff0000000000000 ) ( 0 )\n"
    "GetFunctionTraceCount P: 0\n"
    "GetFunctionTraceName P: \"\"\n"
    "GetFunctionTrace P: false \"old\" ( bff0000000000000 ) ( 0 )\n"
    "GetMetadataValue P: false \"\"\n"
    "GetMetadataKeys P: false \"old\"\n";

// The answers to all operations but the first, the sample count, with "P" for the position.
std::string AnswersAt(CDataServerImpl& server, const Question& at) {
  const std::string position =
      " " + std::to_string(at.sample) + " " + std::to_string(at.function) + " " + std::to_string(at.index);
  std::string text;
  for (int i = 1; i < kOperations; ++i) {
    std::string answer = Answer(server, {i, at.sample, at.function, at.index});
    text += answer.replace(answer.find(position), position.size(), " P");
  }
  return text;
}

TEST_F(OpenLynxDataServerTest, ObjectThatWasNeverOpenedHasNothing) {
  EXPECT_EQ(server_.GetSampleCount(), 0);
  for (const int position : {-1, 0, 1}) EXPECT_EQ(AnswersAt(server_, {0, position, position, 0}), kNothing);
  EXPECT_TRUE(server_.Close());
}

TEST_F(OpenLynxDataServerTest, ClosedObjectHasNothing) {
  Open(SmallReport());
  AllAnswers(server_);
  server_.Close();
  for (const int position : {-1, 0, 1}) EXPECT_EQ(AnswersAt(server_, {0, position, position, 0}), kNothing);
}

TEST_F(OpenLynxDataServerTest, MissingSampleHasNothing) {
  Open(SmallReport(2));
  for (const int sample : {-2147483647 - 1, -1, 2, 2147483647}) {
    EXPECT_EQ(AnswersAt(server_, {0, sample, 0, 0}), kNothing) << sample;
  }
}

// Operations without a function argument answer for the sample: it has a name, two functions and a trace.
TEST_F(OpenLynxDataServerTest, MissingFunctionHasNothing) {
  Open(SampleBlock(Line("FileName name") + MsFunction(OneSpectrum()) + MsFunction(OneTrace()) +
                   AnalogFunction(OneTrace())));
  std::string expected = kNothing;
  const auto replace = [&](const std::string& line, const std::string& with) {
    expected.replace(expected.find(line), line.size(), with);
  };
  replace("GetSampleName P: \"\"", "GetSampleName P: \"name\"");
  replace("GetFunctionCount P: 0", "GetFunctionCount P: 2");
  replace("GetTraceCount P: 0", "GetTraceCount P: 1");
  replace("GetTraceName P: \"\"", "GetTraceName P: \"Analog Trace 1\"");
  replace("GetTrace P: false \"old\" ( bff0000000000000 ) ( 0 )",
          "GetTrace P: true \"\" ( 3ff0000000000000 ) ( 4000000000000000 )");
  replace("GetMetadataValue P: false \"\"", "GetMetadataValue P: true \"ZROpenLynxRptProvider\"");
  for (const int function : {-1, 2, 2147483647}) {
    EXPECT_EQ(AnswersAt(server_, {0, 0, function, 0}), expected) << function;
  }
}

TEST_F(OpenLynxDataServerTest, CompleteFunctionBlockNeedsItsFunction) {
  Open(SmallReport());
  EXPECT_NE(Metadata(L"CompleteFunctionBlock", 0, 0), L"?");
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock", 0, 1), L"?");
  EXPECT_EQ(Metadata(L"CompleteFunctionBlock", 0, -1), L"?");
  EXPECT_EQ(Metadata(L"OperatorName", 0, -1), L"");  // the others do not look at it
}

TEST_F(OpenLynxDataServerTest, MissingScanIsFalse) {
  Open(SmallReport());
  CZRMassSpectrum spectrum(3);
  for (const int scan : {-2147483647 - 1, -1, 1, 2147483647}) {
    EXPECT_FALSE(server_.GetSpectrum(0, 0, scan, spectrum)) << scan;
    EXPECT_EQ(spectrum.GetCount(), 3);
  }
}

// Deliberate: a missing trace of a function gives true where one of a sample gives false. Callers check the
// chromatogram.
TEST_F(OpenLynxDataServerTest, MissingFunctionTraceIsTrueAndTouchesNothing) {
  Open(SampleBlock(MsFunction(OneTrace()) + AnalogFunction(OneTrace())));
  for (const int trace : {-1, 1, 2147483647}) {
    CZRChromatogram chromatogram;
    chromatogram.SetSize(2);
    chromatogram.SetName(L"old");
    EXPECT_TRUE(server_.GetFunctionTrace(0, 0, trace, chromatogram)) << trace;
    EXPECT_FALSE(server_.GetTrace(0, trace, chromatogram)) << trace;
    EXPECT_EQ(chromatogram.Times().size(), 2U);
    EXPECT_EQ(chromatogram.Name(), L"old");
    EXPECT_EQ(server_.GetFunctionTraceName(0, 0, trace), L"");
    EXPECT_EQ(server_.GetTraceName(0, trace), L"");
  }
}

// Deliberate: where there is no series, the base class computes one over no scans.
TEST_F(OpenLynxDataServerTest, ChromatogramOfNothingIsTheBasesOverNoScans) {
  CZRChromatogram chromatogram;
  chromatogram.SetSize(2);
  chromatogram.SetName(L"old");
  EXPECT_FALSE(server_.GetBasePeakChromatogram(false, 0, 0, chromatogram));
  EXPECT_FALSE(server_.GetTotalIonChromatogram(false, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times().size(), 2U);
  EXPECT_TRUE(server_.GetTotalIonChromatogram(true, 0, 0, chromatogram));
  EXPECT_TRUE(chromatogram.Times().empty());
  EXPECT_EQ(chromatogram.Name(), L"old");
  EXPECT_TRUE(server_.GetBasePeakChromatogram(true, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Name(), L"BPC");
}

// A provider whose base operations are counted: the fallback goes through the interface.
class CountingServer : public plugin::COpenLynxRptDataServerImpl {
 public:
  bool GetMassRangeBasePeakChromatogram(double low, double high, bool, int, int, CZRChromatogram&) override {
    return Note(low, high);
  }
  bool GetMassRangeChromatogram(double low, double high, bool, int, int, CZRChromatogram&) override {
    return Note(low, high);
  }
  int GetFunctionKind(int, int) override { return 64; }
  int GetPolarity(int, int) override { return 2; }

  int calls = 0;

 private:
  bool Note(double low, double high) {
    calls += low == -0x1.fffffffffffffp+1023 && high == 0x1.fffffffffffffp+1023 ? 1 : 0;
    return true;
  }
};

TEST_F(OpenLynxDataServerTest, OtherOperationsAreAskedThroughTheInterface) {
  CountingServer server;
  CZRChromatogram chromatogram;
  EXPECT_TRUE(server.GetBasePeakChromatogram(true, 0, 0, chromatogram));
  EXPECT_TRUE(server.GetTotalIonChromatogram(true, 0, 0, chromatogram));
  EXPECT_EQ(server.calls, 2);
  ASSERT_TRUE(server.Open(Write(SmallReport())));
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetScanType(), 64);
  EXPECT_EQ(spectrum.GetMSLevel(), 2);
  EXPECT_EQ(spectrum.GetPolarity(), 2);
}

TEST_F(OpenLynxDataServerTest, OtherOperationsAreTheBases) {
  Open(SmallReport());
  EXPECT_EQ(server_.GetMSMSScanType(0, 0), 0);
  EXPECT_EQ(server_.GetDimensionCount(0, 0), 1);
  EXPECT_FALSE(server_.HasMobility(0, 0));
  EXPECT_FALSE(server_.HasAbsorbanceData(0));
  double low = 0;
  double high = 0;
  EXPECT_FALSE(server_.GetFunctionMassRange(0, 0, low, high));
  EXPECT_TRUE(server_.OpenFileInSet(directory_.WidePath("report.rpt"), L"ignored"));
}

// The read-ahead is then far from the request.
TEST_F(OpenLynxDataServerTest, FileThatShrinksUnderTheReaderIsReadAsFarAsItGoes) {
  Open(ReportText(SampleBlock(Line("FileName name") + MsFunction(OneSpectrum()))) +
       std::string(300000, '\n') + ReportText(SampleBlock(Line("FileName far"))));
  EXPECT_EQ(server_.GetSampleName(0), L"name");
  EXPECT_EQ(Spectrum().GetCount(), 1);
  EXPECT_EQ(server_.GetSampleName(1), L"far");
  directory_.Truncate("report.rpt", 0);
  EXPECT_EQ(server_.GetSampleCount(), 2);
  EXPECT_EQ(server_.GetSampleName(0), L"Sample 1");
  CZRMassSpectrum spectrum;
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(Metadata(L"OperatorName"), L"");
}

// The function's keys are 300,000 bytes away from its spectrum; they are what they were when they were read.
TEST_F(OpenLynxDataServerTest, KeysOfAFunctionAreNotReadWithEachSpectrum) {
  const auto report = [](const std::string& ionMode) {
    return ReportText(SampleBlock(FunctionBlock(Line("Type MS") + Line("IonMode " + ionMode) +
                                                Line(std::string(300000, ' ')) + OneSpectrum())));
  };
  Open(report("ES+"));
  EXPECT_EQ(Spectrum().GetPolarity(), 1);
  Write(report("ES-"));
  EXPECT_EQ(Spectrum().GetPolarity(), 1);
  plugin::COpenLynxRptDataServerImpl fresh;
  ASSERT_TRUE(fresh.Open(directory_.WidePath("report.rpt")));
  EXPECT_EQ(fresh.GetPolarity(0, 0), 2);
}

}  // namespace
}  // namespace zrml
