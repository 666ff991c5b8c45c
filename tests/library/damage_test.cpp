// Paths that lead nowhere, sources that are damaged or shrink while they are open, and what is said of them.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "tests/library/opened.h"
#include "tests/support/report_writer.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/small_acquisition.h"

namespace zrml::test {
namespace {

class LibraryDamage : public testing::Test {
 protected:
  zrml_status Open(const std::string& path) {
    zrml_source* source = reinterpret_cast<zrml_source*>(this);
    const zrml_status status = zrml_open(path.c_str(), &source);
    EXPECT_EQ(source, nullptr);
    return status;
  }

  TempDirectory folder_{u8"d\u00e9p\u00f4t"};
};

TEST_F(LibraryDamage, PathsThatAreNoSource) {
  EXPECT_EQ(Open(PathOf(folder_, "nothing.raw")), ZRML_NOT_FOUND);
  EXPECT_EQ(zrml_open_message(), "there is no file or folder " + PathOf(folder_, "nothing.raw"));
  EXPECT_EQ(Open(""), ZRML_NOT_FOUND);
  EXPECT_EQ(Open(PathOf(folder_)), ZRML_NOT_RECOGNISED);
  folder_.WriteText("text.rpt", "no report\n");
  EXPECT_EQ(Open(PathOf(folder_, "text.rpt")), ZRML_NOT_RECOGNISED);
  folder_.WriteText("_HEADER.TXT", "something else");
  EXPECT_NE(Open(PathOf(folder_)), ZRML_OK);
  const TempDirectory damaged = SoundDirectory().Build();
  damaged.Remove("_FUNCTNS.INF");
  damaged.MakeDirectory("_FUNCTNS.INF");
  EXPECT_EQ(Open(PathOf(damaged)), ZRML_DAMAGED);
}

// A name may hold any character; the message stays one line.
TEST_F(LibraryDamage, MessagesAreOneLine) {
  EXPECT_EQ(Open("two\nlines"), ZRML_NOT_FOUND);
  EXPECT_STREQ(zrml_open_message(), "there is no file or folder two lines");
}

TEST_F(LibraryDamage, LongMessagesEndWithAWholeCharacter) {
  std::string path;
  for (int i = 0; i < 3000; ++i) path += "\xC3\xA9";
  for (const std::string& front : {std::string(), std::string("x")}) {
    EXPECT_NE(Open(front + path), ZRML_OK);
    const std::string message = zrml_open_message();
    EXPECT_GT(message.size(), 1000u);
    EXPECT_LT(message.size(), path.size());
    EXPECT_EQ(message.back(), '\xA9');
  }
}

TEST_F(LibraryDamage, PathsAreUtf8) {
  SoundDirectory().WriteTo(folder_.Path());
  const Opened raw(folder_);
  EXPECT_EQ(PointsOf(raw.Get(), 0, 1, 0), (Arrays{{300}, {1}}));
}

TEST_F(LibraryDamage, ClosedFilesCanBeRemoved) {
  SoundDirectory().WriteTo(folder_.Path());
  {
    const Opened raw(folder_);
    PointsOf(raw.Get(), 0, 0, 0);
  }
  EXPECT_GT(std::filesystem::remove_all(folder_.Path()), 1u);
}

TEST_F(LibraryDamage, SourcesOfOnePathAreIndependent) {
  SoundDirectory().WriteTo(folder_.Path());
  const Opened first(folder_);
  const Opened second(folder_);
  int count = 0;
  EXPECT_EQ(zrml_scan_count(first.Get(), 0, 9, &count), ZRML_WRONG_ARGUMENT);
  EXPECT_STREQ(zrml_message(first.Get()), "there is no function 10");
  EXPECT_STREQ(zrml_message(second.Get()), "");
  EXPECT_EQ(PointsOf(first.Get(), 0, 0, 0), PointsOf(second.Get(), 0, 0, 0));
}

TEST_F(LibraryDamage, MessageStaysUntilTheNextFailure) {
  SoundDirectory().WriteTo(folder_.Path());
  const Opened raw(folder_);
  int count = 0;
  EXPECT_EQ(zrml_scan_count(raw.Get(), 0, 9, &count), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(zrml_scan_count(raw.Get(), 0, 0, &count), ZRML_OK);
  EXPECT_STREQ(zrml_message(raw.Get()), "there is no function 10");
  EXPECT_EQ(zrml_scan_count(raw.Get(), 3, 0, &count), ZRML_WRONG_ARGUMENT);
  EXPECT_STREQ(zrml_message(raw.Get()), "there is no sample 4");
}

// That of the second function, of 416 bytes.
TEST_F(LibraryDamage, FunctionWhoseRecordIsZerosHasNoLevel) {
  SoundDirectory().WriteTo(folder_.Path());
  folder_.Edit("_FUNCTNS.INF",
               [](FileBytes& bytes) { std::fill(bytes.begin() + 416, bytes.end(), std::byte{0}); });
  const Opened raw(folder_);
  const auto function = Get<zrml_function>(zrml_get_function, raw.Get(), 0, 1);
  EXPECT_EQ(function.ms_level, 0);
  EXPECT_EQ(function.kind, ZRML_KIND_OTHER);
  EXPECT_EQ(function.polarity, ZRML_POLARITY_UNKNOWN);
  EXPECT_TRUE(std::isnan(function.mass_low));
}

TEST_F(LibraryDamage, ScansOfAnUnknownLayoutAreDamaged) {
  SmallAcquisition().WriteTo(folder_.Path());
  const Opened raw(folder_);
  double values[4];
  std::size_t count = 0;
  EXPECT_EQ(zrml_read_points(raw.Get(), 0, 3, 1, values, values + 2, 2, &count, nullptr), ZRML_DAMAGED);
  EXPECT_STREQ(zrml_message(raw.Get()), "cannot read scan 2 of function 4");
}

TEST_F(LibraryDamage, DataThatAreMissingAreDamaged) {
  SoundDirectory().WriteTo(folder_.Path());
  folder_.Remove("_FUNC001.DAT");
  const Opened raw(folder_);
  double values[4];
  std::size_t count = 7;
  EXPECT_EQ(zrml_read_points(raw.Get(), 0, 0, 0, values, values + 2, 2, &count, nullptr), ZRML_DAMAGED);
  EXPECT_EQ(count, 7u);
  Doubles chromatogram(3);
  EXPECT_EQ(zrml_read_base_peaks(raw.Get(), 0, 0, chromatogram.data(), 3), ZRML_DAMAGED);
}

// As they were when the source was opened first, they were cut: what is there counts. Later they shrink.
TEST_F(LibraryDamage, DataThatShrinkAreUnreadable) {
  SoundDirectory().WriteTo(folder_.Path());
  folder_.Truncate("_FUNC001.DAT", 30);
  const Opened raw(folder_);
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 2), (Arrays{{100}, {7}, 1}));
  PointsOf(raw.Get(), 0, 1, 0);
  folder_.Truncate("_FUNC001.DAT", 18);
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 0), (Arrays{{100, 200}, {7, 9}})) << "which is whole";
  double mz[2];
  double intensities[2];
  std::size_t count = 7;
  EXPECT_EQ(zrml_read_points(raw.Get(), 0, 0, 1, mz, intensities, 2, &count, nullptr), ZRML_UNREADABLE);
  EXPECT_EQ(count, 7u);
  EXPECT_STREQ(zrml_message(raw.Get()), "_FUNC001.DAT has become shorter since it was opened");
}

// A scan that cannot be read ends the ones before it; it fails where it is the first.
TEST_F(LibraryDamage, ScanThatFailsAmongOthersEndsThem) {
  SoundDirectory().WriteTo(folder_.Path());
  const Opened raw(folder_);
  PointsOf(raw.Get(), 0, 0, 2);
  folder_.Truncate("_FUNC001.DAT", 18);
  EXPECT_EQ(PointsOfScans(raw.Get(), 0, 0, 3, 6), (std::vector<Arrays>{{{100, 200}, {7, 9}}}));
  EXPECT_STREQ(zrml_message(raw.Get()), "");
  double mz[6];
  double intensities[6];
  std::size_t ends[2];
  int count = 7;
  EXPECT_EQ(zrml_read_points_of_scans(raw.Get(), 0, 0, 1, 2, mz, intensities, 6, ends, nullptr, &count),
            ZRML_UNREADABLE);
  EXPECT_EQ(count, 7);
  EXPECT_STREQ(zrml_message(raw.Get()), "_FUNC001.DAT has become shorter since it was opened");
}

// Intensities are in percent of the base peak.
TEST_F(LibraryDamage, NumbersWithDecimalCommasAreAbsent) {
  const ReportLines commas =
      SpectrumBlock(Keys({{"Time", "0,5"}, {"BPI", "1,500"}, {"TIC", "2,5"}}), {{100, 50}});
  const ReportLines points = SpectrumBlock(Keys({{"Time", "1"}, {"BPI", "200"}}), {{100, 50}});
  folder_.WriteText("commas.rpt", ReportText(SampleBlock(FunctionBlock(commas + points))));
  const Opened report(PathOf(folder_, "commas.rpt"));
  const auto scan = Get<zrml_scan>(zrml_get_scan, report.Get(), 0, 0, 0);
  EXPECT_TRUE(std::isnan(scan.minutes));
  EXPECT_TRUE(std::isnan(scan.base_peak_intensity));
  EXPECT_TRUE(std::isnan(scan.total_intensity));
  EXPECT_EQ(PointsOf(report.Get(), 0, 0, 0), (Arrays{{}, {}, 1}));
  EXPECT_EQ(PointsOf(report.Get(), 0, 0, 1), (Arrays{{100}, {100}}));
}

TEST_F(LibraryDamage, ReportThatShrinksIsUnreadable) {
  const ReportLines spectrum = SpectrumBlock({}, ReportPairs(100'000, {100, 50}));
  folder_.WriteText("long.rpt", ReportText(SampleBlock(FunctionBlock(spectrum + spectrum))));
  const Opened report(PathOf(folder_, "long.rpt"));
  EXPECT_EQ(PointsOf(report.Get(), 0, 0, 0).x.size(), 100'000u);
  folder_.Truncate("long.rpt", 20);
  Doubles mz(100'000);
  Doubles intensities(100'000);
  std::size_t count = 0;
  EXPECT_EQ(
      zrml_read_points(report.Get(), 0, 0, 1, mz.data(), intensities.data(), mz.size(), &count, nullptr),
      ZRML_UNREADABLE)
      << count;
}

}  // namespace
}  // namespace zrml::test
