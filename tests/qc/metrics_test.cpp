// What metrics are where a run lacks something. Their values: tests/zrml/qc_test.cpp.
#include "qc/metrics.h"

#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace zrml::qc {
namespace {

using Values = std::vector<double>;

void Add(Level level, const Spectrum& spectrum, RunSpectra& run) {
  run.lists[kAllLevels].Add(spectrum);
  run.lists[level].Add(spectrum);
}

Values ValuesOf(std::string_view accession, RunSpectra run) {
  for (SpectrumList& list : run.lists) list.Sort();
  for (const Metric& metric : Metrics()) {
    if (metric.term.accession == accession) return metric.compute(run);
  }
  ADD_FAILURE() << accession;
  return {};
}

TEST(Metrics, ARunWithoutSpectraHasCounts) {
  std::set<std::string_view> counts;
  for (const Metric& metric : Metrics()) {
    if (!metric.compute({}).empty()) counts.insert(metric.column);
  }
  EXPECT_EQ(counts, (std::set<std::string_view>{"ms1Spectra", "ms2Spectra", "chromatograms", "ms1Empty",
                                                "ms2Empty", "ms1Jumps", "ms1Falls"}));
}

// One moment has no length, and nothing can be divided by it.
TEST(Metrics, OneSpectrumHasNoArea) {
  RunSpectra run;
  Add(kMs1, {.minutes = 2, .total = 5}, run);
  EXPECT_EQ(ValuesOf("MS:4000067", run), Values{0});
  EXPECT_EQ(ValuesOf("MS:4000155", run), Values());
  EXPECT_EQ(ValuesOf("MS:4000183", run), Values());
  EXPECT_EQ(ValuesOf("MS:4000106", run), Values());
  EXPECT_EQ(ValuesOf("MS:4000192", run), Values());
}

TEST(Metrics, WithoutTimesTheRestIsThere) {
  RunSpectra run;
  constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();
  Add(kMs1, {.minutes = kNoTime, .total = 5}, run);
  Add(kMs1, {.minutes = kNoTime, .total = 60}, run);
  EXPECT_EQ(ValuesOf("MS:4000059", run), Values{2});
  EXPECT_EQ(ValuesOf("MS:4000097", run), Values{1});
  EXPECT_EQ(ValuesOf("MS:4000204", run), Values{60});
  EXPECT_EQ(ValuesOf("MS:4000067", run), Values());
  EXPECT_EQ(ValuesOf("MS:4000190", run), Values());
}

// More than tenfold, not tenfold; from nothing to something is more than any factor.
TEST(Metrics, JumpsAndFalls) {
  RunSpectra run;
  double minutes = 0;
  for (const double total : {1.0, 10.0, 101.0, 0.0, 0.0, 5.0})
    Add(kMs1, {.minutes = ++minutes, .total = total}, run);
  EXPECT_EQ(ValuesOf("MS:4000097", run), Values{2});
  EXPECT_EQ(ValuesOf("MS:4000098", run), Values{1});
}

// Points of a profile are not peaks; one such spectrum is enough.
TEST(Metrics, ProfilesHaveNoPeakCounts) {
  RunSpectra run;
  Add(kMs1, {.points = 3, .isCentroided = true}, run);
  EXPECT_EQ(ValuesOf("MS:4000061", run), (Values{3, 3, 3}));
  Add(kMs1, {.points = 3, .isCentroided = false}, run);
  EXPECT_EQ(ValuesOf("MS:4000061", run), Values());
}

TEST(Metrics, NoRatioToNothing) {
  RunSpectra run;
  for (const double minutes : {1.0, 2.0}) {
    Add(kMs1, {.minutes = minutes, .total = 5}, run);
    Add(kMs2, {.minutes = minutes, .total = 0}, run);
  }
  EXPECT_EQ(ValuesOf("MS:4000030", run), Values{0});
  EXPECT_EQ(ValuesOf("MS:4000031", run), Values());
}

TEST(Metrics, AccessionsAndColumnsAreUnique) {
  std::set<std::string_view> accessions;
  std::set<std::string> columns;
  std::size_t count = 0;
  for (const Metric& metric : Metrics()) {
    accessions.insert(metric.term.accession);
    for (const std::string& column : ColumnsOf(metric)) {
      columns.insert(column);
      ++count;
    }
  }
  EXPECT_EQ(accessions.size(), Metrics().size());
  EXPECT_EQ(columns.size(), count);
}

}  // namespace
}  // namespace zrml::qc
