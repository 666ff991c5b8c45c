// zrml-edge-cases DIRECTORY: raw directories that are unusual in one way each, and a raw directory and a
// report whose content content_test.py knows, for tests of conversion.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>

#include "tests/support/raw_directory_builder.h"
#include "tests/support/report_writer.h"

namespace zrml {
namespace {

constexpr unsigned kMsMs = 16;  // function types
constexpr unsigned kDad = 12;
constexpr unsigned kIons = 1;
constexpr unsigned kReactions = 9;
constexpr unsigned kPrecursorScan = 5;
constexpr unsigned kNegativeMode = 9;

FunctionFiles FunctionOf(std::vector<ScanFiles> scans) {
  FunctionFiles function;
  function.record.startMasses[0] = 50;
  function.record.endMasses[0] = 1000;
  function.scans = std::move(scans);
  return function;
}

RawDirectoryBuilder RawOf(std::vector<FunctionFiles> functions) {
  RawDirectoryBuilder raw;
  raw.functions = std::move(functions);
  return raw;
}

ScanFiles PlainScan(float minutes) { return ScanFrom<StoredPoint9>(minutes, {{100, 7}, {250.5, 90}}); }

RawDirectoryBuilder NoFunctions() { return RawOf({}); }
RawDirectoryBuilder NoScans() { return RawOf({FunctionOf({})}); }
RawDirectoryBuilder OneScan() { return RawOf({FunctionOf({PlainScan(0.5F)})}); }

RawDirectoryBuilder AbsorbanceOnly() {
  FunctionFiles function = FunctionOf({PlainScan(0.1F), PlainScan(0.2F)});
  function.record.type = kDad;
  return RawOf({function});
}

RawDirectoryBuilder EmptySpectra() {
  return RawOf(
      {FunctionOf({ScanFrom<StoredPoint9>(0.1F, {}), PlainScan(0.2F), ScanFrom<StoredPoint9>(0.3F, {})})});
}

// Two channels with NaN masses, one with an infinite mass; a precursor and a time that are NaN as well.
RawDirectoryBuilder NanMasses() {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::vector<StoredPoint11> points = {{{.magnitude = 1u << 20, .exponent = 3}},
                                             {{.magnitude = 1u << 20, .exponent = 4}},
                                             {{.magnitude = 1u << 20, .exponent = 5}},
                                             {{.magnitude = 1u << 20, .exponent = 6}}};
  FunctionFiles function = FunctionOf({ScanOf(0.1F, points), ScanOf(0.15F, points), ScanOf(0.2F, points)});
  function.record.type = kMsMs;
  function.statistics = StatisticsLayout();
  function.record.dataFormat = 11;
  function.record.setMass = nan;
  function.record.startMasses = {nan, 100, std::numeric_limits<float>::infinity(), nan};
  return RawOf({function, FunctionOf({PlainScan(0.15F)})});
}

// Below zero, and with more digits than single precision has: 32767 x 4^15 and 1 in one spectrum.
RawDirectoryBuilder NegativeIntensities() {
  std::vector<StoredPoint8> points;
  points.push_back({.mass = 100 * 128, .mantissa = -5, .exponent = 0});
  points.push_back({.mass = 200 * 128, .mantissa = -32768, .exponent = 15});
  points.push_back({.mass = 300 * 128, .mantissa = 32767, .exponent = 15});
  points.push_back({.mass = 400 * 128, .mantissa = 1, .exponent = 0});
  FunctionFiles function = FunctionOf({ScanOf(0.1F, points)});
  function.record.dataFormat = 8;
  function.record.ionMode = kNegativeMode;
  return RawOf({function});
}

// Masses that single precision cannot hold, alone and in pairs.
RawDirectoryBuilder Calibrated() {
  RawDirectoryBuilder raw =
      RawOf({FunctionOf({ScanFrom<StoredPoint9>(0.1F, {{100, 7}}), PlainScan(0.2F),
                         ScanFrom<StoredPoint9>(0.3F, {{100, 7}, {250.5, 90}, {300, 8}})})});
  raw.header = {HeaderLine("Version", "01.00"), HeaderLine("Cal Function 1", "0.1,1.0,T0")};
  return raw;
}

RawDirectoryBuilder OnePointScans(int scans) {
  std::vector<ScanFiles> written;
  for (int i = 0; i < scans; ++i) {
    const double mass = 100 + i / 64.0;
    written.push_back(ScanFrom<StoredPoint9>(static_cast<float>(i) / 1024, {{mass, 1.0 + i % 4096}}));
  }
  return RawOf({FunctionOf(std::move(written))});
}

// Beyond the 16 bits of scan numbers in hosts.
RawDirectoryBuilder ManyScans() { return OnePointScans(33000); }

// More than a pipe holds and threads write at once.
RawDirectoryBuilder SomeScans() { return OnePointScans(6000); }

// Text that is markup in XML, not ASCII (\xB5 is the micro sign of Windows-1252) or forbidden in XML (\x01).
RawDirectoryBuilder OddNames() {
  RawDirectoryBuilder raw = RawOf({FunctionOf({PlainScan(0.1F)}), FunctionOf({PlainScan(0.2F)})});
  raw.header = {
      HeaderLine("Version", "01.00"),           HeaderLine("Acquired Date", "5-Mar-2021"),
      HeaderLine("Acquired Time", "09:15:00"),  HeaderLine("Instrument", "XEVO-G2QTOF#<A&B>\"1\""),
      HeaderLine("User Name", "a&b <c> \"d\""), HeaderLine("Sample Description", "5 \xB5g\x01 'x' \x81"),
  };
  raw.labels = {CreatorLine("4.1"), FunctionHeading(1, "<&\">\xE9"), FunctionHeading(2, "REFERENCE")};
  return raw;
}

// Fragment spectra of three kinds and survey spectra, at equal times.
RawDirectoryBuilder Fragments() {
  FunctionFiles survey = FunctionOf({PlainScan(0.1F), PlainScan(0.2F)});
  FunctionFiles product = FunctionOf({PlainScan(0.1F), PlainScan(0.15F), ScanFrom<StoredPoint9>(0.2F, {})});
  product.record.type = kMsMs;
  product.statistics = StatisticsLayout();
  product.record.setMass = 445.125F;
  FunctionFiles withoutPrecursor = FunctionOf({PlainScan(0.3F)});
  withoutPrecursor.record.type = kMsMs;
  withoutPrecursor.statistics = StatisticsLayout();
  FunctionFiles precursorScan = FunctionOf({PlainScan(0.05F)});
  precursorScan.record.type = kPrecursorScan;
  return RawOf({survey, product, withoutPrecursor, precursorScan});
}

// Ions, the reactions of a function of the other polarity, and ions whose scans do not agree on the masses.
RawDirectoryBuilder Monitoring() {
  FunctionFiles ions = FunctionOf({PlainScan(0.1F), PlainScan(0.2F), PlainScan(0.3F)});
  ions.record.type = kIons;
  FunctionFiles reactions = ions;
  reactions.record.type = kReactions;
  reactions.record.ionMode = kNegativeMode;
  FunctionFiles others = FunctionOf({PlainScan(0.1F), ScanFrom<StoredPoint9>(0.2F, {{100, 7}})});
  others.record.type = kIons;
  return RawOf({ions, reactions, others, FunctionOf({PlainScan(0.25F)})});
}

// What content_test.py knows: two functions, the second a lock mass, absorbance spectra, two traces (as in
// the mantissa of bits 3 to 15, times 4 to the power of the rest: 320 and 1, then 2 and 0).
RawDirectoryBuilder Known() {
  FunctionFiles absorbance = FunctionOf(
      {ScanFrom<StoredPoint9>(0.25F, {{210, 4}, {220.5, 8}}), ScanFrom<StoredPoint9>(0.75F, {{210, 2}})});
  absorbance.record.type = kDad;
  const FunctionFiles reference = FunctionOf({ScanFrom<StoredPoint9>(1, {{556, 11}})});
  RawDirectoryBuilder raw = RawOf({FunctionOf({PlainScan(0.5F)}), absorbance, reference});
  raw.header = {HeaderLine("Version", "01.00"), HeaderLine("Acquired Date", "5-Mar-2021"),
                HeaderLine("Acquired Time", "09:15:00")};
  raw.labels = {CreatorLine("4.1"), FunctionHeading(3, "REFERENCE")};
  raw.analogNames = {"System Pressure", "TUV 254 nm"};
  raw.analogs = {{.time = 0.5F, .words = {0x2B, 0x08}}, {.time = 1, .words = {0x10, 0}}};
  return raw;
}

// Two samples: one spectrum with points and one without, and a chromatogram; only an analog trace. 250.1 and
// 0.7, the last of an odd number, are not exact in single precision.
std::string KnownReport() {
  const ReportLines spectra =
      SpectrumBlock(Keys({{"Time", "0.5"}, {"Continuum", "FALSE"}, {"BPI", "200"}, {"TIC", "300"}}),
                    {{100, 100}, {250.1, 50}}) +
      SpectrumBlock(Keys({{"Time", "0.75"}, {"BPI", "0"}, {"TIC", "0"}}), {});
  const ReportLines first =
      Keys({{"SampleID", "first"}, {"Date", "14-Nov-2026"}, {"Time", "09:15:00"}}) +
      FunctionBlock(Keys({{"Description", "Scan"}, {"Type", "MS"}}) + spectra +
                    ChromatogramBlock(Keys({{"Description", "UV 254"}, {"MaxIntensity", "50"}}),
                                      {{0.5, 100}, {1, 10}}));
  const ReportLines second =
      Keys({{"SampleID", "second"}}) +
      FunctionBlock(Keys({{"Description", "ANALOG"}}) +
                    ChromatogramBlock(Keys({{"Description", "Pressure"}, {"MaxIntensity", "20"}}),
                                      {{0.25, 50}, {0.5, 100}, {0.7, 100}}));
  return ReportText(SampleBlock(first) + SampleBlock(second), LineEnd::kCrLf);
}

struct EdgeCase {
  const char8_t* name;
  RawDirectoryBuilder (*make)();
};

constexpr EdgeCase kCases[] = {
    {u8"no-functions.raw", NoFunctions},
    {u8"absorbance-only.raw", AbsorbanceOnly},
    {u8"no-scans.raw", NoScans},
    {u8"one-scan.raw", OneScan},
    {u8"empty-spectra.raw", EmptySpectra},
    {u8"nan-masses.raw", NanMasses},
    {u8"negative-intensities.raw", NegativeIntensities},
    {u8"calibrated.raw", Calibrated},
    {u8"many-scans.raw", ManyScans},
    {u8"some-scans.raw", SomeScans},
    {u8"1 a&b'\u00E9\U0001D11E.raw", OddNames},
    {u8"fragments.raw", Fragments},
    {u8"monitoring.raw", Monitoring},
    {u8"known.raw", Known},
};

}  // namespace
}  // namespace zrml

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    for (const zrml::EdgeCase& edge : zrml::kCases) {
      const std::filesystem::path directory = std::filesystem::path(argv[1]) / edge.name;
      std::filesystem::create_directories(directory);
      edge.make().WriteTo(directory);
    }
    zrml::WriteFileBytes(std::filesystem::path(argv[1]) / "known.rpt",
                         zrml::TextToBytes(zrml::KnownReport()));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zrml-edge-cases: %s\n", error.what());
    return 1;
  }
}
