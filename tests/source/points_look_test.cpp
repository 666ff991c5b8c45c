// Damage that is in the points: sound acquisitions of every layout say nothing, and one edit of their data
// files is found, with what is left read as it was.
#include "source/points_look.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "source/source.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/sample/acquisition.h"

namespace zrml::source {
namespace {

using Lines = std::vector<std::string>;

// A scan whose points have these intensities, at m/z 100, 150 and so on.
using MakeScan = ScanFiles (*)(const std::vector<int>& intensities);

template <class Stored, Stored (*kPoint)(double mass, int intensity)>
ScanFiles ScanWith(const std::vector<int>& intensities) {
  std::vector<Stored> points;
  for (const int intensity : intensities)
    points.push_back(kPoint(100 + 50 * static_cast<double>(points.size()), intensity));
  return ScanOf(0, points);
}

template <class Stored>
Stored WithMass(double mass, int intensity) {
  return NearestPoint<Stored>({mass, static_cast<double>(intensity)});
}
StoredPoint13 WithMass13(double mass, int intensity) {
  const auto point = NearestPoint<StoredPoint12>({mass, static_cast<double>(intensity)});
  return {point.massExponent, point.massMantissa, point.intensity};
}
StoredPoint2 Word(double, int intensity) { return {static_cast<std::uint32_t>(intensity), 0}; }
template <class Stored>
Stored InGroup(double, int intensity) {
  return {static_cast<std::int16_t>(intensity), 0};
}
template <class Stored>
Stored Listed(double, int intensity) {
  return {{.magnitude = static_cast<std::uint32_t>(intensity), .exponent = 21}};
}

struct Layout {
  unsigned dataFormat;
  MakeScan scan;
  bool hasOwnMasses = false;
  MakeScan lastScan = nullptr;  // where it is another one
};

constexpr MakeScan kWords = ScanWith<StoredPoint2, Word>;
constexpr MakeScan kGroupsOf4 = ScanWith<StoredPoint4, InGroup<StoredPoint4>>;
constexpr MakeScan kGroupsOf2 = ScanWith<StoredPoint5, InGroup<StoredPoint5>>;

// All that can be read.
constexpr Layout kLayouts[] = {
    {0, ScanWith<StoredPoint0, WithMass<StoredPoint0>>, true},
    {1, ScanWith<StoredPoint1, WithMass<StoredPoint1>>, true},
    {2, kWords},
    {3, kWords},
    {4, kGroupsOf4},
    {5, kGroupsOf2},
    {6, kWords, false, kGroupsOf4},
    {7, kGroupsOf2},
    {8, ScanWith<StoredPoint8, WithMass<StoredPoint8>>, true},
    {9, ScanWith<StoredPoint9, WithMass<StoredPoint9>>, true},
    {11, ScanWith<StoredPoint11, Listed<StoredPoint11>>},
    {12, ScanWith<StoredPoint12, WithMass<StoredPoint12>>, true},
    {13, ScanWith<StoredPoint13, WithMass13>, true},
    {14, ScanWith<StoredPoint14, Listed<StoredPoint14>>},
};

// Some points are zeros, also the last ones, as they are where nothing is seen.
const std::vector<std::vector<int>> kSound = {
    {40, 0, 30, 20, 0, 12, 0}, {4, 16, 32, 8, 24, 20, 12}, {8, 0, 12, 24, 4, 0, 0}};

RawDirectoryBuilder Acquired(const Layout& layout, const std::vector<std::vector<int>>& scans = kSound) {
  RawDirectoryBuilder raw;
  FunctionFiles& function = raw.functions.emplace_back();
  function.record.dataFormat = layout.dataFormat;
  for (std::size_t i = 0; i < function.record.startMasses.size(); ++i) {
    function.record.startMasses[i] = 100 + 50 * static_cast<float>(i);
    function.record.endMasses[i] = 500;
  }
  for (const std::vector<int>& intensities : scans) {
    const bool isLast = function.scans.size() + 1 == scans.size();
    const MakeScan make = isLast && layout.lastScan != nullptr ? layout.lastScan : layout.scan;
    function.scans.push_back(make(intensities));
    function.scans.back().index.retentionTime = static_cast<float>(function.scans.size());
  }
  return raw;
}

std::string PathOf(const TempDirectory& directory) {
  const std::u8string path = directory.Path().u8string();
  return {path.begin(), path.end()};
}

// All findings of the source at a directory, of whichever kind.
Lines LinesOf(const TempDirectory& directory) {
  const auto source = Source::Open(PathOf(directory));
  const zrml::Findings look = LookAtPoints(*source);
  Lines lines;
  for (const auto list : {source->Findings(), look.List()}) {
    for (const Finding& finding : list)
      lines.push_back(std::string(NameOf(finding.code)) + ": " + TextOf(finding));
  }
  return lines;
}

using Points = std::vector<std::pair<double, double>>;

struct Scanned {
  Points points;
  std::size_t lost = 0;
};

Scanned Read(const TempDirectory& directory, int scan) {
  const auto source = Source::Open(PathOf(directory));
  std::vector<double> mz;
  std::vector<double> intensities;
  Scanned read;
  read.lost = source->ReadPoints(0, 0, scan, mz, intensities).lost;
  for (std::size_t i = 0; i < mz.size(); ++i) read.points.emplace_back(mz[i], intensities[i]);
  return read;
}

void Zero(const TempDirectory& directory, std::size_t from, std::size_t size) {
  directory.Edit("_FUNC001.DAT", [&](FileBytes& bytes) {
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(from), std::min(size, bytes.size() - from),
                std::byte{0});
  });
}

const Layout& LayoutOf(unsigned dataFormat) {
  return *std::find_if(std::begin(kLayouts), std::end(kLayouts),
                       [&](const Layout& layout) { return layout.dataFormat == dataFormat; });
}

constexpr std::size_t kToTheEnd = static_cast<std::size_t>(-1);

TEST(PointsLookTest, SoundAcquisitionsOfEveryLayoutAreSilent) {
  for (const Layout& layout : kLayouts) {
    RawDirectoryBuilder raw = Acquired(layout);
    EXPECT_EQ(LinesOf(raw.Build()), Lines()) << layout.dataFormat;
    for (ScanFiles& scan : raw.functions[0].scans) scan.index.totalIntensity *= 1.9F;
    EXPECT_EQ(LinesOf(raw.Build()), Lines()) << layout.dataFormat;
    for (ScanFiles& scan : raw.functions[0].scans) scan.index.totalIntensity = 0;  // not recorded
    EXPECT_EQ(LinesOf(raw.Build()), Lines()) << layout.dataFormat;
  }
}

TEST(PointsLookTest, SampleIsSilent) { EXPECT_EQ(LinesOf(sample::Acquisition().Build()), Lines()); }

TEST(PointsLookTest, SoundAbsorbanceIsSilent) {
  for (const unsigned format : {1U, 9U}) {
    for (const auto& scans : {kSound, {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}}}) {
      RawDirectoryBuilder raw = Acquired(kLayouts[format], scans);
      raw.functions[0].record.type = 12;
      EXPECT_EQ(LinesOf(raw.Build()), Lines()) << format;
    }
  }
}

// The wavelengths are 100, 150 and so on. In format 1 six zeros from byte 7 on take the second wavelength of
// a pair and the intensities of the next pair; in format 9, from byte 2 of the third point on, its wavelength
// and the intensity of the next one; a byte later they leave 4 bits of the wavelength.
TEST(PointsLookTest, ZerosInAbsorbance) {
  struct Case {
    unsigned format;
    std::size_t from;
    Points left;
    std::size_t lost;
  };
  const Case cases[] = {
      {1, 7, {{100, 4}, {300, 24}, {350, 20}, {400, 12}}, 3},
      {9, 14, {{100, 4}, {150, 16}, {300, 24}, {350, 20}, {400, 12}}, 2},
      {9, 15, {{100, 4}, {150, 16}, {300, 24}, {350, 20}, {400, 12}}, 2},
  };
  for (const Case& each : cases) {
    RawDirectoryBuilder raw = Acquired(LayoutOf(each.format));
    raw.functions[0].record.type = 12;
    const TempDirectory directory = raw.Build();
    Zero(directory, raw.functions[0].scans[0].data.size() + each.from, 6);
    const auto source = Source::Open(PathOf(directory));
    std::vector<double> wavelengths;
    std::vector<double> values;
    EXPECT_EQ(source->ReadAbsorbance(0, 1, wavelengths, values).lost, each.lost) << each.format;
    Points left;
    for (std::size_t i = 0; i < wavelengths.size(); ++i) left.emplace_back(wavelengths[i], values[i]);
    EXPECT_EQ(left, each.left) << each.format;
    EXPECT_EQ(LinesOf(directory),
              Lines{"points-lost: _FUNC001.DAT has 1 of 3 scans that have lost points; the "
                    "first is scan 2"});
  }
}

TEST(PointsLookTest, ZerosFromInsideAScanToTheEnd) {
  for (const Layout& layout : kLayouts) {
    SCOPED_TRACE(layout.dataFormat);
    const RawDirectoryBuilder raw = Acquired(layout);
    const TempDirectory directory = raw.Build();
    const std::vector<ScanFiles>& scans = raw.functions[0].scans;
    const Points before[] = {Read(directory, 0).points, Read(directory, 1).points};
    Zero(directory, scans[0].data.size() + scans[1].data.size() / 2, kToTheEnd);
    EXPECT_EQ(LinesOf(directory),
              Lines{"data-zeroed: _FUNC001.DAT ends in zeros that are no points of 2 of 3 "
                    "scans; the first is scan 2"});
    EXPECT_EQ(Read(directory, 0).points, before[0]);
    const Scanned broken = Read(directory, 1);
    EXPECT_GT(broken.lost, 0U);
    EXPECT_EQ(broken.points, Points(before[1].begin(), before[1].begin() + std::ssize(broken.points)));
    const Scanned gone = Read(directory, 2);
    EXPECT_TRUE(gone.points.empty());
    EXPECT_EQ(gone.lost, 7U);
  }
}

// A total is not needed for that where each point has a mass, which is not zero.
TEST(PointsLookTest, ZerosToTheEndWithoutTotals) {
  for (const Layout& layout : kLayouts) {
    RawDirectoryBuilder raw = Acquired(layout);
    for (ScanFiles& scan : raw.functions[0].scans) scan.index.totalIntensity = 0;
    const TempDirectory directory = raw.Build();
    Zero(directory, raw.functions[0].scans[0].data.size() * 3 / 2, kToTheEnd);
    EXPECT_EQ(LinesOf(directory).size(), layout.hasOwnMasses ? 1U : 0U) << layout.dataFormat;
  }
}

TEST(PointsLookTest, ScanOfZerosAmongOthers) {
  for (const Layout& layout : kLayouts) {
    SCOPED_TRACE(layout.dataFormat);
    const RawDirectoryBuilder raw = Acquired(layout);
    const TempDirectory directory = raw.Build();
    const std::vector<ScanFiles>& scans = raw.functions[0].scans;
    const Points before[] = {Read(directory, 0).points, Read(directory, 2).points};
    Zero(directory, scans[0].data.size(), scans[1].data.size());
    EXPECT_EQ(LinesOf(directory),
              Lines{"points-lost: _FUNC001.DAT has 1 of 3 scans that have lost points; the first is scan 2"});
    EXPECT_EQ(Read(directory, 0).points, before[0]);
    EXPECT_TRUE(Read(directory, 1).points.empty());
    EXPECT_EQ(Read(directory, 1).lost, 7U);
    EXPECT_EQ(Read(directory, 2).points, before[1]);
  }
}

// What is left are points that were there before, and none that the zeros look like.
TEST(PointsLookTest, ZerosInsideAScan) {
  for (const Layout& layout : kLayouts) {
    if (!layout.hasOwnMasses) continue;
    SCOPED_TRACE(layout.dataFormat);
    const RawDirectoryBuilder raw = Acquired(layout);
    const TempDirectory directory = raw.Build();
    const Points before = Read(directory, 1).points;
    const std::size_t size = raw.functions[0].scans[1].data.size();
    for (std::size_t cut = 0; cut < 4; ++cut) {
      const TempDirectory damaged = raw.Build();
      Zero(damaged, raw.functions[0].scans[0].data.size() + size / 8 + cut, size / 2);
      const Scanned left = Read(damaged, 1);
      EXPECT_GT(left.lost, 0U);
      EXPECT_FALSE(left.points.empty());
      EXPECT_TRUE(std::includes(before.begin(), before.end(), left.points.begin(), left.points.end())) << cut;
      EXPECT_EQ(LinesOf(damaged)[0],
                "points-lost: _FUNC001.DAT has 1 of 3 scans that have lost points; the first is scan 2");
    }
  }
}

// The bytes of a point that say its mass, and how many points have them together.
struct LastBytes {
  unsigned dataFormat;
  std::size_t unit;
  std::size_t meaning;
  std::size_t points = 1;
};

constexpr LastBytes kLastBytes[] = {{0, 4, 4}, {1, 10, 10, 2}, {8, 6, 5}, {9, 6, 6}, {12, 8, 8}, {13, 12, 8}};

// What zeros leave of the last point has a mass, and perhaps an intensity, that nothing measured. Its
// intensity is stored in bytes of which none is zero.
TEST(PointsLookTest, ZerosFromInsideTheLastPoint) {
  for (const LastBytes& last : kLastBytes) {
    const RawDirectoryBuilder raw = Acquired(LayoutOf(last.dataFormat), {{40, 20}, {8, 12, 16, 1040001}});
    const std::size_t size = raw.functions[0].scans[0].data.size() + raw.functions[0].scans[1].data.size();
    const Points before = Read(raw.Build(), 1).points;
    ASSERT_EQ(before.size(), 4U);
    for (std::size_t left = 1; left < last.meaning; ++left) {
      SCOPED_TRACE(testing::Message() << last.dataFormat << ' ' << left);
      const TempDirectory directory = raw.Build();
      Zero(directory, size - last.unit + left, kToTheEnd);
      EXPECT_EQ(
          LinesOf(directory),
          Lines{"points-lost: _FUNC001.DAT has 1 of 2 scans that have lost points; the first is scan 2"});
      const Scanned broken = Read(directory, 1);
      // Of a pair the first point is whole where its mass is.
      const std::size_t lost = last.points == 2 && left < 7 ? 2 : 1;
      EXPECT_EQ(broken.lost, lost);
      EXPECT_EQ(broken.points, Points(before.begin(), before.end() - static_cast<std::ptrdiff_t>(lost)));
    }
  }
}

// The same where zeros go on in other scans.
TEST(PointsLookTest, ZerosFromInsideTheLastPointOfAScanAmongOthers) {
  for (const LastBytes& last : kLastBytes) {
    SCOPED_TRACE(last.dataFormat);
    const RawDirectoryBuilder raw =
        Acquired(LayoutOf(last.dataFormat), {{40, 1020}, {8, 12, 16, 1020}, {4, 32}});
    const std::vector<ScanFiles>& scans = raw.functions[0].scans;
    const Points before = Read(raw.Build(), 0).points;
    const TempDirectory directory = raw.Build();
    Zero(directory, scans[0].data.size() - last.unit + last.meaning - 1, scans[1].data.size());
    const Scanned broken = Read(directory, 0);
    EXPECT_EQ(broken.lost, 1U);
    EXPECT_EQ(broken.points, Points(before.begin(), before.end() - 1));
  }
}

// What is left of the first point has no intensity and a mass far below the range, or of pairs that of the
// first one: in format 9 the exponent of the mass is lost, in 13 all of the mass.
TEST(PointsLookTest, ZerosUntilInsideTheFirstPoint) {
  struct Front {
    unsigned dataFormat;
    std::size_t least;  // of the zeros that reach into the point
    std::size_t unit;
    std::size_t points = 1;
  };
  for (const Front& front : {Front{1, 7, 10, 2}, Front{9, 4, 6}, Front{13, 8, 12}}) {
    const RawDirectoryBuilder raw =
        Acquired(LayoutOf(front.dataFormat), {{40, 20}, {8, 12, 16, 24}, {20, 4, 28, 44}});
    const std::size_t begin = raw.functions[0].scans[0].data.size();
    const std::size_t size = raw.functions[0].scans[1].data.size();
    const Points before = Read(raw.Build(), 2).points;
    for (std::size_t zeros = front.least; zeros < front.unit; ++zeros) {
      SCOPED_TRACE(testing::Message() << front.dataFormat << ' ' << zeros);
      const TempDirectory directory = raw.Build();
      Zero(directory, begin, size + zeros);
      const Scanned left = Read(directory, 2);
      EXPECT_EQ(left.lost, front.points);
      EXPECT_EQ(left.points, Points(before.begin() + static_cast<int>(front.points), before.end()));
      EXPECT_EQ(LinesOf(directory), Lines{"points-lost: _FUNC001.DAT has 2 of 3 scans that have lost points; "
                                          "the first is scan 2"});
    }
  }
}

// Of a scan of one point it is far below the range of the method.
TEST(PointsLookTest, ZerosFromInsideTheOnlyPoint) {
  for (const LastBytes& last : kLastBytes) {
    const RawDirectoryBuilder raw = Acquired(LayoutOf(last.dataFormat), {{1020}});
    const TempDirectory directory = raw.Build();
    Zero(directory, last.points == 2 ? 6 : last.meaning - 1, kToTheEnd);
    EXPECT_EQ(Read(directory, 0).lost, 1U) << last.dataFormat;
  }
}

// Masses below 64 have such bytes in formats 0 and 1, below 32 in format 8: 16, 18 and so on.
TEST(PointsLookTest, LowMassesAreSound) {
  for (const LastBytes& last : kLastBytes) {
    RawDirectoryBuilder raw = Acquired(LayoutOf(last.dataFormat));
    FunctionFiles& function = raw.functions[0];
    function.record.startMasses = {10};
    function.record.endMasses = {60};
    const TempDirectory directory = raw.Build();
    EXPECT_EQ(LinesOf(directory).size(), 1U) << "masses of 100 to 400";
    const auto scan = [&](float minutes, const std::vector<WantedPoint>& points) {
      switch (last.dataFormat) {
        case 0:
          return ScanFrom<StoredPoint0>(minutes, points);
        case 1:
          return ScanFrom<StoredPoint1>(minutes, points);
        case 8:
          return ScanFrom<StoredPoint8>(minutes, points);
        default:
          return ScanFrom<StoredPoint9>(minutes, points);
      }
    };
    if (last.dataFormat > 9) continue;  // whose masses have no such bytes
    function.scans = {scan(1, {{16, 8}, {18, 4}}), scan(2, {{16, 8}, {18, 0}, {28, 12}}), scan(3, {{28, 8}}),
                      scan(4, {{16, 8}, {17, 0}, {18, 0}})};
    EXPECT_EQ(LinesOf(raw.Build()), Lines()) << last.dataFormat;
    function.record.type = 1;  // SIR, in the order of the method
    function.scans = {scan(1, {{44, 8}, {28, 4}}), scan(2, {{44, 8}, {28, 4}})};
    EXPECT_EQ(LinesOf(raw.Build()), Lines()) << last.dataFormat;
  }
}

// Masses from a list or an axis are there whatever zeros the file has. Where the scans before add up to their
// totals, one that misses a hundredth has lost something: 4 of 400.
TEST(PointsLookTest, ZerosAtTheEndThatTheTotalShows) {
  for (const Layout& layout : kLayouts) {
    if (layout.hasOwnMasses || layout.dataFormat == 6) continue;  // whose last scan has another layout
    const RawDirectoryBuilder raw =
        Acquired(layout, {{40, 0, 30, 20}, {4, 16, 32, 8}, {200, 196, 0, 0, 4, 0, 0, 0}});
    const std::vector<ScanFiles>& scans = raw.functions[0].scans;
    const std::size_t whole = scans[0].data.size() + scans[1].data.size() + scans[2].data.size();
    const TempDirectory directory = raw.Build();
    const std::size_t half = scans[2].data.size() / 2;
    Zero(directory, whole - half, kToTheEnd);
    EXPECT_EQ(LinesOf(directory),
              Lines{"data-zeroed: _FUNC001.DAT ends in zeros that are no points of 1 of 3 "
                    "scans; the first is scan 3"})
        << layout.dataFormat;
    RawDirectoryBuilder others = raw;
    others.functions[0].scans[1].index.totalIntensity *= 1.1F;  // so totals are no sums
    const TempDirectory doubtful = others.Build();
    Zero(doubtful, whole - half, kToTheEnd);
    EXPECT_EQ(LinesOf(doubtful), Lines()) << layout.dataFormat;
  }
}

// With ion mobility the points are elsewhere.
TEST(PointsLookTest, NothingIsSaidOfPointsBesideDriftBins) {
  const TempDirectory directory = Acquired(kLayouts[9]).Build();
  directory.WriteText("_FUNC001.CDT", "x");
  Zero(directory, 0, kToTheEnd);
  EXPECT_EQ(LinesOf(directory), Lines());
}

TEST(PointsLookTest, TotalsThatAreTwiceAsLarge) {
  for (const Layout& layout : kLayouts) {
    RawDirectoryBuilder raw = Acquired(layout);
    raw.functions[0].scans[1].index.totalIntensity = 232;  // of 116
    raw.functions[0].scans[2].index.totalIntensity = 24;   // of 48
    EXPECT_EQ(LinesOf(raw.Build()),
              Lines{"totals-differ: _FUNC001.DAT has 2 scans whose points do not add up to the total in the "
                    "index; the first is scan 2 (sum 116, total 232)"})
        << layout.dataFormat;
  }
}

TEST(PointsLookTest, MassesFarOutsideTheRange) {
  RawDirectoryBuilder raw = Acquired(kLayouts[9]);
  auto& scans = raw.functions[0].scans;
  scans.push_back(ScanFrom<StoredPoint9>(4, {{50, 8}, {1000, 8}}));  // a half and twice is not far
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
  scans.push_back(ScanFrom<StoredPoint9>(5, {{49, 8}, {200, 8}}));
  scans.push_back(ScanFrom<StoredPoint9>(6, {{100, 8}, {1024, 8}}));
  EXPECT_EQ(LinesOf(raw.Build()),
            Lines{"masses-far-outside: _FUNC001.DAT has 2 scans with points far outside of what the function "
                  "measures; the first is scan 5 (m/z 49 to 200, range 100 to 500)"});
}

// 2^50 and more do not fit into what detectors count.
TEST(PointsLookTest, IntensitiesThatNoDetectorGives) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 12;
  const auto scan = [](std::uint32_t exponent) {
    return ScanOf<StoredPoint12>(1, {{8, 1U << 26, {.magnitude = 1U << 20, .exponent = exponent}}});
  };
  raw.functions[0].scans = {scan(50)};
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
  raw.functions[0].scans = {scan(51)};
  EXPECT_EQ(LinesOf(raw.Build()),
            Lines{"intensities-absurd: _FUNC001.DAT has 1 scan with intensities that no detector gives; the "
                  "first is scan 1 (up to 1.125899906842624e+15)"});
}

class Counter : public Onlooker {
 public:
  void See(const ScanInSight& scan) override {
    ++scans;
    points += scan.mz.size();
    EXPECT_EQ(scan.mz.size(), scan.intensities.size());
    EXPECT_EQ(scan.mz.size(), scan.read.count);
    EXPECT_TRUE(std::is_sorted(scan.mz.begin(), scan.mz.end()));
  }
  void See(int, const Chromatogram& trace) override { traces.push_back(trace.name); }

  std::size_t scans = 0;
  std::size_t points = 0;
  Lines traces;
};

// Each scan in mass and each trace once. Of absorbance there is its total, which is a trace.
TEST(PointsLookTest, AnOnlookerSeesWhatIsRead) {
  RawDirectoryBuilder raw;
  raw.functions.resize(3);
  raw.functions[0].scans = {ScanFrom<StoredPoint9>(0.5F, {{100, 7}, {200, 9}}),
                            ScanFrom<StoredPoint9>(1, {{100, 5}}), ScanFrom<StoredPoint9>(1.5F, {})};
  raw.functions[1].scans = {ScanFrom<StoredPoint9>(0.75F, {{300, 1}})};
  raw.functions[2].record.type = 12;  // DAD
  raw.functions[2].scans = {ScanFrom<StoredPoint9>(0.5F, {{210, 3}})};
  raw.analogNames = {"Pressure", "UV"};
  raw.analogs = {{.time = 0.5F, .words = {PackIntensityWord(5, 0), PackIntensityWord(6, 0)}}};
  const TempDirectory directory = raw.Build();
  Counter counter;
  LookAtPoints(*Source::Open(PathOf(directory)), {}, {}, &counter);
  EXPECT_EQ(counter.scans, 4U);
  EXPECT_EQ(counter.points, 4U);
  EXPECT_EQ(counter.traces, (Lines{"Pressure", "UV", "PDA - Total Absorbance"}));
}

TEST(PointsLookTest, CanBeCancelledAndTellsHowFarItIs) {
  const TempDirectory directory = Acquired(kLayouts[9]).Build();
  const auto source = Source::Open(PathOf(directory));
  std::vector<std::uint64_t> done;
  LookAtPoints(*source, {}, [&](std::uint64_t now, std::uint64_t all) {
    EXPECT_EQ(all, 3U);
    done.push_back(now);
  });
  EXPECT_EQ(done, (std::vector<std::uint64_t>{1, 2, 3}));
  int scans = 0;
  EXPECT_THROW(LookAtPoints(
                   *source, [&] { return scans == 2; }, [&](std::uint64_t, std::uint64_t) { ++scans; }),
               Cancelled);
  EXPECT_EQ(scans, 2);
}

}  // namespace
}  // namespace zrml::source
