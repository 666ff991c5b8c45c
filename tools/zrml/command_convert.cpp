// zrml convert: sources into files of open formats.
#include <functional>
#include <new>
#include <optional>

#include "convert/convert.h"
#include "convert/target_file.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_request.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/progress_bar.h"

namespace zrml::tool {
namespace {

// Files that may be opened at once while a source is opened, and later, beside those that it keeps open: of
// each worker three, the data file that it has read last and an index with its statistics, or one for a
// checksum; the target, and what the system has open for a moment.
constexpr int kFilesToOpen = 8;
constexpr int kFilesOfAWorker = 3;
constexpr int kFilesBesides = 8;

Failure SomeFailed(const std::vector<std::string>& failed, std::size_t all, const std::string& what) {
  std::string list;
  for (const std::string& each : failed) list += (list.empty() ? "" : ", ") + each;
  return {ExitStatus::kSomeFailed, std::to_string(failed.size()) + " of " + std::to_string(all) + ' ' + what +
                                       " are not converted: " + list};
}

// Whether `convert` succeeds. Otherwise its failure is printed, since others go on, or passed on, when there
// are none.
bool Survives(bool isAlone, const std::string& what, const std::function<void()>& convert) {
  try {
    convert();
    return true;
  } catch (const Failure& failure) {
    if (isAlone) throw;
    PrintError(failure.message);
  } catch (const std::bad_alloc&) {
    if (isAlone) throw;
    PrintError("not enough memory for " + what);
  }
  return false;
}

// For messages.
std::string NameOf(source::Source& source, int sample) {
  return source.SampleCount() > 1 ? source.Path() + ", sample " + std::to_string(sample + 1) : source.Path();
}

// All sources of a command, one after the other.
class Batch {
 public:
  Batch(const ConvertRequest& request, Output& out) : request_(request), damage_(request), out_(out) {}

  // A source that fails does not stop the others.
  void ConvertAll() {
    const std::vector<std::string>& paths = request_.paths;
    std::vector<std::string> failed;
    for (const std::string& path : paths) {
      if (!Survives(paths.size() == 1, path, [&] { ConvertSource(path); })) failed.push_back(path);
    }
    if (failed.empty() && unprinted_) throw Failure(*unprinted_);
    if (failed.empty()) return;
    if (unprinted_) PrintError(unprinted_->message);
    throw SomeFailed(failed, paths.size(), "sources");
  }

 private:
  void ConvertSource(const std::string& path) {
    // Without room for its files a source would look as if they were lost.
    const auto open = [&] {
      RequireFiles(kFilesToOpen);
      return OpenSource(path);
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
    if (count < 1) throw Failure(ExitStatus::kUnreadable, path + " has no samples");
    if (count > 1 && (request_.isToStandardOutput || !request_.file.empty())) {
      throw Failure(ExitStatus::kWrongUsage,
                    path + " has " + std::to_string(count) + " samples; --sample chooses one");
    }
    std::vector<std::string> failed;
    for (int sample = 0; sample < count; ++sample) {
      const auto convert = [&] { ConvertSample(source, sample); };
      if (!Survives(count == 1, NameOf(source.First(), sample), convert))
        failed.push_back(std::to_string(sample + 1));
    }
    if (!failed.empty()) throw SomeFailed(failed, static_cast<std::size_t>(count), "samples of " + path);
  }

  // Until there is a target nothing needs to be cleaned up, and the system itself ends the program.
  void ConvertSample(convert::SourceInUse& source, int sample) {
    if (IsInterrupted()) throw source::Cancelled();  // when the one before was all but done
    damage_.Look(source.First(), sample, NameOf(source.First(), sample));
    if (request_.isToStandardOutput) {
      const InterruptionWatch watch;
      StandardOutput target;
      Convert(source, sample, "standard output", target);
      return;
    }
    const std::string path = TargetPath(request_, source.First(), sample);
    if (made_.Has(path)) {
      throw Failure(ExitStatus::kUnreadable, source.First().Path() + " would replace " + path +
                                                 ", already written from another source");
    }
    RefuseUnlessFile(path);
    RefuseSourceAsTarget(path, request_.paths);
    const InterruptionWatch watch;
    const auto target = MakeTarget(path);
    Convert(source, sample, path, *target);
    made_.Add(path);
    if (!request_.isQuiet && !isPrintingOver_) PrintPath(path);
  }

  // The file is there also when its name cannot be printed, which fails the command, at its end, but no
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

  std::unique_ptr<convert::TargetFile> MakeTarget(const std::string& path) const {
    const auto existing = request_.isForced ? convert::Existing::kReplace : convert::Existing::kKeep;
    try {
      return std::make_unique<convert::TargetFile>(path, existing, IsInterrupted);
    } catch (const convert::Error& error) {
      throw FailureOf(error);
    }
  }

  void Convert(convert::SourceInUse& source, int sample, const std::string& path, convert::ByteSink& target) {
    const std::string name = NameOf(source.First(), sample);
    ProgressBar bar(!request_.isQuiet && IsErrorTerminal(), name);
    const convert::Hooks hooks = {IsInterrupted,
                                  [&](std::uint64_t done, std::uint64_t all) { bar.Update(done, all); }};
    convert::BufferedSink plain(target);
    convert::GzipSink gzip(target);
    try {
      const convert::Result result = convert::ConvertSample(source, sample, request_.conversion,
                                                            request_.isGzipped ? gzip : plain, hooks);
      bar.Clear();
      damage_.Report(result, name);
      if (request_.isVerbose) Describe(source.First(), path, result);
    } catch (const convert::Error& error) {
      throw FailureOf(error, name + ": ");
    } catch (const source::Error& error) {
      throw Failure(FailureOf(error).status, name + ": " + error.Message());
    }
  }

  static void Describe(source::Source& source, const std::string& path, const convert::Result& result) {
    PrintError(source.Path() + " -> " + path + ": " + std::to_string(result.spectra) + " spectra, " +
               std::to_string(result.chromatograms) + " chromatograms");
  }

  const ConvertRequest& request_;
  DamagePolicy damage_;
  Output& out_;
  MadeFiles made_;
  bool isPrintingOver_ = false;  // nobody reads it, or it has failed
  std::optional<Failure> unprinted_;
};

class ConvertCommand : public Command {
 public:
  explicit ConvertCommand(CLI::App& parser)
      : Command(parser, "convert", "Convert sources to mzML, MGF or TSV") {
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
