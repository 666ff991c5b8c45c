// The chromatograms of a conversion: total ion currents, channels of ion monitoring, traces.
#include <limits>

#include "tests/convert/memory_conversion.h"

namespace zrml::convert::test {
namespace {

// Two channels, at 100 and 200.5, at 0.5 and 1 minutes.
FakeFunction Monitored(int number, source::Monitoring monitoring) {
  FakeFunction function;
  function.info.id.number = number;
  function.info.name = "Ions";
  function.info.monitoring = monitoring;
  function.scans = {{.minutes = 0.5, .points = {{100, 200.5}, {7, 8}}},
                    {.minutes = 1, .points = {{100, 200.5}, {9, 10}}}};
  return function;
}

// The total ion current is that of the survey function, and each function's own stands beside it; a trace's
// name that says pressure and one that says UV.
TEST_F(ConvertTest, ChromatogramsOfRunAndTraces) {
  const std::string output = Converted(Of("1,2"));
  ExpectHas(output, "<chromatogramList count=\"5\" ");
  ExpectHas(output, R"(<chromatogram index="0" id="TIC" defaultArrayLength="3">
<cvParam cvRef="MS" accession="MS:1000235" name="total ion current chromatogram"/>
)");
  // 0.5, 1, 1.5: 0x3F000000, 0x3F800000, 0x3FC00000; 1.125, 2: 0x3F900000, 0x40000000
  EXPECT_EQ(Count(output, "<binary>AAAAPwAAgD8AAMA/<"), 2U);
  EXPECT_EQ(Count(output, "<binary>AACQPwAAAEA=<"), 1U);
  ExpectHas(output, "<chromatogram index=\"1\" id=\"function 1 TIC\" defaultArrayLength=\"3\">");
  ExpectHas(output, "<chromatogram index=\"2\" id=\"function 2 TIC\" defaultArrayLength=\"2\">");
  ExpectHas(output, R"(<chromatogram index="3" id="trace 1: Pressure" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1003019" name="pressure chromatogram"/>
)");
  // The control character of the name is none that XML has.
  ExpectHas(output,
            "id=\"trace 2: UV\xEF\xBF\xBD[31m 254\" defaultArrayLength=\"2\">\n"
            "<cvParam cvRef=\"MS\" accession=\"MS:1000812\" name=\"absorption chromatogram\"/>\n");
}

TEST_F(ConvertTest, TracesOfFunctionsAreThoseOfConvertedOnes) {
  data_.functionTraces[0] = {{"Channel 1", {"", {0.5}, {7}}}, {"", {"", {}, {}}}};
  data_.functionTraces[1] = {{"Channel 2", {"", {0.5}, {7}}}};
  const std::string output = Converted(Of("1"));
  ExpectHas(output, "id=\"function 1 trace 1: Channel 1\" defaultArrayLength=\"1\"");
  ExpectHas(output, "id=\"function 1 trace 2\" defaultArrayLength=\"0\"");
  ExpectLacks(output, "Channel 2");
}

// No file tells the second scan's; or none of them.
TEST_F(ConvertTest, TotalThatIsNotKnownIsLeftOut) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  data_.functions[0].totals = {4, kNan, 6};
  ExpectHas(Converted(Of("1")), "id=\"TIC\" defaultArrayLength=\"2\"");
  data_.functions[0].totals = {kNan, kNan, kNan};
  ExpectLacks(Converted(Of("1")), "TIC");
  ExpectLacks(Converted(Of("1")), "total ion current chromatogram");
}

// The second scan of a survey and of ions, and a point of a trace, have none. What is left is at 0.5 and 1.5
// minutes, 0x3F000000 and 0x3FC00000.
TEST_F(ConvertTest, PointsThatHaveLostTheirTimeAreLeftOut) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  Scan(0, 1).minutes = kNan;
  data_.functions.push_back(Monitored(9, source::Monitoring::kIons));
  data_.functions.back().scans[1].minutes = kNan;
  data_.traces[0].points = {"", {0.5, kNan}, {7, 8}};
  const std::string output = Converted(Of("1,9"));
  for (const char* id : {"TIC", "function 1 TIC"})
    ExpectHas(output, "id=\"" + std::string(id) + "\" defaultArrayLength=\"2\"");
  EXPECT_EQ(Count(output, "<binary>AAAAPwAAwD8=<"), 2U);
  for (const char* id : {"function 9 TIC", "function 9 channel 1: 100", "trace 1: Pressure"})
    ExpectHas(output, "id=\"" + std::string(id) + "\" defaultArrayLength=\"1\"");
}

// As that of the run: 0.5, 1 and 1.5 minutes, 0x3F000000, 0x3F800000 and 0x3FC00000. The totals are 2, 1 and
// 3: 0x40000000, 0x3F800000 and 0x40400000.
TEST_F(ConvertTest, TotalsOfScansOutOfOrderAreByTime) {
  data_.functions[0].scans[0].minutes = 1;
  data_.functions[0].scans[1].minutes = 0.5;
  data_.functions[0].totals = {1, 2, 3};
  const std::string output = Converted(Of("1"));
  EXPECT_EQ(Count(output, "<binary>AAAAPwAAgD8AAMA/<"), 2U);
  EXPECT_EQ(Count(output, "<binary>AAAAQAAAgD8AAEBA<"), 2U);
}

// Functions of fragments, of the other polarity, of ion monitoring, and processed ones are not in it.
TEST_F(ConvertTest, TotalIonCurrentIsThatOfSurveysOfOnePolarity) {
  data_.functions.push_back(data_.functions[0]);
  data_.functions.push_back(data_.functions[0]);
  data_.functions.push_back(data_.functions[0]);
  data_.functions.push_back(Monitored(9, source::Monitoring::kIons));
  data_.functions[4].info.id.number = 6;
  data_.functions[5].info.id.number = 7;
  data_.functions[5].info.polarity = source::Polarity::kNegative;
  data_.functions[6].info.id = {.number = 1, .process = 1};
  data_.functions[4].scans[0].minutes = 0.75;  // the others are at 0.5, 1 and 1.5; 1 and 1.5
  const std::string output = Converted(Of("1,2,6,7,9,p1"));
  ExpectHas(output, "id=\"TIC\" defaultArrayLength=\"6\"");
  // 0.5, 0.75, 1, 1, 1.5, 1.5: 0x3F000000, 0x3F400000, 0x3F800000 twice, 0x3FC00000 twice
  ExpectHas(output, "<binary>AAAAPwAAQD8AAIA/AACAPwAAwD8AAMA/<");
  for (const char* function : {"1", "2", "6", "7", "9", "p1"})
    ExpectHas(output, "id=\"function " + std::string(function) + " TIC\"");
}

// 100 and 200.5 at 0.5 and 1 minutes. Their masses and intensities, one of the points lost from none.
TEST_F(ConvertTest, MonitoredIonsAreChromatograms) {
  data_.functions = {Monitored(1, source::Monitoring::kIons)};
  const std::string output = Converted(Of("1"));
  EXPECT_EQ(Count(output, "<spectrum "), 0U);
  ExpectHas(output,
            "<cvParam cvRef=\"MS\" accession=\"MS:1001472\" "
            "name=\"selected ion monitoring chromatogram\"/>\n</fileContent>");
  ExpectLacks(output, "id=\"TIC\"");
  // 0.5 and 1 minutes are 0x3F000000 and 0x3F800000; 7 and 9 are 0x40E00000 and 0x41100000
  ExpectHas(output, R"(id="function 1 channel 1: 100" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1001472" name="selected ion monitoring chromatogram"/>
<userParam name="function name" type="xsd:string" value="Ions"/>
<precursor>
<isolationWindow>
<cvParam cvRef="MS" accession="MS:1000827" name="isolation window target m/z" value="100" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
</isolationWindow>
<activation/>
</precursor>
<binaryDataArrayList count="2">
<binaryDataArray encodedLength="12">
<cvParam cvRef="MS" accession="MS:1000521" name="32-bit float"/>
<cvParam cvRef="MS" accession="MS:1000576" name="no compression"/>
<cvParam cvRef="MS" accession="MS:1000595" name="time array" unitCvRef="UO" unitAccession="UO:0000031" unitName="minute"/>
<binary>AAAAPwAAgD8=</binary>
</binaryDataArray>
<binaryDataArray encodedLength="12">
<cvParam cvRef="MS" accession="MS:1000521" name="32-bit float"/>
<cvParam cvRef="MS" accession="MS:1000576" name="no compression"/>
<cvParam cvRef="MS" accession="MS:1000515" name="intensity array" unitCvRef="MS" unitAccession="MS:1000131" unitName="number of detector counts"/>
<binary>AADgQAAAEEE=</binary>
</binaryDataArray>
</binaryDataArrayList>
</chromatogram>
)");
  ExpectHas(output, "id=\"function 1 channel 2: 200.5\" defaultArrayLength=\"2\"");
}

// They are what was measured, whatever is left of the spectra.
TEST_F(ConvertTest, FiltersLeaveMonitoredIonsAlone) {
  data_.functions = {Monitored(1, source::Monitoring::kIons)};
  Options options = Of("1");
  options.selection.hasMonitoredSpectra = true;
  options.selection.points.filter.top = 1;
  const std::string output = Converted(options);
  for (const char* const channel : {"1: 100", "2: 200.5"})
    ExpectHas(output, "id=\"function 1 channel " + std::string(channel) + "\" defaultArrayLength=\"2\"");
  EXPECT_EQ(Count(output, "defaultArrayLength=\"1\""), 2U);  // the spectra
}

// The files tell one m/z of a reaction, and not whose.
TEST_F(ConvertTest, MonitoredReactionsAreChromatogramsWithoutPrecursor) {
  data_.functions = {Monitored(1, source::Monitoring::kReactions)};
  const std::string output = Converted(Of("1"));
  ExpectHas(output, R"(id="function 1 channel 2: 200.5" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1001473" name="selected reaction monitoring chromatogram"/>
<userParam name="function name" type="xsd:string" value="Ions"/>
<userParam name="channel m/z" type="xsd:string" value="200.5"/>
<binaryDataArrayList count="2">
)");
  ExpectLacks(output, "<precursor>");
}

TEST_F(ConvertTest, MonitoredSpectraAreWrittenOnRequest) {
  data_.functions = {Monitored(1, source::Monitoring::kIons), Monitored(2, source::Monitoring::kReactions)};
  Options options = Of("1,2");
  options.selection.hasMonitoredSpectra = true;
  const std::string output = Converted(options);
  EXPECT_EQ(Count(output, "<spectrum "), 4U);
  EXPECT_EQ(Count(output,
                  "name=\"SIM spectrum\"/>\n<cvParam cvRef=\"MS\" accession=\"MS:1000511\" "
                  "name=\"ms level\" value=\"1\"/>"),
            2U);
  EXPECT_EQ(Count(output,
                  "name=\"SRM spectrum\"/>\n<cvParam cvRef=\"MS\" accession=\"MS:1000511\" "
                  "name=\"ms level\" value=\"2\"/>"),
            2U);
  ExpectLacks(output, "MS1 spectrum");
  ExpectHas(output, "id=\"function 1 channel 1: 100\"");
}

// Another number of points, or another mass, in one scan; or no points at all.
TEST_F(ConvertTest, ScansThatDoNotAgreeHaveNoChannels) {
  const std::vector<FakePoints> others = {{{100}, {7}}, {{100, 200.25}, {7, 8}}, {}};
  for (const FakePoints& points : others) {
    data_.functions = {Monitored(1, source::Monitoring::kIons)};
    Scan(0, 1).points = points;
    const std::string output = Converted(Of("1"));
    EXPECT_EQ(Count(output, "name=\"SIM spectrum\"/>\n<cvParam cvRef=\"MS\" accession=\"MS:1000511\""), 2U);
    ExpectLacks(output, "channel");
  }
}

// A list of levels means surveys and fragments.
TEST_F(ConvertTest, MonitoringHasNoMsLevelUnlessItsFunctionIsNamed) {
  data_.functions[0] = Monitored(1, source::Monitoring::kIons);
  data_.functions[1] = Monitored(2, source::Monitoring::kReactions);
  const auto channels = [&](const char* functions, const char* levels) {
    Options options = Of(functions);
    if (*functions == '-') options.selection.functions = {};
    options.selection.msLevels = NumberSet::Parse(levels).value();
    return Count(Converted(options), " channel ");
  };
  Options options = Of("1");
  options.selection.functions = {};
  options.selection.msLevels = NumberSet::Parse("1-").value();
  ExpectLacks(Converted(options), " channel ");
  EXPECT_EQ(channels("1,2", "1"), 2U);
  EXPECT_EQ(channels("1,2", "2"), 2U);
  EXPECT_EQ(channels("1,2", "1-"), 4U);
  options = As(Format::kTsv, options);
  EXPECT_EQ(Count(Converted(options), "\n") - 1, 3U);  // the scan of function 5
}

// Of a scan that has lost its first point the second one is left, and of one that cannot be read none.
TEST_F(ConvertTest, LostPointsOfChannelsAreAbsent) {
  data_.functions = {Monitored(1, source::Monitoring::kIons)};
  data_.functions[0].scans.push_back(
      {.minutes = 1.5, .points = {{100, 200.5}, {1, 2}}, .isUnreadable = true});
  Scan(0, 1).points = {{200.5}, {8}};
  Scan(0, 1).lost = 1;
  ExpectError(Of("1"), ErrorKind::kSourceDamaged, "cannot read all points of scan 2 of function 1");
  Options options = Of("1");
  options.isLossAllowed = true;
  Text out;
  const Result result = Convert(options, out);
  ExpectHas(out.text, "id=\"function 1 channel 1: 100\" defaultArrayLength=\"1\"");
  ExpectHas(out.text, "id=\"function 1 channel 2: 200.5\" defaultArrayLength=\"2\"");
  ASSERT_EQ(result.losses.size(), 2U);
  EXPECT_EQ(TextOf(result.losses[0]), "scans of function 1 that cannot be read: 1 (3)");
  EXPECT_EQ(TextOf(result.losses[1]), "scans of function 1 that have lost points: 1 (2)");
  options.selection.hasMonitoredSpectra = true;
  Text more;
  EXPECT_EQ(Convert(options, more).losses[0].numbers, std::vector{3});  // not once more for the spectra
}

// As of an index record that is zeros.
TEST_F(ConvertTest, ScansWithoutTimeAndPointsDoNotHideChannels) {
  data_.functions = {Monitored(1, source::Monitoring::kIons)};
  data_.functions[0].scans.push_back({.minutes = std::numeric_limits<double>::quiet_NaN()});
  const std::string output = Converted(Of("1"));
  ExpectHas(output, "id=\"function 1 channel 1: 100\" defaultArrayLength=\"2\"");
  ExpectHas(output, "id=\"function 1 channel 2: 200.5\" defaultArrayLength=\"2\"");
}

TEST_F(ConvertTest, TimeRangeCutsTracesToo) {
  Options options = Of("1");
  options.selection.minutes = ParseTimeRange("-0.75");
  const std::string output = Converted(options);
  ExpectHas(output, "id=\"TIC\" defaultArrayLength=\"1\"");
  ExpectHas(output, "id=\"trace 1: Pressure\" defaultArrayLength=\"1\"");
}

}  // namespace
}  // namespace zrml::convert::test
