#include "masslynx/labels.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/truncation.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

constexpr int kMs = 0;
constexpr int kMs2 = 11;
constexpr std::wstring_view kRampLabel = L"MS^E Product Ions";

using Labels = std::vector<std::wstring>;

// "Function Parameters - Function " is 31 characters long, so after a number of one, two or three digits and
// " -" the label starts at position 34, 35 or 36.
class LabelsTest : public testing::Test {
 protected:
  /// `count` functions of type 0 after the label file has been applied to them.
  std::vector<FunctionRecord> Functions(std::size_t count, std::string_view text) const {
    directory_.WriteText("_extern.inf", text);
    return Applied(count);
  }
  std::vector<FunctionRecord> Applied(std::size_t count) const {
    std::vector<FunctionRecord> functions(count);
    for (FunctionRecord& function : functions) function.typeCode = kMs;
    ApplyLabels(directory_.SystemPath(), functions);
    return functions;
  }
  static Labels LabelsOf(const std::vector<FunctionRecord>& functions) {
    Labels labels;
    for (const FunctionRecord& function : functions) labels.push_back(function.label);
    return labels;
  }
  Labels LabelsOf(std::size_t count, std::string_view text) const { return LabelsOf(Functions(count, text)); }
  std::wstring LabelOf(std::string_view text) const { return LabelsOf(1, text)[0]; }

  /// Whether the file turns function 1 of two into the high-energy function; function 2 must stay as it is.
  bool Ramps() const {
    const std::vector<FunctionRecord> functions = Applied(2);
    EXPECT_EQ(functions[1].typeCode, kMs);
    EXPECT_EQ(functions[1].label, L"");
    EXPECT_EQ(functions[0].typeCode, functions[0].label == kRampLabel ? kMs2 : kMs);
    return functions[0].typeCode == kMs2;
  }
  bool Ramps(std::string_view text) const {
    directory_.WriteText("_extern.inf", text);
    return Ramps();
  }

  TempDirectory directory_;
};

TEST_F(LabelsTest, MissingFileChangesNothing) { EXPECT_EQ(LabelsOf(Applied(2)), (Labels{L"", L""})); }

TEST_F(LabelsTest, EmptyFileChangesNothing) { EXPECT_EQ(LabelsOf(1, ""), Labels{L""}); }

TEST_F(LabelsTest, FileNameIsFoundInEitherCase) {
  directory_.WriteText("_EXTERN.INF", "Function Parameters - Function 1 - upper\n");
  EXPECT_EQ(LabelsOf(Applied(1)), Labels{L"upper"});
  directory_.Remove("_EXTERN.INF");
  EXPECT_EQ(LabelsOf(Applied(1)), Labels{L""});
  directory_.WriteText("_extern.inf", "Function Parameters - Function 1 - lower\n");
  EXPECT_EQ(LabelsOf(Applied(1)), Labels{L"lower"});
}

TEST_F(LabelsTest, HeadingLabelsTheFunctionAtItsPosition) {
  EXPECT_EQ(LabelsOf(3,
                     "Created by MassLynx v4.1\r\n\r\n"
                     "Function Parameters - Function 2 - TOF MS FUNCTION\r\n"
                     "Scan Time (sec)\t1.0\r\n"
                     "Function Parameters - Function 1 - TOF PRODUCT ION FUNCTION\r\n"),
            (Labels{L"TOF PRODUCT ION FUNCTION", L"TOF MS FUNCTION", L""}));
}

TEST_F(LabelsTest, LabelIsTrimmed) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 -  \t a  b \t \r\n"), L"a  b");
}

TEST_F(LabelsTest, LastHeadingOfAFunctionWins) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - a\nFunction Parameters - Function 1 - b\n"), L"b");
}

TEST_F(LabelsTest, LabelStartsAtPosition34Or35Or36) {
  const auto labelOf = [&](std::size_t n, std::string_view rest) {
    const std::string number = std::to_string(n);
    return LabelsOf(120, std::string("Function Parameters - Function ").append(number).append(rest))[n - 1];
  };
  for (const std::size_t n : {1u, 9u, 10u, 12u, 99u, 100u, 120u}) {
    EXPECT_EQ(labelOf(n, " -LABEL\n"), L"LABEL") << n;
    EXPECT_EQ(labelOf(n, " - LABEL\n"), L"LABEL") << n;
  }
}

// Deliberate: the label starts at a fixed position, whatever stands before it.
TEST_F(LabelsTest, LabelPositionIsFixed) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 LABEL\n"), L"ABEL");
  EXPECT_EQ(LabelOf("Function Parameters - Function 01 - LABEL\n"), L"- LABEL");
  EXPECT_EQ(LabelOf("Function Parameters - Function   1 - LABEL\n"), L"- LABEL");
}

TEST_F(LabelsTest, HeadingWithoutALabelGivesAnEmptyOne) {
  for (const char* const end : {"", "\n", " \n", " -\n", " - \r\n"}) {
    EXPECT_EQ(
        LabelOf(std::string("Function Parameters - Function 1 - a\nFunction Parameters - Function 1") + end),
        L"")
        << end;
  }
}

TEST_F(LabelsTest, ReferenceIsShownAsLockMass) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - REFERENCE\r\n"), L"Lock Mass");
}

TEST_F(LabelsTest, MobilityFunctionIsShownAsIms) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - MOBILITY MS FUNCTION\r\n"), L"IMS");
}

TEST_F(LabelsTest, SimilarLabelsAreKeptAsWritten) {
  for (const wchar_t* const label : {L"REFERENCE 2", L"Reference", L"A REFERENCE", L"MOBILITY MS",
                                     L"Lock Mass", L"MOBILITY MS FUNCTION 2", L"Mobility MS Function"}) {
    std::string text = "Function Parameters - Function 1 - ";
    for (const wchar_t* c = label; *c != 0; ++c) text += static_cast<char>(*c);
    EXPECT_EQ(LabelOf(text + "\r\n"), label);
  }
}

TEST_F(LabelsTest, BytesAboveAsciiKeepTheirCode) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - 5 \xb5L \xff\n"), L"5 \u00b5L \u00ff");
}

TEST_F(LabelsTest, LineMustBeginWithTheHeading) {
  for (const char* const line :
       {" Function Parameters - Function 1 - a\n", "x Function Parameters - Function 1 - a\n",
        "function parameters - function 1 - a\n", "Function  Parameters - Function 1 - a\n",
        "Function Parameters - Funktion 1 - a\n", "Function Parameters\n"}) {
    EXPECT_EQ(LabelOf(line), L"") << line;
  }
}

TEST_F(LabelsTest, HeadingOutOfRangeLabelsNothing) {
  for (const char* const number : {"0", "3", "-1", "100", "65537", "2147483647"}) {
    EXPECT_EQ(LabelsOf(2, std::string("Function Parameters - Function ") + number + " - a\n"),
              (Labels{L"", L""}))
        << number;
  }
}

TEST_F(LabelsTest, HeadingsOfEmptyListLabelNothing) {
  EXPECT_EQ(LabelsOf(0, "Function Parameters - Function 1 - a\nRamp High Energy\n"), Labels{});
}

TEST_F(LabelsTest, HeadingWithoutALineFeedCounts) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - a"), L"a");
}

TEST_F(LabelsTest, CtrlZEndsTheText) {
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 - a\x1a"
                    "b\nFunction Parameters - Function 1 - c\n"),
            L"a");
}

TEST_F(LabelsTest, NulEndsTheLine) {
  EXPECT_EQ(LabelOf(std::string_view("Function Parameters - Function 1 - a\0b\n", 39)), L"a");
}

// Lines are read in pieces of 9,999 characters; each piece counts as a separate line.
TEST_F(LabelsTest, PieceOfALongLineCountsAsALine) {
  const std::string heading = "Function Parameters - Function 1 - a\n";
  EXPECT_EQ(LabelOf(std::string(9999, 'x') + heading), L"a");
  EXPECT_EQ(LabelOf(std::string(9998, 'x') + heading), L"");
  EXPECT_EQ(LabelOf(std::string(10000, 'x') + heading), L"");
  EXPECT_EQ(LabelOf("Function Parameters - Function 1 -" + std::string(10000, 'y')),
            std::wstring(9999 - 34, L'y'));
}

// --- the high-energy ramp of version 4.2 ---

TEST_F(LabelsTest, RampOfVersion42MakesAProductIonFunction) {
  EXPECT_TRUE(
      Ramps("Created by MassLynx v4.2\r\n"
            "Function Parameters - Function 1 - TOF MS FUNCTION\r\n"
            "Ramp High Energy from 20.0 to 30.0\r\n"));
}

TEST_F(LabelsTest, RampOfVersion41ChangesNothing) {
  const std::vector<FunctionRecord> functions =
      Functions(1, "Created by MassLynx v4.1\nFunction Parameters - Function 1 - a\nRamp High Energy\n");
  EXPECT_EQ(functions[0].typeCode, kMs);
  EXPECT_EQ(functions[0].label, L"a");
}

bool Contains(std::initializer_list<std::string_view> list, std::string_view text) {
  for (const std::string_view entry : list) {
    if (entry == text) return true;
  }
  return false;
}

// The code is major x 10 + minor and must be exactly 42; that 3.12 makes 42 as well is deliberate.
TEST_F(LabelsTest, RampNeedsVersionCode42) {
  for (const char* const version : {"4.2", "3.12", "4.2 SCN 805", "4.2.1", "04.02", " 4. 2", "4.1", "4.0",
                                    "4.20", "4.3", "5.2", "42", "4", "4.", ".42", "4,2", "x4.2", ""}) {
    const bool ramps = Ramps(std::string("Created by MassLynx v") + version +
                             "\nFunction Parameters - Function 1 -\nRamp High Energy\n");
    EXPECT_EQ(ramps, Contains({"4.2", "3.12", "4.2 SCN 805", "4.2.1", "04.02", " 4. 2"}, version)) << version;
  }
}

TEST_F(LabelsTest, BothSpellingsOfTheCreatorCount) {
  const std::string rest = " v4.2\nFunction Parameters - Function 1 -\nRamp High Energy\n";
  EXPECT_TRUE(Ramps("Created by MassLynx" + rest));
  EXPECT_TRUE(Ramps("Created by Masslynx" + rest));
  EXPECT_FALSE(Ramps("Created by masslynx" + rest));
  EXPECT_FALSE(Ramps("Created by MASSLYNX" + rest));
  EXPECT_FALSE(Ramps(" Created by MassLynx" + rest));
}

// A blank in the version's format matches any run of white space, even an empty one.
TEST_F(LabelsTest, WhiteSpaceBeforeTheVersionIsFree) {
  const std::string rest = "v4.2\nFunction Parameters - Function 1 -\nRamp High Energy\n";
  EXPECT_TRUE(Ramps("Created by MassLynx" + rest));
  EXPECT_TRUE(Ramps("Created by Masslynx  \t " + rest));
}

TEST_F(LabelsTest, LastReadableVersionBeforeTheRampCounts) {
  const std::string ramp = "Function Parameters - Function 1 -\nRamp High Energy\n";
  EXPECT_TRUE(Ramps("Created by MassLynx v4.1\nCreated by MassLynx v4.2\n" + ramp));
  EXPECT_FALSE(Ramps("Created by MassLynx v4.2\nCreated by MassLynx v4.1\n" + ramp));
  EXPECT_TRUE(Ramps("Created by MassLynx v4.2\nCreated by MassLynx v4\n" + ramp));
  EXPECT_FALSE(Ramps(ramp + "Created by MassLynx v4.2\n"));
  EXPECT_FALSE(Ramps(ramp));
}

TEST_F(LabelsTest, RampNeedsASelectedFunction) {
  const std::string version = "Created by MassLynx v4.2\n";
  const std::string select = "Function Parameters - Function 1 -\n";
  EXPECT_TRUE(Ramps(version + select + "Ramp High Energy\n"));
  EXPECT_FALSE(Ramps(version + "Ramp High Energy\n"));
  EXPECT_FALSE(Ramps(version + "Ramp High Energy\n" + select));
}

TEST_F(LabelsTest, HeadingOutOfRangeClearsTheSelection) {
  const std::string select = "Created by MassLynx v4.2\nFunction Parameters - Function 1 -\n";
  for (const char* const number : {"0", "3", "-1"}) {
    const std::string clear = std::string("Function Parameters - Function ") + number + " - a\n";
    EXPECT_FALSE(Ramps(select + clear + "Ramp High Energy\n")) << number;
    EXPECT_TRUE(Ramps(clear + select + "Ramp High Energy\n")) << number;
  }
}

TEST_F(LabelsTest, RampAppliesToTheLastSelectedFunction) {
  const std::vector<FunctionRecord> functions = Functions(3,
                                                          "Created by MassLynx v4.2\n"
                                                          "Function Parameters - Function 1 - a\n"
                                                          "Function Parameters - Function 2 - b\n"
                                                          "Ramp High Energy\n"
                                                          "Function Parameters - Function 3 - c\n");
  EXPECT_EQ(LabelsOf(functions), (Labels{L"a", std::wstring(kRampLabel), L"c"}));
  EXPECT_EQ(functions[0].typeCode, kMs);
  EXPECT_EQ(functions[1].typeCode, kMs2);
  EXPECT_EQ(functions[2].typeCode, kMs);
}

TEST_F(LabelsTest, LaterHeadingReplacesTheRampsLabelButNotItsType) {
  const std::vector<FunctionRecord> functions = Functions(1,
                                                          "Created by MassLynx v4.2\n"
                                                          "Function Parameters - Function 1 - a\n"
                                                          "Ramp High Energy\n"
                                                          "Function Parameters - Function 1 - b\n");
  EXPECT_EQ(functions[0].label, L"b");
  EXPECT_EQ(functions[0].typeCode, kMs2);
}

TEST_F(LabelsTest, RampMustBeginItsLine) {
  const std::string select = "Created by MassLynx v4.2\nFunction Parameters - Function 1 -\n";
  EXPECT_TRUE(Ramps(select + "Ramp High EnergyX"));
  EXPECT_FALSE(Ramps(select + " Ramp High Energy\n"));
  EXPECT_FALSE(Ramps(select + "Ramp high energy\n"));
  EXPECT_FALSE(Ramps(select + "Ramp Low Energy\n"));
  EXPECT_FALSE(Ramps(select + "Using Ramp High Energy\n"));
}

// --- damage ---

TEST_F(LabelsTest, TruncatedFileGivesTheLabelUpToTheCut) {
  directory_.WriteText("_extern.inf", "Function Parameters - Function 1 - ABC\r\n");
  TruncateAtEveryLength(directory_, "_extern.inf", [&](std::size_t size) {
    const std::size_t letters = size < 35 ? 0 : size - 35;  // "A" is the 36th byte
    EXPECT_EQ(LabelsOf(Applied(1)), Labels{std::wstring(L"ABC").substr(0, letters)});
  });
}

TEST_F(LabelsTest, TruncatedFileRampsFromTheWholeKeyOn) {
  directory_.WriteText("_extern.inf",
                       "Created by MassLynx v4.2\r\n"            // 26 bytes
                       "Function Parameters - Function 1 -\r\n"  // 36
                       "Ramp High Energy from 20\r\n");          // the key is 16
  TruncateAtEveryLength(directory_, "_extern.inf",
                        [&](std::size_t size) { EXPECT_EQ(Ramps(), size >= 26 + 36 + 16); });
}

}  // namespace
}  // namespace zrml::masslynx
