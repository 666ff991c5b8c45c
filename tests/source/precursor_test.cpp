// The search for precursors among scans at any times, compared with a search through all of them.
#include <algorithm>
#include <limits>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "source/source.h"

namespace zrml::source {
namespace {

using Times = std::vector<double>;

/// Scans with times but without points.
class TimedSource final : public Source {
 public:
  /// A product function, then surveys, every other one of the product function's kind.
  explicit TimedSource(std::vector<Times> times) : Source({}), times_(std::move(times)) {
    for (std::size_t i = 0; i < times_.size(); ++i) {
      Function& function = functions_.emplace_back();
      function.msLevel = i == 0 ? 2 : 1;
      function.polarity = IsAlike(static_cast<int>(i)) ? Polarity::kPositive : Polarity::kNegative;
    }
  }

  static bool IsAlike(int function) { return function % 2 == 0; }

  Format GetFormat() const override { return Format::kRawDirectory; }
  int SampleCount() override { return 1; }
  std::string SampleName(int) override { return {}; }
  std::vector<MetadataItem> SampleMetadata(int) override { return {}; }
  std::span<const Function> Functions(int) override { return functions_; }
  int ScanCount(int, int function) override { return static_cast<int>(Minutes(0, function).size()); }
  Scan ScanAt(int, int function, int scan) override {
    Scan result;
    result.minutes = times_.at(static_cast<std::size_t>(function)).at(static_cast<std::size_t>(scan));
    return result;
  }
  std::vector<double> Minutes(int, int function) override {
    ++asked_;
    return times_.at(static_cast<std::size_t>(function));
  }
  PointsRead ReadPoints(int, int, int, std::span<double>, std::span<double>) override { return {}; }
  using Source::ReadPoints;
  std::vector<Trace> Traces(int) override { return {}; }
  Chromatogram ReadTrace(int, int) override { return {}; }
  std::span<const Finding> Findings() override { return {}; }

  int asked_ = 0;  // how often times were read

 private:
  std::vector<Times> times_;
  std::vector<Function> functions_;
};

/// The nearest survey scan that is not later; of equally near ones the last in a survey of the same kind,
/// else the first.
std::optional<ScanPosition> FindAmongAll(const std::vector<Times>& times, double minutes) {
  std::optional<ScanPosition> found;
  double nearest = std::numeric_limits<double>::max();
  for (int f = 1; f < static_cast<int>(times.size()); ++f) {
    const Times& all = times[static_cast<std::size_t>(f)];
    for (int scan = 0; scan < static_cast<int>(all.size()); ++scan) {
      const double distance = minutes - all[static_cast<std::size_t>(scan)];
      const bool isNearer = distance < nearest || (distance == nearest && TimedSource::IsAlike(f));
      if (!(distance >= 0) || !isNearer) continue;
      nearest = distance;
      found = ScanPosition{f, scan};
    }
  }
  return found;
}

void ExpectPrecursors(const std::vector<Times>& times) {
  TimedSource source(times);
  for (int scan = 0; scan < static_cast<int>(times[0].size()); ++scan) {
    const std::optional<ScanPosition> found = source.FindPrecursor(0, 0, scan);
    const std::optional<ScanPosition> wanted = FindAmongAll(times, times[0][static_cast<std::size_t>(scan)]);
    ASSERT_EQ(found.has_value(), wanted.has_value()) << "scan " << scan;
    if (!found) continue;
    EXPECT_EQ(found->function, wanted->function) << "scan " << scan;
    EXPECT_EQ(found->scan, wanted->scan) << "scan " << scan;
  }
}

TEST(FindPrecursor, TakesTheNearestThatIsNotLater) {
  TimedSource source({{0.5, 1, 2.5, 9}, {1, 2, 3}});
  EXPECT_FALSE(source.FindPrecursor(0, 0, 0));
  EXPECT_EQ(source.FindPrecursor(0, 0, 1)->scan, 0);
  EXPECT_EQ(source.FindPrecursor(0, 0, 2)->scan, 1);
  EXPECT_EQ(source.FindPrecursor(0, 0, 3)->scan, 2);
}

// Function 1 is of a different kind from function 0, function 2 of the same.
TEST(FindPrecursor, OfEquallyNearScansKindDecides) {
  const Times twice = {1, 1};
  EXPECT_EQ(TimedSource({{1}, twice}).FindPrecursor(0, 0, 0)->scan, 0);
  const auto found = TimedSource({{1}, twice, twice, twice}).FindPrecursor(0, 0, 0);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->function, 2);
  EXPECT_EQ(found->scan, 1);
}

TEST(FindPrecursor, TimesAreReadOnceForAllScans) {
  TimedSource source({{1, 2, 3}, {1, 2, 3}});
  source.FindPrecursor(0, 0, 0);
  const int before = source.asked_;
  for (int scan = 0; scan < 3; ++scan) EXPECT_EQ(source.FindPrecursor(0, 0, scan)->scan, scan);
  EXPECT_LE(source.asked_ - before, 6) << "the first scans of both functions are read for their kind";
}

// Times that repeat, run backwards, are NaN, infinite, or too far away to be distinguished.
TEST(FindPrecursor, GivesWhatASearchThroughAllGives) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Times values = {0, -0.0, 1, 1, 2, 3, 3.5, 1e-30, 2e-30, 1e30, -1e30, kNaN, kInfinity, -kInfinity};
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE(round);
    std::vector<Times> times(1 + random() % 4);
    for (Times& list : times) {
      const bool isAscending = random() % 2 == 0;
      for (std::size_t i = random() % 8; i > 0; --i) list.push_back(values[random() % values.size()]);
      std::erase_if(list, [&](double time) { return isAscending && time != time; });
      if (isAscending) std::sort(list.begin(), list.end());
    }
    ExpectPrecursors(times);
  }
}

}  // namespace
}  // namespace zrml::source
