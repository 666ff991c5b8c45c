// The questions of the viewer's page, a line each, asked of a run that has every kind of data.
#include <algorithm>
#include <string>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/simulated_files.h"
#include "masslynx/scandata/scan_statistics_format.h"
#include "tests/support/raw_directory_builder.h"
#include "tools/zrml/view/answers.h"

namespace zrml::fuzz {
namespace {

using namespace view;

constexpr unsigned kTofMs = 18;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kAbsorbance = 12;
constexpr std::size_t kLongestFrame = std::size_t{1} << 20;

FunctionFiles Function(unsigned type) {
  FunctionFiles function;
  function.record.type = type;
  function.record.startMasses[0] = 50;
  function.record.endMasses[0] = 400;
  for (const float minutes : {1.0F, 1.5F, 2.0F, 4.0F}) {
    function.scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {100.25, 9}, {100.5, 2}, {300, 8}}));
  }
  function.scans[1].index.centroidState = CentroidState::kCentroid;
  return function;
}

void MakeRun() {
  RawDirectoryBuilder raw;
  raw.functions = {Function(kTofMs), Function(kTofMsMs), Function(kAbsorbance)};
  raw.analogNames = {"trace"};
  raw.analogs = {{.time = 1, .words = {PackIntensityWord(5, 0)}},
                 {.time = 2, .words = {PackIntensityWord(2, 0)}}};
  Files files;
  for (auto& [name, bytes] : raw.Files()) files[std::wstring(name.begin(), name.end())] = bytes;
  SetFiles(std::move(files));
}

source::Source& Run() {
  static const std::unique_ptr<source::Source> run = [] {
    MakeRun();
    return source::Source::Open("/run.raw");
  }();
  return *run;
}

// What is sent is short: the run is.
void CheckAnswer(const Answer& answer) {
  Check(answer.curve.scans.empty() || answer.curve.scans.size() == answer.curve.x.size(),
        "each point of a chromatogram has its scan");
  Check(answer.curve.x.size() == answer.curve.y.size(), "a point has two numbers");
  const std::size_t cells =
      static_cast<std::size_t>(answer.grid.columns) * static_cast<std::size_t>(answer.grid.rows);
  Check(answer.grid.cells.size() == cells, "a grid is whole");
  Check(FrameOf(answer).size() < kLongestFrame, "an answer about a short run is short");
}

void Ask(std::string_view line) {
  const std::optional<Question> question = Question::Parse(line);
  if (!question) return;
  const std::string text = question->Text();
  const auto isPlain = [](char c) { return c > ' ' && c < '\x7F' && c != '/' && c != '\\' && c != '%'; };
  Check(std::ranges::all_of(text, isPlain), "a question has no path and nothing that is escaped");
  const std::optional<Question> again = Question::Parse(text);
  Check(again && again->Text() == text, "the text of a question is that question");
  try {
    CheckAnswer(AnswerTo(Run(), *question));
  } catch (const WrongQuestion&) {
    return;
  } catch (const source::Error&) {
    return;
  }
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isWhole = zrml::fuzz::Run().Functions(0).size() == 2 &&
                              zrml::fuzz::Run().HasAbsorbance(0) && !zrml::fuzz::Run().Traces(0).empty();
  zrml::fuzz::Check(isWhole, "the run has every kind of data");
  std::string_view text(reinterpret_cast<const char*>(data), size);
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    zrml::fuzz::Ask(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return 0;
}
