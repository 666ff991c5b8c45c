#include "tools/zrml/view/kept_page.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/view/opened_source.h"

namespace zrml::view {
namespace {

constexpr std::size_t kMegabyte = 1'000'000;

// What is between the script element with the data and its end.
std::string DataOf(const std::string& page) {
  const std::string front = "<script type=\"application/json\" id=\"kept\">";
  const std::size_t begin = page.find(front) + front.size();
  return page.substr(begin, page.find("</script>", begin) - begin);
}

Json KeptOf(const std::string& page) { return Json::parse(DataOf(page)); }

bool HasKey(const Json& kept, const std::string& key) { return kept["answers"].contains(key); }

TEST(KeptPage, HasWhatItShows) {
  const OpenedSource source(test::SmallAcquisition());
  const Json kept = KeptOf(MakeKeptPage(*source, kMegabyte, {}));
  for (const char* key :
       {"run", "findings?points=1", "sample?sample=0", "chromatogram?function=0&kind=tic&sample=0",
        "chromatogram?function=1&kind=bpc&sample=0", "map?function=0&sample=0", "peaks?function=0&sample=0",
        "spectrum?function=0&sample=0&scan=0", "trace?sample=0&trace=1", "absorbance-largest?sample=0",
        "absorbance-map?sample=0", "absorbance?sample=0&scan=1"}) {
    EXPECT_TRUE(HasKey(kept, key)) << key;
  }
  EXPECT_FALSE(HasKey(kept, "chromatogram?function=2&kind=tic&sample=0"));  // which has no scans
  EXPECT_EQ(kept["isThinned"], false);
  EXPECT_EQ(kept["leftOut"], 0);
}

TEST(KeptPage, SaysWhatCannotBeRead) {
  const OpenedSource source(test::SmallAcquisition());
  const Json kept = KeptOf(MakeKeptPage(*source, kMegabyte, {}));
  const Json& broken = kept["answers"]["map?function=3&sample=0"]["facts"];
  EXPECT_NE(broken["error"].get<std::string>(), "");
}

TEST(KeptPage, AsksForNothing) {
  const OpenedSource source(test::SmallAcquisition());
  const std::string page = MakeKeptPage(*source, kMegabyte, {});
  EXPECT_NE(page.find("content=\"default-src 'none'; script-src 'sha256-"), std::string::npos);
  EXPECT_EQ(page.find(" src="), std::string::npos);
  EXPECT_EQ(page.find("<link rel=\"stylesheet\""), std::string::npos);
  EXPECT_EQ(page.find("@import"), std::string::npos);
}

// Whatever a run calls itself: its text stays between the quotes of the data.
TEST(KeptPage, TextOfARunIsNoMarkup) {
  const std::string hostile = "</script><script>alert(1)</script><!--";
  RawDirectoryBuilder raw = test::SmallAcquisition();
  raw.header.push_back("$$ Sample Description: " + hostile + "\r\n");
  raw.analogNames[0] = hostile;
  const OpenedSource source(raw);
  const std::string page = MakeKeptPage(*source, kMegabyte, {});
  EXPECT_EQ(DataOf(page).find('<'), std::string::npos);
  EXPECT_EQ(KeptOf(page)["answers"]["sample?sample=0"]["facts"]["traces"][0]["name"], hostile);
  EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
}

TEST(KeptPage, HasEverySampleOfAReport) {
  const OpenedSource source(test::Vials());
  const Json kept = KeptOf(MakeKeptPage(*source, kMegabyte, {}));
  for (int sample = 0; sample < 3; ++sample)
    EXPECT_TRUE(HasKey(kept, "sample?sample=" + std::to_string(sample)));
  EXPECT_TRUE(HasKey(kept, "trace?function=0&sample=0&trace=0"));
}

ReportLines ManyVials(int count) {
  ReportLines vials;
  for (int i = 0; i < count; ++i) vials = vials + test::Vials();
  return vials;
}

// The page's own code, which has no smaller form.
std::size_t SizeOfCode() {
  const OpenedSource source(SampleBlock({}));
  return MakeKeptPage(*source, kMegabyte, {}).size();
}

TEST(KeptPage, FitsIntoItsSize) {
  const OpenedSource source(ManyVials(20));
  const std::size_t all = MakeKeptPage(*source, 10 * kMegabyte, {}).size();
  const std::size_t half = (SizeOfCode() + all) / 2;
  const std::string page = MakeKeptPage(*source, half, {});
  EXPECT_LE(page.size(), half);
  EXPECT_GT(page.size(), SizeOfCode());
  EXPECT_EQ(KeptOf(page)["isThinned"], true);
}

TEST(KeptPage, LeavesOutSpectraOfLastSamplesFirst) {
  const OpenedSource source(ManyVials(20));
  constexpr std::size_t kRoom = 78'000;  // all as small as can be takes some 4000 more
  const Json kept = KeptOf(MakeKeptPage(*source, SizeOfCode() + kRoom, {}));
  EXPECT_GT(kept["leftOut"], 0);
  EXPECT_FALSE(HasKey(kept, "spectrum?function=0&sample=57&scan=0"));
  EXPECT_TRUE(HasKey(kept, "spectrum?function=0&sample=0&scan=0"));
  EXPECT_TRUE(HasKey(kept, "map?function=0&sample=57"));
}

// A sample with a spectrum of so many points.
ReportLines VialWith(int points) {
  ReportPairs spectrum;
  for (int i = 0; i < points; ++i) spectrum.push_back({100.0 + i, 50});
  const ReportLines scan =
      SpectrumBlock(Keys({{"Time", "1"}, {"Continuum", "FALSE"}, {"BPI", "50"}}), spectrum);
  return SampleBlock(FunctionBlock(Keys({{"Type", "MS"}}) + scan));
}

TEST(KeptPage, HasNoSpectrumOfALaterSampleInPlaceOfALargerOneBefore) {
  const OpenedSource source(VialWith(99) + VialWith(1));
  const std::size_t code = SizeOfCode();
  int withoutLast = 0;
  for (std::size_t room = 500; room < 10'000; room += 50) {
    const Json kept = KeptOf(MakeKeptPage(*source, code + room, {}));
    const bool hasFirst = HasKey(kept, "spectrum?function=0&sample=0&scan=0");
    const bool hasLast = HasKey(kept, "spectrum?function=0&sample=1&scan=0");
    EXPECT_TRUE(hasFirst || !hasLast) << room;
    if (hasFirst && !hasLast) ++withoutLast;
  }
  EXPECT_GT(withoutLast, 0);
}

TEST(KeptPage, WorkCanBeCancelled) {
  const OpenedSource source(test::SmallAcquisition());
  EXPECT_THROW(MakeKeptPage(*source, kMegabyte, {[] { return true; }, {}}), source::Cancelled);
}

TEST(LivePage, HoldsNoData) {
  const std::string page = LivePage();
  EXPECT_EQ(page.find("id=\"kept\""), std::string::npos);
  EXPECT_NE(page.find("<script src=\"/page.js\"></script>"), std::string::npos);
}

}  // namespace
}  // namespace zrml::view
