// What zrml check and zrml convert make of the same damage: the same status, and never silence.
#include <algorithm>

#include <nlohmann/json.hpp>

#include "tests/support/report_writer.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class DamageAgreementTest : public ZrmlTest {
 protected:
  // Two functions, the first of products with statistics, and two kinds of traces.
  static RawDirectoryBuilder Sound(bool hasAnalogs) {
    RawDirectoryBuilder raw = SoundDirectory();
    raw.functions[0].record.type = 16;  // TOF MS/MS
    for (ScanFiles& scan : raw.functions[0].scans)
      scan.statistics = {.auxValue = 30, .precursorMass = 445, .precursorFlags = 1};
    const std::vector<TracePoint> points = {{0.05F, 2}, {0.1F, 2.1F}, {0.2F, 2.2F}, {0.3F, 2.3F}};
    if (!hasAnalogs) raw.chroms = {{"pressure", points}};
    if (hasAnalogs) raw.analogNames = {"pressure"};
    for (const TracePoint& point : points) raw.analogs.push_back({point.time, {0x1238}});
    return raw;
  }

  // A word each: "lost", "suspect" or "note".
  static std::string SeverityIn(const std::string& output) {
    for (const std::string severity : {"lost", "suspect", "note"}) {
      if (("\n" + output).find("\n" + severity + ": ") != std::string::npos) return severity;
    }
    return {};
  }

  void ExpectAgreement(const std::string& path) const {
    const ProcessResult checked = Run({"check", path});
    const ProcessResult converted = Run({"convert", path, "--stdout"});
    const std::string severity = SeverityIn(checked.output);
    EXPECT_NE(severity, "") << checked.output;
    EXPECT_EQ(checked.status, severity == "lost" ? 7 : 0) << checked.output;
    EXPECT_EQ(converted.status, checked.status) << converted.errors;
    EXPECT_NE(converted.errors, "");
    EXPECT_EQ(Run({"check", path, "--strict"}).status, 7);
    EXPECT_EQ(Run({"convert", path, "--stdout", "--strict"}).status, 7);
    EXPECT_EQ(Run({"convert", path, "--stdout", "--damaged"}).status, 0);
  }
};

struct ZeroedFile {
  const char* name;
  std::vector<std::size_t> fromEnd;  // how many bytes are zeros
};

// Layout 9, 6 bytes a point; records of 22 bytes in the index, of 32 in the statistics, of 8 and 6 in traces.
TEST_F(DamageAgreementTest, ZerosAtTheEndOfEachFile) {
  const ZeroedFile files[] = {{"_FUNC001.DAT", {1, 2, 3, 5, 6, 7, 11, 12, 13, 36}},
                              {"_FUNC001.IDX", {7, 8, 9, 10, 12, 22, 30, 44, 66}},
                              {"_FUNC001.STS", {32, 64, 96, 200}},
                              {"_FUNCTNS.INF", {416, 832}},
                              {"_ANALOGS.DAT", {1, 2, 3, 5, 6, 7, 12, 18}},
                              {"_ANALOGS.INF", {85}},
                              {"_CHRO001.DAT", {1, 3, 4, 5, 7, 8, 9, 24, 32}},
                              {"_CHROMS.INF", {85, 93}}};
  for (const ZeroedFile& file : files) {
    const RawDirectoryBuilder raw = Sound(std::string_view(file.name).starts_with("_A"));
    EXPECT_EQ(Run({"check", Argument(raw.Build().Path()), "--strict"}).status, 0) << "the control";
    for (const std::size_t count : file.fromEnd) {
      SCOPED_TRACE(testing::Message() << file.name << ' ' << count);
      const TempDirectory directory = raw.Build();
      directory.Edit(file.name, [count](FileBytes& bytes) {
        std::fill_n(bytes.rbegin(), static_cast<std::ptrdiff_t>(count), std::byte{0});
      });
      ExpectAgreement(Argument(directory.Path()));
    }
  }
}

ReportLines SampleWith(const std::string& basePeak, const std::string& point) {
  return SampleBlock(
      FunctionBlock(Keys({{"Type", "MS"}}) +
                    Block("[SPECTRUM]", Keys({{"Time", "0.5"}, {"BPI", basePeak}}) + Line("[MS]") +
                                            Line("{") + Line("100.5\t100") + Line(point) + Line("}"))));
}

TEST_F(DamageAgreementTest, LinesOfAReport) {
  const std::pair<const char*, const char*> cases[] = {
      {"1000", "200.5;50.25"}, {"1000", "200.5"}, {"1000", "200.5\tabc"}, {"abc", "200.5\t50.25"}};
  const auto write = [&](const std::string& basePeak, const std::string& point) {
    MakeFile("report.rpt", ReportText(SampleWith(basePeak, point)));
    return Path("report.rpt");
  };
  EXPECT_EQ(Run({"check", write("1000", "200.5\t50.25"), "--strict"}).status, 0);
  for (const auto& [basePeak, point] : cases) {
    SCOPED_TRACE(point);
    ExpectAgreement(write(basePeak, point));
    EXPECT_EQ(Run({"check", Path("report.rpt")}).status, 7);
  }
}

// It is not another source of the same name.
TEST_F(DamageAgreementTest, SourceThatIsGivenTwiceIsConvertedOnce) {
  const TempDirectory directory = SoundDirectory().Build();
  const std::string path = Argument(directory.Path());
  const std::string other = path + "/../" + directory.Path().filename().string();
  const ProcessResult result = Run({"convert", path, path, other, "-o", Path("out")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, Path("out") + "/acquisition.mzML\n");
  EXPECT_EQ(result.errors, "zrml: " + path + " is given twice, which is converted once\nzrml: " + other +
                               " and " + path + " are the same source, which is converted once\n");
  EXPECT_EQ(Run({"convert", path, path + "/", "-o", Path("quiet"), "-q"}).errors, "");
}

// The second of two samples has lost a point.
TEST_F(DamageAgreementTest, LogHasTheFindingsOfASampleThatIsRefused) {
  MakeFile("plate.rpt", ReportText(SampleWith("1000", "200.5\t50.25") + SampleWith("1000", "200.5")));
  const std::string log = Path("log.jsonl");
  EXPECT_EQ(Run({"convert", Path("plate.rpt"), "-o", Path("out"), "--log", log}).status, 8);
  const auto line = nlohmann::json::parse(ReadBytes(folder_ / "log.jsonl"));
  EXPECT_EQ(line["status"], "failed");
  ASSERT_EQ(line["findings"].size(), 1U);
  const std::string finding = line["findings"][0];
  EXPECT_TRUE(finding.starts_with("plate.rpt has a point of which only one number is read: line "))
      << finding;
}

}  // namespace
}  // namespace zrml::test
