// zrml chromatogram: one point per scan of a function, or a trace recorded beside the scans.
#include <algorithm>
#include <charconv>
#include <optional>

#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/report.h"

namespace zrml {
namespace {

// A decimal number without sign or exponent at the front of `text`, which is shortened by it.
std::optional<double> TakeDecimal(std::string_view& text) {
  const auto isDecimal = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
  const auto end = std::find_if_not(text.begin(), text.end(), isDecimal);
  double value = 0;
  const auto result = std::from_chars(text.begin(), end, value, std::chars_format::fixed);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
  return value;
}

NumberRange ParseRange(std::string_view text) {
  const std::string wrong = "\"" + std::string(text) + "\" ";
  const std::optional<double> low = TakeDecimal(text);
  const bool hasDash = !text.empty() && text.front() == '-';
  if (hasDash) text.remove_prefix(1);
  const std::optional<double> high = TakeDecimal(text);
  if (!low || !hasDash || !high || !text.empty()) {
    throw CLI::ValidationError("--range", wrong + "is not a mass range such as 100-200.5");
  }
  if (*low > *high) throw CLI::ValidationError("--range", wrong + "has its larger number first");
  return {*low, *high};
}

class ChromatogramCommand : public FunctionCommand {
 public:
  explicit ChromatogramCommand(CommandLine& line)
      : FunctionCommand(line, "chromatogram",
                        "Print a chromatogram of a function, one point per scan, or a trace") {
    CLI::Option* total = Options().add_flag("--tic");
    total->description("The total ion chromatogram; so unless --bpc or --range is given")->option_text(" ");
    CLI::Option* basePeak = Options().add_flag("--bpc", isBasePeak_, "The base peak chromatogram");
    basePeak->excludes(total)->option_text(" ");
    CLI::Option* range = Options().add_option_function<std::string>(
        "--range", [this](const std::string& text) { range_ = ParseRange(text); },
        "The summed intensity from m/z LO to m/z HI; with --bpc, the largest one");
    range->option_text("LO-HI")->excludes(total);
    AddNumber("--trace", trace_,
              "The trace of the sample or, with --function, of the function, counted from 1")
        ->excludes(total)
        ->excludes(basePeak)
        ->excludes(range);
  }

  void Run(Output& out) override {
    const Source source = OpenSource();
    trace_ != 0 ? PrintTrace(source, out) : PrintChromatogram(source, out);
  }

 protected:
  bool NeedsFunction() const override { return trace_ == 0; }

 private:
  void PrintChromatogram(const Source& source, Output& out) const {
    const FunctionPosition at = Find(source);
    CZRChromatogram chromatogram;
    if (!Read(source.Server(), at, chromatogram)) {
      throw Failure(ExitStatus::kUnreadable, L"cannot read the chromatogram of function " +
                                                 std::to_wstring(at.function + 1) + L" of " + source.Path());
    }
    Report report;
    report.attributes = OriginOf(source, at);
    report.Add({
        {"type", std::wstring(isBasePeak_ ? L"base peak" : L"total")},
        {"massRange", range_ ? Value(*range_) : Value()},
    });
    AddPoints(chromatogram, report);
    Print(report, out);
  }

  bool Read(CDataServerImpl& server, const FunctionPosition& at, CZRChromatogram& chromatogram) const {
    if (range_ && isBasePeak_) {
      return server.GetMassRangeBasePeakChromatogram(range_->low, range_->high, true, at.sample, at.function,
                                                     chromatogram);
    }
    if (range_) {
      return server.GetMassRangeChromatogram(range_->low, range_->high, true, at.sample, at.function,
                                             chromatogram);
    }
    return isBasePeak_ ? server.GetBasePeakChromatogram(true, at.sample, at.function, chromatogram)
                       : server.GetTotalIonChromatogram(true, at.sample, at.function, chromatogram);
  }

  void PrintTrace(const Source& source, Output& out) const {
    Report report;
    CZRChromatogram trace;
    HasFunction() ? ReadFunctionTrace(source, report, trace) : ReadSampleTrace(source, report, trace);
    AddPoints(trace, report);
    Print(report, out);
  }

  void ReadSampleTrace(const Source& source, Report& report, CZRChromatogram& trace) const {
    const int sample = FindSampleOf(source);
    CDataServerImpl& server = source.Server();
    const std::wstring owner = L"sample " + std::to_wstring(sample + 1);
    const int position = PositionOf(trace_, server.GetTraceCount(sample), L"trace", owner);
    report.attributes = OriginOf(source, sample);
    report.Add(TraceAttributes(server.GetTraceName(sample, position)));
    if (!server.GetTrace(sample, position, trace)) RefuseTrace(owner, source);
  }

  void ReadFunctionTrace(const Source& source, Report& report, CZRChromatogram& trace) const {
    const FunctionPosition at = Find(source);
    CDataServerImpl& server = source.Server();
    const std::wstring owner = L"function " + std::to_wstring(at.function + 1);
    const int count = server.GetFunctionTraceCount(at.sample, at.function);
    const int position = PositionOf(trace_, count, L"trace", owner);
    report.attributes = OriginOf(source, at);
    report.Add(TraceAttributes(server.GetFunctionTraceName(at.sample, at.function, position)));
    if (!server.GetFunctionTrace(at.sample, at.function, position, trace)) RefuseTrace(owner, source);
  }

  [[noreturn]] void RefuseTrace(const std::wstring& owner, const Source& source) const {
    throw Failure(ExitStatus::kUnreadable, L"cannot read trace " + std::to_wstring(trace_) + L" of " + owner +
                                               L" of " + source.Path());
  }

  std::vector<Attribute> TraceAttributes(const std::wstring& name) const {
    return {{"type", std::wstring(L"trace")}, {"trace", trace_}, {"traceName", name}};
  }

  static void AddPoints(const CZRChromatogram& chromatogram, Report& report) {
    const std::size_t count = std::min(chromatogram.Times().size(), chromatogram.Intensities().size());
    report.Add({{"points", static_cast<int>(count)}});
    report.columns = {{"time", "times", {chromatogram.Times().data(), count}},
                      {"intensity", "intensities", {chromatogram.Intensities().data(), count}}};
  }

  bool isBasePeak_ = false;
  std::optional<NumberRange> range_;
  int trace_ = 0;  // 0: no trace
};

}  // namespace

std::unique_ptr<Command> MakeChromatogramCommand(CommandLine& line) {
  return std::make_unique<ChromatogramCommand>(line);
}

}  // namespace zrml
