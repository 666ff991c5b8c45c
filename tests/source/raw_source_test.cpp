// Raw directories as sources, compared with the same directories through the slots: every number that both
// have is the same to the bit.
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <cerrno>
#include <sys/resource.h>
#include <system_error>
#endif

#include "plugin/raw_server.h"
#include "source/source.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/sample/acquisition.h"

namespace zrml::source {
namespace {

using Values = std::vector<double>;

std::string PathOf(const TempDirectory& directory, const char* name = "") {
  const std::u8string path = (directory.Path() / name).u8string();
  return {path.begin(), path.end()};
}

std::unique_ptr<Source> Open(const TempDirectory& directory, const char* name = nullptr) {
  const std::u8string folder = directory.Path().u8string();
  return Source::Open(name == nullptr ? std::string(folder.begin(), folder.end()) : PathOf(directory, name));
}

// Distinguishes zero from negative zero, and the bits of NaN.
std::vector<std::uint64_t> Bits(const auto& values) {
  std::vector<std::uint64_t> bits;
  for (const double value : values) bits.push_back(std::bit_cast<std::uint64_t>(value));
  return bits;
}

std::string Narrow(const std::wstring& text) { return platform::ToNativePath(text); }

Status StatusOfOpening(const std::string& path, std::string* message = nullptr) {
  try {
    Source::Open(path);
  } catch (const Error& error) {
    if (message != nullptr) *message = error.Message();
    return error.GetStatus();
  }
  return Status::kDone;
}

// A directory in which the slots and the files have the same numbers.
class BesideTheSlots {
 public:
  explicit BesideTheSlots(const TempDirectory& directory) : source_(Open(directory)) {
    EXPECT_TRUE(server_.Open(directory.WidePath()));
  }

  void Compare() {
    ASSERT_EQ(source_->Functions(0).size(), static_cast<std::size_t>(server_.GetFunctionCount(0)));
    for (int f = 0; f < server_.GetFunctionCount(0); ++f) {
      SCOPED_TRACE(testing::Message() << "function " << f);
      CompareFunction(f);
    }
    CompareTraces();
    CompareAbsorbance();
    CompareMetadata();
  }

 private:
  void CompareFunction(int f) {
    const Function& function = source_->Functions(0)[static_cast<std::size_t>(f)];
    EXPECT_EQ(function.name, Narrow(server_.GetFunctionName(0, f)));
    EXPECT_EQ(function.kind == FunctionKind::kMsMs, server_.GetFunctionKind(0, f) == kMsMsFunction);
    EXPECT_EQ(function.msLevel, server_.GetMSLevel(0, f));
    EXPECT_EQ(static_cast<int>(function.scanType), server_.GetMSMSScanType(0, f));
    EXPECT_EQ(static_cast<int>(function.polarity), server_.GetPolarity(0, f));
    Range range;
    ASSERT_EQ(function.massRange.has_value(), server_.GetFunctionMassRange(0, f, range.low, range.high));
    if (function.massRange) {
      EXPECT_EQ(function.massRange->low, range.low);
      EXPECT_EQ(function.massRange->high, range.high);
    }
    ASSERT_EQ(source_->ScanCount(0, f), server_.GetScanCount(0, f));
    for (int s = 0; s < source_->ScanCount(0, f); ++s) CompareScan(f, s);
    CompareChromatograms(f);
  }

  void CompareScan(int f, int s) {
    SCOPED_TRACE(testing::Message() << "scan " << s);
    CZRMassSpectrum spectrum;
    ASSERT_TRUE(server_.GetSpectrum(0, f, s, spectrum));
    const Scan scan = source_->ScanAt(0, f, s);
    EXPECT_EQ(Bits(Values{scan.minutes, scan.endMinutes}),
              Bits(Values{spectrum.GetStartTime(), spectrum.GetEndTime()}));
    EXPECT_EQ(IsCentroided(scan), spectrum.IsCentroided());
    EXPECT_EQ(scan.scanValue.value_or(0), spectrum.GetScanAuxValue());
    EXPECT_EQ(scan.precursorMz.value_or(0), spectrum.GetPrecursorMass());
    Values mz;
    Values intensities;
    const PointsRead read = source_->ReadPoints(0, f, s, mz, intensities);
    EXPECT_EQ(read.lost, 0u);
    EXPECT_LE(read.count, scan.points);
    EXPECT_EQ(Bits(mz), Bits(spectrum.MassVector()));
    EXPECT_EQ(Bits(intensities), Bits(spectrum.IntensityVector()));
    ScanPosition wanted;
    const auto found = source_->FindPrecursor(0, f, s);
    ASSERT_EQ(found.has_value(), server_.FindPrecursorScan(0, f, s, wanted.function, wanted.scan));
    if (!found) return;
    EXPECT_EQ(found->function, wanted.function);
    EXPECT_EQ(found->scan, wanted.scan);
  }

  void Expect(const Chromatogram& actual, const CZRChromatogram& expected) {
    EXPECT_EQ(Bits(actual.minutes), Bits(expected.Times()));
    EXPECT_EQ(Bits(actual.intensities), Bits(expected.Intensities()));
  }

  void CompareChromatograms(int f) {
    CZRChromatogram expected;
    ASSERT_TRUE(server_.GetTotalIonChromatogram(true, 0, f, expected));
    Expect(source_->TotalIons(0, f), expected);
    ASSERT_TRUE(server_.GetBasePeakChromatogram(true, 0, f, expected));
    Expect(source_->BasePeaks(0, f), expected);
    ASSERT_TRUE(server_.GetMassRangeChromatogram(200, 500, true, 0, f, expected));
    Expect(source_->MassRange(0, f, {200, 500}, Within::kSum), expected);
    ASSERT_TRUE(server_.GetMassRangeBasePeakChromatogram(200, 500, true, 0, f, expected));
    Expect(source_->MassRange(0, f, {200, 500}, Within::kLargest), expected);
  }

  void CompareTraces() {
    const std::vector<Trace> traces = source_->Traces(0);
    ASSERT_EQ(traces.size(), static_cast<std::size_t>(server_.GetTraceCount(0)));
    for (int t = 0; t < server_.GetTraceCount(0); ++t) {
      EXPECT_EQ(traces[static_cast<std::size_t>(t)].name, Narrow(server_.GetTraceName(0, t)));
      CZRChromatogram expected;
      ASSERT_TRUE(server_.GetTrace(0, t, expected));
      Expect(source_->ReadTrace(0, t), expected);
    }
  }

  void CompareAbsorbance() {
    EXPECT_EQ(source_->HasAbsorbance(0), server_.HasAbsorbanceData(0));
    ASSERT_EQ(source_->AbsorbanceScanCount(0), server_.GetAbsorbanceScanCount(0));
    for (int s = 0; s < source_->AbsorbanceScanCount(0); ++s) {
      CZRAbsorbanceSpectrum expected;
      ASSERT_TRUE(server_.GetAbsorbanceSpectrum(0, s, expected));
      Values wavelengths;
      Values values;
      EXPECT_EQ(source_->ReadAbsorbance(0, s, wavelengths, values).lost, 0u);
      EXPECT_EQ(Bits(wavelengths), Bits(expected.Wavelengths()));
      EXPECT_EQ(Bits(values), Bits(expected.Absorbances()));
      EXPECT_EQ(source_->AbsorbanceMinutes(0, s), expected.StartTime());
    }
  }

  void CompareMetadata() {
    std::vector<std::wstring> keys;
    ASSERT_TRUE(server_.GetMetadataKeys(0, 0, keys));
    const std::vector<MetadataItem> items =
        Merged(source_->SampleMetadata(0), source_->FunctionMetadata(0, 0));
    EXPECT_FALSE(source_->FunctionText(0, 0));
    ASSERT_EQ(items.size(), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      std::wstring value;
      ASSERT_TRUE(server_.GetMetadataValue(0, 0, keys[i], value));
      EXPECT_EQ(items[i].key, Narrow(keys[i]));
      const bool isDateTime = items[i].key == "AnalysisDateTime";
      // Of the slots alone: a separator, and a zone that no file has.
      const char* const end = items[i].key == "DatasetName" ? "\\" : isDateTime ? "+00:00" : "";
      EXPECT_EQ(items[i].value.value_or(isDateTime ? "-00-T" : "") + end, Narrow(value)) << items[i].key;
    }
  }

  std::unique_ptr<Source> source_;
  plugin::CMLDataServerImpl server_;
};

template <class Stored>
FunctionFiles FunctionOf(unsigned dataFormat, const std::vector<std::vector<Stored>>& scans) {
  FunctionFiles function;
  function.record.dataFormat = dataFormat;
  for (const std::vector<Stored>& points : scans)
    function.scans.push_back(ScanOf(0.5F * static_cast<float>(function.scans.size() + 1), points));
  return function;
}

/// Scans of one point of m/z 100, 200, ... with intensities 1, 2, ...
FunctionFiles Plain(int scans) {
  FunctionFiles function = FunctionOf<StoredPoint8>(8, {});
  for (int i = 0; i < scans; ++i) {
    const auto mass = static_cast<std::uint32_t>(100 * (i + 1));
    function.scans.push_back(ScanOf<StoredPoint8>(0.5F * static_cast<float>(i + 1),
                                                  {{mass * 128, static_cast<std::int16_t>(i + 1)}}));
  }
  return function;
}

RawDirectoryBuilder PlainDirectory(int functions, int scans = 2) {
  RawDirectoryBuilder raw;
  raw.functions.assign(static_cast<std::size_t>(functions), Plain(scans));
  return raw;
}

Values MassesOf(Source& source, int function, int scan) {
  Values mz;
  Values intensities;
  source.ReadPoints(0, function, scan, mz, intensities);
  return mz;
}

TEST(RawSource, SampleAcquisitionEqualsTheSlots) {
  const TempDirectory directory = sample::Acquisition().Build();
  BesideTheSlots(directory).Compare();
}

// Sorted and summed as in the slots: format 8 with masses that descend, 12 with sub-scans.
TEST(RawSource, UnsortedScansAndSubScansEqualTheSlots) {
  RawDirectoryBuilder raw;
  raw.functions.push_back(FunctionOf<StoredPoint8>(8, {{{300 * 128, 5}, {100 * 128, 6}}, {{200 * 128, 1}}}));
  raw.header.push_back(HeaderLine("Acquired Date", "14-Nov-2026"));
  raw.header.push_back(HeaderLine("Acquired Time", "09:15:00"));
  const StoredFloat four = {.magnitude = 1u << 20, .exponent = 3};
  const std::vector<StoredPoint12> scan = {{10, 1u << 26, four}, {10, 3u << 25, four}};
  std::vector<StoredPoint12> twice = scan;
  twice.insert(twice.end(), scan.begin(), scan.end());
  raw.functions.push_back(FunctionOf<StoredPoint12>(12, {twice, scan}));
  raw.functions[1].record.type = 16;
  raw.functions[1].record.setMass = 321.5F;
  raw.functions[1].statistics.emplace();
  raw.functions[1].scans[0].statistics = {.precursorMass = 654.25F, .precursorFlags = 1};
  const TempDirectory directory = raw.Build();
  BesideTheSlots(directory).Compare();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(MassesOf(*source, 0, 0), (Values{100, 300}));
  EXPECT_EQ(MassesOf(*source, 1, 0).size(), 2u);
  EXPECT_FALSE(source->ScanAt(0, 1, 0).isPrecursorOfMethod);
  EXPECT_TRUE(source->ScanAt(0, 1, 1).isPrecursorOfMethod);
  EXPECT_EQ(source->ScanAt(0, 0, 0).precursorMz, std::nullopt);
}

// In data format 1: for such a point the slots keep the container's old content. The file holds it.
TEST(RawSource, PointsThatTheSlotsDoNotWriteAreThere) {
  RawDirectoryBuilder raw;
  raw.functions.push_back(FunctionOf<StoredPoint1>(1, {{{100 * 1024, 5, 0},
                                                        {200 * 1024, 0, 0},
                                                        {300 * 1024, 6, 0},
                                                        {400 * 1024, 7, 0},
                                                        {500 * 1024, 8, 0}}}));
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(source->ScanAt(0, 0, 0).points, 5u);
  Values mz;
  Values intensities;
  const PointsRead read = source->ReadPoints(0, 0, 0, mz, intensities);
  EXPECT_EQ(read.count, 5u);
  EXPECT_EQ(read.lost, 0u);
  EXPECT_EQ(mz, (Values{100, 200, 300, 400, 500}));
  EXPECT_EQ(intensities, (Values{5, 0, 6, 7, 8}));
}

// 6 bytes per point: 17 bytes hold two of three points.
TEST(RawSource, PointsThatTheFileLacksAreAbsentAndCounted) {
  RawDirectoryBuilder raw;
  raw.functions.push_back(FunctionOf<StoredPoint8>(8, {{{100 * 128, 1}, {200 * 128, 2}, {300 * 128, 3}}}));
  const TempDirectory directory = raw.Build();
  Values mz;
  Values intensities;
  EXPECT_EQ(Open(directory)->ReadPoints(0, 0, 0, mz, intensities).lost, 0u);
  EXPECT_EQ(mz, (Values{100, 200, 300}));
  directory.Truncate("_FUNC001.DAT", 17);
  const std::unique_ptr<Source> source = Open(directory);
  const PointsRead read = source->ReadPoints(0, 0, 0, mz, intensities);
  EXPECT_EQ(read.count, 2u);
  EXPECT_EQ(read.lost, 1u);
  EXPECT_EQ(mz, (Values{100, 200}));
  EXPECT_EQ(intensities, (Values{1, 2}));
  directory.Truncate("_FUNC001.DAT", 0);
  const PointsRead none = Open(directory)->ReadPoints(0, 0, 0, mz, intensities);
  EXPECT_EQ(none.count, 0u);
  EXPECT_EQ(none.lost, 3u);
}

// 4,194,303 points are declared, but none exist.
TEST(RawSource, NoRoomIsMadeForPointsThatTheFileLacks) {
  const TempDirectory directory = PlainDirectory(1).Build();
  directory.Write("_FUNC001.IDX", WriteScanIndex(std::vector<ScanIndexRecord>(2, {.pointCount = 0x3FFFFF})));
  directory.Truncate("_FUNC001.DAT", 0);
  const std::unique_ptr<Source> source = Open(directory);
  Values mz;
  Values intensities;
  EXPECT_EQ(source->ReadPoints(0, 0, 1, mz, intensities).lost, 0x3FFFFFu);
  EXPECT_EQ(mz.capacity() + intensities.capacity(), 0u);
}

// A megabyte of such an index. Making the points would take an hour.
TEST(RawSource, IndexOverNothingIsReadThrough) {
  constexpr int kScans = 47'662;
  const TempDirectory directory = PlainDirectory(1).Build();
  directory.Write("_FUNC001.IDX",
                  WriteScanIndex(std::vector<ScanIndexRecord>(kScans, {.pointCount = 0x3FFFFF})));
  directory.Truncate("_FUNC001.DAT", 0);
  const std::unique_ptr<Source> source = Open(directory);
  ASSERT_EQ(source->ScanCount(0, 0), kScans);
  const std::span<const Finding> findings = source->Findings();
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(findings[0].code, FindingCode::kDataCut);
  EXPECT_EQ(findings[0].count, 47'662u);
  Values mz;
  Values intensities;
  for (int scan = 0; scan < kScans; ++scan)
    ASSERT_EQ(source->ReadPoints(0, 0, scan, mz, intensities).lost, 0x3FFFFFu);
  const Values basePeaks = source->BasePeaks(0, 0).intensities;
  ASSERT_EQ(basePeaks.size(), 47'662u);
  EXPECT_TRUE(std::isnan(basePeaks.back()));
}

// Three scans of one point, 6 bytes each; the last is missing.
TEST(RawSource, ChromatogramsOfLostPointsAreUnknown) {
  const TempDirectory directory = PlainDirectory(1, 3).Build();
  directory.Truncate("_FUNC001.DAT", directory.Read("_FUNC001.DAT").size() * 2 / 3);
  const std::unique_ptr<Source> source = Open(directory);
  for (const Values& intensities :
       {source->MassRange(0, 0, {0, 250}, Within::kSum).intensities, source->BasePeaks(0, 0).intensities}) {
    ASSERT_EQ(intensities.size(), 3u);
    EXPECT_EQ(intensities[1], 2);
    EXPECT_TRUE(std::isnan(intensities[2]));
  }
  EXPECT_EQ(source->MassRange(0, 0, {150, 250}, Within::kSum).intensities[0], 0);
}

// The end of a range is a point's mass or beside it. Four scans: in order, out of it, of the last points of
// which the file holds one of two, and none.
TEST(RawSource, RangesHoldTheirEnds) {
  constexpr std::uint32_t k100 = 100 * 128;
  RawDirectoryBuilder raw;
  raw.functions.push_back(FunctionOf<StoredPoint8>(8, {{{k100, 1}, {2 * k100, 2}, {3 * k100, 4}},
                                                       {{3 * k100, 4}, {k100, 1}, {2 * k100, 2}, {k100, 8}},
                                                       {{2 * k100, 16}, {3 * k100, 32}},
                                                       {{k100, 64}}}));
  const TempDirectory directory = raw.Build();
  directory.Truncate("_FUNC001.DAT", 8 * 6);
  const std::unique_ptr<Source> source = Open(directory);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double below = std::nextafter(200.0, 0.0);
  const double above = std::nextafter(200.0, 300.0);
  const struct {
    Range range;
    Values sums;
  } cases[] = {{{100, 200}, {3, 11, 16, nan}}, {{100, below}, {1, 9, 0, nan}},
               {{200, 300}, {6, 6, 16, nan}},  {{above, 300}, {4, 4, 0, nan}},
               {{200, 200}, {2, 2, 16, nan}},  {{above, below}, {0, 0, 0, nan}},
               {{0, 1e9}, {7, 15, 16, nan}},   {{below, above}, {2, 2, 16, nan}}};
  for (const auto& [range, sums] : cases) {
    EXPECT_EQ(Bits(source->MassRange(0, 0, range, Within::kSum).intensities), Bits(sums))
        << range.low << " to " << range.high;
  }
}

// The error of `read`; empty when it succeeds.
std::optional<Error> ErrorOf(const std::function<void()>& read) {
  try {
    read();
  } catch (const Error& error) {
    return error;
  }
  return std::nullopt;
}

TEST(RawSource, WrongPositionsAreErrors) {
  const TempDirectory directory = sample::Acquisition().Build();
  const std::unique_ptr<Source> source = Open(directory);
  std::vector<double> x(1000);
  std::vector<double> y(1000);
  const int functions = static_cast<int>(source->Functions(0).size());
  const struct {
    std::function<void()> read;
    const char* message;
  } cases[] = {
      {[&] { source->ScanAt(0, 0, -1); }, "there is no scan 0"},
      {[&] { source->ScanAt(0, 0, 4999); }, "there is no scan 5000"},
      {[&] { source->ReadPoints(0, 0, 4999, x, y); }, "there is no scan 5000"},
      {[&] { source->ReadPoints(0, 0, 4999, std::span(x), std::span(y)); }, "there is no scan 5000"},
      {[&] { source->ReadPoints(0, 0, 0, std::span<double>(), std::span<double>()); },
       "there is no room for the points of the scan"},
      {[&] { source->ScanCount(0, -1); }, "there is no function 0"},
      {[&] { source->Minutes(0, 99); }, "there is no function 100"},
      {[&] { source->FunctionMetadata(0, 99); }, "there is no function 100"},
      {[&] { source->DriftBinCount(0, functions); }, "there is no function"},
      {[&] { source->ReadDriftBin(0, 0, 4999, 0, x, y); }, "there is no scan 5000"},
      {[&] { source->FindPrecursor(0, 99, 0); }, "there is no function 100"},
      {[&] { source->ReadTrace(0, -1); }, "there is no trace 0"},
      {[&] { source->ReadTrace(0, 99); }, "there is no trace 100"},
      {[&] { source->AbsorbanceMinutes(0, 4999); }, "there is no scan 5000"},
      {[&] { source->ReadAbsorbance(0, -1, x, y); }, "there is no scan 0"},
  };
  for (const auto& each : cases) {
    const std::optional<Error> error = ErrorOf(each.read);
    ASSERT_TRUE(error) << each.message;
    EXPECT_EQ(error->GetStatus(), Status::kWrongArgument);
    EXPECT_EQ(error->Message().substr(0, std::string(each.message).size()), each.message);
  }
}

#ifndef _WIN32
// While one exists, the process may have at most `count` files open.
class FewFiles {
 public:
  explicit FewFiles(rlim_t count) {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
    const rlimit few = {count, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  FewFiles(const FewFiles&) = delete;
  FewFiles& operator=(const FewFiles&) = delete;
  ~FewFiles() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

TEST(RawSource, MoreFunctionsThanFilesThatMayBeOpen) {
  const TempDirectory directory = PlainDirectory(60).Build();
  const FewFiles few(30);
  const std::unique_ptr<Source> source = Open(directory);
  ASSERT_EQ(source->Functions(0).size(), 60u);
  for (int scan = 0; scan < 2; ++scan) {
    for (int function = 0; function < 60; ++function)
      EXPECT_EQ(MassesOf(*source, function, scan), Values{100.0 * (scan + 1)});
  }
}

// What is refused when no descriptors are left works again as soon as some are free.
TEST(RawSource, FilesThatTheSystemDoesNotOpenAreErrors) {
  const TempDirectory directory = PlainDirectory(2).Build();
  const std::unique_ptr<Source> source = Open(directory);
  const auto messageOf = [&](const std::function<void()>& read) {
    const FewFiles none(0);
    const std::optional<Error> error = ErrorOf(read);
    return error && error->GetStatus() == Status::kUnreadable ? error->Message() : std::string();
  };
  const std::string reason = " cannot be opened (" + std::generic_category().message(EMFILE) + ")";
  EXPECT_EQ(messageOf([&] { source->ScanCount(0, 1); }), "_FUNC002.IDX" + reason);
  EXPECT_EQ(messageOf([&] { source->Traces(0); }), "");
  EXPECT_EQ(source->ScanCount(0, 1), 2);
  EXPECT_EQ(messageOf([&] { MassesOf(*source, 1, 0); }), "_FUNC002.DAT" + reason);
  EXPECT_EQ(MassesOf(*source, 1, 0), Values{100});
  const std::string header = messageOf([&] { Open(directory); });
  EXPECT_EQ(header, PathOf(directory).substr(0, PathOf(directory).size() - 1) + ": _HEADER.TXT" + reason);
}
#endif

// Consecutive scans are read many at a time; in any other order the results are the same.
TEST(RawSource, ScansMayBeReadInAnyOrder) {
  const TempDirectory directory = PlainDirectory(2, 40).Build();
  const std::unique_ptr<Source> source = Open(directory);
  for (int scan = 39; scan >= 0; --scan) EXPECT_EQ(MassesOf(*source, 0, scan), Values{100.0 * (scan + 1)});
  for (int scan = 0; scan < 40; ++scan) {
    EXPECT_EQ(MassesOf(*source, 0, scan), Values{100.0 * (scan + 1)});
    EXPECT_EQ(MassesOf(*source, 1, scan), Values{100.0 * (scan + 1)});
  }
  for (const int scan : {0, 1, 2, 30, 2, 39, 0})
    EXPECT_EQ(MassesOf(*source, 1, scan), Values{100.0 * (scan + 1)});
}

TEST(RawSource, FunctionNumbersStayWithTheFiles) {
  const TempDirectory directory = PlainDirectory(3).Build();
  const auto numbers = [&] {
    std::vector<std::string> texts;
    const std::unique_ptr<Source> source = Open(directory);
    for (const Function& function : source->Functions(0))
      texts.push_back(TextOf(function.id) + " " + function.file);
    return texts;
  };
  using Texts = std::vector<std::string>;
  EXPECT_EQ(numbers(), (Texts{"1 _FUNC001.DAT", "2 _FUNC002.DAT", "3 _FUNC003.DAT"}));
  directory.Remove("_FUNC002.IDX");
  directory.Remove("_FUNC002.DAT");
  EXPECT_EQ(numbers(), (Texts{"1 _FUNC001.DAT", "3 _FUNC003.DAT"}));
  EXPECT_EQ(Open(directory)->Functions(0)[1].name, "TOF MS ES+ 3");
}

// Whatever else of the directory is read, or is still there.
TEST(RawSource, FunctionNamesStayWithTheFiles) {
  const TempDirectory directory = PlainDirectory(2).Build();
  EXPECT_EQ(Open(directory, "_FUNC002.DAT")->Functions(0)[0].name, "TOF MS ES+ 2");
  directory.Remove("_FUNC001.IDX");
  directory.Remove("_FUNC001.DAT");
  EXPECT_EQ(Open(directory)->Functions(0)[0].name, "TOF MS ES+ 2");
}

// Its scans are known, their points cannot be read.
TEST(RawSource, FunctionWithAnIndexAloneIsListed) {
  const TempDirectory directory = PlainDirectory(2).Build();
  directory.Remove("_FUNC001.DAT");
  const std::unique_ptr<Source> source = Open(directory);
  ASSERT_EQ(source->Functions(0).size(), 2u);
  EXPECT_EQ(source->ScanCount(0, 0), 2);
  try {
    MassesOf(*source, 0, 1);
    ADD_FAILURE() << "there are no points";
  } catch (const Error& error) {
    EXPECT_EQ(error.GetStatus(), Status::kDamaged);
    EXPECT_EQ(error.Message(), "cannot read scan 2 of function 1: _FUNC001.DAT is missing");
  }
}

TEST(RawSource, ProcessedFunctionsNameTheirOrigin) {
  RawDirectoryBuilder raw = PlainDirectory(2);
  raw.history = {{.processNumber = 7, .rawFunctionNumber = 2, .processCode = 3},
                 {.processNumber = 7, .rawFunctionNumber = 1, .processCode = 3}};
  raw.processed[7] = Plain(1);
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  ASSERT_EQ(source->Functions(0).size(), 4u);
  const Function& first = source->Functions(0)[2];
  EXPECT_EQ(first.id, (FunctionId{2, 7, 1}));
  EXPECT_EQ(first.file, "_PROC007.DAT");
  EXPECT_EQ(TextOf(first.id), "p7");
  EXPECT_EQ(source->Functions(0)[3].id, (FunctionId{1, 7, 2}));
}

TEST(RawSource, DataFileOpensOnlyItsFunction) {
  RawDirectoryBuilder raw = PlainDirectory(3);
  raw.history = {{.processNumber = 2, .rawFunctionNumber = 1}};
  raw.processed[2] = Plain(1);
  const TempDirectory directory = raw.Build();
  const auto idOf = [&](const char* name) {
    const std::unique_ptr<Source> source = Open(directory, name);
    return source->Functions(0).size() == 1 ? TextOf(source->Functions(0)[0].id) : "several";
  };
  EXPECT_EQ(idOf("_FUNC002.DAT"), "2");
  EXPECT_EQ(idOf("_FUNC003.IDX"), "3");
  EXPECT_EQ(idOf("_PROC002.DAT"), "p2");
  EXPECT_EQ(idOf("_HEADER.TXT"), "several");
  directory.WriteText("_FUNC009.DAT", "x");
  EXPECT_EQ(StatusOfOpening(PathOf(directory, "_FUNC009.DAT")), Status::kNotRecognised);
}

TEST(RawSource, TrailingSeparatorMakesNoDifference) {
  const TempDirectory directory = PlainDirectory(1).Build();
  const std::unique_ptr<Source> source = Open(directory, "");
  EXPECT_EQ(source->SampleMetadata(0)[4].value, Open(directory)->SampleMetadata(0)[4].value);
  EXPECT_EQ(source->Functions(0).size(), 1u);
}

TEST(RawSource, MissingFilesAreNamed) {
  const TempDirectory directory = PlainDirectory(1).Build();
  const std::u8string u8 = directory.Path().u8string();
  const std::string path(u8.begin(), u8.end());
  EXPECT_EQ(StatusOfOpening(path), Status::kDone);
  EXPECT_EQ(StatusOfOpening(path + "x"), Status::kNotFound);
  std::string message;
  const FileBytes header = directory.Read("_HEADER.TXT");
  directory.Remove("_HEADER.TXT");
  EXPECT_EQ(StatusOfOpening(path, &message), Status::kNotRecognised);
  EXPECT_EQ(message, path + " is no raw directory: it has no _HEADER.TXT");
  directory.Write("_HEADER.TXT", header);
  directory.Remove("_FUNCTNS.INF");
  EXPECT_EQ(StatusOfOpening(path, &message), Status::kNotRecognised);
  EXPECT_EQ(message, path + " is no raw directory: it has no _FUNCTNS.INF");
  directory.MakeDirectory("_FUNCTNS.INF");
  EXPECT_EQ(StatusOfOpening(path, &message), Status::kDamaged);
  EXPECT_EQ(message, path + " is damaged: _FUNCTNS.INF cannot be opened");
  const TempDirectory empty;
  const std::u8string other = empty.Path().u8string();
  EXPECT_EQ(StatusOfOpening(std::string(other.begin(), other.end())), Status::kNotRecognised);
}

TEST(RawSource, WholeRecordsOfACutFunctionTableAreRead) {
  const TempDirectory directory = PlainDirectory(2).Build();
  directory.Truncate("_FUNCTNS.INF", 2 * 416 - 1);
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(source->Functions(0).size(), 1u);
  ASSERT_EQ(source->Findings().size(), 2u);
  EXPECT_EQ(source->Findings()[0].code, FindingCode::kFunctionTableCut);
}

// The findings refer to the index that the scans were taken from.
TEST(RawSource, FindingsAreOfTheIndicesThatWereLoaded) {
  const TempDirectory directory = PlainDirectory(2).Build();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(source->ScanCount(0, 0), 2);
  directory.Remove("_FUNC001.IDX");
  directory.Remove("_FUNC002.IDX");
  ASSERT_EQ(source->Findings().size(), 1u);
  EXPECT_EQ(source->Findings()[0].file, "_FUNC002.IDX");
  EXPECT_EQ(source->ScanCount(0, 1), 0);
}

// Data format 10 has no layout.
TEST(RawSource, ScanThatCannotBeReadThrows) {
  RawDirectoryBuilder raw = PlainDirectory(2);
  raw.functions[1].record.dataFormat = 10;
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(MassesOf(*source, 0, 1), Values{200});
  try {
    MassesOf(*source, 1, 1);
    FAIL() << "it was read";
  } catch (const Error& error) {
    EXPECT_EQ(error.GetStatus(), Status::kDamaged);
    EXPECT_EQ(error.Message(), "cannot read scan 2 of function 2");
  }
}

// One record of zeros may be measured at time 0, two are in place of others.
TEST(RawSource, ZerosAtTheFrontOfATraceAreNoPoints) {
  RawDirectoryBuilder raw = PlainDirectory(1);
  raw.analogNames = {"pressure"};
  raw.analogs = {{.time = 0, .words = {0}}, {.time = 1, .words = {8}}, {.time = 2, .words = {16}}};
  EXPECT_EQ(Open(raw.Build())->ReadTrace(0, 0).minutes, (Values{0, 1, 2}));
  raw.analogs.insert(raw.analogs.begin(), raw.analogs[0]);
  const TempDirectory directory = raw.Build();
  const Chromatogram trace = Open(directory)->ReadTrace(0, 0);
  EXPECT_EQ(trace.minutes, (Values{1, 2}));
  EXPECT_EQ(trace.intensities, (Values{1, 2}));
}

TEST(RawSource, TraceWhoseDataAreCutThrows) {
  RawDirectoryBuilder raw = PlainDirectory(1);
  raw.analogNames = {"pressure"};
  raw.analogs = {{.time = 1, .words = {8}}};
  const TempDirectory directory = raw.Build();
  EXPECT_EQ(Open(directory)->ReadTrace(0, 0).minutes, Values{1});
  directory.Truncate("_ANALOGS.DAT", 5);
  EXPECT_THROW(Open(directory)->ReadTrace(0, 0), Error);
}

TEST(RawSource, IonMonitoringFollowsTheType) {
  RawDirectoryBuilder raw = PlainDirectory(3);
  raw.functions[1].record.type = 1;
  raw.functions[2].record.type = 9;
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_EQ(source->Functions(0)[0].monitoring, Monitoring::kNone);
  EXPECT_EQ(source->Functions(0)[1].monitoring, Monitoring::kIons);
  EXPECT_EQ(source->Functions(0)[2].monitoring, Monitoring::kReactions);
}

TEST(RawSource, LockMassIsKnownByItsLabel) {
  RawDirectoryBuilder raw = PlainDirectory(2);
  raw.labels = {CreatorLine("4.1"), FunctionHeading(2, "REFERENCE")};
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  EXPECT_FALSE(source->Functions(0)[0].isLockMass);
  EXPECT_TRUE(source->Functions(0)[1].isLockMass);
}

TEST(RawSource, ValuesThatNoFileHasAreAbsent) {
  RawDirectoryBuilder raw = PlainDirectory(1);
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  const std::vector<MetadataItem> items = source->SampleMetadata(0);
  EXPECT_EQ(items[0].value, std::nullopt) << "no date and no time";
  EXPECT_EQ(items[1].value, std::nullopt) << "no instrument";
  EXPECT_EQ(items[5].value, "ZRMLProvider");
  EXPECT_EQ(items[7].value, std::nullopt) << "ionisation is a function's";
  EXPECT_EQ(source->ScanAt(0, 0, 0).scanValue, std::nullopt);
  EXPECT_EQ(source->ScanAt(0, 0, 0).basePeakIntensity, std::nullopt);
}

TEST(RawSource, ChromatogramThatIsCancelledThrows) {
  const TempDirectory directory = PlainDirectory(1, 3).Build();
  const std::unique_ptr<Source> source = Open(directory);
  int asked = 0;
  EXPECT_THROW(source->MassRange(0, 0, {0, 1000}, Within::kSum, [&] { return ++asked == 2; }), Cancelled);
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(source->MassRange(0, 0, {0, 250}, Within::kSum).intensities, (Values{1, 2, 0}));
}

}  // namespace
}  // namespace zrml::source
