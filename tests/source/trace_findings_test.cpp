// Findings about traces and their lists: each directory is made from a sound one by a single edit.
#include <string>
#include <utility>
#include <vector>

#include "tests/source/directory_findings.h"

namespace zrml::masslynx {
namespace {

using namespace test;

RawDirectoryBuilder WithAnalogs() {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure", "flow"};
  raw.analogs = {{.time = 1, .words = {8, 8}}};
  return raw;
}

RawDirectoryBuilder WithChromatograms() {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{1, 2}}}, {"flow", {{1, 2}}}};
  return raw;
}

TEST(RawFindings, ListOfAnalogChannels) {
  ExpectLines(WithAnalogs(),
              {"trace-list-cut: _ANALOGS.INF does not end with a whole record, so there are no traces"},
              [](const TempDirectory& directory) { directory.Truncate("_ANALOGS.INF", 2 * 85 - 1); });
  ExpectLines(WithAnalogs(), {"trace-list-cut: _ANALOGS.INF is empty, so there are no traces"},
              [](const TempDirectory& directory) { directory.Truncate("_ANALOGS.INF", 0); });
  ExpectLines(WithAnalogs(), {"trace-list-missing: _ANALOGS.INF is missing, so there are no analog traces"},
              [](const TempDirectory& directory) { directory.Remove("_ANALOGS.INF"); });
  ExpectLines(WithAnalogs(),
              {"file-unreadable: _ANALOGS.INF cannot be opened, so there are no analog traces"},
              [](const TempDirectory& directory) {
                directory.Remove("_ANALOGS.INF");
                directory.MakeDirectory("_ANALOGS.INF");
              });
}

TEST(RawFindings, ValuesOfAnalogChannels) {
  ExpectLines(WithAnalogs(), {"trace-data-missing: _ANALOGS.DAT is empty"},
              [](const TempDirectory& directory) { directory.Truncate("_ANALOGS.DAT", 0); });
}

// A run that was stopped before its first scan.
TEST(RawFindings, ChannelsOfARunWithoutScansMayBeEmpty) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.analogNames = {"pressure"};
  const TempDirectory directory = raw.Build();
  directory.WriteText("_ANALOGS.DAT", "");
  EXPECT_EQ(LinesOf(directory), Lines());
}

// Its header is 8 bytes, two records of 85 follow.
// Three records of 8 bytes: a time and two words.
TEST(RawFindings, ValuesOfAnalogChannelsThatAreNotRead) {
  RawDirectoryBuilder raw = WithAnalogs();
  raw.analogs.push_back({.time = 2, .words = {8, 8}});
  raw.analogs.push_back({.time = 3, .words = {8, 8}});
  ExpectLines(raw, {"trace-data-zeroed: _ANALOGS.DAT ends in zeros in place of 2 of 3 records"},
              [](const TempDirectory& directory) {
                directory.Edit("_ANALOGS.DAT",
                               [](FileBytes& bytes) { std::fill_n(bytes.begin() + 8, 16, std::byte{0}); });
              });
  ExpectLines(
      raw, {"trace-times-return: _ANALOGS.DAT has times that go backwards, so only 2 of 3 records are read"},
      [](const TempDirectory& directory) {
        directory.Edit("_ANALOGS.DAT",
                       [](FileBytes& bytes) { std::copy_n(bytes.begin(), 8, bytes.begin() + 16); });
      });
}

// A header of 8 bytes and two records of 8.
TEST(RawFindings, ChromatogramThatEndsInZeros) {
  RawDirectoryBuilder raw = WithChromatograms();
  raw.chroms[1].points.push_back({2, 3});
  ExpectLines(raw, {"trace-data-zeroed: _CHRO002.DAT ends in zeros in place of 1 of 2 records"},
              [](const TempDirectory& directory) {
                directory.Edit("_CHRO002.DAT",
                               [](FileBytes& bytes) { std::fill_n(bytes.begin() + 16, 8, std::byte{0}); });
              });
}

void ExpectLineOfZeros(const RawDirectoryBuilder& raw, const std::string& file, std::size_t from,
                       const std::string& line) {
  const TempDirectory directory = raw.Build();
  directory.Edit(file, [&](FileBytes& bytes) { ZeroFrom(bytes, from); });
  EXPECT_EQ(LinesOf(directory), Lines{line}) << from;
}

// Records of 6 bytes: a time, a word. Four points; the zeros begin inside the word or the time of the last.
TEST(RawFindings, ChannelsThatEndInZerosInsideARecord) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure"};
  for (const float time : {0.1F, 0.125F, 0.25F, 0.3F})
    raw.analogs.push_back({.time = time, .words = {0x1238}});
  const std::string doubtful =
      "trace-end-doubtful: _ANALOGS.DAT ends in zeros inside a record, where no other has them";
  const std::string lost = "trace-data-zeroed: _ANALOGS.DAT ends in zeros in place of ";
  const std::pair<std::size_t, std::string> cases[] = {{23, doubtful},
                                                       {22, doubtful},
                                                       {21, lost + "1 of 4 records"},
                                                       {19, lost + "1 of 4 records"},
                                                       {17, lost + "2 of 4 records"},
                                                       {16, lost + "2 of 4 records"}};
  for (const auto& [from, line] : cases) ExpectLineOfZeros(raw, "_ANALOGS.DAT", from, line);
  raw.analogs[0].words = raw.analogs[3].words = {0};  // as others are
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
}

// A header of 8 bytes, then times and values of 4 each.
TEST(RawFindings, ChromatogramThatEndsInZerosInsideARecord) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{0.05F, 2}, {0.1F, 2.1F}, {0.2F, 2.2F}, {0.3F, 2.3F}}}};
  const std::string lost = "trace-data-zeroed: _CHRO001.DAT ends in zeros in place of ";
  const std::pair<std::size_t, std::string> cases[] = {
      {39, lost + "1 of 4 records"},
      {37, lost + "1 of 4 records"},
      {36, "trace-end-doubtful: _CHRO001.DAT ends in zeros inside a record, where no other has them"},
      {33, lost + "1 of 4 records"},
      {32, lost + "1 of 4 records"},
      {31, lost + "2 of 4 records"},
      {8, lost + "4 of 4 records"}};
  for (const auto& [from, line] : cases) ExpectLineOfZeros(raw, "_CHRO001.DAT", from, line);
}

TEST(RawFindings, ChromatogramWhoseTimesGoBackwards) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{0.1F, 2}, {0, 1}, {0.3F, 3}}}};
  EXPECT_EQ(LinesOf(raw.Build()), Lines{"trace-times-return: _CHRO001.DAT has times that go backwards"});
}

std::vector<double> MinutesOfFirstTrace(const TempDirectory& directory) {
  const std::u8string path = directory.Path().u8string();
  return source::Source::Open({path.begin(), path.end()})->ReadTrace(0, 0).minutes;
}

// What was measured in between is lost, and what is behind it is not.
TEST(RawFindings, TracesWithZerosBetweenRecords) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{0.5F, 2}, {0, 0}, {0, 0}, {0.75F, 3}}}};
  EXPECT_EQ(LinesOf(raw.Build()),
            Lines{"trace-data-zeroed: _CHRO001.DAT has zeros in place of 2 of 4 records"});
  EXPECT_EQ(MinutesOfFirstTrace(raw.Build()), (std::vector<double>{0.5, 0.75}));
  raw.chroms = {{"pressure", {{0, 2}, {0, 0}, {0, 3}}}};
  EXPECT_EQ(LinesOf(raw.Build()), Lines()) << "without times a value may be 0";
  raw.chroms.clear();
  raw.analogNames = {"pressure"};
  raw.analogs = {{.time = 0.5F, .words = {8}},
                 {.time = 0, .words = {0}},
                 {.time = 0.625F, .words = {8}},
                 {.time = 0.75F, .words = {16}}};
  EXPECT_EQ(LinesOf(raw.Build()),
            Lines{"trace-data-zeroed: _ANALOGS.DAT has zeros in place of 1 of 4 records"});
  EXPECT_EQ(MinutesOfFirstTrace(raw.Build()), (std::vector<double>{0.5, 0.625, 0.75}));
}

// The scans end at 0.3 minutes.
TEST(RawFindings, TracesThatEndLongBeforeTheScans) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure"};
  for (const float time : {0.04F, 0.08F, 0.12F, 0.16F, 0.2F, 0.24F, 0.28F, 0.32F})
    raw.analogs.push_back({.time = time, .words = {8}});
  const TempDirectory directory = raw.Build();
  directory.Truncate("_ANALOGS.DAT",
                     6 * 6);  // to 0.24, and the second point after that is later than the scans
  EXPECT_EQ(LinesOf(directory), Lines());
  directory.Truncate("_ANALOGS.DAT", 5 * 6);
  EXPECT_EQ(LinesOf(directory),
            Lines{"trace-ends-early: _ANALOGS.DAT ends at 0.2, the scans end at 0.3 minutes"});
}

TEST(RawFindings, TracesWithoutNames) {
  ExpectLines(WithAnalogs(), {"trace-list-zeroed: _ANALOGS.INF has zeros in place of all names"},
              [](const TempDirectory& directory) {
                directory.Edit("_ANALOGS.INF", [](FileBytes& bytes) { ZeroFrom(bytes, 0); });
              });
  ExpectLines(WithChromatograms(), {"trace-list-zeroed: _CHROMS.INF has zeros in place of all names"},
              [](const TempDirectory& directory) {
                directory.Edit("_CHROMS.INF", [](FileBytes& bytes) { ZeroFrom(bytes, 8); });
              });
  RawDirectoryBuilder raw = WithAnalogs();
  raw.analogNames = {"pressure", ""};
  const TempDirectory directory = raw.Build();
  directory.Edit("_ANALOGS.INF", [](FileBytes& bytes) { ZeroFrom(bytes, 85); });  // it has no name
  EXPECT_EQ(LinesOf(directory), Lines());
}

// A channel may begin at time 0 without a signal.
TEST(RawFindings, FirstRecordOfATraceMayBeZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{0, 0}}}, {"flow", {{0, 0}, {1, 0}}}};
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
}

// Records of 6 bytes; zeros take the front two of four.
TEST(RawFindings, ChannelsThatBeginWithZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure"};
  raw.analogs = {{.time = 0, .words = {0}},
                 {.time = 0, .words = {0}},
                 {.time = 0.2F, .words = {8}},
                 {.time = 0.3F, .words = {16}}};
  const TempDirectory directory = raw.Build();
  EXPECT_EQ(LinesOf(directory),
            Lines{"trace-data-zeroed: _ANALOGS.DAT begins with zeros in place of 2 of 4 records"});
  raw.analogs[0].words = {8};  // so that nothing is zeros at the front
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
}

TEST(RawFindings, ChromatogramThatBeginsWithZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"pressure", {{0, 0}, {0, 0}, {0, 0}, {0.3F, 2}}}};
  EXPECT_EQ(LinesOf(raw.Build()),
            Lines{"trace-data-zeroed: _CHRO001.DAT begins with zeros in place of 3 of 4 records"});
}

TEST(RawFindings, ChromatogramsBesideAnalogChannels) {
  RawDirectoryBuilder raw = WithAnalogs();
  raw.chroms = WithChromatograms().chroms;
  EXPECT_EQ(
      LinesOf(raw.Build()),
      Lines{"traces-hidden: _CHROMS.INF is not read beside _ANALOGS.INF, so the stored chromatograms are "
            "no traces"});
  raw.chroms = {{"pressure", {}}};  // nothing is hidden
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
}

TEST(RawFindings, ListOfChromatograms) {
  const RawDirectoryBuilder raw = WithChromatograms();
  ExpectLines(raw, {"trace-list-cut: _CHROMS.INF does not end with a whole record"},
              [](const TempDirectory& directory) { directory.Truncate("_CHROMS.INF", 8 + 2 * 85 - 1); });
  ExpectLines(raw, {"file-unowned: _CHRO002.DAT belongs to no trace"},
              [](const TempDirectory& directory) { directory.Truncate("_CHROMS.INF", 8 + 85); });
  ExpectLines(raw, {"trace-list-cut: _CHROMS.INF ends in its header, so there are no traces"},
              [](const TempDirectory& directory) { directory.Truncate("_CHROMS.INF", 7); });
  ExpectLines(raw, {"trace-list-cut: _CHROMS.INF ends before its records, so there are no traces"},
              [](const TempDirectory& directory) {
                directory.Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 179); });
              });
  ExpectLines(raw, {"trace-list-cut: _CHROMS.INF has a header that is not known, so there are no traces"},
              [](const TempDirectory& directory) {
                directory.Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 4, 84); });
              });
  ExpectLines(raw, {"trace-list-missing: _CHROMS.INF is missing, so there are no traces"},
              [](const TempDirectory& directory) { directory.Remove("_CHROMS.INF"); });
  ExpectLines(raw, {"trace-list-cut: _ANALOGS.INF is empty, so there are no traces"},
              [](const TempDirectory& directory) { directory.WriteText("_ANALOGS.INF", ""); });
}

}  // namespace
}  // namespace zrml::masslynx
