// make_sources FOLDER: sources for the tests of the Python package, known by heart.
#include <cstdio>
#include <exception>

#include "tests/support/raw_directory_builder.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace {

using namespace zrml;

constexpr unsigned kAbsorbance = 12;
constexpr unsigned kTofMs = 18;
constexpr std::size_t kBytesOfPoint = 6;  // of data format 9

ScanFiles Scan(float minutes, CentroidState state, const std::vector<WantedPoint>& points) {
  ScanFiles scan = ScanFrom<StoredPoint9>(minutes, points);
  scan.index.centroidState = state;
  return scan;
}

ScanFiles Peaks(float minutes, const std::vector<WantedPoint>& points) {
  return Scan(minutes, CentroidState::kCentroid, points);
}

FunctionFiles Function(unsigned type, const std::vector<ScanFiles>& scans) {
  FunctionFiles function;
  function.record.type = type;
  function.scans = scans;
  return function;
}

// Function 1, labelled "<b>A&B</b>", peaks: 1 min: (100, 1), (200, 2)   2 min: (100, 4), (200.03125, 8)
//   and a profile at 3 min: (100, 32)
// Function 2 is absorbance: 0.5 min: (210, 1), (220, 2)   1.5 min: (210, 3), (220, 4)
RawDirectoryBuilder Odd() {
  RawDirectoryBuilder raw;
  raw.functions = {
      Function(kTofMs, {Peaks(1, {{100, 1}, {200, 2}}), Peaks(2, {{100, 4}, {200.03125, 8}}),
                        Scan(3, CentroidState::kProfile, {{100, 32}})}),
      Function(kAbsorbance, {Peaks(0.5F, {{210, 1}, {220, 2}}), Peaks(1.5F, {{210, 3}, {220, 4}})})};
  raw.labels = {CreatorLine("4.1"), FunctionHeading(1, "<b>A&B</b>")};
  return raw;
}

// 2,100 scans: scan i, from 0, is at i / 64 minutes and has the point (100 + i, i + 1), and every second one
// (4000, 5) behind it.
RawDirectoryBuilder Long() {
  std::vector<ScanFiles> scans;
  for (int i = 0; i < 2100; ++i) {
    std::vector<WantedPoint> points = {{100.0 + i, i + 1.0}};
    if (i % 2 == 1) points.push_back({4000, 5});
    scans.push_back(Peaks(static_cast<float>(i) / 64, points));
  }
  RawDirectoryBuilder raw;
  raw.functions = {Function(kTofMs, scans)};
  return raw;
}

// Its scans are at 2, 1 and 3 minutes, with one point of m/z 100 each.
ReportLines Unordered() {
  ReportLines scans;
  for (const char* const time : {"2", "1", "3"})
    scans = scans + SpectrumBlock(Keys({{"Time", time}, {"BPI", "1"}, {"Continuum", "FALSE"}}), {{100, 100}});
  return SampleBlock(FunctionBlock(Keys({{"Type", "MS"}}) + scans));
}

// The data of the small acquisition's first function end after its first point.
void WriteCut(const std::filesystem::path& directory) {
  std::map<std::string, FileBytes> files = test::SmallAcquisition().Files();
  files.at("_FUNC001.DAT").resize(kBytesOfPoint);
  for (const auto& [name, bytes] : files) WriteFileBytes(directory / name, bytes);
}

void Make(const std::filesystem::path& folder) {
  for (const char* const name : {"small.raw", "odd.raw", "cut.raw", "long.raw"})
    std::filesystem::create_directories(folder / name);
  test::SmallAcquisition().WriteTo(folder / "small.raw");
  Odd().WriteTo(folder / "odd.raw");
  Long().WriteTo(folder / "long.raw");
  WriteCut(folder / "cut.raw");
  WriteFileBytes(folder / "vials.rpt", TextToBytes(ReportText(test::Vials())));
  WriteFileBytes(folder / "unordered.rpt", TextToBytes(ReportText(Unordered())));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    Make(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_sources: %s\n", error.what());
    return 1;
  }
}
