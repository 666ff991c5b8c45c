// Measures how much time a megabyte can cost: the slowest known inputs, each through every slot, and reports
// through the questions of the tools as well. Prints the processor seconds of one life of a server or source;
// asserts nothing. docs/robustness.md has the figures.
#include <cstdio>
#include <ctime>
#include <memory>
#include <set>
#include <string>

#include "common/text.h"
#include "fuzz/every_slot.h"
#include "fuzz/simulated_files.h"
#include "plugin/raw_server.h"
#include "plugin/report_server.h"
#include "source/source.h"
#include "tests/support/raw_directory_builder.h"

namespace {

using namespace zrml;

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::uint32_t kMostPoints = (1u << 22) - 1;

using Contents = std::map<std::string, FileBytes>;

FileBytes Repeated(std::string_view thing, std::size_t size) {
  std::string text;
  while (text.size() < size) text += thing;
  return TextToBytes(text);
}

FileBytes Noise(std::size_t count) {
  FileBytes bytes(count);
  std::uint32_t state = 1;
  for (std::byte& byte : bytes) byte = static_cast<std::byte>((state = state * 1664525u + 1013904223u) >> 24);
  return bytes;
}

RawDirectoryBuilder OneFunction(unsigned format, std::uint32_t points) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = format;
  raw.functions[0].scans = {{.index = {.pointCount = points}}};
  return raw;
}

// The largest number of points that an index can declare, over a megabyte of noise.
Contents ManyPoints(unsigned format) {
  Contents files = OneFunction(format, kMostPoints).Files();
  files["_FUNC001.DAT"] = Noise(kMegabyte);
  return files;
}

Contents WithText(const char* name, std::string_view thing) {
  Contents files = OneFunction(9, 10).Files();
  files[name] = Repeated(thing, kMegabyte);
  return files;
}

Contents CalibratedFunctions() {
  Contents files;
  files["_HEADER.TXT"] = Repeated("$$ Cal MS1 Static: 1\n", kMegabyte / 2);
  files["_FUNCTNS.INF"] = WriteFunctionTable(std::vector<FunctionTableRecord>(kMegabyte / 2 / 416));
  return files;
}

Contents ManyScans() {
  Contents files = OneFunction(9, 1).Files();
  std::vector<ScanIndexRecord> records(kMegabyte / 22);
  float time = 1e6F;
  for (ScanIndexRecord& record : records) record.retentionTime = time -= 1;
  files["_FUNC001.IDX"] = WriteScanIndex(records);
  return files;
}

Contents ManyTraces() {
  RawDirectoryBuilder raw = OneFunction(9, 1);
  raw.analogNames.assign(kMegabyte / 85, "");
  return raw.Files();
}

// Each step is derived from the previous one, and all have data.
Contents LongHistory() {
  RawDirectoryBuilder raw = OneFunction(9, 1);
  const std::size_t steps = kMegabyte / masslynx::history_format::kEntrySize;
  for (std::uint16_t number = 1; number <= steps; ++number)
    raw.history.push_back({.processNumber = number, .derivedFrom = static_cast<std::uint16_t>(number - 1)});
  Contents files = raw.Files();
  for (std::size_t number = 1; number <= steps; ++number) {
    const std::string digits = std::to_string(number);
    files["_PROC" + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits + ".DAT"] = {};
  }
  return files;
}

// Sub-scans of two points, all starting at one mass. Points that the file lacks have mass 0.
Contents ManySubScans(std::uint32_t lowest, std::uint32_t declared) {
  Contents files = OneFunction(12, declared).Files();
  std::vector<StoredPoint12> points(kMegabyte / 8,
                                    {.massExponent = 7, .massMantissa = lowest, .intensity = {}});
  for (std::size_t i = 1; i < points.size(); i += 2) points[i].massMantissa += 1u << 20;
  files["_FUNC001.DAT"] = EncodePoints(points);
  return files;
}

// The same with second masses all over the range, so the sum grows; the first sub-scan has `first` points.
Contents GrowingSubScans(std::size_t first, bool allPositive = true) {
  Contents files = OneFunction(12, kMegabyte / 8).Files();
  std::vector<StoredPoint12> points(
      kMegabyte / 8,
      {.massExponent = 10, .massMantissa = 1u << 26, .intensity = {.magnitude = 1000, .exponent = 20}});
  for (std::size_t i = 1; i < first; ++i) points[i].massMantissa += static_cast<std::uint32_t>(512 * i);
  std::uint32_t random = 1;
  for (std::size_t i = first + 1; i < points.size(); i += 2) {
    random = random * 1664525 + 1013904223;
    points[i].massMantissa += 1 + (random >> 6) % ((1u << 26) - 1);
  }
  points[1].intensity.negative = !allPositive;
  files["_FUNC001.DAT"] = EncodePoints(points);
  return files;
}

// 512 sub-scans that share only the first mass, with masses `apart` units of 2^-15 apart; all intensities
// above zero, or all but one.
Contents DifferentSubScans(std::uint32_t apart, bool allPositive) {
  constexpr std::uint32_t kSubScans = 512;
  constexpr std::uint32_t kPoints = kMegabyte / 8 / kSubScans;
  std::uint32_t random = 1;
  Contents files = OneFunction(12, kSubScans * kPoints).Files();
  std::vector<StoredPoint12> points(
      kSubScans * kPoints,
      {.massExponent = 12, .massMantissa = 1u << 26, .intensity = {.magnitude = 1000, .exponent = 20}});
  for (std::uint32_t i = 0; i < points.size(); ++i) {
    const std::uint32_t point = i % kPoints;
    if (point > 0) points[i].massMantissa += apart * (kSubScans * point - i / kPoints);
    random = random * 1664525 + 1013904223;
    points[i].intensity.magnitude = 1000 + (random >> 16);
  }
  points[1].intensity.negative = !allPositive;
  files["_FUNC001.DAT"] = EncodePoints(points);
  return files;
}

// Sub-scans of `pointsOfEach` points at random masses from 2048 to 4096 that also differ in single precision;
// a third of the intensities are negative.
Contents RandomSubScans(std::uint32_t pointsOfEach) {
  constexpr std::uint32_t kPoints = kMegabyte / 8;
  std::uint32_t random = 1;
  const auto next = [&] { return (random = random * 1664525 + 1013904223) >> 6; };
  Contents files = OneFunction(12, kPoints).Files();
  std::vector<StoredPoint12> points(
      kPoints,
      {.massExponent = 12, .massMantissa = 1u << 26, .intensity = {.magnitude = 1000, .exponent = 20}});
  for (std::uint32_t begin = 0; begin < kPoints; begin += pointsOfEach) {
    std::set<std::uint32_t> masses;
    while (masses.size() + 1 < pointsOfEach) masses.insert((1u << 26) + 8 * (1 + next() % ((1u << 23) - 1)));
    std::uint32_t i = begin;
    for (const std::uint32_t mass : masses) {
      points[++i].massMantissa = mass;
      points[i].intensity.magnitude = 1000 + next() % 1000;
      points[i].intensity.negative = next() % 3 == 0;
    }
  }
  files["_FUNC001.DAT"] = EncodePoints(points);
  return files;
}

template <class Work>
double Seconds(Contents contents, Work work) {
  fuzz::Files files;
  for (auto& [name, bytes] : contents) files[Widen(name)] = std::move(bytes);
  fuzz::SetFiles(std::move(files));
  const std::clock_t begin = std::clock();
  work();
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

template <class Server>
void AskServer(const std::wstring& source) {
  Server server;
  server.Open(source);
  fuzz::AskEverySlot(server, source, 1);
}

// Everything that `zrml info` and `zrml check` read.
void AskSource(const std::string& path) {
  const std::unique_ptr<source::Source> source = source::Source::Open(path);
  std::vector<double> mz;
  std::vector<double> intensities;
  for (int sample = 0; sample < source->SampleCount(); ++sample) {
    const int functions = static_cast<int>(source->Functions(sample).size());
    for (int function = 0; function < functions; ++function) {
      source->Minutes(sample, function);
      source->FunctionText(sample, function);
      source->FunctionTraces(sample, function);
      for (int scan = 0; scan < source->ScanCount(sample, function); ++scan)
        source->ReadPoints(sample, function, scan, mz, intensities);
    }
  }
}

void Print(const std::string& what, double seconds) {
  std::printf("%-40s %7.3f s\n", what.c_str(), seconds);
  std::fflush(stdout);
}

void Show(const std::string& what, Contents contents) {
  Print(what, Seconds(std::move(contents), [] { AskServer<plugin::CMLDataServerImpl>(fuzz::kFolder); }));
}

// A report that begins with `begin`, repeats lines up to a megabyte, and finishes with `end`.
Contents ReportOf(const std::string& begin, const std::string& repeated, const std::string& end) {
  std::string text = begin;
  while (text.size() + end.size() < kMegabyte) text += repeated;
  return {{"nested.rpt", TextToBytes(text + end)}};
}

void ShowReport(const std::string& what, const std::string& begin, const std::string& repeated,
                const std::string& end = {}) {
  Print("report: " + what, Seconds(ReportOf(begin, repeated, end), [] {
          AskServer<plugin::COpenLynxRptDataServerImpl>(std::wstring(fuzz::kFolder) + L"/nested.rpt");
        }));
}

void ShowSource(const std::string& what, const std::string& begin, const std::string& repeated,
                const std::string& end = {}) {
  Print("tools, report: " + what,
        Seconds(ReportOf(begin, repeated, end), [] { AskSource("/run.raw/nested.rpt"); }));
}

std::string Times(int count, std::string_view thing) {
  std::string text;
  for (int i = 0; i < count; ++i) text += thing;
  return text;
}

// Blocks are never closed unless the name says so.
void ShowReports() {
  const std::string sample = "[SAMPLE]\n{\n";
  const std::string function = "[FUNCTION]\n{\n";
  const std::string spectrum = "[SPECTRUM]\n{\n";
  const std::string chromatogram = "[CHROMATOGRAM]\n{\n";
  const std::string longType = "Type MS" + std::string(990, 'M') + "\n";
  constexpr int kHalf = kMegabyte / 26;  // half of the markers that fit
  ShowReport("samples", "", sample);
  ShowReport("functions", sample, function);
  ShowReport("functions, each with a type", sample, function + "Type MS\n");
  ShowReport("functions, one type in the last", sample, function, longType);
  ShowReport("functions, one spectrum in the last", sample, function, spectrum + "Time 1\n[MS]\n1 1\n");
  ShowReport("functions, spectra in the last", sample + Times(kHalf, function), spectrum);
  ShowReport("functions, closed spectra in the last", sample + Times(kHalf, function), spectrum + "}\n");
  ShowReport("functions, chromatograms in the last", sample + Times(kHalf, function), chromatogram);
  ShowReport("functions and spectra in turn", sample, function + spectrum);
  ShowReport("spectra", sample + function, spectrum);
  ShowReport("spectra, keys in the last", sample + function, spectrum, "Time 1\nBPI 1\nTIC 1\n");
  ShowReport("spectra, keys in each", sample + function, spectrum + "Time 1\nBPI 1\nTIC 1\n");
  ShowReport("spectra, each with a data list", sample + function, spectrum + "[MS]\n1 1\n}\n");
  ShowReport("chromatograms", sample + function, chromatogram);
  ShowReport("analog functions", sample, function, "Type DAD\n");
  ShowReport("analog functions, chromatograms", sample + Times(kHalf, function) + "Type DAD\n", chromatogram);
  ShowReport(
      "precursors among nested functions",
      sample + function + "Type MS2\n" + spectrum + "Time 9\n}\n}\n" + Times(kHalf, function) + "Type MS\n",
      spectrum, "Time 3\n");
  ShowReport("braces", sample + function, "{\n");
  ShowReport("lines of one byte", sample + function + "{\n", "\n");
  ShowReport("one line", sample + function + "{\n", "{");
  ShowReport("numbers of 990 digits", sample + function + spectrum,
             "Time " + std::string(990, '1') + "\n" + spectrum);
  const std::string closed = "Time 1\n[MS]\n1 1\n}\n";  // which also ends the block of the spectrum
  ShowSource("functions, a closed spectrum in each", sample, function + spectrum + closed);
  ShowSource("functions, spectra in the last", sample + Times(kHalf, function), spectrum + closed);
}

}  // namespace

int main() {
  for (unsigned format = 0; format < 15; ++format) {
    Show("4,194,303 points of layout " + std::to_string(format), ManyPoints(format));
  }
  Show("header of line feeds", WithText("_HEADER.TXT", "\n"));
  Show("header of calibration", WithText("_HEADER.TXT", "$$ Cal Segment 31: 1,2,3\n"));
  Show("header of digits", WithText("_HEADER.TXT", "$$ Cal MS1 Static: " + std::string(9900, '1') + "\n"));
  Show("header of blanks", WithText("_HEADER.TXT", "$$ Cal MS1 Static:" + std::string(9900, ' ') + "\n"));
  Show("labels", WithText("_EXTERN.INF", "Function Parameters - Function 1 - \n"));
  Show("statistics", WithText("_FUNC001.STS", "\1"));
  Show("many functions, much calibration", CalibratedFunctions());
  Show("many scans, times descending", ManyScans());
  Show("many traces", ManyTraces());
  Show("many sub-scans", ManySubScans(1u << 25, kMegabyte / 8));
  Show("many sub-scans from mass 0", ManySubScans(0, kMegabyte / 8));
  Show("many sub-scans from mass 0, 4,194,303 points", ManySubScans(0, kMostPoints));
  Show("many sub-scans, growing sum", GrowingSubScans(0));
  Show("many sub-scans, long first one", GrowingSubScans(60000));
  Show("many sub-scans, growing sum, one intensity negative", GrowingSubScans(0, false));
  for (const bool allPositive : {true, false}) {
    const std::string sign = allPositive ? "" : ", one intensity negative";
    Show("512 sub-scans of different masses" + sign, DifferentSubScans(512, allPositive));
    Show("the same, closer" + sign, DifferentSubScans(180, allPositive));
  }
  for (const std::uint32_t points : {4U, 16U, 256U, 4096U})
    Show("random sub-scans of " + std::to_string(points) + " points", RandomSubScans(points));
  Show("long history", LongHistory());
  ShowReports();
}
