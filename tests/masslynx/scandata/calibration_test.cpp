#include "masslynx/scandata/calibration.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace zrml::masslynx {
namespace {

using Lines = std::vector<std::string>;
using Values = std::vector<double>;

constexpr int kMsMsTypes[] = {6, 7, 8, 9, 11, 16};
constexpr int kMsType = 0;
constexpr int kMsMsType = 6;

/// A function calibrated by the header `lines`.
FunctionRecord Parse(const Lines& lines, std::uint16_t number = 1, int typeCode = kMsType) {
  FunctionRecord function;
  function.number = number;
  function.typeCode = typeCode;
  ParseCalibration(ReadCalibrationLines({lines.begin(), lines.end()}), function);
  return function;
}

/// The static calibration that one line gives an MS function.
Values StaticValues(const std::string& line) { return Parse({line}).staticCal.coefficients; }

Values SegmentValues(const FunctionRecord& function, std::size_t segment) {
  return segment <= function.segmentCals.size() ? function.segmentCals[segment - 1].coefficients : Values{};
}

// Parsing: line kinds.

TEST(CalibrationLines, NoLinesGiveNothing) {
  const FunctionRecord function = Parse({});
  EXPECT_FALSE(HasCalibration(function));
  EXPECT_TRUE(function.modificationCal.coefficients.empty());
  EXPECT_EQ(function.calTemperature, 0.0F);
}

TEST(CalibrationLines, EveryKindFillsItsOwnMember) {
  const Lines lines = {
      "$$ Version: 01.00",
      "$$ Cal MS1 Static: 1,2",
      "$$ Cal MS2 Static: 3,4",
      "$$ Cal MS1 Dynamic: 5,6",
      "$$ Cal MS2 Dynamic: 7,8",
      "$$ Cal Function 1: 9,10",
      "$$ Cal Modification 1: 11,12",
      "$$ Cal Segment 2: 13,14",
      "$$ Cal Temperature: 25.5",
  };
  const FunctionRecord ms = Parse(lines);
  EXPECT_EQ(ms.staticCal.coefficients, (Values{1, 2}));
  EXPECT_EQ(ms.dynamicCal.coefficients, (Values{5, 6}));
  EXPECT_EQ(ms.functionCal.coefficients, (Values{9, 10}));
  EXPECT_EQ(ms.modificationCal.coefficients, (Values{11, 12}));
  ASSERT_EQ(ms.segmentCals.size(), 2U);
  EXPECT_EQ(ms.segmentCals[0].coefficients, Values{});
  EXPECT_EQ(ms.segmentCals[1].coefficients, (Values{13, 14}));
  EXPECT_EQ(ms.calTemperature, 25.5F);

  const FunctionRecord msMs = Parse(lines, 1, kMsMsType);
  EXPECT_EQ(msMs.staticCal.coefficients, (Values{3, 4}));
  EXPECT_EQ(msMs.dynamicCal.coefficients, (Values{7, 8}));
}

TEST(CalibrationLines, EachOfTheSixMsMsTypesTakesTheMs2LinesAndEveryOtherTypeTheMs1Lines) {
  const Lines lines = {"$$ Cal MS1 Static: 1", "$$ Cal MS2 Static: 2", "$$ Cal MS1 Dynamic: 3",
                       "$$ Cal MS2 Dynamic: 4"};
  for (int type = -1; type <= 40; ++type) {
    const bool msMs = std::ranges::find(kMsMsTypes, type) != std::end(kMsMsTypes);
    const FunctionRecord function = Parse(lines, 1, type);
    EXPECT_EQ(function.staticCal.coefficients, Values{msMs ? 2.0 : 1.0}) << "type " << type;
    EXPECT_EQ(function.dynamicCal.coefficients, Values{msMs ? 4.0 : 3.0}) << "type " << type;
  }
}

TEST(CalibrationLines, MsLinesAloneGiveAnMsMsFunctionNothing) {
  const Lines lines = {"$$ Cal MS1 Static: 1,2", "$$ Cal MS1 Dynamic: 3,4"};
  EXPECT_TRUE(HasCalibration(Parse(lines)));
  EXPECT_FALSE(HasCalibration(Parse(lines, 1, kMsMsType)));
}

TEST(CalibrationLines, FunctionNumbersMatchAsText) {
  struct Case {
    const char* inLine;
    std::uint16_t number;
    bool matches;
  };
  const Case cases[] = {
      {"1", 1, true},
      {"12", 12, true},
      {"65535", 65535, true},
      {"1", 12, false},
      {"12", 1, false},
      {"2", 1, false},
      {"01", 1, false},
      {"+1", 1, false},
      {"-1", 1, false},
      {"1.0", 1, false},
      {"65536", 1, false},
      {"", 1, false},
      // The format's blank takes any white space, and none stands before its colon.
      {"  \t 1", 1, true},
      {"1 ", 1, false},
      // 2 x 65536 + 1: not cut to 16 bits.
      {"131073", 1, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "'" << c.inLine << "' for function " << c.number);
    const std::string inLine = c.inLine;
    const FunctionRecord function =
        Parse({"$$ Cal Function " + inLine + ": 1,2", "$$ Cal Modification " + inLine + ": 3,4"}, c.number);
    EXPECT_EQ(function.functionCal.coefficients, c.matches ? (Values{1, 2}) : Values{});
    EXPECT_EQ(function.modificationCal.coefficients, c.matches ? (Values{3, 4}) : Values{});
  }
}

TEST(CalibrationLines, LineOfFunction2LeavesFunction1AtItsStaticCalibration) {
  const Lines lines = {"$$ Cal MS1 Static: 0.0,1.0", "$$ Cal Function 2: 1.0,1.0"};
  EXPECT_EQ(CalibrateMass(Parse(lines, 1), {}, 500), 500.0);
  EXPECT_EQ(CalibrateMass(Parse(lines, 2), {}, 500), 501.0);
}

TEST(CalibrationLines, LiteralTextMatchesFromTheStartAndByCase) {
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1"), Values{1});  // the control
  for (const char* line :
       {" $$ Cal MS1 Static: 1", "x$$ Cal MS1 Static: 1", "$ Cal MS1 Static: 1", "$$ cal MS1 Static: 1",
        "$$ Cal Ms1 Static: 1", "$$ CAL MS1 STATIC: 1", "$$ Cal MS3 Static: 1", "$$ Cal Static: 1",
        "$$ Cal MS1 Static 1", "$$ Cal MS1 Static :1", "$$ Cal MS1 Statics: 1", ""}) {
    EXPECT_EQ(StaticValues(line), Values{}) << line;
  }
}

// Parsing: values.

TEST(CalibrationLines, BlanksInTheFormatMatchAnyWhiteSpaceOrNone) {
  EXPECT_EQ(StaticValues("$$Cal MS1 Static:1,2"), (Values{1, 2}));
  EXPECT_EQ(StaticValues("$$CalMS1Static:1,2"), (Values{1, 2}));
  EXPECT_EQ(StaticValues("$$ \t Cal\tMS1   Static: \t 1,2"), (Values{1, 2}));
  EXPECT_EQ(StaticValues("$$\r\n\v\fCal MS1 Static: 1,2"), (Values{1, 2}));
  EXPECT_EQ(StaticValues("$ $ Cal MS1 Static: 1,2"), Values{});  // where the format has no blank
  EXPECT_EQ(StaticValues("$$ Cal MS 1 Static: 1,2"), Values{});
}

TEST(CalibrationLines, BlankBeforeAValueIsSkippedAndBeforeACommaEndsTheList) {
  EXPECT_EQ(StaticValues("$$CalMS1Static:1.0 ,2"), Values{1});
  EXPECT_EQ(StaticValues("$$CalMS1Static:1.0, 2"), (Values{1, 2}));
  EXPECT_EQ(StaticValues("$$CalMS1Static:1.0,\t\n 2 ,3"), (Values{1, 2}));
}

TEST(CalibrationLines, OneToSevenValuesAreKeptAndTheEighthIsNot) {
  std::string line = "$$ Cal MS1 Static: ";
  Values expected;
  for (int count = 1; count <= 8; ++count) {
    line += (count > 1 ? "," : "") + std::to_string(count) + ".5";
    if (count <= 7) expected.push_back(count + 0.5);
    EXPECT_EQ(StaticValues(line), expected) << count;
  }
}

TEST(CalibrationLines, ValuesEndAtTheFirstNonNumber) {
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1,x,3"), Values{1});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1,,3"), Values{1});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1;2"), Values{1});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1 2"), Values{1});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: ,2"), Values{});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: x"), Values{});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: "), Values{});
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 1,2\r\n"), (Values{1, 2}));
}

TEST(CalibrationLines, ValuesAreReadInDoublePrecisionInEverySpelling) {
  EXPECT_EQ(StaticValues("$$ Cal MS1 Static: 0.1,-2.5e-3,+1E2,.5,3.,-0,1e300"),
            (Values{0.1, -0.0025, 100, 0.5, 3, 0, 1e300}));
}

TEST(CalibrationLines, ResultsDoNotDependOnTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const char* commaLocale = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German", "French"}) {
    if (commaLocale == nullptr) commaLocale = std::setlocale(LC_ALL, name);
  }
  if (commaLocale == nullptr) GTEST_SKIP() << "no locale with a decimal comma on this machine";
  const FunctionRecord function = Parse({"$$ Cal MS1 Static: 1.5,2.25", "$$ Cal Temperature: 25.5"});
  std::setlocale(LC_ALL, before.c_str());
  EXPECT_EQ(function.staticCal.coefficients, (Values{1.5, 2.25}));
  EXPECT_EQ(function.calTemperature, 25.5F);
}

TEST(CalibrationLines, T1AnywhereInTheLineSetsTheRootFlag) {
  const auto root = [](const char* line) { return Parse({line}).staticCal.root; };
  EXPECT_FALSE(root("$$ Cal MS1 Static: 0,1"));
  EXPECT_TRUE(root("$$ Cal MS1 Static: 0,1,T1"));
  EXPECT_TRUE(root("$$ Cal MS1 Static: 0,1 T1"));
  EXPECT_TRUE(root("$$ Cal MS1 Static: 0,T1,1"));
  EXPECT_TRUE(root("$$ Cal MS1 Static: 0,1,2,3,4,5,6,7,XT12"));
  EXPECT_FALSE(root("$$ Cal MS1 Static: 0,1,t1"));
  EXPECT_FALSE(root("$$ Cal MS1 Static: 0,1,T 1"));
  EXPECT_FALSE(root("$$ Cal MS1 Static: 0,1,T0"));
}

TEST(CalibrationLines, EveryKindHasItsOwnRootFlag) {
  const Lines plain = {"$$ Cal MS1 Static: 1", "$$ Cal MS1 Dynamic: 1", "$$ Cal Function 1: 1",
                       "$$ Cal Modification 1: 1", "$$ Cal Segment 1: 1"};
  for (std::size_t rooted = 0; rooted <= plain.size(); ++rooted) {  // the last round has none
    Lines lines = plain;
    if (rooted < lines.size()) lines[rooted] += ",T1";
    const FunctionRecord f = Parse(lines);
    ASSERT_EQ(f.segmentCals.size(), 1U);
    const bool flags[] = {f.staticCal.root, f.dynamicCal.root, f.functionCal.root, f.modificationCal.root,
                          f.segmentCals[0].root};
    for (std::size_t i = 0; i < std::size(flags); ++i)
      EXPECT_EQ(flags[i], i == rooted) << i << " of " << rooted;
  }
}

TEST(CalibrationLines, LastLineOfAKindWins) {
  const FunctionRecord function =
      Parse({"$$ Cal MS1 Static: 1,2,3,T1", "$$ Cal MS1 Dynamic: 1,T1", "$$ Cal Function 1: 1,2",
             "$$ Cal Modification 1: 1", "$$ Cal Temperature: 1", "$$ Cal MS1 Static: 4,5",
             "$$ Cal MS1 Dynamic: 6,7", "$$ Cal Function 1: 8,T1", "$$ Cal Modification 1: 9,T1",
             "$$ Cal Temperature: 2"});
  EXPECT_EQ(function.staticCal.coefficients, (Values{4, 5}));
  EXPECT_FALSE(function.staticCal.root);
  EXPECT_EQ(function.dynamicCal.coefficients, (Values{6, 7}));
  EXPECT_FALSE(function.dynamicCal.root);
  EXPECT_EQ(function.functionCal.coefficients, Values{8});
  EXPECT_TRUE(function.functionCal.root);
  EXPECT_EQ(function.modificationCal.coefficients, Values{9});
  EXPECT_TRUE(function.modificationCal.root);
  EXPECT_EQ(function.calTemperature, 2.0F);
}

TEST(CalibrationLines, LineWithoutValueLeavesEarlierValuesAndRootFlag) {
  const FunctionRecord function =
      Parse({"$$ Cal MS1 Static: 1,2,T1", "$$ Cal MS1 Dynamic: 3,T1", "$$ Cal Function 1: 4,T1",
             "$$ Cal Modification 1: 5,T1", "$$ Cal Temperature: 6",
             "$$ Cal MS1 Static: ", "$$ Cal MS1 Dynamic: none", "$$ Cal Function 1: ,1",
             "$$ Cal Modification 1: -", "$$ Cal Temperature: cold"});
  EXPECT_EQ(function.staticCal.coefficients, (Values{1, 2}));
  EXPECT_TRUE(function.staticCal.root);
  EXPECT_EQ(function.dynamicCal.coefficients, Values{3});
  EXPECT_TRUE(function.dynamicCal.root);
  EXPECT_EQ(function.functionCal.coefficients, Values{4});
  EXPECT_TRUE(function.functionCal.root);
  EXPECT_EQ(function.modificationCal.coefficients, Values{5});
  EXPECT_TRUE(function.modificationCal.root);
  EXPECT_EQ(function.calTemperature, 6.0F);
}

TEST(CalibrationLines, HeaderCutAtEveryLengthKeepsTheValuesBeforeTheCut) {
  const std::string line = "$$ Cal MS1 Static: 12,34";
  for (std::size_t length = 0; length <= line.size(); ++length) {
    // "$$ Cal MS1 Static: " has 19 characters; then "1", "12", "12,", "12,3" and "12,34".
    const Values expected = length < 20    ? Values{}
                            : length == 20 ? Values{1}
                            : length <= 22 ? Values{12}
                            : length == 23 ? Values{12, 3}
                                           : Values{12, 34};
    EXPECT_EQ(StaticValues(line.substr(0, length)), expected) << length;
  }
}

TEST(CalibrationLines, TemperatureIsReadInSinglePrecision) {
  // 1 + 2^-24 is halfway between 1 and the next float; a much later digit decides. Reading a double first
  // would lose that digit and round to the even neighbour 1.
  EXPECT_EQ(Parse({"$$ Cal Temperature: 1.000000059604644775390625"}).calTemperature, 1.0F);
  EXPECT_EQ(Parse({"$$ Cal Temperature: 1.000000059604644775390625000000001"}).calTemperature, 0x1.000002p0F);
  EXPECT_EQ(Parse({"$$ Cal Temperature: -12.25 degrees"}).calTemperature, -12.25F);
}

TEST(CalibrationLines, ParsingStartsFromReferenceTemperatureZero) {
  FunctionRecord function;
  function.number = 1;
  function.typeCode = kMsType;
  function.calTemperature = 30;
  ParseCalibration(ReadCalibrationLines({"$$ Cal MS1 Static: 1"}), function);
  EXPECT_EQ(function.calTemperature, 0.0F);
}

// Parsing: segments.

TEST(CalibrationSegments, OnlyFunction1HasThem) {
  const Lines lines = {"$$ Cal Segment 2: 0.5,1.0"};
  EXPECT_EQ(SegmentValues(Parse(lines, 1), 2), (Values{0.5, 1}));
  EXPECT_TRUE(Parse(lines, 2).segmentCals.empty());
  EXPECT_TRUE(Parse(lines, 11).segmentCals.empty());
  EXPECT_FALSE(HasCalibration(Parse(lines, 2)));
}

TEST(CalibrationSegments, ListGrowsToTheLargestNumber) {
  const FunctionRecord function =
      Parse({"$$ Cal Segment 3: 3,T1", "$$ Cal Segment 1: 1", "$$ Cal Segment 5: 5", "$$ Cal Segment 2: 2"});
  ASSERT_EQ(function.segmentCals.size(), 5U);
  EXPECT_EQ(function.segmentCals[0].coefficients, Values{1});
  EXPECT_EQ(function.segmentCals[1].coefficients, Values{2});
  EXPECT_EQ(function.segmentCals[2].coefficients, Values{3});
  EXPECT_TRUE(function.segmentCals[2].root);
  EXPECT_TRUE(function.segmentCals[3].coefficients.empty());
  EXPECT_FALSE(function.segmentCals[3].root);
  EXPECT_EQ(function.segmentCals[4].coefficients, Values{5});
}

TEST(CalibrationSegments, LastLineWinsAndALineWithoutValueLeavesTheEarlier) {
  const FunctionRecord function = Parse({"$$ Cal Segment 1: 1,T1", "$$ Cal Segment 2: 2,T1",
                                         "$$ Cal Segment 1: 3,4", "$$ Cal Segment 2: none"});
  EXPECT_EQ(SegmentValues(function, 1), (Values{3, 4}));
  EXPECT_FALSE(function.segmentCals[0].root);
  EXPECT_EQ(SegmentValues(function, 2), Values{2});
  EXPECT_TRUE(function.segmentCals[1].root);
}

TEST(CalibrationSegments, NumbersAreReadAsIntegersButMatchAsText) {
  struct Case {
    const char* inLine;
    bool matches;
  };
  const Case cases[] = {
      {"2", true},   {" \t2", true},                 // the format's blank takes any white space
      {"02", false}, {"+2", false},  {"2 ", false},  // the number is 2, but "2:" is not what follows
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.inLine);
    const FunctionRecord function = Parse({"$$ Cal Segment " + std::string(c.inLine) + ": 0.5,1"});
    EXPECT_EQ(function.segmentCals.size(), 2U);  // grown before the values are checked
    EXPECT_EQ(SegmentValues(function, 2), c.matches ? (Values{0.5, 1}) : Values{});
    EXPECT_EQ(HasCalibration(function), c.matches);
  }
  EXPECT_EQ(SegmentValues(Parse({"$$CalSegment2:7"}), 2), Values{7});
}

TEST(CalibrationSegments, LineWithoutANumberChangesNothing) {
  const FunctionRecord function =
      Parse({"$$ Cal Segment : 1,2", "$$ Cal Segment x: 1,2", "$$ Cal Modification 1: 3"});
  EXPECT_TRUE(function.segmentCals.empty());
  EXPECT_EQ(function.modificationCal.coefficients, Values{3});  // the format of modifications is still in use
}

TEST(CalibrationSegments, NumbersThatNoScanCanHaveAreStoredNowhereButCount) {
  for (const char* number : {"0", "-1", "32", "33", "65536", "2147483647", "-2147483648"}) {
    SCOPED_TRACE(number);
    const FunctionRecord function = Parse({"$$ Cal Segment " + std::string(number) + ": 1,2"});
    EXPECT_LE(function.segmentCals.size(), 31U);
    for (const CalibrationPolynomial& segment : function.segmentCals)
      EXPECT_TRUE(segment.coefficients.empty());
    EXPECT_TRUE(HasCalibration(function));
    EXPECT_FALSE(HasCalibration(Parse({"$$ Cal Segment " + std::string(number) + ": none"})));
    EXPECT_FALSE(HasCalibration(Parse({"$$ Cal Segment " + std::string(number) + ": 1,2"}, 2)));
  }
  EXPECT_EQ(SegmentValues(Parse({"$$ Cal Segment 31: 1,2"}), 31), (Values{1, 2}));  // the control
}

// Deliberate: the segment format replaces the modification format.

TEST(CalibrationSegments, ModificationAfterASegmentLineIsDeliberatelyNotRecognised) {
  const FunctionRecord before = Parse({"$$ Cal Modification 1: 1,2", "$$ Cal Segment 2: 3,4"});
  EXPECT_EQ(before.modificationCal.coefficients, (Values{1, 2}));  // the control

  const FunctionRecord after =
      Parse({"$$ Cal Modification 1: 1,2", "$$ Cal Segment 2: 3,4", "$$ Cal Modification 1: 5,6"});
  EXPECT_EQ(after.modificationCal.coefficients, (Values{1, 2}));
  EXPECT_EQ(SegmentValues(after, 2), (Values{3, 4}));

  EXPECT_TRUE(
      Parse({"$$ Cal Segment 2: 3,4", "$$ Cal Modification 1: 5,6"}).modificationCal.coefficients.empty());
}

TEST(CalibrationSegments, ModificationAfterASegmentLineIsRecognisedForOtherFunctions) {
  const FunctionRecord function = Parse({"$$ Cal Segment 2: 3,4", "$$ Cal Modification 2: 5,6"}, 2);
  EXPECT_EQ(function.modificationCal.coefficients, (Values{5, 6}));
}

TEST(CalibrationSegments, RepeatedSegmentLineDeliberatelyBecomesTheModificationToo) {
  const FunctionRecord once = Parse({"$$ Cal Segment 2: 3,4,T1"});
  EXPECT_TRUE(once.modificationCal.coefficients.empty());  // the control

  const FunctionRecord twice = Parse({"$$ Cal Segment 2: 3,4", "$$ Cal Segment 2: 5,6,T1"});
  EXPECT_EQ(twice.modificationCal.coefficients, (Values{5, 6}));
  EXPECT_TRUE(twice.modificationCal.root);
  EXPECT_EQ(SegmentValues(twice, 2), (Values{5, 6}));
  EXPECT_TRUE(twice.segmentCals[1].root);
}

TEST(CalibrationSegments, RepeatedSegmentReplacesAnEarlierModification) {
  const FunctionRecord function = Parse({"$$ Cal Modification 1: 1,2,T1", "$$ Cal Segment 2: 3,4",
                                         "$$ Cal Segment 2: 5", "$$ Cal Segment 2: none"});
  EXPECT_EQ(function.modificationCal.coefficients, Values{5});
  EXPECT_FALSE(function.modificationCal.root);
}

TEST(CalibrationSegments, OnlyTheLatestSegmentNumberIsTakenForAModification) {
  const Lines lines = {"$$ Cal Segment 2: 1", "$$ Cal Segment 3: 2", "$$ Cal Segment 2: 3"};
  EXPECT_TRUE(Parse(lines).modificationCal.coefficients.empty());

  Lines repeated = lines;
  repeated.push_back("$$ Cal Segment 2: 4");
  EXPECT_EQ(Parse(repeated).modificationCal.coefficients, Values{4});

  EXPECT_TRUE(Parse({"$$ Cal Segment 1: 1", "$$ Cal Segment 12: 2"}).modificationCal.coefficients.empty());
}

TEST(CalibrationSegments, SegmentLineWithoutValueTakesTheFormatsPlaceToo) {
  const FunctionRecord function =
      Parse({"$$ Cal Segment 02", "$$ Cal Modification 1: 1", "$$ Cal Segment 2: 7,8"});
  EXPECT_EQ(function.modificationCal.coefficients, (Values{7, 8}));
  EXPECT_EQ(SegmentValues(function, 2), (Values{7, 8}));
}

TEST(CalibrationSegments, UnreachableSegmentTakesTheFormatsPlaceToo) {
  for (const char* number : {"0", "-1", "40"}) {
    SCOPED_TRACE(number);
    const std::string segment = "$$ Cal Segment " + std::string(number);
    EXPECT_TRUE(Parse({segment + ": 1", "$$ Cal Modification 1: 2"}).modificationCal.coefficients.empty());
    EXPECT_EQ(Parse({segment + ": 1", segment + ": 2,3"}).modificationCal.coefficients, (Values{2, 3}));
  }
}

// HasCalibration.

TEST(HasCalibration, AnyPolynomialButTheModification) {
  const CalibrationPolynomial given{{1.0}, false};
  FunctionRecord none;
  EXPECT_FALSE(HasCalibration(none));
  none.segmentCals.resize(3);  // entries without coefficients
  none.modificationCal = given;
  none.calTemperature = 25;
  EXPECT_FALSE(HasCalibration(none));

  for (CalibrationPolynomial FunctionRecord::*member :
       {&FunctionRecord::dynamicCal, &FunctionRecord::functionCal, &FunctionRecord::staticCal}) {
    FunctionRecord function;
    function.*member = given;
    EXPECT_TRUE(HasCalibration(function));
  }
  FunctionRecord segment;
  segment.segmentCals.resize(3);
  segment.segmentCals[2] = given;
  EXPECT_TRUE(HasCalibration(segment));
}

// Conversion.

CalibrationPolynomial Plain(Values coefficients) { return {std::move(coefficients), false}; }
CalibrationPolynomial Root(Values coefficients) { return {std::move(coefficients), true}; }

/// A function with a static calibration and, when given, a modification.
FunctionRecord Calibrated(const CalibrationPolynomial& primary,
                          const CalibrationPolynomial& modification = {}) {
  FunctionRecord function;
  function.staticCal = primary;
  function.modificationCal = modification;
  return function;
}

ScanIndexEntry ScanAt(float temperature, float coefficient) {
  ScanIndexEntry scan;
  scan.temperatureValid = true;
  scan.temperature = temperature;
  scan.temperatureCoefficient = coefficient;
  return scan;
}

ScanIndexEntry ScanOfSegment(std::uint8_t segment) {
  ScanIndexEntry scan;
  scan.segment = segment;
  return scan;
}

TEST(CalibrateMass, UncalibratedFunctionKeepsTheRawMass) {
  EXPECT_EQ(CalibrateMass(FunctionRecord(), {}, 500.25F), 500.25);
  EXPECT_EQ(CalibrateMass(Calibrated({}, Plain({100})), {}, 500.25F), 500.25);  // only a modification
}

TEST(CalibrateMass, LineZeroOneKeepsTheMassWithAndWithoutRoot) {
  const FunctionRecord plain = Parse({"$$ Cal MS1 Static: 0.0,1.0"});
  const FunctionRecord root = Parse({"$$ Cal MS1 Static: 0.0,1.0,T1"});
  for (const float raw : {0.0F, 2.0F, 3.0F, 500.25F, 16383.999F}) {
    EXPECT_EQ(CalibrateMass(plain, {}, raw), raw);
    // Single precision would not do: the square of sqrt(2) as a float is 1.9999999.
    EXPECT_EQ(CalibrateMass(root, {}, raw), raw);
  }
}

TEST(CalibrateMass, PolynomialsOfOneToSevenValues) {
  // 1 + 2x + 3x^2 + ... at x = 2: 1, +4, +12, +32, +80, +192, +448.
  const double expected[] = {1, 5, 17, 49, 129, 321, 769};
  Values coefficients;
  for (int count = 1; count <= 7; ++count) {
    coefficients.push_back(count);
    EXPECT_EQ(CalibrateMass(Calibrated(Plain(coefficients)), {}, 2), expected[count - 1]) << count;
  }
}

TEST(CalibrateMass, HornersRuleInDoublePrecision) {
  // At x = 3 with c1 = 2^53 and c0 = -3 x 2^53: x + c1 = 2^53 + 3 rounds to 2^53 + 4 (halfway, to even),
  // times 3 is 3 x 2^53 + 12, plus c0 is 12. Summing powers would give 0 + 9.
  const FunctionRecord function = Calibrated(Plain({-27021597764222976.0, 9007199254740992.0, 1}));
  EXPECT_EQ(CalibrateMass(function, {}, 3), 12.0);
}

TEST(CalibrateMass, ResultIsRoundedToSinglePrecision) {
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({0.1})), {}, 0), 0x1.99999ap-4);
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({0x1p-24, 1})), {}, 1), 1.0);             // halfway, to even
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({0x1.8p-24, 1})), {}, 1), 0x1.000002p0);  // above halfway
}

TEST(CalibrateMass, PrimaryWithAndWithoutRoot) {
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({1, 2})), {}, 9), 19.0);  // 1 + 2 x 9
  EXPECT_EQ(CalibrateMass(Calibrated(Root({1, 2})), {}, 9), 49.0);   // (1 + 2 x 3)^2
}

TEST(CalibrateMass, ModificationWithoutRootOnPrimaryWithoutRoot) {
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({1, 2}), Plain({3, 0.5})), {}, 9), 12.5);  // 3 + 19 / 2
}

TEST(CalibrateMass, ModificationWithoutRootOnPrimaryWithRoot) {
  EXPECT_EQ(CalibrateMass(Calibrated(Root({1, 2}), Plain({3, 0.5})), {}, 9), 27.5);  // 3 + 7^2 / 2
}

TEST(CalibrateMass, ModificationWithRootOnPrimaryWithoutRoot) {
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({1, 2}), Root({3, 0.5})), {}, 12), 30.25);  // (3 + sqrt(25) / 2)^2
}

TEST(CalibrateMass, ModificationWithRootOnPrimaryWithRootStaysInTheRootDomain) {
  EXPECT_EQ(CalibrateMass(Calibrated(Root({1, 2}), Root({3, 0.5})), {}, 9), 42.25);  // (3 + 7 / 2)^2
  // y = -3 is negative; in the root domain it is used as it is: (1 - 3)^2.
  EXPECT_EQ(CalibrateMass(Calibrated(Root({0, -1}), Root({1, 1})), {}, 9), 4.0);
}

TEST(CalibrateMass, SquareRootOfANegativeValueGivesNaN) {
  EXPECT_TRUE(std::isnan(CalibrateMass(Calibrated(Root({1, 2})), {}, -4)));
  EXPECT_TRUE(std::isnan(CalibrateMass(Calibrated(Plain({-5}), Root({0, 1})), {}, 9)));  // of y = -5
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({1, 2})), {}, -4), -7.0);                     // no root, no NaN
}

TEST(CalibrateMass, SegmentBeatsFunctionBeatsDynamicBeatsStatic) {
  FunctionRecord function;
  const auto mass = [&] { return CalibrateMass(function, ScanOfSegment(2), 0); };
  function.staticCal = Plain({1});
  EXPECT_EQ(mass(), 1.0);
  function.dynamicCal = Plain({2});
  EXPECT_EQ(mass(), 2.0);
  function.functionCal = Plain({3});
  EXPECT_EQ(mass(), 3.0);
  function.segmentCals = {Plain({9}), Plain({4})};
  EXPECT_EQ(mass(), 4.0);
}

TEST(CalibrateMass, SegmentWithoutPolynomialFallsBack) {
  FunctionRecord function;
  function.functionCal = Plain({3});
  function.segmentCals = {Plain({4}), Plain({}), Plain({5})};
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(1), 0), 4.0);
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(3), 0), 5.0);
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(0), 0), 3.0);  // none
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(2), 0), 3.0);  // without coefficients
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(4), 0), 3.0);  // beyond the list
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(31), 0), 3.0);
}

TEST(CalibrateMass, SegmentLineServesTheScansOfItsSegmentOnly) {
  const FunctionRecord function = Parse({"$$ Cal MS1 Static: 100,1", "$$ Cal Segment 2: 0.5,1.0"});
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(2), 300), 300.5);
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(0), 300), 400.0);
  EXPECT_EQ(CalibrateMass(function, ScanOfSegment(1), 300), 400.0);
}

TEST(CalibrateMass, DynamicLineBeatsStaticAndFunctionLineBeatsBoth) {
  Lines lines = {"$$ Cal MS1 Dynamic: 2,1", "$$ Cal MS1 Static: 1,1"};
  EXPECT_EQ(CalibrateMass(Parse(lines), {}, 300), 302.0);
  lines.insert(lines.begin(), "$$ Cal Function 1: 3,1");
  EXPECT_EQ(CalibrateMass(Parse(lines), {}, 300), 303.0);
}

TEST(CalibrateMass, TemperatureFactorComesBeforeThePolynomial) {
  // 1 - 5 x 2 / 1e6 as a float is 1 - 168 x 2^-24, the multiple of 2^-24 nearest to 0.99999. Times 1000 it is
  // 16383835.94 x 2^-14, rounded 16383836 x 2^-14 = 999.989990234375.
  const ScanIndexEntry scan = ScanAt(30, 2);
  FunctionRecord function = Calibrated(Plain({0, 1}));
  function.calTemperature = 25;
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 999.989990234375);
  function.staticCal = Plain({1000, 2});
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 2999.97998046875);
}

TEST(CalibrateMass, TemperatureIsCorrectedInSinglePrecision) {
  // r = 16737270 x 2^-14. The float factor 1 - 168 x 2^-24 takes 167.60 x 2^-14 from it, rounded 168; the
  // factor 0.99999 in double precision would take 167.37, rounded 167.
  FunctionRecord function = Calibrated(Plain({0, 1}));
  function.calTemperature = 25;
  EXPECT_EQ(CalibrateMass(function, ScanAt(30, 2), 16737270 / 16384.0F), 16737102 / 16384.0);
}

TEST(CalibrateMass, CorrectedMassIsSingleBeforeThePolynomial) {
  // 999.989990234375 as above, less 1000. In double precision -168 x 1000 x 2^-24 = -0.0100135... would be
  // left.
  FunctionRecord function = Calibrated(Plain({-1000, 1}));
  function.calTemperature = 25;
  EXPECT_EQ(CalibrateMass(function, ScanAt(30, 2), 1000), -0.010009765625);
}

TEST(CalibrateMass, TemperatureFactorIsRoundedStepByStep) {
  // 592.5 / 1e6 is 9940.50048 x 2^-24, as a float 9940.5 x 2^-24; 1 less that is halfway between two floats
  // and becomes the even one, 16767276 x 2^-24. In double precision it would be 16767275 x 2^-24.
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({0, 1})), ScanAt(118.5F, 5), 16777216), 16767276.0);
}

TEST(CalibrateMass, PartsPerMillionAreDividedNotMultiplied) {
  // 90000 / 1e6 is 1509949.44 x 2^-24, as a float 1509949.5 x 2^-24; 1 less that is halfway and becomes the
  // even 15267266 x 2^-24. Times 1e-6 as a float it would be 1509949.375, and so 15267267 x 2^-24.
  EXPECT_EQ(CalibrateMass(Calibrated(Plain({0, 1})), ScanAt(90000, 1), 16777216), 15267266.0);
}

TEST(CalibrateMass, TemperatureDifferenceIsRoundedToSinglePrecision) {
  // 16777216 - (-1) is 16777217, as a float 16777216 = 2^24. Times 1e6 / 2^24 it must give exactly 1e6, a
  // factor of 0 and a mass of 0; in double precision the factor would be -2^-24.
  FunctionRecord function = Calibrated(Plain({0, 1}));
  function.calTemperature = -1;
  const ScanIndexEntry scan = ScanAt(16777216, 0.059604644775390625F);  // 1e6 / 2^24 = 15625 x 2^-18
  EXPECT_EQ(CalibrateMass(function, scan, 16777216), 0.0);
}

TEST(CalibrateMass, TemperatureCountsOnlyWhenValid) {
  FunctionRecord function = Calibrated(Plain({0, 1}));
  ScanIndexEntry scan = ScanAt(250000, 1);  // factor 1 - 0.25
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 750.0);
  scan.temperatureValid = false;
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 1000.0);
}

TEST(CalibrateMass, TemperatureIsNotCorrectedWithoutCalibration) {
  EXPECT_EQ(CalibrateMass(FunctionRecord(), ScanAt(250000, 1), 1000), 1000.0);
  EXPECT_EQ(CalibrateMass(Calibrated({}, Plain({0, 2})), ScanAt(250000, 1), 1000), 1000.0);
}

TEST(CalibrateMass, PreCalibratedScanKeepsItsMass) {
  FunctionRecord function = Calibrated(Root({1, 2}), Root({3, 0.5}));
  function.functionCal = Plain({7});
  function.segmentCals = {Plain({8})};
  ScanIndexEntry scan = ScanAt(250000, 1);
  scan.segment = 1;
  EXPECT_NE(CalibrateMass(function, scan, 1000), 1000.0);  // the control
  scan.preCalibrated = true;
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 1000.0);
}

TEST(CalibrateMass, WithoutAPrimaryForTheScanOnlyTheTemperatureCounts) {
  FunctionRecord function;
  function.segmentCals = {Plain({4})};
  function.modificationCal = Plain({100});  // only together with a primary polynomial
  ScanIndexEntry scan = ScanAt(250000, 1);
  scan.segment = 2;
  EXPECT_EQ(CalibrateMass(function, scan, 1000), 750.0);
}

TEST(CalibrateMass, UnreachableSegmentAloneStillLetsTheTemperatureCount) {
  EXPECT_EQ(CalibrateMass(Parse({"$$ Cal Segment 40: 5,1"}), ScanAt(250000, 1), 1000), 750.0);
  EXPECT_EQ(CalibrateMass(Parse({"$$ Cal Segment 40: "}), ScanAt(250000, 1), 1000), 1000.0);  // the control
}

TEST(ScanCalibration, ConvertsEveryMassOfItsScanAlike) {
  FunctionRecord function = Calibrated(Plain({0.5, 2}));
  const ScanIndexEntry scan = ScanAt(250000, 1);
  const ScanCalibration calibration(function, scan);
  EXPECT_EQ(calibration(100), 150.5);
  EXPECT_EQ(calibration(200), 300.5);
  EXPECT_EQ(calibration(100), 150.5);
}

}  // namespace
}  // namespace zrml::masslynx
