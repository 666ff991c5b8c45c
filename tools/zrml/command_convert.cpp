// zrml convert: sources into files of open formats.
#include <algorithm>
#include <functional>
#include <optional>

#include "convert/convert.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_request.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/progress_bar.h"
#include "tools/zrml/selection_options.h"

namespace zrml::tool {
namespace {

// The most files open at once while a source is opened, and later besides those that it keeps open: three per
// worker, the data file read last and an index with its statistics, or one for a checksum; the target, and
// what the system opens for a moment.
constexpr int kFilesToOpen = 8;
constexpr int kFilesOfAWorker = 3;
constexpr int kFilesBesides = 8;

constexpr const char* kFailed = "are not converted";

// All sources of a command, one after the other.
class Batch {
 public:
  Batch(const ConvertRequest& request, Output& out)
      : request_(request), owners_(request.paths), damage_(request), out_(out) {}

  // A source that fails does not stop the others.
  void ConvertAll() {
    try {
      ForEachSource(request_.paths, kFailed, [&](const std::string& path) { ConvertSource(path); });
    } catch (const Failure&) {
      if (unprinted_) PrintError(unprinted_->message);
      throw;
    }
    if (unprinted_) throw Failure(*unprinted_);
  }

 private:
  void ConvertSource(const std::string& path) {
    // Without room for its files a source would look as if they were lost.
    const auto open = [&] {
      RequireFiles(kFilesToOpen);
      return OpenListed(path);
    };
    try {
      convert::SourceInUse source(path, request_.threads, open);
      RequireFiles(request_.threads * kFilesOfAWorker + kFilesBesides);
      const int count = source.First().SampleCount();
      if (request_.sample > 0) {
        ConvertSample(source, PositionOf(request_.sample, count, "sample", path));
      } else {
        ConvertSamples(source, count);
      }
    } catch (const source::Error& error) {
      throw FailureOf(error);
    }
  }

  // One that fails does not stop the others.
  void ConvertSamples(convert::SourceInUse& source, int count) {
    const std::string& path = source.First().Path();
    if (count < 1) DamagePolicy::RefuseEmpty(source.First());
    if (count > 1 && (request_.isToStandardOutput || !request_.file.empty())) {
      throw Failure(ExitStatus::kWrongUsage,
                    path + " has " + std::to_string(count) + " samples; --sample chooses one");
    }
    std::vector<std::string> names;
    for (int sample = 1; sample <= count; ++sample) names.push_back(std::to_string(sample));
    ForEach(names, "samples of " + path, kFailed,
            [&](std::size_t sample) { ConvertSample(source, static_cast<int>(sample)); });
  }

  // Before there is a target nothing needs cleaning up, and the system itself ends the program.
  void ConvertSample(convert::SourceInUse& source, int sample) {
    if (IsInterrupted()) throw source::Cancelled();  // when the previous one was almost done
    const std::string path =
        request_.isToStandardOutput ? std::string() : TargetPath(request_, source.First(), sample);
    if (!path.empty() && IsDone(source.First(), sample, path)) return;
    damage_.Look(source.First(), sample, NameOf(source.First(), sample));
    RequireFunctions(source.First(), {&sample, 1}, request_.conversion.selection.functions,
                     AbsorbanceFunction::kCounts);
    if (path.empty()) {
      const InterruptionWatch watch;
      StandardOutput target;
      Convert(source, sample, "standard output", target);
    } else {
      ConvertToFile(source, sample, path);
    }
  }

  void ConvertToFile(convert::SourceInUse& source, int sample, const std::string& path) {
    RefuseUnlessFile(path);
    RefuseSourceAsTarget(path, owners_);
    const InterruptionWatch watch;
    const auto target = MakeTargetFile(path, request_.isForced);
    Convert(source, sample, path, *target);
    made_.Add(path);
    if (!request_.isQuiet && !isPrintingOver_) PrintPath(path);
  }

  // Whether the source has been converted already, and its file is kept. Two sources of one name are not
  // confused.
  bool IsDone(source::Source& source, int sample, const std::string& path) {
    if (made_.Has(path)) {
      throw Failure(ExitStatus::kUnreadable,
                    source.Path() + " would replace " + path + ", already written from another source");
    }
    if (!request_.isKept) return false;
    const bool isDone = IsCurrent(path, request_, source, sample);
    if (!isDone && !request_.isForced && platform::IsThere(platform::FromUtf8Path(path))) {
      throw Failure(ExitStatus::kUnreadable,
                    path + " is older than its source, or not whole; --force replaces it");
    }
    if (!isDone) return false;
    made_.Add(path);
    if (request_.isVerbose) PrintError(source.Path() + " -> " + path + ": is there already");
    return true;
  }

  // The file exists even when its name cannot be printed: that fails the command, at its end, but not the
  // conversion.
  void PrintPath(const std::string& path) {
    try {
      out_.Text(VisibleText(path) + "\n");
      out_.Finish();
    } catch (const ReaderGone&) {
      isPrintingOver_ = true;
    } catch (const Failure& failure) {
      isPrintingOver_ = true;
      unprinted_ = failure;
    }
  }

  void Convert(convert::SourceInUse& source, int sample, const std::string& path, convert::ByteSink& target) {
    const std::string name = NameOf(source.First(), sample);
    ProgressBar bar(!request_.isQuiet && IsErrorTerminal(), name);
    const convert::Hooks hooks = {IsInterrupted,
                                  [&](std::uint64_t done, std::uint64_t all) { bar.Update(done, all); }};
    convert::BufferedSink plain(target);
    convert::GzipSink gzip(target, request_.conversion.arrays.level);
    try {
      const convert::Result result = convert::ConvertSample(source, sample, request_.conversion,
                                                            request_.isGzipped ? gzip : plain, hooks);
      bar.Clear();
      damage_.Report(result, name);
      ReportAbsorbance(result.absorbance, name);
      if (request_.isVerbose) Describe(source.First(), path, result);
    } catch (const convert::Error& error) {
      throw FailureOf(error, name + ": ");
    } catch (const source::Error& error) {
      throw Failure(FailureOf(error).status, name + ": " + error.Message());
    }
  }

  void ReportAbsorbance(convert::Absorbance absorbance, const std::string& name) const {
    if (request_.isQuiet || absorbance != convert::Absorbance::kTakenAlone) return;
    PrintError(name + ": there are no other spectra, so its absorbance spectra are converted");
  }

  static void Describe(source::Source& source, const std::string& path, const convert::Result& result) {
    PrintError(
        source.Path() + " -> " + path + ": " + std::to_string(result.spectra) + " spectra, " +
        std::to_string(result.chromatograms) + " chromatograms" +
        (result.absorbance == convert::Absorbance::kLeftOut ? ", without absorbance (--absorbance)" : ""));
  }

  const ConvertRequest& request_;
  convert::SourceOwners owners_;
  DamagePolicy damage_;
  Output& out_;
  MadeFiles made_;
  bool isPrintingOver_ = false;  // the reader has left, or output has failed
  std::optional<Failure> unprinted_;
};

class ConvertCommand : public Command {
 public:
  explicit ConvertCommand(CLI::App& parser)
      : Command(parser, "convert", "Convert sources to mzML, MGF, TSV or Parquet") {
    AddConvertOptions(Options(), request_);
  }

  void Run(Output& out) override {
    Complete(request_);
    try {
      Batch(request_, out).ConvertAll();
    } catch (const source::Cancelled&) {
      EndByInterruption();
    }
  }

 private:
  ConvertRequest request_;
};

}  // namespace

std::unique_ptr<Command> MakeConvertCommand(CLI::App& parser) {
  return std::make_unique<ConvertCommand>(parser);
}

}  // namespace zrml::tool
