// zrml plugin with a damaged source: what the slots read as it stands, and the source in part or not at all.
#include "tests/support/report_writer.h"
#include "tests/zrml/zrml_run.h"
#include "tools/zrml/plugin_comparison.h"

namespace zrml::test {
namespace {

using tool::kWanted;
using tool::Wanted;

class DamagedSourceComparisonTest : public ZrmlTest {
 protected:
  static ReportLines Function(const ReportLines& keys, const std::string& mass) {
    const ReportLines head = Keys({{"Time", "1"}, {"BPI", "100"}});
    const ReportLines list = Line("[MS]") + Line("{") + Line(mass + "\t50") + Line("}");
    return FunctionBlock(keys + Block("[SPECTRUM]", head + list));
  }
  static ReportLines Survey(const std::string& mass = "100") {
    return Function(Keys({{"Type", "MS"}}), mass);
  }

  static ReportLines Unended(const char* marker, const ReportLines& content) {
    return Line(marker) + Line("{") + content;
  }

  std::string Make(const ReportLines& lines) const {
    MakeFile("report.rpt", ReportText(lines));
    return Path("report.rpt");
  }

  // How often a plug-in without faults differs in this way.
  int CountOf(const Wanted& difference, const std::string& path) const {
    const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), path});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    const std::size_t at = result.output.find(difference.reason);
    if (at == std::string::npos) return 0;
    return std::stoi(result.output.substr(result.output.rfind('\n', at) + 1));
  }
};

// To the slots it has the name and the user of the second one. Both of its functions have these items.
TEST_F(DamagedSourceComparisonTest, SampleWithoutItsEnd) {
  const ReportLines second = SampleBlock(Keys({{"FileName", "second"}, {"UserName", "u"}}) + Survey());
  const std::string path = Make(Unended("[SAMPLE]", Keys({{"SampleID", "7"}}) + Survey()) + second);
  EXPECT_EQ(CountOf(kWanted.unendedSample, path), 3);
}

// One count for its scans and one for its traces.
TEST_F(DamagedSourceComparisonTest, DamageIsOfItsSample) {
  EXPECT_EQ(CountOf(kWanted.damagedText, Make(SampleBlock(Survey()) + SampleBlock(Survey()))), 0);
  EXPECT_EQ(CountOf(kWanted.damagedText, Make(SampleBlock(Survey()) + SampleBlock(Survey("100,5")))), 2);
}

// To the slots the first one has the type, the ion mode and the spectrum of the second one.
TEST_F(DamagedSourceComparisonTest, FunctionWithoutItsEnd) {
  const ReportLines products = Function(Keys({{"Type", "MS/MS"}, {"IonMode", "ES-"}}), "200");
  const ReportLines spectrum =
      Block("[SPECTRUM]", Keys({{"Time", "1"}}) + Line("[MS]") + Line("{") + Line("}"));
  EXPECT_EQ(CountOf(kWanted.unclosedFunction, Make(SampleBlock(Unended("[FUNCTION]", spectrum + products)))),
            2);
  const ReportLines analog = Function(Keys({{"Description", "ANALOG"}}), "200");
  EXPECT_EQ(CountOf(kWanted.unclosedFunction, Make(SampleBlock(Unended("[FUNCTION]", spectrum + analog)))),
            0);
}

// To the slots its time is 0, and a scan at 0 precedes it.
TEST_F(DamagedSourceComparisonTest, SpectrumWithoutATime) {
  const auto function = [](const char* type, const ReportLines& time) {
    return FunctionBlock(Keys({{"Type", type}}) +
                         SpectrumBlock(time + Keys({{"BPI", "1000"}}), {{200, 100}}));
  };
  const ReportLines untimed = function("MS/MS", {});
  const ReportLines survey = function("MS", Keys({{"Time", "0"}}));
  EXPECT_EQ(CountOf(kWanted.absentScanTime, Make(SampleBlock(untimed + survey))), 2);  // start and end
}

// The second of three records, which the source leaves out.
TEST_F(DamagedSourceComparisonTest, TraceWithZeros) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.analogNames = {};
  raw.analogs = {};
  raw.chroms = {{"pressure", {{0.5F, 2}, {0, 0}, {0.75F, 3}}}};
  EXPECT_EQ(CountOf(kWanted.zeroedTrace, ZrmlTest::Make("run.raw", raw)), 1);
}

}  // namespace
}  // namespace zrml::test
