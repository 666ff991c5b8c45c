#include "tests/zrml/small_acquisition.h"

#include "masslynx/scandata/scan_statistics_format.h"

namespace zrml::test {

ScanFiles SmallScan(float minutes, CentroidState state, const std::vector<WantedPoint>& points) {
  ScanFiles scan = ScanFrom<StoredPoint9>(minutes, points);
  scan.index.centroidState = state;
  return scan;
}

FunctionFiles SmallFunction(unsigned type, unsigned ionMode, const std::vector<ScanFiles>& scans) {
  FunctionFiles function;
  function.record.type = type;
  function.record.ionMode = ionMode;
  function.record.scanTime = 15;
  function.scans = scans;
  return function;
}

namespace {

constexpr unsigned kMs = 0;
constexpr unsigned kAbsorbance = 12;
constexpr unsigned kTof = 13;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kTofMs = 18;
constexpr unsigned kPositive = 8;  // ES+
constexpr unsigned kNegative = 9;  // ES-
constexpr unsigned kUnknownFormat = 10;
constexpr std::uint16_t kSmoothed = 3;

FunctionFiles Survey() {
  FunctionFiles survey = SmallFunction(
      kTofMs, kPositive,
      {SmallScan(0.5F, CentroidState::kProfile, {{100, 10}, {200.5, 3}, {300.0625, 1'000'000}}),
       SmallScan(1, CentroidState::kProfile, {{100.25, 5}}), SmallScan(1.5F, CentroidState::kProfile, {})});
  survey.record.startMasses[0] = 50;
  survey.record.endMasses[0] = 1200.5F;
  survey.statistics = StatisticsLayout();
  for (ScanFiles& scan : survey.scans) scan.statistics.auxValue = 2.5F;
  return survey;
}

FunctionFiles Products() {
  FunctionFiles products = SmallFunction(kTofMsMs, kNegative,
                                         {SmallScan(0.125F, CentroidState::kCentroid, {{50.5, 7}}),
                                          SmallScan(1.125F, CentroidState::kCentroid, {{50.5, 8}})});
  products.statistics = StatisticsLayout();
  products.scans[1].statistics.precursorMass = 445.125F;
  products.scans[1].statistics.precursorFlags = masslynx::scan_statistics_format::kPrecursorMassGiven;
  return products;
}

}  // namespace

RawDirectoryBuilder SmallAcquisition() {
  RawDirectoryBuilder raw;
  raw.header.push_back(HeaderLine("Acquired Date", "14-Nov-2026"));
  raw.header.push_back(HeaderLine("Acquired Time", "09:15:00"));
  raw.header.push_back(HeaderLine("Instrument", "SIM\x85 2"));
  raw.header.push_back(HeaderLine("User Name", "Zo\xEB \"Z\""));
  const auto stick = [](float minutes, const std::vector<WantedPoint>& points) {
    return SmallScan(minutes, CentroidState::kCentroid, points);
  };
  raw.functions = {Survey(),
                   Products(),
                   SmallFunction(kMs, kPositive, {}),
                   SmallFunction(kTof, kPositive, {stick(3, {{10, 1}}), stick(3.5F, {{10, 1}})}),
                   SmallFunction(kAbsorbance, kPositive,
                                 {stick(0.125F, {{210, 0}, {210.5, 3}}), stick(0.25F, {{210, 4}})}),
                   SmallFunction(kTofMs, kPositive, {stick(0.25F, {{556.25, 9}})})};
  raw.functions[3].record.dataFormat = kUnknownFormat;
  raw.labels = {CreatorLine("4.1"), FunctionHeading(6, "REFERENCE")};
  raw.history = {{.processNumber = 1, .derivedFrom = 0, .rawFunctionNumber = 1, .processCode = kSmoothed}};
  raw.processed[1] =
      SmallFunction(kTofMs, kPositive, {SmallScan(0.5F, CentroidState::kProfile, {{100, 11}})});
  raw.analogNames = {"Pressure", "UV\x1B[31m 254"};
  raw.analogs = {{.time = 0.5F, .words = {PackIntensityWord(5, 0), PackIntensityWord(6, 0)}},
                 {.time = 1, .words = {PackIntensityWord(2, 0), PackIntensityWord(0, 0)}}};
  return raw;
}

}  // namespace zrml::test
