// zrml chromatogram: one point per scan of a function, or a trace recorded beside the scans.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "convert/total_ions.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/printout.h"

namespace zrml::tool {
namespace {

// A decimal number without sign or exponent.
std::optional<double> ParseDecimal(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value, std::chars_format::fixed);
  const bool isPlain = text.find_first_not_of("0123456789.") == text.npos;
  return isPlain && error == std::errc() && end == text.end() ? std::optional(value) : std::nullopt;
}

source::Range ParseRange(std::string_view text) {
  const std::string wrong = "\"" + std::string(text) + "\" ";
  const std::size_t dash = std::min(text.find('-'), text.size());
  const std::optional<double> low = ParseDecimal(text.substr(0, dash));
  const std::optional<double> high = ParseDecimal(text.substr(std::min(dash + 1, text.size())));
  if (!low || !high) throw CLI::ValidationError("--range", wrong + "is not a mass range such as 100-200.5");
  if (*low > *high) throw CLI::ValidationError("--range", wrong + "has its larger number first");
  return {*low, *high};
}

class ChromatogramCommand : public FunctionCommand {
 public:
  explicit ChromatogramCommand(CLI::App& parser)
      : FunctionCommand(parser, "chromatogram",
                        "Print a chromatogram of a function, one point per scan, or a trace") {
    CLI::Option* total = Options().add_flag("--tic");
    total->description("The total ion chromatogram (default); without --function that of the sample")
        ->option_text(" ");
    CLI::Option* basePeak = Options().add_flag("--bpc", isBasePeak_, "The base peak chromatogram");
    basePeak->excludes(total)->option_text(" ");
    CLI::Option* range = Options().add_option_function<std::string>(
        "--range", [this](const std::string& text) { range_ = ParseRange(text); },
        "The summed intensity from m/z LO to m/z HI; with --bpc, the largest one");
    range->option_text("LO-HI")->excludes(total);
    AddNumber(Options(), "--trace", trace_,
              "The trace of the sample or, with --function, of the function, counted from 1")
        ->excludes(total)
        ->excludes(basePeak)
        ->excludes(range);
  }

  void Run(Output& out) override {
    const std::unique_ptr<source::Source> source = OpenSource(Path());
    if (trace_ != 0) return PrintTrace(*source, out);
    const int sample = FindItsSample(*source);
    const bool isOfSample =
        !HasFunction() && !isBasePeak_ && !range_ && source->Functions(sample).size() != 1;
    isOfSample ? PrintTotal(*source, sample, out) : PrintChromatogram(*source, out);
  }

 private:
  // That of the sample, like the TIC of a converted file.
  void PrintTotal(source::Source& source, int sample, Output& out) const {
    convert::TotalIonFunctions surveys;
    source::Chromatogram total;
    std::string names;
    const std::span<const source::Function> functions = source.Functions(sample);
    for (int i = 0; i < static_cast<int>(functions.size()); ++i) {
      const source::Function& function = functions[static_cast<std::size_t>(i)];
      if (!surveys.Take(function)) continue;
      names += (names.empty() ? "" : ",") + source::TextOf(function.id);
      convert::Append(total, Reading(source, [&] { return source.TotalIons(sample, i); }));
    }
    if (names.empty()) {
      throw Failure(ExitStatus::kWrongUsage, NameOf(source, sample) +
                                                 " has no MS function of level 1; --function "
                                                 "chooses one of " +
                                                 FunctionsText(source, sample));
    }
    if (std::all_of(total.intensities.begin(), total.intensities.end(),
                    [](double value) { return std::isnan(value); }) &&
        !total.intensities.empty())
      throw Failure(ExitStatus::kWrongUsage,
                    NameOf(source, sample) + " does not tell its total ion current; --range adds up points");
    convert::SortByTime(total);
    Printout printout = PrintoutOf(source, sample);
    printout.Add({{"functions", names}, {"type", std::string("total")}});
    PrintPoints(total, printout, out);
  }

  void PrintChromatogram(source::Source& source, Output& out) const {
    const FunctionPosition at = Find(source);
    const source::Chromatogram chromatogram = Reading(source, [&] { return Read(source, at); });
    Printout printout = PrintoutOf(source, at);
    printout.Add({
        {"type", std::string(isBasePeak_ ? "base peak" : "total")},
        {"massRange", range_ ? Value(*range_) : Value()},
    });
    PrintPoints(chromatogram, printout, out);
  }

  source::Chromatogram Read(source::Source& source, const FunctionPosition& at) const {
    if (range_) {
      const source::Within within = isBasePeak_ ? source::Within::kLargest : source::Within::kSum;
      return source.MassRange(at.sample, at.function, *range_, within);
    }
    return isBasePeak_ ? source.BasePeaks(at.sample, at.function) : source.TotalIons(at.sample, at.function);
  }

  void PrintTrace(source::Source& source, Output& out) const {
    const FunctionPosition at = HasFunction() ? Find(source) : FunctionPosition{FindItsSample(source)};
    const std::vector<source::Trace> traces =
        HasFunction() ? source.FunctionTraces(at.sample, at.function) : source.Traces(at.sample);
    const std::string owner =
        HasFunction() ? "function " + source::TextOf(FunctionAt(source, at).id) : NameOf(source, at.sample);
    const int position = PositionOf(trace_, static_cast<int>(traces.size()), "trace", owner);
    const source::Trace& trace = traces[static_cast<std::size_t>(position)];
    Printout printout = HasFunction() ? PrintoutOf(source, at) : PrintoutOf(source, at.sample);
    printout.Add({{"type", std::string("trace")}, {"trace", trace.number}, {"traceName", trace.name}});
    const source::Chromatogram points = Reading(source, [&] {
      return HasFunction() ? source.ReadFunctionTrace(at.sample, at.function, position)
                           : source.ReadTrace(at.sample, position);
    });
    PrintPoints(points, printout, out);
  }

  void PrintPoints(const source::Chromatogram& chromatogram, Printout& printout, Output& out) const {
    printout.Add({{"points", static_cast<int>(chromatogram.minutes.size())}});
    printout.columns = {{"time", "times", chromatogram.minutes},
                        {"intensity", "intensities", chromatogram.intensities}};
    Print(printout, out);
  }

  bool isBasePeak_ = false;
  std::optional<source::Range> range_;
  int trace_ = 0;  // 0: no trace
};

}  // namespace

std::unique_ptr<Command> MakeChromatogramCommand(CLI::App& parser) {
  return std::make_unique<ChromatogramCommand>(parser);
}

}  // namespace zrml::tool
