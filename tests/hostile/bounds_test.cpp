// The bounds on memory and work that docs/robustness.md states.
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "plugin/report_server.h"
#include "tests/hostile/allocations.h"
#include "tests/hostile/failing_calls.h"
#include "tests/hostile/reading.h"
#include "tools/zrml/command_line.h"

namespace zrml {
namespace {

constexpr std::size_t kConstant = std::size_t{1} << 20;
constexpr std::size_t kPerFileByte = 48;
constexpr std::size_t kPerPoint = 64;
constexpr std::size_t kMegabyte = std::size_t{1} << 20;

std::size_t SizeOf(const TempDirectory& directory) {
  std::size_t size = 0;
  for (const auto& file : std::filesystem::directory_iterator(directory.Path())) size += file.file_size();
  return size;
}

// The peak memory of opening and the main questions.
std::size_t PeakOf(const TempDirectory& directory) {
  const std::wstring path = directory.WidePath();
  const std::size_t before = BytesInUse();
  StartPeak();
  {
    plugin::CMLDataServerImpl server;
    server.Open(path);
    CZRMassSpectrum spectrum;
    CZRChromatogram chromatogram;
    server.GetTraceCount(0);
    server.GetTrace(0, 0, chromatogram);
    const int functions = std::min(server.GetFunctionCount(0), 4);
    for (int function = 0; function < functions; ++function) {
      server.GetScanCount(0, function);
      server.GetSpectrum(0, function, 0, spectrum);
      server.GetTotalIonChromatogram(true, 0, function, chromatogram);
    }
  }
  return PeakBytes() - before;
}

TEST(Bounds, MemoryGrowsWithThePointsDeclaredByNoMoreThanStated) {
  constexpr std::uint32_t kPoints = 1u << 18;
  for (unsigned format = 0; format < 15; ++format) {
    SCOPED_TRACE(format);
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    raw.functions[0].record.dataFormat = format;
    raw.functions[0].scans = {{.index = {.pointCount = kPoints}}};
    const TempDirectory directory = raw.Build();
    const std::size_t peak = PeakOf(directory);
    EXPECT_LE(peak, kConstant + kPerFileByte * SizeOf(directory) + kPerPoint * kPoints);
    RecordProperty("format" + std::to_string(format), std::to_string(static_cast<double>(peak) / kPoints));
  }
}

// A megabyte of the smallest items that a file can hold.
const std::map<std::string, std::string> kSmallestThings = {
    {"_HEADER.TXT", "\n"},
    {"_EXTERN.INF", "\n"},
    {"_FUNC001.IDX", std::string(22, '\0')},
    {"_FUNC001.STS", std::string(1, '\1')},
    {"_ANALOGS.INF", std::string(85, '\0')},
    {"_HISTORY.INF", std::string(123, '\1')},
    {"_FUNCTNS.INF", std::string(416, '\0')},
};

TEST(Bounds, MemoryGrowsWithTheFilesByNoMoreThanStated) {
  for (const auto& [name, thing] : kSmallestThings) {
    SCOPED_TRACE(name);
    const TempDirectory directory = WholeDirectory().Build();
    std::string text;
    while (text.size() < kMegabyte) text += thing;
    directory.WriteText(name, text);
    const std::size_t peak = PeakOf(directory);
    EXPECT_LE(peak, kConstant + kPerFileByte * SizeOf(directory));
    RecordProperty(name, std::to_string(static_cast<double>(peak) / static_cast<double>(text.size())));
  }
}

// Each step is derived from the one before and has a text: names of up to 36,000 characters.
TEST(Bounds, NamesOfLongChainsAreNotKept) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  for (int step = 1; step <= 1440; ++step) {
    raw.history.push_back({.processNumber = static_cast<std::uint16_t>(step),
                           .derivedFrom = static_cast<std::uint16_t>(step - 1),
                           .rawFunctionNumber = 1,
                           .processCode = 27});
    raw.processed[step];
  }
  const TempDirectory directory = raw.Build();
  const std::size_t before = BytesInUse();
  StartPeak();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  ASSERT_EQ(server.GetFunctionCount(0), 1441);
  EXPECT_GT(server.GetFunctionName(0, 1440).size(), 30000U);
  EXPECT_LE(PeakBytes() - before, kConstant + kPerFileByte * SizeOf(directory));
}

// Everything nested in everything: samples, functions, analog functions, spectra, each a megabyte of blocks
// that are never closed.
TEST(Bounds, ReportsTakeMemoryByTheirSize) {
  const std::map<std::string, std::string> things = {
      {"samples", "[SAMPLE]\n"},
      {"functions", "[SAMPLE]\n{\n" + std::string("[FUNCTION]\n{\n")},
      {"analog functions", "[FUNCTION]\n{\nType DAD\n"},
      {"spectra", "[SPECTRUM]\n{\n"},
      {"chromatograms", "[CHROMATOGRAM]\n{\n"},
      {"functions and spectra", "[FUNCTION]\n{\n[SPECTRUM]\n{\n"},
  };
  for (const auto& [name, thing] : things) {
    SCOPED_TRACE(name);
    std::string text = "[SAMPLE]\n{\n[FUNCTION]\n{\n";
    while (text.size() < kMegabyte) text += thing;
    const TempDirectory directory;
    directory.WriteText("report.rpt", text);
    const std::size_t before = BytesInUse();
    StartPeak();
    {
      plugin::COpenLynxRptDataServerImpl server;
      ASSERT_TRUE(server.Open(directory.WidePath("report.rpt")));
      server.GetSampleCount();
      server.GetTraceCount(0);
      const int functions = std::min(server.GetFunctionCount(0), 4);
      for (int function = 0; function < functions; ++function) {
        server.GetScanCount(0, function);
        server.GetFunctionTraceCount(0, function);
        server.GetFunctionName(0, function);
      }
    }
    EXPECT_LE(PeakBytes() - before, kConstant + kPerFileByte * text.size());
    RecordProperty(
        name, std::to_string(static_cast<double>(PeakBytes() - before) / static_cast<double>(text.size())));
  }
}

// Every function that is never closed contains the rest of the file, but that is not read for each: all
// questions about all functions take a few passes of four reads each, and each spectrum appears once.
TEST(Bounds, NestedFunctionsAreReadOnceByTools) {
  constexpr int kFunctions = 8000;
  constexpr int kMostCalls = 300;
  std::string text = "[SAMPLE]\n{\n";
  for (int i = 0; i < kFunctions; ++i)
    text += "[FUNCTION]\n{\nType\tMS\n[SPECTRUM]\n{\nTime\t1\n[MS]\n{\n100 50\n}\n}\n";
  const TempDirectory directory;
  directory.WriteText("nested.rpt", text);
  const std::string path = (directory.Path() / "nested.rpt").string();
  for (const char* const command : {"info", "check"}) {
    SCOPED_TRACE(command);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const FailingCalls failing(kMostCalls, CallFailure::kError);
    tool::RunCommandLine({command, "--json", path});
    const std::string output = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(failing.HasFailed());
    EXPECT_LT(output.size(), 20 * text.size());
    const bool isCheck = std::string_view(command) == "check";
    EXPECT_NE(output.find(isCheck ? "\"scans\": 8000" : "\"number\": 8000"), std::string::npos);
  }
}

// Neither do spectra of such functions that are never closed: a pass to the end of the file for each of
// these, which lack their keys, would be 20,000 passes of five reads.
TEST(Bounds, NestedSpectraAreReadOnceByTools) {
  constexpr int kMostCalls = 300;
  std::string text = "[SAMPLE]\n{\n";
  for (int i = 0; i < 20000; ++i) text += "[FUNCTION]\n{\n[SPECTRUM]\n{\n";
  const TempDirectory directory;
  directory.WriteText("nested.rpt", text);
  const std::string path = (directory.Path() / "nested.rpt").string();
  const std::vector<std::string> commands[] = {
      {"check", "--json", path}, {"info", "--json", path}, {"convert", path, "--damaged", "--stdout"}};
  for (const std::vector<std::string>& command : commands) {
    SCOPED_TRACE(command[0]);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const FailingCalls failing(kMostCalls, CallFailure::kError);
    tool::RunCommandLine(command);
    const std::string output = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(failing.HasFailed());
    EXPECT_NE(output.find("20000"), std::string::npos);
  }
}

TEST(Bounds, CalibrationLinesCostNoMoreThanOtherText) {
  for (const char* const line :
       {"$$ Cal Segment 31: 1\n", "$$ Cal MS1 Static: 1,1,1,1,1,1,1\n", "$$ Cal Temperature: 1\n"}) {
    SCOPED_TRACE(line);
    const TempDirectory directory = WholeDirectory().Build();
    std::string text;
    while (text.size() < kMegabyte) text += line;
    directory.WriteText("_HEADER.TXT", text);
    EXPECT_LE(PeakOf(directory), kConstant + kPerFileByte * SizeOf(directory));
  }
}

}  // namespace
}  // namespace zrml
