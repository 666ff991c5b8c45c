// Lines of a report that are not read as they are plainly meant: each is made from a sound report by one
// edit.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "source/formats.h"
#include "source/points_look.h"
#include "tests/support/temp_directory.h"

namespace zrml::source {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

// Two samples; the first has an analog function, too.
const Lines kSound = {
    "[SAMPLE]",            // 1
    "{",                   //
    "FileName one",        //
    "[FUNCTION]",          // 4
    "{",                   //
    "Type MS",             //
    "[SPECTRUM]",          // 7
    "{",                   //
    "Time 1.5",            //
    "BPI 200",             // 10
    "[MS]",                //
    "{",                   //
    "100 50",              // 13
    "210.05 50.1",         //
    "}",                   // 15
    "}",                   //
    "[SPECTRUM]",          // 17
    "{",                   //
    "[MS]",                //
    "{",                   // 20
    "100 7",               //
    "}",                   //
    "}",                   // 23
    "}",                   //
    "[FUNCTION]",          // 25
    "{",                   //
    "Description ANALOG",  // 27
    "[CHROMATOGRAM]",      //
    "{",                   //
    "MaxIntensity 3",      // 30
    "[TRACE]",             //
    "{",                   //
    "1 5",                 // 33
    "}",                   //
    "}",                   //
    "}",                   // 36
    "}",                   //
    "[SAMPLE]",            // 38
    "{",                   //
    "[FUNCTION]",          // 40
    "{",                   //
    "[SPECTRUM]",          // 42
    "{",                   //
    "Time 1",              // 44
    "}",                   //
    "}",                   //
    "}",                   // 47
};

std::string Text(const Lines& lines, const std::string& lineEnd = "\n") {
  std::string text;
  for (const std::string& line : lines) text += line + lineEnd;
  return text;
}

class ReportFindingsTest : public testing::Test {
 protected:
  std::unique_ptr<Source> Open(const std::string& text) {
    directory_.WriteText("report.rpt", text);
    const auto path = (directory_.Path() / "report.rpt").u8string();
    return OpenReport({path.begin(), path.end()});
  }

  std::vector<Finding> Find(const std::string& text) {
    const auto source = Open(text);
    const auto findings = source->Findings();
    return {findings.begin(), findings.end()};
  }

  TempDirectory directory_{"reports"};
};

TEST_F(ReportFindingsTest, SoundReportsSayNothing) {
  for (const char* const lineEnd : {"\n", "\r\n", "\r\r\n"})
    EXPECT_EQ(Find(Text(kSound, lineEnd)).size(), 0U);
  EXPECT_EQ(Find("made by somebody at 1,5 o'clock\n{\n" + Text(kSound) + "{ the end\n").size(), 0U);
}

// One line is replaced by others; none is the first of all.
struct Edit {
  std::size_t line;
  Lines by;
};

struct Fault {
  const char* what;
  Edit edit;
  FindingCode code;
  std::uint64_t first;  // its line
  std::uint64_t count = 1;
  int sample = 1;
};

std::string Edited(const Edit& edit) {
  Lines lines = kSound;
  const auto at = lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(edit.line) - 1);
  lines.insert(at, edit.by.begin(), edit.by.end());
  return Text(lines);
}

// The first value of a spectrum counts.
TEST_F(ReportFindingsTest, TextsMayNameContinuumWhereItIsKnown) {
  for (const char* const text :
       {"Process Smooth, Continuum TRUE", " Continuum FALSE", "Note Continuum false", "Continuum mode"})
    EXPECT_EQ(Find(Edited({10, {"Continuum TRUE", text}})).size(), 0U) << text;
  EXPECT_EQ(Find(Edited({10, {"Process Continuum background"}})).size(), 0U);
}

TEST_F(ReportFindingsTest, NamesTheLinesThatAreNotRead) {
  using enum FindingCode;
  const Fault faults[] = {
      {"a brace too many ends the function before its second spectrum",
       {16, {"}", "}"}},
       kMarkerMisplaced,
       18,
       2},
      {"and leaves one that ends nothing", {16, {"}", "}"}}, kBraceStray, 38},
      {"a function behind the end of its sample", {24, {"}", "}"}}, kMarkerMisplaced, 26},
      {"a spectrum in an analog function",
       {27, {"Description ANALOG", "[SPECTRUM]", "{", "}"}},
       kMarkerMisplaced,
       28},
      {"a function of a diode array is analog, too",
       {27, {"Type DAD", "[SPECTRUM]", "{", "}", "[SPECTRUM]", "{", "}"}},
       kMarkerMisplaced,
       28,
       2},
      {"a list outside of a spectrum", {6, {"Type MS", "[MS]", "{", "}"}}, kMarkerMisplaced, 7},
      {"an indented function", {25, {"\t[FUNCTION]"}}, kMarkerUnread, 25},
      {"an indented list", {19, {" [MS]"}}, kMarkerUnread, 19},
      {"small letters", {7, {"[Spectrum]"}}, kMarkerUnread, 7},
      {"a brace on the marker's line", {8, {}}, kBlockUnopened, 7},
      {"an empty line before the brace", {5, {"", "{"}}, kBlockUnopened, 4},
      {"an indented brace", {18, {" {"}}, kBlockUnopened, 17},
      {"the same of a sample", {39, {"", "{"}}, kBlockUnopened, 38, 1, 2},
      {"a comma in a mass", {14, {"210,05 50.1"}}, kDecimalComma, 14},
      {"in a percentage", {14, {"210.05 50,1"}}, kDecimalComma, 14},
      {"between numbers", {14, {"210.05,50.1"}}, kDecimalComma, 14},
      {"in a base peak", {10, {"BPI 1,2e6"}}, kDecimalComma, 10},
      {"in a time", {9, {"Time 1,5", "TIC 3,5"}}, kDecimalComma, 9, 2},
      {"in the full scale of a trace", {30, {"MaxIntensity 3,5"}}, kDecimalComma, 30},
      {"in a trace", {33, {"1,5 5"}}, kDecimalComma, 33},
      {"in another sample", {44, {"Time 1,5"}}, kDecimalComma, 44, 1, 2},
      {"a value that is no number", {10, {"BPI abc"}}, kNumberUnread, 10},
      {"in a trace", {30, {"MaxIntensity -"}}, kNumberUnread, 30},
      {"with two points", {10, {"BPI 1.000.000"}}, kNumberUnread, 10},
      {"followed by another number", {30, {"MaxIntensity 1 000 000"}}, kNumberUnread, 30},
      {"neither TRUE nor FALSE", {10, {"Continuum FALS"}}, kRepresentationUnread, 10},
      {"in small letters", {10, {"Continuum false"}}, kRepresentationUnread, 10},
      {"a line that is no point", {13, {"mass percent", "100 50"}}, kLinesSkipped, 13},
      {"points of one number", {14, {"210.05;50.1", "210.05", "210.05 -", "210, 50"}}, kPointsUnread, 14, 4},
      {"a point behind an opening brace", {12, {"{ 90 5"}}, kLinesJoined, 12},
      {"with another byte between them", {12, {"{J90 5"}}, kLinesJoined, 12},
      {"behind a closing one", {15, {"}300\t7"}}, kLinesJoined, 15},
      {"behind the marker of a list", {11, {"[MS] 90 5"}}, kLinesJoined, 11},
      {"two points on a line", {14, {"210.05 50.1 220 3"}}, kLinesJoined, 14},
      {"with another byte between them", {14, {"210.05 50.1*220 3"}}, kLinesJoined, 14},
      {"without any", {14, {"210.05 50.1220 3"}}, kLinesJoined, 14},
      {"a list on one line, where others have two numbers", {21, {"100 7 200 8"}}, kLinesJoined, 21},
      {"two points in a percentage", {14, {"210.05 50.1.98"}}, kLinesJoined, 14},
      {"in a mass", {14, {"210.05.98 50.1"}}, kLinesJoined, 14},
      {"in a trace of one line", {33, {"1 5.5.5"}}, kLinesJoined, 33},
      {"a brace behind a point", {14, {"210.05 50.1 }"}}, kLinesJoined, 14},
      {"two braces on a line", {16, {"}}"}}, kLinesJoined, 16},
      {"a marker behind a brace", {8, {"{[MS]"}}, kLinesJoined, 8},
      {"a key behind a brace", {8, {"{ Time 1.5"}}, kLinesJoined, 8},
      {"with another byte between them", {8, {"{*Time 1.5"}}, kLinesJoined, 8},
      {"a key behind a number", {9, {"Time 1.5 BPI 200"}}, kLinesJoined, 9},
      {"a marker behind a number", {10, {"BPI 200[MS]", "{"}}, kLinesJoined, 10},
      {"a key behind a text", {10, {"Continuum FALSEBPI 200"}}, kLinesJoined, 10},
      {"what a spectrum is behind a number", {9, {"Time 1.5Continuum FALSE"}}, kLinesJoined, 9},
      {"a marker behind what it is", {10, {"Continuum TRUE[MS]", "{"}}, kLinesJoined, 10},
      {"what it is behind what may say anything",
       {10, {"Process STATICContinuum TRUE, smooth"}},
       kRepresentationUnread,
       10},
      {"indented", {10, {" Continuum FALSE"}}, kRepresentationUnread, 10},
      {"in the second piece of a long line",
       {10, {"Note " + std::string(999 - 5, 'x') + "Continuum false"}},
       kRepresentationUnread,
       10},
      {"a base peak there", {10, {"Process " + std::string(1002, 'x') + " BPI 7"}}, kLinesJoined, 10},
      {"a base peak behind what may say anything", {10, {"Process STATICBPI 200"}}, kLinesJoined, 10},
      {"in a trace", {30, {"Description c2 MaxIntensity\t3"}}, kLinesJoined, 30},
      {"a marker behind a text", {6, {"Type MS[SPECTRUM]", "{", "}"}}, kMarkerUnread, 6},
      {"a line end within a line", {13, {"100 50\r200 50"}}, kLineEnds, 13},
  };
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.what);
    const std::vector<Finding> findings = Find(Edited(fault.edit));
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [&](const Finding& finding) { return finding.code == fault.code; });
    ASSERT_NE(found, findings.end());
    EXPECT_EQ(found->first, fault.first);
    EXPECT_EQ(found->count, fault.count);
    EXPECT_EQ(found->file, "report.rpt");
    EXPECT_EQ(found->subject.kind, FindingSubject::Kind::kSample);
    EXPECT_EQ(found->subject.sample, fault.sample);
    EXPECT_NE(found->problem.find("line " + std::to_string(fault.first)), std::string::npos)
        << found->problem;
  }
}

TEST_F(ReportFindingsTest, JoinedLinesAreCountedInPairs) {
  const auto textOf = [&](const Edit& edit) {
    const std::vector<Finding> findings = Find(Edited(edit));
    return findings.size() == 1 ? TextOf(findings[0]) : std::string();
  };
  EXPECT_EQ(textOf({14, {"210.05 50.1 220 3"}}), "report.rpt has two lines that have become one: line 14");
  EXPECT_EQ(textOf({14, {"110 5", "120 5", "130 5 140 5", "150 5 160 5"}}),
            "report.rpt has 2 pairs of lines that have become one; the first is line 16");
}

const std::string kZeros(40, '\0');

// Zeros are one line up to the next line feed, however long it is.
TEST_F(ReportFindingsTest, ZerosInPlaceOfText) {
  struct Zeros {
    const char* what;
    std::string text;
    std::uint64_t first;
    std::uint64_t count;
    int sample;  // 0: the whole report, since three zeros may be in place of "}", a line end and "["
  };
  const std::string sound = Text(kSound);
  const Zeros zeros[] = {
      {"one in a number", Edited({14, {"210.05 5\0.1"s}}), 14, 1, 1},
      {"two lines", Edited({14, {"\0"s, "210.05 50.1", "2\0"s}}), 14, 2, 1},
      {"in a comment", Edited({14, {";\0"s}}), 14, 1, 1},
      {"two in a value", Edited({3, {"FileName o\0\0"s}}), 3, 1, 1},
      {"three in a value", Edited({3, {"FileName o\0\0\0"s}}), 3, 1, 0},
      {"in another sample", Edited({44, {"Time 1\0"s}}), 44, 1, 2},
      {"behind the brace of a spectrum",
       Edited({16,
               {"}\0\0"
                "0"s,
                "}"}}),
       16, 1, 1},
      {"behind the brace of a sample", Edited({37, {"}" + kZeros}}), 37, 1, 0},
      {"in place of a marker", Edited({38, {"[SAM" + kZeros}}), 38, 1, 0},
      {"in a long line", Edited({14, {"210.05 50.1 " + std::string(3000, 'a') + kZeros}}), 14, 1, 0},
      {"a long line of them", Edited({14, {std::string(5000, '\0')}}), 14, 1, 0},
      {"before the first line", kZeros + "\n" + sound, 1, 1, 0},
      {"one at the end", sound + '\0', 48, 1, 0},
      {"many at the end", sound + std::string(300000, '\0'), 48, 1, 0},
  };
  for (const Zeros& each : zeros) {
    SCOPED_TRACE(each.what);
    const std::vector<Finding> findings = Find(each.text);
    std::vector<Finding> found;
    std::copy_if(findings.begin(), findings.end(), std::back_inserter(found),
                 [](const Finding& finding) { return finding.code == FindingCode::kBytesZeroed; });
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].first, each.first);
    EXPECT_EQ(found[0].count, each.count);
    EXPECT_EQ(found[0].subject.sample, each.sample);
    EXPECT_EQ(SeverityOf(found[0].code), Severity::kLost);
  }
  const std::vector<Finding> findings = Find(zeros[1].text);
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(TextOf(findings[0]), "report.rpt has 2 lines with zeros in place of text; the first is line 14");
}

// The first spectrum, of two points, has its base peak in line 10 and its points in lines 14 and 15.
TEST_F(ReportFindingsTest, PointsWithoutTheirNumbersAreLost) {
  const auto read = [&](const Edit& edit) {
    std::vector<double> mz;
    std::vector<double> intensities;
    return Open(Edited(edit))->ReadPoints(0, 0, 0, mz, intensities);
  };
  const PointsRead whole = read({14, {kSound[13]}});
  EXPECT_EQ(whole.lost, 0U);
  const PointsRead one = read({14, {"210.05;50.1"}});
  EXPECT_EQ(one.lost, 1U);
  EXPECT_EQ(one.count, whole.count - 1);
  for (const std::string& line : {"210.05 5\0.1"s, "210.05\0"s, "210.\0 50.1"s, "210.05 5" + kZeros}) {
    const PointsRead zeroed = read({14, {line}});
    EXPECT_EQ(zeroed.lost, 1U) << testing::PrintToString(line);
    EXPECT_EQ(zeroed.count, whole.count - 1) << testing::PrintToString(line);
  }
  // Eighteen zeros may be in place of the end of the list and the front of another one, which the points
  // behind them would be of; ahead of a list they may be in place of another one and the front of a spectrum.
  const std::string few(17, '\0');
  const std::string many(18, '\0');
  EXPECT_EQ(read({13, {"100 50", few}}).count, 2U);
  const PointsRead inList = read({13, {"100 50", many}});
  EXPECT_EQ(inList.count, 1U);
  EXPECT_EQ(inList.lost, 1U);
  EXPECT_EQ(read({10, {"BPI 200", few}}).count, 2U);
  const PointsRead inHead = read({10, {"BPI 200", many}});
  EXPECT_EQ(inHead.count, 0U);
  EXPECT_EQ(inHead.lost, 2U);
  for (const Edit& edit : {Edit{12, {"{ 90 5"}}, Edit{15, {"} 300 7"}}}) {
    const PointsRead behind = read(edit);
    EXPECT_EQ(behind.lost, 1U) << edit.line;
    EXPECT_EQ(behind.count, whole.count) << edit.line;
  }
  // Which of the numbers belong together is not known.
  const PointsRead joined = read({14, {"210.05 50.1220 3"}});
  EXPECT_EQ(joined.lost, 1U);
  EXPECT_EQ(joined.count, whole.count - 1);
  // Two of three lines have a third number, also where one of these is no point.
  const PointsRead mixed = read({14, {"201 0 5", "202 3 4"}});
  EXPECT_EQ(mixed.lost, 0U);
  EXPECT_EQ(mixed.count, whole.count);
  const PointsRead wide = read({14, {"210.05 50.1 1", "215 3 1", "216 4 1"}});
  EXPECT_EQ(wide.lost, 0U);
  EXPECT_EQ(wide.count, whole.count + 2);
  // A base peak of 2 in place of 200, or of 100 percent, would be another one.
  for (const std::string& line : {"BPI abc"s, "BPI 2\0"s, "BPI\0 200"s, "B\0I 200"s, kZeros,
                                  "Continuum FALSEBPI 200"s, "TIC 5 BPI 200"s}) {
    const PointsRead none = read({10, {line}});
    EXPECT_EQ(none.lost, whole.count) << testing::PrintToString(line);
    EXPECT_EQ(none.count, 0U) << testing::PrintToString(line);
  }
  EXPECT_EQ(read({10, {"BPI 200 \0"s}}).lost, 0U);
  EXPECT_EQ(read({9, {"Process of BPI 5", "\0"s}}).lost, 0U) << "the base peak is there";
}

TEST_F(ReportFindingsTest, TimesThatZerosCutAreAbsent) {
  for (const std::string& line : {"Time 1\0"s, "Time \0"s, "Time 1.\0 5"s}) {
    const auto source = Open(Edited({9, {line}}));
    EXPECT_TRUE(std::isnan(source->Minutes(0, 0)[0])) << testing::PrintToString(line);
    EXPECT_TRUE(std::isnan(source->ScanAt(0, 0, 0).minutes)) << testing::PrintToString(line);
  }
}

TEST_F(ReportFindingsTest, LinesThatMeanNothingElseSayNothing) {
  const Edit edits[] = {
      {13, {"; 1,5 is a comment", "", "100 50"}},
      {3, {"FileName one, 1,5", "Date 1,5", "Time,5"}},
      {6, {"Type MS", "Description 210,5 nm", "[OTHER]", "[MSX"}},
      {14, {"210.05 50.1 more, of 1 kind", "1 2 , 3"}},
      {27, {"Description ANALOG", "[CHROMATOGRAM]", "{", "}"}},
      {10, {"BPI", "BPI 5", "BPI later"}},  // the first value counts
      {12, {"{ points, 2"}},
      {15, {"} 2 points"}},
      {16, {"} of a spectrum"}},
      {9, {"Time 1.5 min"}},
      {13, {"100 50 1", "150 3 1", "160 3 1"}},  // more columns
      {3, {"FileName one [MS]"}},
      {9, {"Process mean of Time 1.5", "Time 2"}},  // which it has
      {9, {"Process\tCombine Time 5"}},             // a text, which may say anything
      {10, {"BPI 200", "Process\tSTATIC 5"}},
      {11, {}},  // a spectrum without its list has no points, which the look at them tells
  };
  for (const Edit& edit : edits) {
    const auto findings = Find(Edited(edit));
    for (const Finding& finding : findings) ADD_FAILURE() << edit.line << ": " << TextOf(finding);
  }
}

// What the first sample had is outside of it then.
TEST_F(ReportFindingsTest, ByteOrderMark) {
  const std::vector<Finding> findings = Find("\xEF\xBB\xBF" + Text(kSound));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].code, FindingCode::kByteOrderMark);
  EXPECT_EQ(findings[0].first, 1U);
  EXPECT_EQ(findings[0].subject.kind, FindingSubject::Kind::kSource);
  EXPECT_EQ(findings[1].code, FindingCode::kMarkerMisplaced);
  EXPECT_EQ(findings[1].first, 4U);
  EXPECT_EQ(findings[1].subject.kind, FindingSubject::Kind::kSource);
  EXPECT_TRUE(Find("\xEF\xBB\xBF\n" + Text(kSound)).empty()) << "a line of its own";
}

// The whole file is one line then, and its pieces lines of their own.
TEST_F(ReportFindingsTest, LineEndsOfCrAlone) {
  const std::vector<Finding> findings = Find(Text(kSound, "\r"));
  EXPECT_TRUE(std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.code == FindingCode::kLineEnds && finding.first == 1;
  }));
}

// Each is read to its end once, whatever it holds.
TEST_F(ReportFindingsTest, SpectraAndTracesWithoutPointsAreCounted) {
  const auto source = Open(Edited({33, {}}));
  EXPECT_TRUE(source->Findings().empty());
  const zrml::Findings look = LookAtPoints(*source);
  ASSERT_EQ(look.List().size(), 2U);
  const Finding& trace = look.List()[0];
  EXPECT_EQ(trace.code, FindingCode::kTracesEmpty);
  EXPECT_EQ(TextOf(trace), "sample 1 has 1 of 1 traces that have no points; the first is trace 1");
  const Finding& scan = look.List()[1];
  EXPECT_EQ(scan.code, FindingCode::kScansEmpty);
  EXPECT_EQ(TextOf(scan), "function 1 of sample 2 has 1 of 1 scans that have no points; the first is scan 1");
  EXPECT_EQ(scan.subject.sample, 2);
  EXPECT_EQ(scan.subject.function, 1);
}

// What nothing in the file tells is not said: how each spectrum was made, and what a function records.
TEST_F(ReportFindingsTest, ProcessOfASpectrum) {
  const auto source = Open(Edited({9, {"Time 1", "Process", "Process\tCombine (5:9-1:3)", "Process Other"}}));
  EXPECT_EQ(source->ScanProcess(0, 0, 0), "Combine (5:9-1:3)");
  EXPECT_EQ(source->ScanProcess(0, 0, 1), "");
}

struct TypedFunction {
  Lines keys;
  FunctionKind kind;
};

TEST_F(ReportFindingsTest, FunctionsOfAbsorbance) {
  const TypedFunction functions[] = {
      {{"Type PDA"}, FunctionKind::kAbsorbance},
      {{"Type UV"}, FunctionKind::kAbsorbance},
      {{"Type UV/VIS"}, FunctionKind::kAbsorbance},
      {{"Type ACQUITY TUV ChA 254nm"}, FunctionKind::kAbsorbance},
      {{"Description Diode Array"}, FunctionKind::kAbsorbance},
      {{"Type TOFX"}, FunctionKind::kOther},
      {{"Type SUVA", "Description UV"}, FunctionKind::kOther},
      {{"Type -", "Description UV-trig"}, FunctionKind::kOther},
      {{}, FunctionKind::kOther},
      {{"Type MS", "Description UV"}, FunctionKind::kMs},
      {{"Type UV MS"}, FunctionKind::kMs},
  };
  for (const TypedFunction& function : functions) {
    const auto source = Open(Edited({6, function.keys}));
    EXPECT_EQ(source->Functions(0)[0].kind, function.kind) << testing::PrintToString(function.keys);
  }
}

}  // namespace
}  // namespace zrml::source
