// Reports as a source: the same numbers as in the slots, and none where the file has none.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "plugin/report_server.h"
#include "source/formats.h"
#include "tests/support/report_writer.h"
#include "tests/support/sample/report.h"
#include "tests/support/temp_directory.h"

namespace zrml::source {
namespace {

using Doubles = std::vector<double>;

ReportLines FunctionOf(const std::string& type, const ReportLines& blocks,
                       const std::string& ionMode = "ES+") {
  return FunctionBlock(Keys({{"Description", "d"}, {"Type", type}, {"IonMode", ionMode}}) + blocks);
}

ReportLines AnalogFunction(const ReportLines& blocks) {
  return FunctionBlock(Keys({{"Description", "ANALOG"}, {"Type", "-"}}) + blocks);
}

ReportLines SpectrumAt(const std::string& time, const ReportPairs& points = {{100, 50}}) {
  return SpectrumBlock(Keys({{"Time", time}, {"BPI", "200"}, {"TIC", "7"}}), points);
}

ReportLines TraceOf(const std::string& name) {
  return ChromatogramBlock(Keys({{"Description", name}, {"MaxIntensity", "3"}}), {{1, 50}, {2, 25}});
}

// Functions of every kind and both polarities, with and without spectra, chromatograms and names.
ReportLines MixedReport() {
  return SampleBlock(
             Keys({{"FileName", "first"}, {"SampleID", "vial"}, {"UserName", "me"}, {"Date", "1-Jan-2026"}}) +
             FunctionOf("MS", SpectrumAt("1") + SpectrumAt("2", {{300, 1}, {200, 2}}) + TraceOf("TIC")) +
             FunctionOf("MS", {}) + AnalogFunction(TraceOf("pump") + SpectrumAt("9") + TraceOf("")) +
             FunctionOf("MS2", SpectrumAt("1.5") + SpectrumAt("0.5") + SpectrumBlock({}, {})) +
             FunctionOf("MS", SpectrumAt("1", {}), "ES-") + FunctionOf("SIM", TraceOf("m/z 5"), "") +
             FunctionOf("MRM", SpectrumAt("3") + TraceOf("")) + FunctionOf("", SpectrumAt("3"))) +
         SampleBlock({}) + SampleBlock(AnalogFunction(TraceOf("only")));
}

class ReportSourceTest : public testing::Test {
 protected:
  std::string Write(const std::string& text, const std::string& name = "report.rpt") {
    directory_.WriteText(name, text);
    const auto path = (directory_.Path() / name).u8string();
    return {path.begin(), path.end()};
  }

  std::unique_ptr<Source> Open(const std::string& text) {
    std::unique_ptr<Source> source = OpenReport(Write(text));
    if (source == nullptr) throw std::runtime_error("no report");
    return source;
  }
  std::unique_ptr<Source> Open(const ReportLines& report) { return Open(ReportText(report)); }

  TempDirectory directory_{"reports"};
};

std::string Narrow(const std::wstring& text) { return platform::ToNativePath(text); }

struct Read {
  Doubles mz;
  Doubles intensities;
};

Read Points(Source& source, int scan, int function = 0) {
  Read read;
  source.ReadPoints(0, function, scan, read.mz, read.intensities);
  return read;
}

// The slots give zeros where the file has nothing.
double ZeroForNone(double value) { return std::isnan(value) ? 0 : value; }

void ExpectSeries(const Chromatogram& ours, const CZRChromatogram& theirs) {
  ASSERT_EQ(ours.minutes.size(), theirs.Times().size());
  for (std::size_t i = 0; i < ours.minutes.size(); ++i) {
    EXPECT_EQ(ZeroForNone(ours.minutes[i]), theirs.Times()[i]);
    EXPECT_EQ(ZeroForNone(ours.intensities[i]), theirs.Intensities()[i]);
  }
}

void ExpectSamePoints(Source& source, CDataServerImpl& server, int sample, int function, int scan) {
  const Scan ours = source.ScanAt(sample, function, scan);
  Doubles mz;
  Doubles intensities;
  ASSERT_LE(source.ReadPoints(sample, function, scan, mz, intensities).count, ours.points);
  CZRMassSpectrum theirs;
  ASSERT_EQ(server.GetSpectrum(sample, function, scan, theirs), !mz.empty());
  if (mz.empty()) return;
  EXPECT_EQ(ZeroForNone(ours.minutes), theirs.GetStartTime());
  EXPECT_EQ(IsCentroided(ours), theirs.IsCentroided());
  SortByMass(false, theirs);
  EXPECT_EQ(mz, Doubles(theirs.MassVector().begin(), theirs.MassVector().end()));
  EXPECT_EQ(intensities, Doubles(theirs.IntensityVector().begin(), theirs.IntensityVector().end()));
}

void ExpectSameMetadata(Source& source, CDataServerImpl& server, int sample, int function) {
  std::vector<MetadataItem> items = source.SampleMetadata(sample);
  items.push_back({"CompleteFunctionBlock", source.FunctionText(sample, function)});
  EXPECT_TRUE(source.FunctionMetadata(sample, function).empty());
  for (const MetadataItem& item : items) {
    std::wstring value;
    const bool isDateTime = item.key == "AnalysisDateTime";
    EXPECT_TRUE(server.GetMetadataValue(sample, function, platform::FromNativePath(item.key), value));
    const std::string held = item.value.value_or(isDateTime ? "T" : "");
    EXPECT_EQ(isDateTime ? held + "+00:00" : held, Narrow(value)) << item.key;  // a zone that no report has
  }
}

void ExpectSameFunction(Source& source, CDataServerImpl& server, int sample, int function) {
  const Function& ours = source.Functions(sample)[static_cast<std::size_t>(function)];
  EXPECT_EQ(ours.name, Narrow(server.GetFunctionName(sample, function)));
  const std::map<int, FunctionKind> kinds = {{1, FunctionKind::kOther},
                                             {2, FunctionKind::kMs},
                                             {4, FunctionKind::kMsMs},
                                             {32, FunctionKind::kIonMonitoring}};
  EXPECT_EQ(ours.kind, kinds.at(server.GetFunctionKind(sample, function)));
  EXPECT_EQ(ours.msLevel, server.GetMSLevel(sample, function));
  EXPECT_EQ(static_cast<int>(ours.polarity), server.GetPolarity(sample, function));
  ASSERT_EQ(source.ScanCount(sample, function), server.GetScanCount(sample, function));
  for (int scan = 0; scan < source.ScanCount(sample, function); ++scan) {
    ExpectSamePoints(source, server, sample, function, scan);
    ScanPosition theirs;
    const auto precursor = source.FindPrecursor(sample, function, scan);
    ASSERT_EQ(precursor.has_value(),
              server.FindPrecursorScan(sample, function, scan, theirs.function, theirs.scan));
    if (!precursor) continue;
    EXPECT_EQ(precursor->function, theirs.function);
    EXPECT_EQ(precursor->scan, theirs.scan);
  }
  CZRChromatogram series;
  ASSERT_TRUE(server.GetTotalIonChromatogram(false, sample, function, series));
  ExpectSeries(source.TotalIons(sample, function), series);
  ASSERT_TRUE(server.GetBasePeakChromatogram(false, sample, function, series));
  ExpectSeries(source.BasePeaks(sample, function), series);
  const std::vector<Trace> traces = source.FunctionTraces(sample, function);
  ASSERT_EQ(static_cast<int>(traces.size()), server.GetFunctionTraceCount(sample, function));
  for (int trace = 0; trace < static_cast<int>(traces.size()); ++trace) {
    EXPECT_EQ(traces[static_cast<std::size_t>(trace)].name,
              Narrow(server.GetFunctionTraceName(sample, function, trace)));
    ASSERT_TRUE(server.GetFunctionTrace(sample, function, trace, series));
    ExpectSeries(source.ReadFunctionTrace(sample, function, trace), series);
  }
  ExpectSameMetadata(source, server, sample, function);
}

// Each question once, so the traces of samples without other functions are those of the first look.
void ExpectTheSlotsNumbers(Source& source, const std::wstring& path) {
  plugin::COpenLynxRptDataServerImpl server;
  ASSERT_TRUE(server.Open(path));
  ASSERT_EQ(source.SampleCount(), server.GetSampleCount());
  for (int sample = 0; sample < source.SampleCount(); ++sample) {
    SCOPED_TRACE(sample);
    EXPECT_EQ(source.SampleName(sample), Narrow(server.GetSampleName(sample)));
    const std::vector<Trace> traces = source.Traces(sample);
    ASSERT_EQ(static_cast<int>(traces.size()), server.GetTraceCount(sample));
    for (int trace = 0; trace < static_cast<int>(traces.size()); ++trace) {
      EXPECT_EQ(traces[static_cast<std::size_t>(trace)].name, Narrow(server.GetTraceName(sample, trace)));
      CZRChromatogram chromatogram;
      ASSERT_TRUE(server.GetTrace(sample, trace, chromatogram));
      ExpectSeries(source.ReadTrace(sample, trace), chromatogram);
    }
    ASSERT_EQ(static_cast<int>(source.Functions(sample).size()), server.GetFunctionCount(sample));
    for (int function = 0; function < static_cast<int>(source.Functions(sample).size()); ++function) {
      SCOPED_TRACE(function);
      ExpectSameFunction(source, server, sample, function);
    }
  }
}

TEST_F(ReportSourceTest, SampleReportHasTheSlotsNumbers) {
  const auto source = Open(sample::Report(LineEnd::kCrLf));
  EXPECT_EQ(source->SampleCount(), 3);
  EXPECT_EQ(source->Functions(0).size(), 3U);
  EXPECT_EQ(source->Traces(0).size(), 3U);
  ExpectTheSlotsNumbers(*source, directory_.WidePath("report.rpt"));
  EXPECT_TRUE(source->Findings().empty());
}

TEST_F(ReportSourceTest, MixedReportHasTheSlotsNumbers) {
  const auto source = Open(MixedReport());
  EXPECT_EQ(source->GetFormat(), Format::kReport);
  ASSERT_EQ(source->Functions(0).size(), 6U);
  EXPECT_EQ(source->Traces(0).size(), 2U);
  EXPECT_EQ(source->Traces(2).size(), 1U);
  ExpectTheSlotsNumbers(*source, directory_.WidePath("report.rpt"));
}

// The lists of the slots do not distinguish these from places.
TEST_F(ReportSourceTest, NumbersOfFunctionsCountEmptyAndAnalogOnes) {
  const auto numbersOf = [](Source& source) {
    std::vector<int> numbers;
    for (const Function& function : source.Functions(0)) numbers.push_back(function.id.number);
    return numbers;
  };
  const auto source = Open(MixedReport());
  EXPECT_EQ(numbersOf(*source), (std::vector<int>{1, 4, 5, 6, 7, 8}));
  const auto unnamed = Open(SampleBlock(FunctionBlock({}) + FunctionBlock(SpectrumAt("1"))));
  EXPECT_EQ(unnamed->Functions(0)[0].name, "Function 2");
}

TEST_F(ReportSourceTest, PointsAscendStably) {
  const auto source = Open(SampleBlock(
      FunctionOf("MS", SpectrumBlock(Line("BPI 100"), {{300, 1}, {100, 2}, {300, 3}, {200, 0}, {100, 4}}))));
  EXPECT_EQ(Points(*source, 0).mz, (Doubles{100, 100, 300, 300}));
  EXPECT_EQ(Points(*source, 0).intensities, (Doubles{2, 4, 1, 3}));
}

// Deliberate: "BPI 0" is shown as in the file, but 100 percent is still 100.
TEST_F(ReportSourceTest, ValuesThatTheFileLacksAreAbsent) {
  const auto source = Open(SampleBlock(FunctionOf(
      "MS", SpectrumBlock(Keys({{"Time", "1.5"}, {"BPI", "0"}, {"TIC", "9"}}), {{1, 2}}) +
                SpectrumBlock(Keys({{"Time", "soon"}, {"TIC", "many"}, {"Continuum", "FALSE"}}), {{1, 2}}))));
  const Scan full = source->ScanAt(0, 0, 0);
  EXPECT_EQ(full.minutes, 1.5);
  EXPECT_EQ(full.endMinutes, 1.5);
  EXPECT_EQ(full.totalIntensity, 9.0);
  EXPECT_EQ(full.basePeakIntensity, 0.0);
  EXPECT_EQ(IsCentroided(full), false);
  EXPECT_FALSE(full.precursorMz);
  const Scan bare = source->ScanAt(0, 0, 1);
  EXPECT_TRUE(std::isnan(bare.minutes));
  EXPECT_FALSE(bare.totalIntensity);
  EXPECT_FALSE(bare.basePeakIntensity);
  EXPECT_EQ(IsCentroided(bare), true);
  EXPECT_EQ(source->Minutes(0, 0)[0], 1.5);
  EXPECT_TRUE(std::isnan(source->Minutes(0, 0)[1]));
  EXPECT_EQ(source->TotalIons(0, 0).intensities[0], 9.0);
  EXPECT_TRUE(std::isnan(source->TotalIons(0, 0).intensities[1]));
  EXPECT_EQ(source->BasePeaks(0, 0).intensities[0], 0.0);
  EXPECT_TRUE(std::isnan(source->BasePeaks(0, 0).intensities[1]));
  EXPECT_EQ(Points(*source, 0).intensities, (Doubles{2}));
}

TEST_F(ReportSourceTest, EmptySpectrumIsASpectrum) {
  const auto source = Open(SampleBlock(FunctionOf("MS", SpectrumAt("4", {}) + SpectrumAt("5", {{1, 0}}))));
  ASSERT_EQ(source->ScanCount(0, 0), 2);
  EXPECT_EQ(source->ScanAt(0, 0, 0).points, 0U);
  for (int scan = 0; scan < 2; ++scan) {
    EXPECT_EQ(source->ScanAt(0, 0, scan).minutes, 4 + scan);
    EXPECT_TRUE(Points(*source, scan).mz.empty());
  }
}

struct ListCase {
  std::string lines;
  std::uint32_t room;
  Doubles mz;
};

// Lines are counted without reading their numbers, so there may be room for more points than exist; a line of
// more than 999 bytes counts as several.
TEST_F(ReportSourceTest, RoomIsMadeForEachLineThatMayBeAPoint) {
  const std::vector<ListCase> cases = {
      {"", 0, {}},
      {"{\n", 0, {}},
      {";1 2\n", 0, {}},
      {"1 2\n3 4\n", 2, {1, 3}},
      {"3 4 7\n1 2 5 6\n", 2, {1, 3}},
      {"3 4\n1 2 5 6\n", 2, {3}},  // two lines that have become one
      {"1 0\n-1 2\nmass 5\n7\n8 9\n", 5, {8}},
      {"1 2" + std::string(996, ' ') + "3 4\n", 2, {1, 3}},
  };
  for (const ListCase& each : cases) {
    SCOPED_TRACE(each.lines);
    const auto source =
        Open("[SAMPLE]\n{\n[FUNCTION]\n{\nType MS\n[SPECTRUM]\n{\n[MS]\n" + each.lines + "}\n9 9\n}\n}\n");
    const std::uint32_t room = source->ScanAt(0, 0, 0).points;
    EXPECT_EQ(room, each.room);
    Doubles mz(room);
    Doubles intensities(room);
    const PointsRead read = source->ReadPoints(0, 0, 0, std::span(mz), std::span(intensities));
    mz.resize(read.count);
    EXPECT_EQ(mz, each.mz);
  }
}

// One scan is remembered; requesting another in between changes nothing.
TEST_F(ReportSourceTest, ValuesAfterTheListCount) {
  const ReportLines late =
      Block("[SPECTRUM]", Block("[MS]", Line("5 50")) + Keys({{"Time", "3"}, {"TIC", "8"}, {"BPI", "10"}}));
  const auto source = Open(SampleBlock(FunctionOf("MS", late + SpectrumAt("4", {{6, 25}, {7, 50}}))));
  for (int round = 0; round < 2; ++round) {
    const Scan scan = source->ScanAt(0, 0, 0);
    EXPECT_EQ(scan.minutes, 3);
    EXPECT_EQ(scan.totalIntensity, 8.0);
    EXPECT_EQ(scan.points, 1U);
    EXPECT_EQ(Points(*source, 1).intensities, (Doubles{50, 100}));
    EXPECT_EQ(Points(*source, 0).intensities, (Doubles{5}));
  }
}

TEST_F(ReportSourceTest, IonsAndReactionsAreDistinguished) {
  const auto source =
      Open(SampleBlock(FunctionOf("SIM of 3", SpectrumAt("1")) + FunctionOf("MRM", SpectrumAt("1"), "ES") +
                       FunctionOf("MS", SpectrumAt("1"), "ES-")));
  const auto functions = source->Functions(0);
  ASSERT_EQ(functions.size(), 3U);
  EXPECT_EQ(functions[0].monitoring, Monitoring::kIons);
  EXPECT_EQ(functions[1].monitoring, Monitoring::kReactions);
  EXPECT_EQ(functions[2].monitoring, Monitoring::kNone);
  EXPECT_EQ(functions[0].polarity, Polarity::kPositive);
  EXPECT_EQ(functions[1].polarity, Polarity::kUnknown);
  EXPECT_EQ(functions[2].polarity, Polarity::kNegative);
}

TEST_F(ReportSourceTest, MetadataOfTheSampleNeedNoFunction) {
  const auto source =
      Open(SampleBlock(Line("UserName Zo\xEB")) + SampleBlock(FunctionOf("MS", SpectrumAt("1"))));
  const std::vector<MetadataItem> items = source->SampleMetadata(0);
  ASSERT_EQ(items.size(), 5U);
  EXPECT_EQ(items[1].key, "OperatorName");
  EXPECT_EQ(items[1].value, "Zo\xC3\xAB");
  EXPECT_TRUE(source->Functions(0).empty());
  EXPECT_EQ(source->SampleMetadata(1)[1].value, std::nullopt);
  EXPECT_EQ(source->SampleMetadata(0)[1].value, "Zo\xC3\xAB");
  EXPECT_TRUE(source->FunctionText(1, 0)->starts_with("[FUNCTION]\n{\n"));
}

// The content of a function.
struct Content {
  int number = 0;
  Doubles minutes;
  std::vector<std::string> traces;
  std::size_t lines = 0;  // of its text
};

std::vector<Content> ContentsOf(Source& source) {
  std::vector<Content> contents;
  for (int function = 0; function < static_cast<int>(source.Functions(0).size()); ++function) {
    const std::string text = source.FunctionText(0, function).value_or("");
    Content& content = contents.emplace_back();
    content.number = source.Functions(0)[static_cast<std::size_t>(function)].id.number;
    content.minutes = source.Minutes(0, function);
    for (const Trace& trace : source.FunctionTraces(0, function)) content.traces.push_back(trace.name);
    content.lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  }
  return contents;
}

// The closing brace of the first function is missing, so a host sees the blocks of all functions in it.
TEST_F(ReportSourceTest, BlockCountsForTheInnermostFunction) {
  const auto function = [](const char* time) {
    return FunctionOf("MS", SpectrumAt(time) + TraceOf(std::string("t") + time));
  };
  std::string text = ReportText(SampleBlock(function("1") + function("2") + AnalogFunction(TraceOf("pump")) +
                                            FunctionOf("MS", {}) + function("3")));
  const std::size_t whole = text.size();
  text.erase(text.find("[FUNCTION]", text.find("[FUNCTION]") + 1) - 2, 2);
  ASSERT_EQ(text.size(), whole - 2);
  const auto source = Open(text);
  const std::vector<Content> contents = ContentsOf(*source);
  ASSERT_EQ(contents.size(), 3U);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    EXPECT_EQ(contents[i].number, (std::vector{1, 2, 5})[i]);
    EXPECT_EQ(contents[i].minutes, Doubles{static_cast<double>(i) + 1});
    EXPECT_EQ(contents[i].traces, std::vector{"t" + std::to_string(i + 1)});
    EXPECT_EQ(contents[i].lines, i == 0 ? 25U : 26U);
  }
  EXPECT_EQ(source->Traces(0).size(), 1U);
  plugin::COpenLynxRptDataServerImpl server;
  ASSERT_TRUE(server.Open(directory_.WidePath("report.rpt")));
  EXPECT_EQ(server.GetScanCount(0, 0), 3);
  EXPECT_EQ(server.GetFunctionTraceCount(0, 0), 4);
}

// After the inner function's end the outer one continues.
TEST_F(ReportSourceTest, FunctionContinuesAfterAFunctionInIt) {
  const ReportLines inner = FunctionOf("MS2", SpectrumAt("3"));
  const auto source = Open(SampleBlock(FunctionOf("MS", SpectrumAt("1") + inner + SpectrumAt("2"))));
  const std::vector<Content> contents = ContentsOf(*source);
  ASSERT_EQ(contents.size(), 2U);
  EXPECT_EQ(contents[0].minutes, (Doubles{1, 2}));
  EXPECT_EQ(contents[1].minutes, (Doubles{3}));
  const auto precursor = source->FindPrecursor(0, 1, 0);
  ASSERT_TRUE(precursor);
  EXPECT_EQ(precursor->function, 0);
  EXPECT_EQ(precursor->scan, 1);
}

// A chromatogram in an analog function that does not end is also inside the earlier ones.
TEST_F(ReportSourceTest, TraceInSeveralFunctionsIsOne) {
  const std::string open = "[FUNCTION]\n{\nDescription ANALOG\n";
  const auto source =
      Open("[SAMPLE]\n{\n" + open + ReportText(TraceOf("a")) + open + ReportText(TraceOf("b")));
  const std::vector<Trace> traces = source->Traces(0);
  ASSERT_EQ(traces.size(), 2U);
  EXPECT_EQ(traces[0].name, "a");
  EXPECT_EQ(traces[1].name, "b");
  EXPECT_EQ(traces[1].number, 2);
}

// Each question by itself, then all of them backwards and again.
TEST_F(ReportSourceTest, OrderOfQuestionsDoesNotMatter) {
  const std::string path = Write(ReportText(MixedReport()));
  const std::vector<std::function<double(Source&)>> questions = {
      [](Source& source) { return source.Traces(2).size(); },
      [](Source& source) { return source.Functions(2).size(); },
      [](Source& source) { return source.Functions(0).size(); },
      [](Source& source) { return source.Functions(0)[1].id.number; },
      [](Source& source) { return source.ScanCount(0, 1); },
      [](Source& source) { return source.ScanAt(0, 1, 0).minutes; },
      [](Source& source) { return Points(source, 1).mz.front(); },
      [](Source& source) { return source.ScanAt(0, 0, 1).points; },
      [](Source& source) { return source.FindPrecursor(0, 1, 0).has_value() ? 1 : 0; },
      [](Source& source) { return source.Traces(0).size(); },
      [](Source& source) { return source.ReadTrace(2, 0).intensities.back(); },
      [](Source& source) { return source.FunctionText(0, 1)->size(); },
      [](Source& source) { return source.Findings().size(); },
      [](Source& source) { return source.SampleCount(); },
  };
  Doubles alone;
  for (const auto& question : questions) alone.push_back(question(*OpenReport(path)));
  EXPECT_EQ(alone[0], 1);
  EXPECT_EQ(alone[3], 4);
  EXPECT_EQ(alone[6], 200);
  const auto source = OpenReport(path);
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = questions.size(); i-- > 0;) EXPECT_EQ(questions[i](*source), alone[i]) << i;
    for (std::size_t i = 0; i < questions.size(); ++i) EXPECT_EQ(questions[i](*source), alone[i]) << i;
  }
}

// Among functions of level 1 with the same polarity and kind of spectra, the last of the closest scans
// counts.
TEST_F(ReportSourceTest, PrecursorIsTheClosestScanBefore) {
  const ReportLines survey = FunctionOf("MS", SpectrumAt("1") + SpectrumAt("2") + SpectrumAt("3"));
  const ReportLines product = FunctionOf("MS2", SpectrumAt("2.5") + SpectrumAt("0.5"));
  const auto source = Open(SampleBlock(FunctionOf("MS", {}) + survey + product));
  const auto found = source->FindPrecursor(0, 1, 0);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->function, 0);
  EXPECT_EQ(found->scan, 1);
  EXPECT_FALSE(source->FindPrecursor(0, 1, 1));
  EXPECT_FALSE(source->FindPrecursor(0, 0, 2));
}

TEST_F(ReportSourceTest, PositionsOutOfRangeThrow) {
  const auto source = Open(MixedReport());
  EXPECT_THROW(source->SampleName(3), Error);
  EXPECT_THROW(source->Functions(-1), Error);
  EXPECT_THROW(source->ScanCount(0, 6), Error);
  EXPECT_THROW(source->ScanAt(0, 0, 2), Error);
  EXPECT_THROW(source->ReadTrace(0, 2), Error);
  EXPECT_THROW(source->ReadFunctionTrace(0, 1, 0), Error);
}

struct Damage {
  std::string text;
  std::optional<FindingCode> code;
  std::string problem = {};
  int sample = 0;
};

// The sound report, and each damaging edit next to a harmless one.
TEST_F(ReportSourceTest, FindingsAreOfBlocksThatDoNotEnd) {
  const std::string first = ReportText(SampleBlock(FunctionOf("MS", SpectrumAt("1"))));
  const auto without = [&](std::size_t braces) { return first.substr(0, first.size() - 2 * braces); };
  const std::vector<Damage> cases = {
      {first + first, {}},
      {first + "text behind\n", {}},
      {first + without(1), FindingCode::kReportCut, "ends inside 1 block", 2},
      {first + without(4), FindingCode::kReportCut, "ends inside 4 blocks", 2},
      {first + "[SAMPLE]\n", FindingCode::kReportCut, "ends where its last sample begins", 2},
      {first + "[SAMPLE]\nno brace\n", FindingCode::kBlockUnopened,
       "has a marker without a line that begins with { behind it: line " +
           std::to_string(1 + std::count(first.begin(), first.end(), '\n')) + " ([SAMPLE])",
       2},
      {without(1) + first, FindingCode::kSampleUnended, "has no end of sample 1", 1},
      {first + without(2) + first, FindingCode::kSampleUnended, "has no end of sample 2", 2},
  };
  for (const Damage& damage : cases) {
    SCOPED_TRACE(damage.text);
    const auto source = Open(damage.text);
    const auto findings = source->Findings();
    ASSERT_EQ(findings.size(), damage.code ? 1U : 0U);
    EXPECT_EQ(source->Findings().size(), findings.size());
    if (!damage.code) continue;
    EXPECT_EQ(findings[0].code, *damage.code);
    EXPECT_EQ(findings[0].file, "report.rpt");
    EXPECT_EQ(findings[0].problem, damage.problem);
    EXPECT_EQ(findings[0].subject.kind, FindingSubject::Kind::kSample);
    EXPECT_EQ(findings[0].subject.sample, damage.sample);
  }
}

TEST_F(ReportSourceTest, SeveralFindingsAreOnePerSample) {
  const auto source = Open("[SAMPLE]\n{\n[SAMPLE]\n{\n[SAMPLE]\n{\n");
  const auto findings = source->Findings();
  ASSERT_EQ(findings.size(), 3U);
  EXPECT_EQ(findings[0].subject.sample, 1);
  EXPECT_EQ(findings[1].problem, "has no end of sample 2");
  EXPECT_EQ(findings[2].problem, "ends inside 1 block");
}

TEST_F(ReportSourceTest, ReportsAreRecognisedAsInTheSlots) {
  const std::string report = "[SAMPLE]\n{\n}\n";
  EXPECT_NE(OpenReport(Write(report, "a.rpt")), nullptr);
  EXPECT_NE(OpenReport(Write(report, "a.RpT")), nullptr);
  EXPECT_NE(OpenReport(Write(std::string(9, '\n') + report, "a.rpt")), nullptr);
  EXPECT_EQ(OpenReport(Write(std::string(10, '\n') + report, "a.rpt")), nullptr);
  EXPECT_EQ(OpenReport(Write(report, "a.txt")), nullptr);
  EXPECT_EQ(OpenReport(Write("", "a.rpt")), nullptr);
  EXPECT_EQ(OpenReport("rpt"), nullptr);
  EXPECT_EQ(OpenReport(Write(report, "missing.rpt") + ".rpt"), nullptr);
  directory_.MakeDirectory("folder.rpt");
  EXPECT_EQ(OpenReport((directory_.Path() / "folder.rpt").string()), nullptr);
}

TEST_F(ReportSourceTest, PathIsTheOneGiven) {
  const std::string path = Write("[SAMPLE]\n{\n}\n");
  EXPECT_EQ(OpenReport(path)->Path(), path);
}

}  // namespace
}  // namespace zrml::source
