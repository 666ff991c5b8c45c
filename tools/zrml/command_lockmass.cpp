// zrml lockmass: the peak of a reference ion over time, and how far it is off.
#include <algorithm>
#include <cmath>
#include <vector>

#include "source/reference_peak.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/ion_chromatograms.h"
#include "tools/zrml/ion_options.h"
#include "tools/zrml/printout.h"

namespace zrml::tool {
namespace {

struct PeakColumns {
  std::vector<double> scans;
  std::vector<double> minutes;
  std::vector<double> masses;
  std::vector<double> errors;
  std::vector<double> intensities;
};

PeakColumns ColumnsOf(const std::vector<source::ReferencePeak>& peaks, double mz) {
  PeakColumns columns;
  for (const source::ReferencePeak& peak : peaks) {
    columns.scans.push_back(static_cast<double>(columns.scans.size() + 1));
    columns.minutes.push_back(peak.minutes);
    columns.masses.push_back(peak.mz);
    columns.errors.push_back((peak.mz - mz) / mz * 1e6);
    columns.intensities.push_back(peak.intensity);
  }
  return columns;
}

// The mean of the two in the middle of an even number; no value without any. NaNs do not count.
std::optional<double> MedianOf(std::vector<double> values) {
  std::erase_if(values, [](double value) { return std::isnan(value); });
  if (values.empty()) return std::nullopt;
  std::sort(values.begin(), values.end());
  return (values[(values.size() - 1) / 2] + values[values.size() / 2]) / 2;
}

class LockMassCommand : public FunctionCommand {
 public:
  explicit LockMassCommand(CLI::App& parser)
      : FunctionCommand(parser, "lockmass", "Print the measured mass of a reference ion, scan by scan") {
    CLI::App& options = Options();
    options.get_option("--function")
        ->description("The function, by the number of its files; the reference function by default");
    AddMass(options, "--mz", mz_, "The m/z that the ion has")->required()->option_text("MZ REQUIRED");
    AddToleranceOptions(options, tolerance_, "; without both 0.5 in m/z");
  }

  void Run(Output& out) override {
    const std::unique_ptr<source::Source> source = OpenSource(Path());
    const FunctionPosition at = HasFunction() ? Find(*source) : FindReference(*source);
    const source::Range window = RangeAround(mz_, tolerance_);
    const Target target = {mz_, window, {}, {}};
    NameTargetsOutside(*source, at, {&target, 1});
    const PeakColumns columns =
        ColumnsOf(Reading(*source, [&] { return FollowPeak(*source, at.sample, at.function, window); }), mz_);
    const auto isThere = [](double mass) { return !std::isnan(mass); };
    const auto found = std::count_if(columns.masses.begin(), columns.masses.end(), isThere);
    Printout printout = PrintoutOf(*source, at);
    printout.Add({
        {"mz", mz_},
        {"massRange", window},
        {"points", static_cast<int>(columns.scans.size())},
        {"found", static_cast<int>(found)},
        {"medianErrorPpm", ValueOrAbsent(MedianOf(columns.errors))},
    });
    printout.columns = {{"scan", "scans", columns.scans},
                        {"time", "times", columns.minutes},
                        {"m/z", "masses", columns.masses},
                        {"errorPpm", "errorsPpm", columns.errors},
                        {"intensity", "intensities", columns.intensities}};
    Print(printout, out);
  }

 private:
  // The function that the files name so, or an only one.
  FunctionPosition FindReference(source::Source& source) const {
    const int sample = FindItsSample(source);
    const std::span<const source::Function> functions = source.Functions(sample);
    const auto isReference = [](const source::Function& function) { return function.isLockMass; };
    const auto count = std::count_if(functions.begin(), functions.end(), isReference);
    const auto first = std::find_if(functions.begin(), functions.end(), isReference);
    if (count == 1) return {sample, static_cast<int>(first - functions.begin())};
    if (functions.size() == 1) return {sample, 0};
    throw Failure(
        ExitStatus::kWrongUsage,
        NameOf(source, sample) +
            (count == 0 ? " names no function as the reference" : " names several functions as references") +
            "; --function chooses one of " + FunctionsText(source, sample));
  }

  double mz_ = 0;
  Tolerance tolerance_ = {0.5, false};
};

}  // namespace

std::unique_ptr<Command> MakeLockMassCommand(CLI::App& parser) {
  return std::make_unique<LockMassCommand>(parser);
}

}  // namespace zrml::tool
