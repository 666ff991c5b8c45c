// zrml spectrum: the attributes and points of scans, of a sum of scans, of a drift bin, or of absorbance
// spectra.
#include <algorithm>
#include <cmath>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "source/sum_scans.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/point_options.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/spectrum_printout.h"

namespace zrml::tool {
namespace {

constexpr double kDefaultPpm = 10;
constexpr const char* kSeeHelp = " (see zrml spectrum --help)";

// The scans of a function, or a sample's absorbance spectra.
class Recording {
 public:
  virtual ~Recording() = default;

  virtual int Count() = 0;
  virtual std::string Noun() const = 0;
  virtual std::string Owner() = 0;
  virtual double MinutesAt(int position) = 0;

  /// What is printed of a scan; it refers to `points`.
  virtual Printout Read(int position, SpectrumPoints& points) = 0;
  virtual source::ScanSum Sum(std::span<const int> positions) = 0;
  virtual source::ScanSum SumBackground(std::span<const int> positions, const source::ScanSum& of) = 0;
  virtual Printout PrintoutOfSum(const Combination& combination, SpectrumPoints& points) = 0;
};

class AbsorbanceRecording : public Recording {
 public:
  AbsorbanceRecording(source::Source& source, int sample) : source_(source), sample_(sample) {}

  int Count() override { return source_.HasAbsorbance(sample_) ? source_.AbsorbanceScanCount(sample_) : 0; }
  std::string Noun() const override { return "absorbance scan"; }
  std::string Owner() override { return NameOf(source_, sample_); }
  double MinutesAt(int position) override { return source_.AbsorbanceMinutes(sample_, position); }

  Printout Read(int position, SpectrumPoints& points) override {
    source_.ReadAbsorbance(sample_, position, points.masses, points.intensities);
    return PrintoutOfAbsorbance(source_, sample_, position, points);
  }
  source::ScanSum Sum(std::span<const int> positions) override {
    return SumAbsorbance(source_, sample_, positions);
  }
  source::ScanSum SumBackground(std::span<const int> positions, const source::ScanSum&) override {
    return Sum(positions);
  }
  Printout PrintoutOfSum(const Combination& combination, SpectrumPoints& points) override {
    return PrintoutOfAbsorbanceSum(source_, sample_, combination, points);
  }

 private:
  source::Source& source_;
  int sample_;
};

class FunctionRecording : public Recording {
 public:
  /// `bin` counts from 1; 0 for whole scans.
  FunctionRecording(source::Source& source, const FunctionPosition& at, int bin, source::PeakWidth width,
                    const convert::PointChoice& choice)
      : source_(source), at_(at), bin_(bin), width_(width), choice_(choice) {}

  int Count() override { return source_.ScanCount(at_.sample, at_.function); }
  std::string Noun() const override { return "scan"; }
  std::string Owner() override { return "function " + source::TextOf(FunctionAt(source_, at_).id); }
  double MinutesAt(int position) override {
    return source_.ScanAt(at_.sample, at_.function, position).minutes;
  }

  Printout Read(int position, SpectrumPoints& points) override {
    points.bins = Bins();
    if (bin_ == 0) {
      points.lost =
          source_.ReadPoints(at_.sample, at_.function, position, points.masses, points.intensities).lost;
    } else {
      const int bin = PositionOf(bin_, source_.DriftBinCount(at_.sample, at_.function), "drift bin",
                                 "a scan of " + Owner());
      source_.ReadDriftBin(at_.sample, at_.function, position, bin, points.masses, points.intensities);
    }
    return PrintoutOfScan(source_, at_, position, choice_, points);
  }
  source::ScanSum Sum(std::span<const int> positions) override {
    return SumScans(source_, at_.sample, at_.function, positions, width_, source::Unsuited::kAreLeftOut);
  }
  source::ScanSum SumBackground(std::span<const int> positions, const source::ScanSum& of) override {
    return source::SumBackground(source_, at_.sample, at_.function, positions, width_, of);
  }
  Printout PrintoutOfSum(const Combination& combination, SpectrumPoints& points) override {
    points.bins = Bins();
    return tool::PrintoutOfSum(source_, at_, combination, choice_, points);
  }

 private:
  std::optional<source::Range> Bins() {
    if (bin_ > 0) return source::Range{static_cast<double>(bin_), static_cast<double>(bin_)};
    const int bins = source_.DriftBinCount(at_.sample, at_.function);
    return bins > 0 ? std::optional(source::Range{1, static_cast<double>(bins)}) : std::nullopt;
  }

  source::Source& source_;
  FunctionPosition at_;
  int bin_;
  source::PeakWidth width_;
  const convert::PointChoice& choice_;
};

class SpectrumCommand : public FunctionCommand {
 public:
  explicit SpectrumCommand(CLI::App& parser)
      : FunctionCommand(parser, "spectrum", "Print scans, or their sum: attributes and points") {
    AddScanOptions();
    AddSumOptions();
    AddChoiceOptions();
    AddAbsorbanceOption();
  }

  void Run(Output& out) override {
    Complete();
    const std::unique_ptr<source::Source> source = OpenSource(Path());
    const std::unique_ptr<Recording> recording = Find(*source, FindItsSample(*source));
    if (scan_ != 0) {
      const int position = PositionOf(scan_, recording->Count(), recording->Noun(), recording->Owner());
      SpectrumPoints points;
      Print(Reading(*source, [&] { return recording->Read(position, points); }), out);
    } else if (IsCombined()) {
      PrintSum(*source, *recording, out);
    } else {
      PrintAll(*source, *recording, out);
    }
  }

 private:
  void AddScanOptions() {
    CLI::App& options = Options();
    CLI::Option* const scan = AddNumber(options, "--scan", scan_, "The scan, counted from 1");
    const auto add = [&](CLI::Option* option, const char* text) {
      option->option_text(text)->excludes(scan);
      return option;
    };
    add(AddNumberSet(options, "--scans", selection_.scans, "Several scans, such as 1-5,20"), "LIST");
    add(AddParsed(options, "--rt", selection_.minutes, convert::ParseTimeRange, "a time range such as 0.5-3",
                  "The scans of these minutes, such as 0.5-3"),
        "LO-HI");
    CLI::Option* const sum = options.add_flag("--sum", isSum_, "Add these scans up; without a list, all");
    CLI::Option* const mean = options.add_flag("--mean", isMean_, "The same, divided by their number");
    add(sum, " ");
    add(mean, " ")->excludes(sum);
    AddNumber(options, "--bin", bin_, "The drift bin of the scan, counted from 1")
        ->excludes(sum)
        ->excludes(mean);
  }

  void AddSumOptions() {
    AddParsed(Options(), "--minus", background_, convert::ParseTimeRange, "a time range such as 0.5-3",
              "Take off the background: the mean of the scans of these minutes from each")
        ->option_text("LO-HI");
    CLI::Option* const ppm =
        AddParsed(Options(), "--ppm", ppm_, convert::ParseDecimal, "a number such as 12.5",
                  "Centroids so near to a stronger one, on either side, become part of it; 10 by default");
    ppm->option_text("NUMBER");
    AddParsed(Options(), "--da", da_, convert::ParseDecimal, "a number such as 12.5", "The same in m/z")
        ->option_text("NUMBER")
        ->excludes(ppm);
  }

  void AddChoiceOptions() {
    CLI::Option* const centroid =
        Options().add_flag("--centroid", isCentroid_, "Centroids in place of a profile");
    AddPointOptions(Options(), centroid->option_text(" "), selection_);
  }

  // Absorbance has no functions, and no m/z.
  void AddAbsorbanceOption() {
    CLI::Option* const absorbance = Options().add_flag(
        "--absorbance", isAbsorbance_, "Scans of the sample's absorbance data, not of a function");
    absorbance->option_text(" ");
    for (const char* const other : {"--bin", "--function", "--ppm", "--da", "--centroid", "--mz",
                                    "--drop-zeros", "--min-intensity", "--top", "--polarity"})
      absorbance->excludes(Options().get_option(other));
  }

  bool IsCombined() const { return isSum_ || isMean_; }

  void Complete() {
    if (background_ && !IsCombined())
      throw Failure(ExitStatus::kWrongUsage, std::string("--minus requires --sum or --mean") + kSeeHelp);
    if (scan_ == 0 && selection_.scans.IsAll() && !selection_.minutes && !IsCombined()) {
      throw Failure(ExitStatus::kWrongUsage,
                    std::string("--scan, --scans, --rt, --sum or --mean is required") + kSeeHelp);
    }
    if ((ppm_ || da_) && !IsCombined()) {
      throw Failure(ExitStatus::kWrongUsage,
                    std::string(da_ ? "--da" : "--ppm") + " requires --sum or --mean" + kSeeHelp);
    }
    if (isCentroid_) selection_.points.centroidLevels.emplace();
    // On both sides together.
    width_ =
        da_ ? source::PeakWidth{2 * *da_, false} : source::PeakWidth{2 * ppm_.value_or(kDefaultPpm), true};
  }

  std::unique_ptr<Recording> Find(source::Source& source, int sample) const {
    if (isAbsorbance_ || (bin_ == 0 && IsAbsorbance(source, sample))) {
      RefuseMassOptions();
      return std::make_unique<AbsorbanceRecording>(source, sample);
    }
    const FunctionPosition at = FunctionCommand::Find(source);
    const source::Function& function = FunctionAt(source, at);
    if (function.kind == source::FunctionKind::kAbsorbance) RefuseMassOptions();
    if (!selection_.HasPolarity(function)) {
      throw Failure(ExitStatus::kWrongUsage, source.Path() + ": the polarity of function " +
                                                 source::TextOf(function.id) + " is " +
                                                 std::string(NameOf(function.polarity)));
    }
    return std::make_unique<FunctionRecording>(source, at, bin_, width_, selection_.points);
  }

  void RefuseMassOptions() const {
    const bool hasPolarity = selection_.polarity != source::Polarity::kUnknown;
    if (selection_.points.IsAll() && !hasPolarity && !ppm_ && !da_) return;
    throw Failure(ExitStatus::kWrongUsage,
                  "absorbance spectra have no m/z; --centroid, --ppm, --da and filters are for mass spectra");
  }

  // With the times that there are.
  [[noreturn]] static void RefuseAll(const source::Source& source, Recording& recording) {
    const int count = recording.Count();
    if (count == 0) {
      throw Failure(ExitStatus::kWrongUsage,
                    source.Path() + ": there are no " + recording.Noun() + "s of " + recording.Owner());
    }
    std::vector<double> minutes(static_cast<std::size_t>(count));
    for (int position = 0; position < count; ++position)
      minutes[static_cast<std::size_t>(position)] = recording.MinutesAt(position);
    std::erase_if(minutes, [](double time) { return std::isnan(time); });
    std::string times;
    if (!minutes.empty()) {
      const auto [first, last] = std::ranges::minmax(minutes);
      times = ", which are at " + RoundedNumber(first) + " to " + RoundedNumber(last) + " minutes,";
    }
    throw Failure(ExitStatus::kWrongUsage, source.Path() + ": none of the " + recording.Noun() + "s of " +
                                               recording.Owner() + times + " is asked for");
  }

  // The positions of the scans that are wanted; those named alone have to be there.
  std::vector<int> Wanted(const source::Source& source, Recording& recording) const {
    const int count = recording.Count();
    for (const int number : selection_.scans.Named())
      PositionOf(number, count, recording.Noun(), recording.Owner());
    std::vector<int> wanted;
    for (int position = 0; position < count; ++position) {
      if (selection_.scans.Has(position + 1) &&
          (!selection_.minutes || selection_.HasTime(recording.MinutesAt(position))))
        wanted.push_back(position);
    }
    if (wanted.empty()) RefuseAll(source, recording);
    return wanted;
  }

  std::vector<int> Background(const source::Source& source, Recording& recording) const {
    convert::Selection times;
    times.minutes = background_;
    std::vector<int> found;
    for (int position = 0; position < recording.Count(); ++position) {
      if (times.HasTime(recording.MinutesAt(position))) found.push_back(position);
    }
    if (found.empty()) {
      throw Failure(ExitStatus::kWrongUsage,
                    source.Path() + ": none of the scans of " + recording.Owner() + " is background");
    }
    return found;
  }

  void PrintSum(source::Source& source, Recording& recording, Output& out) const {
    source::ScanSum sum = Reading(source, [&] { return recording.Sum(Wanted(source, recording)); });
    std::optional<source::ScanSum> background;
    if (background_) {
      background =
          Reading(source, [&] { return recording.SumBackground(Background(source, recording), sum); });
      TakeOff(*background, width_, sum);
    }
    if (isMean_) MakeMean(sum);
    SpectrumPoints points = {std::move(sum.mz), std::move(sum.intensities), sum.lost, {}};
    const Combination combination = {isMean_, sum, background ? &*background : nullptr};
    Print(Reading(source, [&] { return recording.PrintoutOfSum(combination, points); }), out);
  }

  // What was read before a failure is printed.
  void PrintAll(source::Source& source, Recording& recording, Output& out) const {
    const std::vector<int> wanted = Reading(source, [&] { return Wanted(source, recording); });
    std::exception_ptr failure;
    const auto each = [&](auto print) {
      try {
        for (const int position : wanted) {
          SpectrumPoints points;
          print(Reading(source, [&] { return recording.Read(position, points); }));
        }
      } catch (const Failure&) {
        failure = std::current_exception();
      }
    };
    if (WantsJson()) {
      JsonWriter json(out);
      json.Array([&] { each([&](const Printout& printout) { PutJson(printout, json); }); });
      json.Finish();
    } else {
      std::string_view separator;
      each([&](const Printout& printout) {
        out.Text(std::exchange(separator, "\n"));
        PrintText(printout, out);
      });
    }
    out.Finish();
    if (failure) std::rethrow_exception(failure);
  }

  int scan_ = 0;  // 0: several
  int bin_ = 0;   // 0: whole scans
  bool isSum_ = false;
  bool isMean_ = false;
  bool isCentroid_ = false;
  bool isAbsorbance_ = false;
  std::optional<source::Range> background_;
  std::optional<double> ppm_;
  std::optional<double> da_;
  source::PeakWidth width_;
  convert::Selection selection_;
};

}  // namespace

std::unique_ptr<Command> MakeSpectrumCommand(CLI::App& parser) {
  return std::make_unique<SpectrumCommand>(parser);
}

}  // namespace zrml::tool
