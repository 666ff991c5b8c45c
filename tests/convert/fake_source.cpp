#include "tests/convert/fake_source.h"

#include <algorithm>
#include <numeric>

namespace zrml::test {
namespace {

using source::Chromatogram;
using source::Function;
using source::PointsRead;

[[noreturn]] void Fail() { throw source::Error(source::Status::kUnreadable, "the disk fails"); }

const FakeFunction& At(const std::vector<FakeFunction>& functions, int position) {
  return functions.at(static_cast<std::size_t>(position));
}

const FakeScan& At(const FakeFunction& function, int scan) {
  return function.scans.at(static_cast<std::size_t>(scan));
}

std::vector<source::Trace> ListOf(const std::vector<FakeTrace>& traces) {
  std::vector<source::Trace> list;
  for (const FakeTrace& trace : traces) list.push_back({static_cast<int>(list.size()) + 1, trace.name});
  return list;
}

Chromatogram Read(const std::vector<FakeTrace>& traces, int trace) {
  const FakeTrace& found = traces.at(static_cast<std::size_t>(trace));
  if (found.isUnreadable) Fail();
  return found.points;
}

class FakeSource : public source::Source {
 public:
  FakeSource(const FakeData& data, std::string path) : Source(std::move(path)), data_(data) {
    for (const FakeFunction& function : data_.functions) functions_.push_back(function.info);
  }

  source::Format GetFormat() const override { return data_.format; }
  int SampleCount() override { return 1; }
  std::string SampleName(int) override { return "vial 1"; }
  std::vector<source::MetadataItem> SampleMetadata(int) override { return data_.metadata; }
  std::vector<source::MetadataItem> FunctionMetadata(int, int function) override {
    return At(data_.functions, function).metadata;
  }
  std::optional<std::string> FunctionText(int, int) override { return "all of it"; }

  std::span<const Function> Functions(int) override { return functions_; }
  int ScanCount(int, int function) override {
    return static_cast<int>(At(data_.functions, function).scans.size());
  }
  source::Scan ScanAt(int, int function, int scan) override {
    const FakeScan& found = At(At(data_.functions, function), scan);
    source::Scan result;
    result.minutes = found.minutes;
    result.representation = source::RepresentationOf(found.isCentroided);
    result.points = static_cast<std::uint32_t>(found.points.positions.size() + found.lost);
    if (found.precursor != 0) result.precursorMz = found.precursor;
    return result;
  }
  std::string ScanProcess(int, int function, int scan) override {
    return At(At(data_.functions, function), scan).process;
  }
  std::vector<double> Minutes(int, int function) override {
    std::vector<double> minutes;
    for (const FakeScan& scan : At(data_.functions, function).scans) minutes.push_back(scan.minutes);
    return minutes;
  }
  PointsRead ReadPoints(int, int function, int scan, std::span<double> mz,
                        std::span<double> intensities) override {
    const FakeScan& found = At(At(data_.functions, function), scan);
    if (found.isUnreadable) Fail();
    std::copy(found.points.positions.begin(), found.points.positions.end(), mz.begin());
    std::copy(found.points.intensities.begin(), found.points.intensities.end(), intensities.begin());
    return {found.points.positions.size(), found.lost};
  }

  int DriftBinCount(int, int function) override { return At(data_.functions, function).binCount; }
  void ReadDriftBin(int, int function, int scan, int bin, std::vector<double>& mz,
                    std::vector<double>& intensities) override {
    const FakeScan& found = At(At(data_.functions, function), scan);
    const auto points = found.bins.find(bin);
    if (found.isUnreadable && bin == 9) Fail();
    mz = points == found.bins.end() ? std::vector<double>() : points->second.positions;
    intensities = points == found.bins.end() ? std::vector<double>() : points->second.intensities;
  }

  Chromatogram TotalIons(int, int function) override {
    const FakeFunction& found = At(data_.functions, function);
    if (found.hasNoTotals) Fail();
    Chromatogram total = {"TIC", Minutes(0, function), found.totals};
    for (std::size_t i = total.intensities.size(); i < found.scans.size(); ++i) {
      const std::vector<double>& intensities = found.scans[i].points.intensities;
      total.intensities.push_back(std::accumulate(intensities.begin(), intensities.end(), 0.0));
    }
    return total;
  }

  std::vector<source::Trace> Traces(int) override { return ListOf(data_.traces); }
  Chromatogram ReadTrace(int, int trace) override { return Read(data_.traces, trace); }
  std::vector<source::Trace> FunctionTraces(int, int function) override {
    const auto found = data_.functionTraces.find(function);
    return found == data_.functionTraces.end() ? std::vector<source::Trace>() : ListOf(found->second);
  }
  Chromatogram ReadFunctionTrace(int, int function, int trace) override {
    return Read(data_.functionTraces.at(function), trace);
  }

  bool HasAbsorbance(int) override { return data_.absorbance.has_value(); }
  Function AbsorbanceFunction(int) override { return data_.absorbance->info; }
  int AbsorbanceScanCount(int) override { return static_cast<int>(data_.absorbance->scans.size()); }
  double AbsorbanceMinutes(int, int scan) override { return At(*data_.absorbance, scan).minutes; }
  PointsRead ReadAbsorbance(int, int scan, std::vector<double>& wavelengths,
                            std::vector<double>& values) override {
    const FakeScan& found = At(*data_.absorbance, scan);
    if (found.isUnreadable) Fail();
    wavelengths = found.points.positions;
    values = found.points.intensities;
    return {wavelengths.size(), found.lost};
  }

  std::span<const Finding> Findings() override { return data_.findings; }

 private:
  const FakeData& data_;
  std::vector<Function> functions_;
};

FakeFunction Named(int number, const std::string& name) {
  FakeFunction function;
  function.info.id.number = number;
  function.info.name = name;
  return function;
}

FakeFunction Survey() {
  FakeFunction function = Named(1, "Survey");
  function.info.polarity = source::Polarity::kPositive;
  function.info.massRange = source::Range{50, 1200.5};
  function.scans = {
      {.minutes = 0.5, .points = {{100, 200.5, 300.0625}, {10, 0.5, 1'000'000}}, .isCentroided = false},
      {.minutes = 1, .points = {{100.25}, {5}}, .isCentroided = false},
      {.minutes = 1.5, .isCentroided = false},
  };
  return function;
}

FakeFunction Product() {
  FakeFunction function = Named(2, "Product");
  function.info.kind = source::FunctionKind::kMsMs;
  function.info.msLevel = 2;
  function.info.scanType = source::ScanType::kProduct;
  function.info.polarity = source::Polarity::kNegative;
  function.scans = {{.minutes = 1.125, .points = {{50.5}, {7}}, .precursor = 445.12},
                    {.minutes = 2, .points = {{50.5}, {7}}}};
  return function;
}

// The bins at positions 4 and 9 have points.
FakeFunction Drift() {
  FakeFunction function = Named(5, "Drift");
  function.info.hasMobility = true;
  function.binCount = 200;
  FakeScan scan;
  scan.minutes = 0.25;
  scan.points = {{50, 100, 150}, {1, 5, 4}};
  scan.bins[4] = {{50, 100}, {1, 2}};
  scan.bins[9] = {{100, 150}, {3, 4}};
  function.scans = {scan};
  return function;
}

FakeFunction Absorbance() {
  FakeFunction function = Named(3, "");
  function.info.kind = source::FunctionKind::kAbsorbance;
  for (int scan = 0; scan < 25; ++scan)
    function.scans.push_back({.minutes = scan / 8.0, .points = {{210, 210.5}, {0, 1.0 * scan}}});
  return function;
}

}  // namespace

FakeData KnownData() {
  FakeData data;
  data.functions = {Survey(), Product(), Named(4, "Empty"), Drift()};
  data.absorbance = Absorbance();
  data.traces = {{"Pressure", {"", {0.5, 1}, {1.25, 2}}}, {"UV\x1B[31m 254", {"", {0.5, 1}, {100, 0.1}}}};
  const source::MetadataItem op = {"Operator", "Zo\xC3\xAB \"Z\"\r\nnext\xE2\x80\xA8line"};
  data.metadata = {op, {"Comment", ""}, {"Absent", std::nullopt}};
  for (FakeFunction& function : data.functions) function.metadata = {{"Mode", "ES+"}};
  data.functions[1].metadata = {{"Mode", "ES-"}};
  return data;
}

std::unique_ptr<source::Source> OpenFake(const FakeData& data, const std::string& path) {
  return std::make_unique<FakeSource>(data, path);
}

}  // namespace zrml::test
