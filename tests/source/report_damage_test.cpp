// Damaged reports as tools read them: what braces, zeros or the end of the file hide is absent, and nothing
// of one block appears in another.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/report_server.h"
#include "source/formats.h"
#include "source/point_filter.h"
#include "source/sum_scans.h"
#include "tests/support/temp_directory.h"

namespace zrml::source {
namespace {

using namespace std::string_literals;
using Doubles = std::vector<double>;
using Lines = std::vector<std::string>;

// The first spectrum has neither TIC nor Continuum.
const Lines kSound = {
    "[SAMPLE]",         // 1
    "{",                //
    "[FUNCTION]",       // 3
    "{",                //
    "Type MS/MS",       // 5
    "[SPECTRUM]",       //
    "{",                // 7
    "Time 0.5",         //
    "BPI 1000",         // 9
    "[MS]",             //
    "{",                // 11
    "100.125 100",      //
    "200.25 50.5",      // 13
    "}",                //
    "}",                // 15
    "[SPECTRUM]",       //
    "{",                // 17
    "Time 1",           //
    "BPI 80",           // 19
    "TIC 90",           //
    "Continuum FALSE",  // 21
    "[MS]",             //
    "{",                // 23
    "301.5 100",        //
    "401.5 20",         // 25
    "}",                //
    "}",                // 27
    "}",                //
    "}",                // 29
};

std::string TextOf(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

// The lines `first` to `last`, from 1, of the sound report.
Lines Part(std::size_t first, std::size_t last) {
  return {kSound.begin() + static_cast<std::ptrdiff_t>(first) - 1,
          kSound.begin() + static_cast<std::ptrdiff_t>(last)};
}

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class ReportDamageTest : public testing::Test {
 protected:
  void Open(const std::string& text) {
    directory_.WriteText("report.rpt", text);
    const auto path = (directory_.Path() / "report.rpt").u8string();
    source_ = OpenReport({path.begin(), path.end()});
  }
  void Open(const Lines& lines) { Open(TextOf(lines)); }

  PointsRead Read(int scan, int function = 0, int sample = 0) {
    return source_->ReadPoints(sample, function, scan, mz_, intensities_);
  }

  void ExpectPoints(int scan, const Doubles& mz, const Doubles& intensities) {
    ExpectRead(mz, intensities, scan);
    EXPECT_EQ(source_->ScanAt(0, 0, scan).points, mz.size());
  }

  void ExpectRead(const Doubles& mz, const Doubles& intensities, int scan = 0) {
    EXPECT_EQ(Read(scan).lost, 0U);
    EXPECT_EQ(mz_, mz);
    EXPECT_EQ(intensities_, intensities);
  }

  // The only finding of a kind.
  Finding FindingOf(FindingCode code) {
    std::vector<Finding> found;
    for (const Finding& each : source_->Findings()) {
      if (each.code == code) found.push_back(each);
    }
    EXPECT_EQ(found.size(), 1U);
    return found.empty() ? Finding() : found[0];
  }

  TempDirectory directory_{"reports"};
  std::unique_ptr<Source> source_;
  Doubles mz_;
  Doubles intensities_;
};

TEST_F(ReportDamageTest, SoundReport) {
  Open(kSound);
  EXPECT_TRUE(source_->Findings().empty());
  ExpectPoints(0, {100.125, 200.25}, {1000, 505});
  ExpectPoints(1, {301.5, 401.5}, {80, 16});
}

// Of the list, of the spectrum, or of both.
TEST_F(ReportDamageTest, MarkerEndsWhatLacksItsBrace) {
  for (const std::size_t last : {std::size_t{13}, std::size_t{14}}) {
    Open(Part(1, last) + Part(16, 29));
    ExpectPoints(0, {100.125, 200.25}, {1000, 505});
    ExpectPoints(1, {301.5, 401.5}, {80, 16});
    EXPECT_FALSE(source_->ScanAt(0, 0, 0).totalIntensity);
    EXPECT_EQ(source_->ScanAt(0, 0, 0).representation, Representation::kProfile);
    EXPECT_TRUE(std::isnan(source_->TotalIons(0, 0).intensities[0]));
    EXPECT_EQ(source_->TotalIons(0, 0).intensities[1], 90);
    EXPECT_EQ(source_->Minutes(0, 0), (Doubles{0.5, 1}));
    const Finding finding = FindingOf(FindingCode::kBraceMissing);
    EXPECT_EQ(finding.first, last + 1);
    EXPECT_EQ(finding.subject.sample, 1);
    EXPECT_EQ(finding.problem,
              "has a marker with } missing before it: line " + std::to_string(last + 1) + " ([SPECTRUM])");
  }
}

// Deliberate: to a host the list goes on to the next brace.
TEST_F(ReportDamageTest, HostsReadOn) {
  Open(Part(1, 13) + Part(16, 29));
  plugin::COpenLynxRptDataServerImpl server;
  ASSERT_TRUE(server.Open(directory_.WidePath("report.rpt")));
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server.GetSpectrum(0, 0, 0, spectrum));
  ASSERT_EQ(spectrum.GetCount(), 4);
  EXPECT_EQ(spectrum.GetMasses()[2], 301.5);
  EXPECT_EQ(spectrum.GetIntensities()[2], 1000);  // 100 percent of the first one's base peak
}

TEST_F(ReportDamageTest, AnyMarkerEndsAList) {
  for (const char* const marker :
       {"[SAMPLE]", "[FUNCTION]", "[SPECTRUM]", "[CHROMATOGRAM]", "[MS]", "[TRACE] x"}) {
    SCOPED_TRACE(marker);
    Open(Part(1, 13) + Lines{marker, "{", "300 7", "}", "}", "}"});
    ExpectPoints(0, {100.125, 200.25}, {1000, 505});
    const Finding finding = FindingOf(FindingCode::kBraceMissing);
    EXPECT_EQ(finding.first, 14U);
    EXPECT_EQ(finding.subject.sample, 1);
  }
  Open(Part(1, 10) + Part(10, 29));
  EXPECT_EQ(FindingOf(FindingCode::kBraceMissing).first, 11U) << "a list that has no brace at all";
  Open(Part(1, 13) + Lines{"[OTHER]", " [SPECTRUM]", "300 7"} + Part(14, 29));
  EXPECT_EQ(Read(0).count, 3U);
  EXPECT_EQ(intensities_, (Doubles{1000, 505, 70}));
}

TEST_F(ReportDamageTest, ListOfATraceEndsAtAMarker) {
  const Lines trace = {"[CHROMATOGRAM]", "{", "MaxIntensity 200", "[TRACE]", "{", "0.5 10"};
  Open(Part(1, 5) + trace + Part(6, 29));
  const Chromatogram read = source_->ReadFunctionTrace(0, 0, 0);
  EXPECT_EQ(read.minutes, Doubles{0.5});
  EXPECT_EQ(read.intensities, Doubles{20});
  EXPECT_EQ(FindingOf(FindingCode::kBraceMissing).first, 12U);
}

// A brace that is lost shifts all that follow, and is one finding.
TEST_F(ReportDamageTest, LostBraceCountsOnce) {
  const Lines function = Part(3, 28);
  Open(Part(1, 13) + Part(16, 28) + function + function + Part(29, 29));
  EXPECT_EQ(FindingOf(FindingCode::kBraceMissing).count, 1U);
  ASSERT_EQ(source_->Functions(0).size(), 3U);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(source_->ScanCount(0, i), 2);
  const Lines open = Part(1, 13) + Part(16, 25) + Part(6, 28);  // two spectra without their ends
  Open(open + function + Part(29, 29));
  const Finding finding = FindingOf(FindingCode::kBraceMissing);
  EXPECT_EQ(finding.count, 2U);
  EXPECT_EQ(finding.first, 14U);
}

// The text up to and with `end`, which is in it once.
std::string CutBehind(const std::string& end) {
  const std::string text = TextOf(kSound);
  return text.substr(0, text.find(end) + end.size());
}

// "50.5" in line 13 may be cut to "5", and the file may go on behind "50.5".
TEST_F(ReportDamageTest, PointOfACutLastLineIsLost) {
  for (const char* const end : {"200.25 5", "200.25 50.5", "200.25 50.", "200.2"}) {
    SCOPED_TRACE(end);
    Open(CutBehind(end));
    EXPECT_EQ(Read(0).lost, 1U);
    EXPECT_EQ(mz_, Doubles{100.125});
    EXPECT_EQ(intensities_, Doubles{1000});
    EXPECT_EQ(FindingOf(FindingCode::kLineCut).first, 13U);
    EXPECT_EQ(FindingOf(FindingCode::kLineCut).subject.sample, 1);
  }
  for (const char* const number : {"5e", "5e-", "5E+"}) {
    SCOPED_TRACE(number);
    Open(CutBehind("200.25 ") + number);
    EXPECT_EQ(Read(0).lost, 1U);
    EXPECT_EQ(mz_, Doubles{100.125});
  }
}

TEST_F(ReportDamageTest, LineEndMakesANumberWhole) {
  Open(CutBehind("200.25 50.5\r"));
  ExpectPoints(0, {100.125, 200.25}, {1000, 505});
  Open(CutBehind("200.25 50.5\r\n"));
  ExpectPoints(0, {100.125, 200.25}, {1000, 505});
  EXPECT_EQ(FindingOf(FindingCode::kReportCut).problem, "ends inside 4 blocks");
}

TEST_F(ReportDamageTest, ValueOfACutLastLineIsAbsent) {
  Open(CutBehind("TIC 9"));
  EXPECT_FALSE(source_->ScanAt(0, 0, 1).totalIntensity);
  EXPECT_EQ(source_->ScanAt(0, 0, 1).basePeakIntensity, 80);
  EXPECT_TRUE(std::isnan(source_->TotalIons(0, 0).intensities[1]));
  EXPECT_EQ(FindingOf(FindingCode::kLineCut).first, 20U);
  Open(CutBehind("BPI 10"));
  EXPECT_FALSE(source_->ScanAt(0, 0, 0).basePeakIntensity);
  EXPECT_TRUE(std::isnan(source_->BasePeaks(0, 0).intensities[0]));
  Open(CutBehind("Time 0"));
  EXPECT_TRUE(std::isnan(source_->ScanAt(0, 0, 0).minutes));
  EXPECT_TRUE(std::isnan(source_->Minutes(0, 0)[0]));
  Open(CutBehind("TIC 90\r\n"));
  EXPECT_EQ(source_->ScanAt(0, 0, 1).totalIntensity, 90);
}

// A trace is cut as a spectrum is.
TEST_F(ReportDamageTest, CutTrace) {
  const std::string front = TextOf(Part(1, 5)) + "[CHROMATOGRAM]\n{\nMaxIntensity 200";
  Open(front + "\n[TRACE]\n{\n0.5 10\n0.75 2");
  EXPECT_EQ(source_->ReadFunctionTrace(0, 0, 0).minutes, Doubles{0.5});
  EXPECT_EQ(source_->ReadFunctionTrace(0, 0, 0).intensities, Doubles{20});
}

TEST_F(ReportDamageTest, SoundReportNeedsNoLastLineEnd) {
  const std::string text = TextOf(kSound);
  for (const std::size_t cut : {1, 2}) {
    Open(text.substr(0, text.size() - cut));
    EXPECT_TRUE(source_->Findings().empty());
    ExpectPoints(1, {301.5, 401.5}, {80, 16});
  }
  Open(text + "made by somebody at 5");
  EXPECT_TRUE(source_->Findings().empty());
}

TEST_F(ReportDamageTest, SampleEndsWhereTheNextBegins) {
  Open(Part(1, 28) + Lines{"[SAMPLE]", "{", "FileName second"} + Part(3, 29));
  ASSERT_EQ(source_->SampleCount(), 2);
  EXPECT_EQ(source_->Functions(0).size(), 1U);
  EXPECT_EQ(source_->Functions(1).size(), 1U);
  EXPECT_EQ(source_->SampleName(0), "Sample 1");
  EXPECT_EQ(source_->SampleName(1), "second");
  EXPECT_EQ(FindingOf(FindingCode::kSampleUnended).subject.sample, 1);
}

// The sound report with another line in place of one, from 1.
Lines With(std::size_t line, const std::string& by) {
  Lines lines = kSound;
  lines[line - 1] = by;
  return lines;
}

// Such a scan is not added, and does not decide what is: here the second one, of two points, and then the
// first.
TEST_F(ReportDamageTest, ScansOfUnknownKindAreLeftOutOfSums) {
  const int both[] = {0, 1};
  const auto sum = [&] { return SumScans(*source_, 0, 0, both, {}, Unsuited::kAreLeftOut); };
  Open(With(21, "Continuum FALS\0"s));
  EXPECT_FALSE(sum().isCentroided);
  EXPECT_EQ(sum().added, std::vector<int>{0});
  EXPECT_EQ(sum().leftOut, 1);
  Open(With(8, "\0"s));
  EXPECT_TRUE(sum().isCentroided);
  EXPECT_EQ(sum().added, std::vector<int>{1});
  EXPECT_EQ(sum().leftOut, 1);
}

// Whether it is centroided: neither that it is, nor that it is not.
TEST_F(ReportDamageTest, KindOfASpectrumMayBeHidden) {
  for (const std::string& line :
       {"Continuum FALS\0"s, "Continuum \0\0\0\0\0"s, "Conti\0uum FALSE"s, "\0\0"s}) {
    SCOPED_TRACE(testing::PrintToString(line));
    Open(With(21, line));
    EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kUnknown);
    EXPECT_FALSE(IsProfile(source_->Functions(0)[0], source_->ScanAt(0, 0, 1)));
    EXPECT_EQ(FindingOf(FindingCode::kBytesZeroed).first, 21U);
    EXPECT_EQ(source_->ScanAt(0, 0, 0).representation, Representation::kProfile) << "no zeros there";
  }
  for (const std::string& line :
       {"Continuum FALSETIC 90"s, "TIC 90Continuum FALSE"s, "TIC 90Continuum false[X]"s,
        "Process xContinuum FALSETIC 5"s, "Process Combine (5:9)Continuum TRUE"s, "Continuum FALS"s,
        "Continuum false"s}) {
    SCOPED_TRACE(line);
    Open(With(21, line));
    EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kUnknown);
  }
  for (const std::size_t line : {22, 26, 27}) {  // the list's marker, its end, and the spectrum's
    Lines lines = With(21, "");
    lines[line - 1] += "Continuum FALSE";
    Open(lines);
    EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kUnknown) << line;
  }
  Open(CutBehind("Continuum FALSE"));
  EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kUnknown);
  EXPECT_EQ(FindingOf(FindingCode::kLineCut).first, 21U);
  Open(With(20, "TIC \0"s));
  EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kCentroid) << "its own line is there";
}

// Of a line that is longer than a piece the rest is other lines, and no part of the value.
TEST_F(ReportDamageTest, EndOfAPieceCutsNoValue) {
  const auto filled = [](const std::string& key, const std::string& value) {
    return key + std::string(999 - key.size() - value.size(), ' ') + value;
  };
  Open(With(21, filled("Continuum", "FALSE") + " "));
  EXPECT_EQ(source_->ScanAt(0, 0, 1).representation, Representation::kCentroid);
  Open(With(5, filled("Type", "MS/MS") + "x"));
  EXPECT_EQ(source_->Functions(0)[0].msLevel, 2);
  Open(With(20, filled("TIC", "90") + " "));
  EXPECT_EQ(source_->ScanAt(0, 0, 1).totalIntensity, 90);
  EXPECT_EQ(source_->TotalIons(0, 0).intensities[1], 90);
  Open(With(13, filled("200.25", "50.5") + " "));
  ExpectRead({100.125, 200.25}, {1000, 505});
  Open(TextOf(Part(1, 19)) + filled("TIC", "90"));
  EXPECT_FALSE(source_->ScanAt(0, 0, 1).totalIntensity) << "here the file ends";
  Open(TextOf(Part(1, 12)) + filled("200.25", "50.5"));
  EXPECT_EQ(Read(0).lost, 1U);
}

// Neither hides a value.
TEST_F(ReportDamageTest, CommentsAndMarkersAreNotCut) {
  for (const char* const line : {"; by someb", "[SPEC"}) {
    Open(TextOf(Part(1, 15)) + line);
    FindingOf(FindingCode::kReportCut);
    EXPECT_EQ(source_->Findings().size(), 1U) << line;
  }
  Open(TextOf(Part(1, 13)) + "; by someb");
  EXPECT_EQ(source_->Findings().size(), 1U) << "in a list";
}

// It lacks its brace, so what stands behind the marker of another one is of that one.
TEST_F(ReportDamageTest, FunctionHasNoValuesOfAnother) {
  const Lines other = {"[FUNCTION]", "{", "IonMode ES-", "Type MS/MS", "Description d"};
  Open(Part(1, 4) + Part(6, 15) + other + Part(6, 29));
  ASSERT_EQ(source_->Functions(0).size(), 2U);
  EXPECT_EQ(source_->Functions(0)[0].name, "Function 1");
  EXPECT_EQ(source_->Functions(0)[0].kind, FunctionKind::kOther);
  EXPECT_EQ(source_->Functions(0)[0].polarity, Polarity::kUnknown);
  EXPECT_EQ(source_->Functions(0)[1].name, "ES- MS/MS d");
  EXPECT_EQ(source_->Functions(0)[1].msLevel, 2);
}

TEST_F(ReportDamageTest, TypeOfAFunctionMayBeHidden) {
  for (const std::string& line : {"Type MS\0\0\0"s, "Type \0\0"s, "T\0pe MS/MS"s, "\0\0\0"s}) {
    SCOPED_TRACE(testing::PrintToString(line));
    Open(With(5, line));
    const Function& function = source_->Functions(0)[0];
    EXPECT_FALSE(function.msLevel);
    EXPECT_EQ(function.kind, FunctionKind::kOther);
    EXPECT_EQ(function.monitoring, Monitoring::kNone);
    EXPECT_FALSE(source_->FindPrecursor(0, 0, 1));
    ExpectPoints(0, {100.125, 200.25}, {1000, 505});
  }
  Open(With(5, "Type MS/MS \0"s));
  EXPECT_EQ(source_->Functions(0)[0].msLevel, 2);
  Open(With(12, "1\0"s));
  EXPECT_EQ(source_->Functions(0)[0].msLevel, 2);
}

// Only what is ahead of the first block of a function can be in place of its type.
TEST_F(ReportDamageTest, ZerosInABlockDoNotHideTheType) {
  Lines lines = With(5, "Description d");
  lines[11] = "1\0"s;
  Open(lines);
  EXPECT_EQ(source_->Functions(0)[0].msLevel, 1);
}

// A survey whose type is hidden may be of any level, so nothing comes from it.
TEST_F(ReportDamageTest, NoPrecursorIsInAFunctionOfUnknownLevel) {
  const Lines survey = Lines{"[FUNCTION]", "{", "Type MS"} + Part(6, 15) + Lines{"}"};
  Open(Part(1, 2) + survey + Part(3, 29));
  ASSERT_TRUE(source_->FindPrecursor(0, 1, 1));
  Lines hidden = survey;
  hidden[2] = "Type MS\0"s;
  Open(Part(1, 2) + hidden + Part(3, 29));
  EXPECT_FALSE(source_->FindPrecursor(0, 1, 1));
}

// It may say anything, and is not the TIC, which the first spectrum lacks.
TEST_F(ReportDamageTest, TextOfAnUnknownKeyIsNoOtherKey) {
  for (const char* const line : {"Comment as in STATIC 5", "Note: Time 5", "Remark BPI\tTIC 5"}) {
    SCOPED_TRACE(line);
    Open(Part(1, 9) + Lines{line} + Part(10, 29));
    EXPECT_TRUE(source_->Findings().empty());
    EXPECT_FALSE(source_->ScanAt(0, 0, 0).totalIntensity);
    EXPECT_EQ(source_->ScanAt(0, 0, 0).minutes, 0.5);
    ExpectPoints(0, {100.125, 200.25}, {1000, 505});
  }
}

// "59.98" and what is behind it may be of two numbers.
TEST_F(ReportDamageTest, PointsWithTwoDecimalPointsInANumberAreLost) {
  for (const char* const line : {"100.125 59.98.98", "59.98.98 100", "100.125 59.98.98 7"}) {
    SCOPED_TRACE(line);
    Open(Part(1, 11) + Lines{line} + Part(13, 29));
    EXPECT_EQ(Read(0).lost, 1U);
    EXPECT_EQ(mz_, Doubles{200.25});
    FindingOf(FindingCode::kLinesJoined);
  }
  Open(Part(1, 5) + Lines{"[CHROMATOGRAM]", "{", "[TRACE]", "{", "0.5 10", "0.75 2.2.2", "}", "}"} +
       Part(28, 29));
  EXPECT_EQ(source_->ReadFunctionTrace(0, 0, 0).minutes, Doubles{0.5});
  FindingOf(FindingCode::kLinesJoined);
}

// A base peak of a million is not 1, and points are in percent of it.
TEST_F(ReportDamageTest, NumbersWithPointsOfThousandsAreNotRead) {
  for (const char* const million : {"BPI 1.000.000", "BPI 1 000 000"}) {
    SCOPED_TRACE(million);
    Open(Part(1, 8) + Lines{million} + Part(10, 29));
    FindingOf(FindingCode::kNumberUnread);
    EXPECT_FALSE(source_->ScanAt(0, 0, 0).basePeakIntensity);
    EXPECT_EQ(Read(0).lost, 2U);
    EXPECT_TRUE(mz_.empty());
  }
}

}  // namespace
}  // namespace zrml::source
