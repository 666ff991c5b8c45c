// hostile-sources FOLDER: a raw directory and a report that have markup and scripts in every text. The page
// of either must show them as text.
#include <filesystem>
#include <fstream>
#include <string>

#include "masslynx/scandata/scan_statistics_format.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/report_writer.h"

namespace zrml {
namespace {

// Each sets document.title when it runs.
std::string Hostile(const std::string& what) {
  return what +
         "</script><script>document.title='run'</script><img src=x onerror=\"document.title='run'\">"
         "<!--\"'&amp;${document.title='run'}\xE2\x80\xAE";
}

std::string Short(const std::string& what) { return what + "<img src=x onerror=document.title='run'>"; }

FunctionFiles Function(unsigned type) {
  FunctionFiles function;
  function.record.type = type;
  function.record.ionMode = 8;
  for (const float minutes : {1.0F, 2.0F, 3.0F})
    function.scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  return function;
}

RawDirectoryBuilder HostileRun() {
  RawDirectoryBuilder raw;
  for (const char* key :
       {"Instrument", "User Name", "Sample Description", "MS Method", "Acquired Date", "Acquired Time"})
    raw.header.push_back(HeaderLine(key, Hostile(key)));
  raw.functions = {Function(18), Function(12)};
  raw.labels = {CreatorLine("4.1"), FunctionHeading(1, Hostile("label"))};
  raw.analogNames = {Short("trace"), Short("other")};
  raw.analogs = {{.time = 1, .words = {PackIntensityWord(5, 0), PackIntensityWord(6, 0)}},
                 {.time = 2, .words = {PackIntensityWord(2, 0), PackIntensityWord(0, 0)}}};
  return raw;
}

ReportLines HostileReport() {
  const ReportLines scan =
      SpectrumBlock(Keys({{"Time", "1.5"}, {"BPI", "50"}, {"TIC", "75"}, {"Process", Hostile("process")}}),
                    {{300, 50}, {100, 100}});
  const ReportLines trace = ChromatogramBlock(
      Keys({{"Description", Hostile("trace")}, {"MaxIntensity", "50"}}), {{1, 100}, {2, 0}});
  const ReportLines function = FunctionBlock(
      Keys({{"Description", Hostile("function")}, {"Type", "MS"}, {"IonMode", Hostile("mode")}}) + scan +
      trace);
  const ReportLines analog = FunctionBlock(Keys({{"Description", "ANALOG"}}) + trace);
  ReportLines report;
  for (const char* name : {"first", "second"}) {
    ReportLines items;
    for (const char* key : {"FileName", "SampleID", "UserName", "Date", "Time", "SampleDescription",
                            "Instrument", "Method", "Well", "JobCode"})
      items = items + Keys({{key, Hostile(std::string(name) + key)}});
    report = report + SampleBlock(items + function + analog);
  }
  return report;
}

}  // namespace
}  // namespace zrml

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::filesystem::path folder = argv[1];
  const std::filesystem::path run = folder / "a<b>&'run.raw";
  std::filesystem::create_directories(run);
  zrml::HostileRun().WriteTo(run);
  std::ofstream(folder / "hostile.rpt", std::ios::binary)
      << zrml::ReportText(zrml::HostileReport(), zrml::LineEnd::kCrLf);
  return 0;
}
