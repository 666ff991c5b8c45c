// zrml chromatogram: one point per scan of a function, chromatograms of ions, the absorbance at a wavelength,
// or a trace recorded beside the scans.
#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "convert/total_ions.h"
#include "source/absorbance_series.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/ion_chromatograms.h"
#include "tools/zrml/ion_options.h"
#include "tools/zrml/printout.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {
namespace {

constexpr const char* kHelp = " (see zrml chromatogram --help)";

class ChromatogramCommand : public Command {
 public:
  explicit ChromatogramCommand(CLI::App& parser)
      : Command(parser, "chromatogram",
                "Print chromatograms: of a function, of ions, of a wavelength, or a trace") {
    CLI::App& options = Options();
    AddSourceArguments(options, sources_);
    options.add_flag("--json", isJson_, "Print JSON, for programs: an object, or a list of several");
    AddNumber(options, "--sample", sample_, "The sample, counted from 1; the first by default");
    AddSelectionOptions(options, selection_);
    AddKinds();
    AddIons();
  }

  void Run(Output& out) override {
    RequireWhatOptionsNeed();
    request_.targets = TargetsOf(ions_);
    request_.scans = selection_;
    PrintEachSource(sources_, isJson_, "are not shown in full", out,
                    [&](const std::string& path, JsonWriter& json) {
                      const std::unique_ptr<source::Source> source = OpenListed(path);
                      PrintOf(*source, json, out);
                    });
  }

 private:
  void AddKinds() {
    CLI::App& options = Options();
    total_ = options.add_flag("--tic");
    total_->description("The total ion chromatogram (default); without --function that of the sample")
        ->option_text(" ");
    basePeak_ = options.add_flag("--bpc", isBasePeak_, "The base peak chromatogram");
    basePeak_->excludes(total_)->option_text(" ");
    range_ = options.add_option_function<std::string>(
        "--range",
        [this](const std::string& text) {
          massRange_ = ParseDecimalRange("--range", text, "a mass range such as 100-200.5");
        },
        "The summed intensity from m/z LO to m/z HI; with --bpc, the largest one");
    range_->option_text("LO-HI")->excludes(total_);
    wavelength_ = options.add_option_function<std::string>(
        "--wavelength", [this](const std::string& text) { wavelengths_ = ParseWavelengths(text); },
        "The absorbance at a wavelength in nm, or its mean from LO to HI");
    wavelength_->option_text("NM|LO-HI");
    trace_ = AddNumber(options, "--trace", traceNumber_,
                       "The trace of the sample or, with --function, of the function, counted from 1");
    for (CLI::Option* const other : {total_, basePeak_, range_}) {
      trace_->excludes(other);
      wavelength_->excludes(other);
    }
    wavelength_->excludes(trace_);
    options.get_option("--rt")->excludes(trace_);
  }

  void AddIons() {
    CLI::App& options = Options();
    for (CLI::Option* const ion : AddIonOptions(options, ions_)) {
      for (CLI::Option* const other : {total_, basePeak_, range_, wavelength_, trace_}) ion->excludes(other);
    }
    needingIons_ = AddToleranceOptions(options, ions_.tolerance, "; 10 by default");
    CLI::Option* const sum = options.add_flag("--sum");
    sum->description("The sum of a range in each scan (default)")->option_text(" ");
    CLI::Option* const largest = options.add_flag_callback(
        "--max", [this] { request_.within = source::Within::kLargest; }, "The largest intensity instead");
    largest->option_text(" ")->excludes(sum);
    needingIons_.insert(needingIons_.end(), {sum, largest, options.get_option("--ms-level")});
  }

  static source::Wavelengths ParseWavelengths(const std::string& text) {
    const std::optional<double> one = convert::ParseDecimal(text);
    if (one) return {{*one, *one}, false};
    return {ParseDecimalRange("--wavelength", text, "a wavelength such as 254, or a band such as 250-260"),
            true};
  }

  void RequireWhatOptionsNeed() const {
    if (!ions_.IsEmpty()) return;
    for (const CLI::Option* option : needingIons_) {
      if (option->count() == 0) continue;
      throw Failure(ExitStatus::kWrongUsage, option->get_name() + " needs --mz or --targets" + kHelp);
    }
    if (selection_.functions.IsAll() || selection_.functions.Only()) return;
    throw Failure(ExitStatus::kWrongUsage,
                  std::string("--function takes several functions only with --mz or --targets") + kHelp);
  }

  void PrintOf(source::Source& source, JsonWriter& json, Output& out) {
    if (!ions_.IsEmpty()) return PrintIons(source, json, out);
    if (wavelengths_) return PrintWavelengths(source, json, out);
    if (traceNumber_ != 0) return PrintTrace(source, json, out);
    const int sample = FindSample(source, sample_);
    const bool isOfSample =
        !HasFunction() && !isBasePeak_ && !massRange_ && source.Functions(sample).size() != 1;
    isOfSample ? PrintTotal(source, sample, json, out) : PrintFunction(source, json, out);
  }

  // That of the sample, like the TIC of a converted file.
  void PrintTotal(source::Source& source, int sample, JsonWriter& json, Output& out) {
    convert::TotalIonFunctions surveys;
    source::Chromatogram total;
    std::string names;
    const std::span<const source::Function> functions = source.Functions(sample);
    for (int i = 0; i < static_cast<int>(functions.size()); ++i) {
      const source::Function& function = functions[static_cast<std::size_t>(i)];
      const bool hasScans = Reading(source, [&] { return source.ScanCount(sample, i); }) > 0;
      if (!surveys.Take(function, hasScans)) continue;
      names += (names.empty() ? "" : ",") + source::TextOf(function.id);
      convert::Append(total, Reading(source, [&] { return source.TotalIons(sample, i); }));
    }
    if (names.empty()) RefuseWithoutLevel(source, sample, "of level 1 with scans");
    if (std::all_of(total.intensities.begin(), total.intensities.end(),
                    [](double value) { return std::isnan(value); }) &&
        !total.intensities.empty())
      throw Failure(ExitStatus::kWrongUsage,
                    NameOf(source, sample) + " does not tell its total ion current; --range adds up points");
    convert::SortByTime(total);
    Printout printout = PrintoutOf(source, sample);
    printout.Add({{"functions", names}, {"type", std::string("total")}});
    PrintPoints(InTime(std::move(total)), printout, json, out);
  }

  void PrintFunction(source::Source& source, JsonWriter& json, Output& out) {
    const FunctionPosition at = Find(source);
    source::Chromatogram chromatogram = Reading(source, [&] { return Read(source, at); });
    Printout printout = PrintoutOf(source, at);
    printout.Add({
        {"type", std::string(isBasePeak_ ? "base peak" : "total")},
        {"massRange", ValueOrAbsent(massRange_)},
    });
    PrintPoints(InTime(std::move(chromatogram)), printout, json, out);
  }

  source::Chromatogram Read(source::Source& source, const FunctionPosition& at) const {
    if (massRange_) {
      const source::Within within = isBasePeak_ ? source::Within::kLargest : source::Within::kSum;
      return source.MassRange(at.sample, at.function, *massRange_, within);
    }
    return isBasePeak_ ? source.BasePeaks(at.sample, at.function) : source.TotalIons(at.sample, at.function);
  }

  void PrintTrace(source::Source& source, JsonWriter& json, Output& out) {
    const FunctionPosition at = HasFunction() ? Find(source) : FunctionPosition{FindSample(source, sample_)};
    const std::vector<source::Trace> traces =
        HasFunction() ? source.FunctionTraces(at.sample, at.function) : source.Traces(at.sample);
    const std::string owner =
        HasFunction() ? "function " + source::TextOf(FunctionAt(source, at).id) : NameOf(source, at.sample);
    const int position = PositionOf(traceNumber_, static_cast<int>(traces.size()), "trace", owner);
    const source::Trace& trace = traces[static_cast<std::size_t>(position)];
    Printout printout = HasFunction() ? PrintoutOf(source, at) : PrintoutOf(source, at.sample);
    printout.Add({{"type", std::string("trace")}, {"trace", trace.number}, {"traceName", trace.name}});
    const source::Chromatogram points = Reading(source, [&] {
      return HasFunction() ? source.ReadFunctionTrace(at.sample, at.function, position)
                           : source.ReadTrace(at.sample, position);
    });
    PrintPoints(points, printout, json, out);
  }

  void PrintIons(source::Source& source, JsonWriter& json, Output& out) {
    const int sample = FindSample(source, sample_);
    const std::vector<FunctionPosition> functions =
        Reading(source, [&] { return FunctionsForIons(source, sample, selection_); });
    const auto printAll = [&] {
      for (const FunctionPosition& at : functions) PrintIonsOf(source, at, json, out);
    };
    if (!isJson_) return printAll();
    json.Object([&] {
      json.Key("source").Put(source.Path());
      json.Key("chromatograms").Array(printAll);
    });
  }

  void PrintIonsOf(source::Source& source, const FunctionPosition& at, JsonWriter& json, Output& out) {
    NameTargetsOutside(source, at, request_.targets);
    const auto print = [&](const Target& target, const source::Chromatogram& points) {
      const std::optional<ChromatogramPeak> apex = ApexOf(points);
      Printout printout = PrintoutOf(source, at);
      printout.Add({
          {"type", std::string(request_.within == source::Within::kLargest ? "base peak" : "total")},
          {"mz", ValueOrAbsent(target.mz)},
          {"massRange", target.range},
          {"comment", target.comment.empty() ? Value() : Value(target.comment)},
          {"apexMinutes", apex ? Value(apex->minutes) : Value()},
          {"apexIntensity", apex ? Value(apex->intensity) : Value()},
          {"area", AreaOf(points)},
      });
      PrintPoints(points, printout, json, out);
    };
    Reading(source, [&] { ReadIons(source, at, request_, print); });
  }

  void PrintWavelengths(source::Source& source, JsonWriter& json, Output& out) {
    const int sample = FindSample(source, sample_);
    const std::optional<FunctionPosition> at = FindAbsorbance(source, sample);
    const source::AbsorbanceSeries series = Reading(source, [&] {
      return ReadAbsorbanceSeries(source, sample, at ? std::optional(at->function) : std::nullopt,
                                  *wavelengths_);
    });
    const Value asked = wavelengths_->isBand ? Value(wavelengths_->range) : Value(wavelengths_->range.low);
    if (!series.used) {
      throw Failure(ExitStatus::kWrongUsage,
                    "there is no wavelength " + TextOf(asked) + ": " + NameOf(source, sample) + " has " +
                        (series.recorded ? TextOf(Value(*series.recorded)) + " nm" : "no wavelengths"));
    }
    Printout printout = at ? PrintoutOf(source, *at) : PrintoutOf(source, sample);
    printout.Add({{"type", std::string("absorbance")},
                  {"wavelength", wavelengths_->isBand ? Value() : asked},
                  {"wavelengthRange", wavelengths_->isBand ? asked : Value()},
                  {"recordedWavelengths", *series.used}});
    PrintPoints(InTime(series.points), printout, json, out);
  }

  // The function of a report that has the absorbance spectra; no value for a raw directory, whose spectra
  // belong to its sample.
  std::optional<FunctionPosition> FindAbsorbance(source::Source& source, int sample) const {
    const std::optional<source::FunctionId> id = selection_.functions.Only();
    if (source.HasAbsorbance(sample) && (!id || *id == source.AbsorbanceFunction(sample).id))
      return std::nullopt;
    const std::span<const source::Function> functions = source.Functions(sample);
    std::vector<int> found;
    for (int i = 0; i < static_cast<int>(functions.size()); ++i) {
      const bool isNamed = !id || selection_.functions.Has(functions[static_cast<std::size_t>(i)].id);
      if (isNamed && functions[static_cast<std::size_t>(i)].kind == source::FunctionKind::kAbsorbance)
        found.push_back(i);
    }
    if (found.size() == 1) return FunctionPosition{sample, found.front()};
    if (!found.empty()) return FindChosen(source, sample_, id);  // says that one is required
    const std::string owner =
        id ? "function " + source::TextOf(FunctionAt(source, Find(source)).id) : NameOf(source, sample);
    throw Failure(ExitStatus::kWrongUsage, owner + " has no absorbance spectra");
  }

  bool HasFunction() const { return !selection_.functions.IsAll(); }
  FunctionPosition Find(source::Source& source) const {
    return FindChosen(source, sample_, selection_.functions.Only());
  }

  source::Chromatogram InTime(source::Chromatogram all) const {
    if (!selection_.minutes) return all;
    source::Chromatogram kept;
    for (std::size_t i = 0; i < all.minutes.size(); ++i) {
      if (!selection_.HasTime(all.minutes[i])) continue;
      kept.minutes.push_back(all.minutes[i]);
      kept.intensities.push_back(all.intensities[i]);
    }
    return kept;
  }

  // Texts of several chromatograms have an empty line between them.
  void PrintPoints(const source::Chromatogram& chromatogram, Printout& printout, JsonWriter& json,
                   Output& out) {
    printout.Add({{"points", static_cast<int>(chromatogram.minutes.size())}});
    printout.columns = {{"time", "times", chromatogram.minutes},
                        {"intensity", "intensities", chromatogram.intensities}};
    if (isJson_) return PutJson(printout, json);
    if (printed_++ > 0) out.Text("\n");
    PrintText(printout, out);
  }

  SourceArguments sources_;
  bool isJson_ = false;
  int sample_ = 1;
  convert::Selection selection_;
  CLI::Option* total_ = nullptr;
  CLI::Option* basePeak_ = nullptr;
  CLI::Option* range_ = nullptr;
  CLI::Option* wavelength_ = nullptr;
  CLI::Option* trace_ = nullptr;
  std::vector<CLI::Option*> needingIons_;
  bool isBasePeak_ = false;
  std::optional<source::Range> massRange_;
  std::optional<source::Wavelengths> wavelengths_;
  int traceNumber_ = 0;  // 0: no trace
  IonOptions ions_;
  IonRequest request_;
  int printed_ = 0;
};

}  // namespace

std::unique_ptr<Command> MakeChromatogramCommand(CLI::App& parser) {
  return std::make_unique<ChromatogramCommand>(parser);
}

}  // namespace zrml::tool
