// Sample-level traces: the list, the data of analog channels and stored chromatograms, the total absorbance.
#include <climits>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/bytes.h"
#include "tests/masslynx/ml_data_server_fixture.h"
#include "tests/masslynx/truncation.h"

namespace zrml {
namespace {

CZRChromatogram Marked() {
  CZRChromatogram chromatogram;
  chromatogram.SetSize(1);
  chromatogram.SetTime(0, 7);
  chromatogram.SetName(L"as it was");
  return chromatogram;
}

std::wstring NameOf(const CZRChromatogram& chromatogram) {
  return {chromatogram.Name().begin(), chromatogram.Name().end()};
}

class Traces : public MLDataServerTest {
 protected:
  Names TraceNames() {
    Names names;
    for (int i = 0; i < server_.GetTraceCount(0); ++i) names.push_back(server_.GetTraceName(0, i));
    return names;
  }

  void Reopen() {
    server_.Close();
    ASSERT_TRUE(server_.Open(directory_->WidePath()));
  }

  void ExpectTrace(int trace, const Doubles& times, const Doubles& intensities, const std::wstring& name) {
    CZRChromatogram chromatogram = Marked();
    ASSERT_TRUE(server_.GetTrace(0, trace, chromatogram));
    EXPECT_EQ(chromatogram.Times(), times);
    EXPECT_EQ(chromatogram.Intensities(), intensities);
    EXPECT_EQ(NameOf(chromatogram), name);
  }

  void ExpectNoTrace(int trace) {
    CZRChromatogram chromatogram = Marked();
    EXPECT_FALSE(server_.GetTrace(0, trace, chromatogram)) << trace;
    EXPECT_EQ(chromatogram.Times(), Doubles{7});
    EXPECT_EQ(NameOf(chromatogram), L"as it was");
  }
};

TEST_F(Traces, DirectoryWithoutThemHasNone) {
  Open(DirectoryOf({kTofMs}));
  EXPECT_EQ(server_.GetTraceCount(0), 0);
  EXPECT_EQ(server_.GetTraceName(0, 0), L"");
  ExpectNoTrace(0);
}

// 170 bytes: four bytes of no known meaning, 81 of name, twice.
TEST_F(Traces, AnalogListIsReadFromItsBytes) {
  Open(DirectoryOf({kTofMs}));
  ByteWriter list;
  list.U32(0xDEADBEEF).Text("TUV 254 nm").Zeros(71);
  list.U32(0).Zeros(81);
  ASSERT_EQ(list.Size(), 170U);
  directory_->Write("_ANALOGS.INF", list.Written());
  EXPECT_EQ(TraceNames(), (Names{L"TUV 254 nm", L"Trace 2"}));
  EXPECT_EQ(server_.GetTraceName(0, 2), L"");
  EXPECT_EQ(server_.GetTraceName(0, -1), L"");
  EXPECT_EQ(server_.GetTraceName(1, 0), L"");
}

// 3F 80 00 00 and 3F 00 00 00 are 1 and 0.5. Word 43 = 0x2B is mantissa 5 with exponent 3: 5 x 4^3 = 320;
// word 0xFFFF is mantissa 8191 with exponent 7: 8191 x 16384 = 134201344.
TEST_F(Traces, AnalogDataAreReadFromTheirBytes) {
  Open(DirectoryOf({kTofMs}));
  directory_->Write("_ANALOGS.INF", WriteAnalogsInf({"first", "second"}));
  directory_->Write("_ANALOGS.DAT", HexToBytes("00 00 00 3F  2B 00 FF FF"
                                               "00 00 80 3F  08 00 00 00"));
  ExpectTrace(0, {0.5, 1}, {320, 1}, L"first");
  ExpectTrace(1, {0.5, 1}, {134201344, 0}, L"second");
  ExpectNoTrace(2);
  ExpectNoTrace(-1);
}

// Records of three traces have 10 bytes; time falls at the fourth.
TEST_F(Traces, AnalogTracesEndWhereTimeRunsBackwards) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a", "b", "c"};
  for (const float time : {1.0F, 2.0F, 2.0F, 1.5F, 3.0F})
    raw.analogs.push_back({.time = time, .words = {8, 16, 24}});
  Open(raw);
  ASSERT_EQ(directory_->Read("_ANALOGS.DAT").size(), 50U);
  ExpectTrace(0, {1, 2, 2}, {1, 1, 1}, L"a");
  ExpectTrace(1, {1, 2, 2}, {2, 2, 2}, L"b");
  ExpectTrace(2, {1, 2, 2}, {3, 3, 3}, L"c");
}

TEST_F(Traces, NanTimeDoesNotRunBackwards) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a"};
  for (const float time : {1.0F, NAN, 0.5F}) raw.analogs.push_back({.time = time, .words = {8}});
  Open(raw);
  CZRChromatogram chromatogram;
  ASSERT_TRUE(server_.GetTrace(0, 0, chromatogram));
  ASSERT_EQ(chromatogram.Times().size(), 3U);
  EXPECT_TRUE(std::isnan(chromatogram.Times()[1]));
  EXPECT_EQ(chromatogram.Times()[2], 0.5);
}

TEST_F(Traces, LongAnalogTraceIsWhole) {
  constexpr int kRecords = 50000;  // several blocks of a single read
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a", "b", "c"};
  for (int i = 0; i < kRecords; ++i) {
    const auto word = static_cast<std::uint16_t>((i % 8000) << 3);
    raw.analogs.push_back({.time = static_cast<float>(i), .words = {0, word, 0}});
  }
  Open(raw);
  CZRChromatogram chromatogram;
  ASSERT_TRUE(server_.GetTrace(0, 1, chromatogram));
  ASSERT_EQ(chromatogram.Times().size(), std::size_t{kRecords});
  for (int i = 0; i < kRecords; ++i) {
    ASSERT_EQ(chromatogram.Times()[static_cast<std::size_t>(i)], i);
    ASSERT_EQ(chromatogram.Intensities()[static_cast<std::size_t>(i)], i % 8000);
  }
}

TEST_F(Traces, EmptyDataFilesGiveEmptyTraces) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a"};
  Open(raw);
  ExpectTrace(0, {}, {}, L"a");
}

TEST_F(Traces, AnalogFileMustHoldWholeRecords) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a", "b"};
  raw.analogs = {{.time = 1, .words = {8, 8}}, {.time = 2, .words = {8, 8}}};
  Open(raw);
  TruncateAtEveryLength(*directory_, "_ANALOGS.DAT", [&](std::size_t size) {
    CZRChromatogram chromatogram;
    EXPECT_EQ(server_.GetTrace(0, 1, chromatogram), size % 8 == 0);
    EXPECT_EQ(chromatogram.Times().size(), size % 8 == 0 ? size / 8 : 0);
  });
  directory_->Remove("_ANALOGS.DAT");
  ExpectNoTrace(0);
}

TEST_F(Traces, AnalogListOfABrokenSizeIsUnknownUntilItIsWhole) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad});
  raw.analogNames = {"a", "b"};
  Open(raw);
  const FileBytes whole = directory_->Read("_ANALOGS.INF");
  TruncateAtEveryLength(*directory_, "_ANALOGS.INF", [&](std::size_t size) {
    Reopen();
    // The absorbance trace is only added to a list that could be read.
    EXPECT_EQ(server_.GetTraceCount(0), size % 85 == 0 ? static_cast<int>(size / 85) + 1 : 0);
    EXPECT_EQ(server_.GetTraceName(0, 0).empty(), size % 85 != 0);
    if (size % 85 != 0) {
      ExpectNoTrace(0);
      ExpectNoTrace(-1);
    }
  });
  directory_->Write("_ANALOGS.INF", std::span(whole).first(84));
  Reopen();
  EXPECT_EQ(server_.GetTraceCount(0), 0);
  directory_->Write("_ANALOGS.INF", whole);
  EXPECT_EQ(TraceNames(), (Names{L"a", L"b", L"PDA - Total Absorbance"}));
}

TEST_F(Traces, ListIsReadOnceAndKeptUntilClose) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a", "b"};
  raw.analogs = {{.time = 1, .words = {8, 16}}};
  Open(raw);
  EXPECT_EQ(server_.GetTraceCount(0), 2);
  directory_->Write("_ANALOGS.INF", WriteAnalogsInf({"changed"}));
  EXPECT_EQ(TraceNames(), (Names{L"a", L"b"}));
  ExpectTrace(1, {1}, {2}, L"b");
  Reopen();
  EXPECT_EQ(TraceNames(), Names{L"changed"});
}

TEST_F(Traces, DataAreReadAnewEachTime) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a"};
  raw.analogs = {{.time = 1, .words = {8}}};
  Open(raw);
  ExpectTrace(0, {1}, {1}, L"a");
  directory_->Write("_ANALOGS.DAT", WriteAnalogsDat({{.time = 2, .words = {16}}}));
  ExpectTrace(0, {2}, {2}, L"a");
}

TEST_F(Traces, NameWithoutATerminatorEndsAt81Bytes) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {std::string(90, 'n'), "caf\xe9"};
  Open(raw);
  EXPECT_EQ(server_.GetTraceName(0, 0), std::wstring(81, L'n'));
  EXPECT_EQ(server_.GetTraceName(0, 1), L"caf\u00e9");
}

TEST_F(Traces, AnalogsComeBeforeStoredChromatograms) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"channel"};
  raw.chroms = {{"one", {{1, 2}}}, {"two", {{1, 2}}}};
  Open(raw);
  EXPECT_EQ(TraceNames(), Names{L"channel"});
  directory_->Write("_ANALOGS.INF", {});  // an empty list is still a list
  Reopen();
  EXPECT_EQ(server_.GetTraceCount(0), 0);
  directory_->Remove("_ANALOGS.INF");
  Reopen();
  EXPECT_EQ(TraceNames(), (Names{L"one", L"two"}));
}

// Header of 10 bytes: 0x000A, 1, 85, 2, then two unused words.
TEST_F(Traces, StoredChromatogramsAreReadFromTheirBytes) {
  Open(DirectoryOf({kTofMs}));
  ByteWriter list;
  list.Append(HexToBytes("0A 00 01 00 55 00 02 00 EE EE"));
  list.U32(9).Text("TIC").Zeros(78).U32(9).Zeros(81);
  list.Unused(84);  // not a whole record
  directory_->Write("_CHROMS.INF", list.Written());
  EXPECT_EQ(TraceNames(), (Names{L"TIC", L"Trace 2"}));

  // Points (0.5, 3) and (0.25, -1): here times may fall.
  directory_->Write("_CHRO002.DAT", HexToBytes("0A 00 01 00 08 00 02 00 EE EE"
                                               "00 00 00 3F 00 00 40 40 00 00 80 3E 00 00 80 BF"));
  ExpectTrace(1, {0.5, 0.25}, {3, -1}, L"Trace 2");
  ExpectNoTrace(0);  // its file is missing
}

TEST_F(Traces, HeaderConstantsOfTheListMustBeRight) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {{1, 2}}}};
  Open(raw);
  const FileBytes sound = directory_->Read("_CHROMS.INF");
  EXPECT_EQ(TraceNames(), Names{L"one"});
  for (const std::size_t word : {2U, 4U, 6U}) {
    for (const int change : {-1, 1, 256}) {
      FileBytes bytes = sound;
      PatchU16(bytes, word, static_cast<std::uint16_t>(LoadU16(&bytes[word]) + change));
      directory_->Write("_CHROMS.INF", bytes);
      Reopen();
      EXPECT_EQ(server_.GetTraceCount(0), 0) << word << ' ' << change;
    }
  }
}

TEST_F(Traces, HeaderConstantsOfTheDataMustBeRight) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {{1, 2}}}};
  Open(raw);
  ExpectTrace(0, {1}, {2}, L"one");
  const FileBytes sound = directory_->Read("_CHRO001.DAT");
  for (const std::size_t word : {2U, 4U, 6U}) {
    for (const int change : {-1, 1, 256}) {
      FileBytes bytes = sound;
      PatchU16(bytes, word, static_cast<std::uint16_t>(LoadU16(&bytes[word]) + change));
      directory_->Write("_CHRO001.DAT", bytes);
      ExpectNoTrace(0);
    }
  }
}

TEST_F(Traces, HeaderBeyondTheFileIsRefused) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {{1, 2}}}};
  Open(raw);
  EXPECT_EQ(server_.GetTraceCount(0), 1);
  directory_->Edit("_CHRO001.DAT", [](FileBytes& bytes) { PatchU16(bytes, 0, 16); });  // the file's size
  ExpectTrace(0, {}, {}, L"one");
  directory_->Edit("_CHRO001.DAT", [](FileBytes& bytes) { PatchU16(bytes, 0, 24); });
  ExpectNoTrace(0);
  directory_->Edit("_CHRO001.DAT", [](FileBytes& bytes) { PatchU16(bytes, 0, 0); });  // less than itself
  ExpectNoTrace(0);

  directory_->Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 93); });  // the file's size
  Reopen();
  EXPECT_EQ(server_.GetTraceCount(0), 0);
  directory_->Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 94); });
  Reopen();
  EXPECT_EQ(server_.GetTraceCount(0), 0);
}

// The header says where the list begins, even if that is inside the header itself.
TEST_F(Traces, ListMayBeginInsideItsHeader) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {{1, 2}}}};
  Open(raw);
  directory_->Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 4); });
  EXPECT_EQ(server_.GetTraceCount(0), 1);  // 89 bytes
}

TEST_F(Traces, StoredChromatogramCutAnywhereIsRefusedUnlessItsPointsAreWhole) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {{1, 2}, {3, 4}}}};
  Open(raw);
  TruncateAtEveryLength(*directory_, "_CHRO001.DAT", [&](std::size_t size) {
    CZRChromatogram chromatogram;
    const bool whole = size >= 8 && size % 8 == 0;
    EXPECT_EQ(server_.GetTrace(0, 0, chromatogram), whole);
    EXPECT_EQ(chromatogram.Times().size(), whole ? (size - 8) / 8 : 0);
  });
}

TEST_F(Traces, StoredListCutAnywhereGivesItsWholeRecords) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.chroms = {{"one", {}}, {"two", {}}};
  Open(raw);
  TruncateAtEveryLength(*directory_, "_CHROMS.INF", [&](std::size_t size) {
    Reopen();
    EXPECT_EQ(server_.GetTraceCount(0), size < 8 ? 0 : static_cast<int>((size - 8) / 85));
  });
}

TEST_F(Traces, FileNumberHasThreeDigitsOrMore) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  Open(raw);
  directory_->Write("_CHROMS.INF", WriteChromsInf(std::vector<std::string>(1000, "t")));
  directory_->Write("_CHRO1000.DAT", WriteChroDat({{4, 5}}));
  directory_->Write("_chro042.dat", WriteChroDat({{6, 7}}));
  ExpectTrace(999, {4}, {5}, L"t");
  ExpectTrace(41, {6}, {7}, L"t");
  ExpectNoTrace(0);
}

TEST_F(Traces, TotalAbsorbanceComesLast) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad});
  raw.functions[1] = FunctionOf(kDad, {0.25F, 0.5F});
  raw.functions[1].scans[0].index.totalIntensity = 100.5F;
  raw.functions[1].scans[1].index.totalIntensity = -3;
  raw.analogNames = {"a", "b"};
  Open(raw);
  EXPECT_EQ(TraceNames(), (Names{L"a", L"b", L"PDA - Total Absorbance"}));
  ExpectTrace(2, {0.25, 0.5}, {100.5, -3}, L"PDA - Total Absorbance");
  ExpectNoTrace(3);
  ExpectNoTrace(INT_MAX);
  ExpectNoTrace(INT_MIN);
}

TEST_F(Traces, TotalAbsorbanceStandsAlone) {
  Open(DirectoryOf({kTofMs, kDad}));
  EXPECT_EQ(TraceNames(), Names{L"PDA - Total Absorbance"});
  directory_->Remove("_FUNC002.IDX");
  ExpectTrace(0, {}, {}, L"PDA - Total Absorbance");
}

TEST_F(Traces, QuestionsToAClosedObjectDoNotSpoilTheNextOpen) {
  EXPECT_EQ(server_.GetTraceCount(0), 0);
  EXPECT_EQ(server_.GetTraceName(0, 0), L"");
  ExpectNoTrace(0);
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"a"};
  Open(raw);
  EXPECT_EQ(server_.GetTraceCount(0), 1);
}

// Hosts close first. One that does not keeps the list it has requested: deliberate, since everything loaded
// on demand is kept until Close().
TEST_F(Traces, SecondOpenWithoutCloseDeliberatelyKeepsTheList) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.analogNames = {"old"};
  Open(raw);
  EXPECT_EQ(TraceNames(), Names{L"old"});
  raw.analogNames = {"new", "newer"};
  const TempDirectory other = raw.Build();
  ASSERT_TRUE(server_.Open(other.WidePath()));
  EXPECT_EQ(TraceNames(), Names{L"old"});
  server_.Close();
  ASSERT_TRUE(server_.Open(other.WidePath()));
  EXPECT_EQ(TraceNames(), (Names{L"new", L"newer"}));
  server_.Close();
}

}  // namespace
}  // namespace zrml
