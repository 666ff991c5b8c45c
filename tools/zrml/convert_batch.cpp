#include "tools/zrml/convert_batch.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <span>

#include "convert/convert.h"
#include "convert/threads.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_log.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/open_source.h"
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

// Larger sources have all threads for themselves.
constexpr std::uint64_t kLargeSource = std::uint64_t{32} << 20;

constexpr const char* kFailed = "are not converted";

using Clock = std::chrono::steady_clock;

// What the sources of a command take one after the other, in their order.
class Turns {
 public:
  void Await(std::size_t index) {
    convert::Lock lock(mutex_);
    changed_.Wait(lock, [&] { return next_ >= index; });
  }
  /// Also when it has been passed already.
  void Pass(std::size_t index) {
    convert::Lock lock(mutex_);
    changed_.Wait(lock, [&] { return next_ >= index; });
    if (next_ != index) return;
    ++next_;
    changed_.NotifyAll();
  }

 private:
  convert::Mutex mutex_;
  convert::Condition changed_;
  std::size_t next_ = 0;
};

// What the conversions of a command share.
struct Shared {
  const ConvertRequest& request;
  convert::SourceOwners owners;
  MadeFiles made = {};
  Turns turns = {};  // to choose the files
  bool isAlone;      // whether sources are converted one after the other
  bool isWatched;    // for the user's wish to stop, all the time
  std::function<void(const std::string& path)>
      print;  // a file, when sources are converted one after the other
};

// One source.
class SourceConversion {
 public:
  SourceConversion(Shared& shared, std::size_t index, int threads, SourceReport& report)
      : shared_(shared),
        request_(shared.request),
        index_(index),
        threads_(threads),
        report_(report),
        damage_(shared.request) {}
  SourceConversion(const SourceConversion&) = delete;
  SourceConversion& operator=(const SourceConversion&) = delete;
  ~SourceConversion() {
    for (const auto& [sample, target] : targets_) {
      if (target.isMine) shared_.made.Release(target.path, target.isMade);
    }
    shared_.turns.Pass(index_);
    report_.findings = damage_.Noted();
  }

  void Run() {
    const std::string& path = report_.source;
    // Without room for its files a source would look as if they were lost.
    const auto open = [&] {
      RequireFiles(kFilesToOpen);
      return OpenListed(path);
    };
    try {
      convert::SourceInUse source(path, threads_, open);
      RequireFiles(threads_ * kFilesOfAWorker + kFilesBesides);
      const int count = source.First().SampleCount();
      if (request_.sample > 0) {
        const int sample = PositionOf(request_.sample, count, "sample", path);
        ClaimTargets(source.First(), sample, sample + 1);
        ConvertSample(source, sample);
      } else {
        RefuseUnfit(source.First(), count);
        ClaimTargets(source.First(), 0, count);
        ConvertSamples(source, count);
      }
    } catch (const source::Error& error) {
      throw FailureOf(error);
    }
  }

 private:
  struct Target {
    std::string path;
    bool isMine;  // not made from another source
    bool isMade = false;
  };

  void RefuseUnfit(source::Source& source, int count) const {
    if (count < 1) DamagePolicy::RefuseEmpty(source);
    if (count > 1 && (request_.isToStandardOutput || !request_.file.empty())) {
      throw Failure(ExitStatus::kWrongUsage,
                    source.Path() + " has " + std::to_string(count) + " samples; --sample chooses one");
    }
  }

  // Of two sources of one name the first gets the file, however many are converted at once.
  void ClaimTargets(source::Source& source, int first, int end) {
    if (request_.isToStandardOutput) return;
    std::vector<std::string> paths;
    for (int sample = first; sample < end; ++sample) paths.push_back(TargetPath(request_, source, sample));
    shared_.turns.Await(index_);
    for (int sample = first; sample < end; ++sample) {
      const std::string& path = paths[static_cast<std::size_t>(sample - first)];
      targets_.emplace(sample, Target{path, shared_.made.Claim(path)});
    }
    shared_.turns.Pass(index_);
  }

  // One that fails does not stop the others.
  void ConvertSamples(convert::SourceInUse& source, int count) {
    std::vector<std::string> names;
    for (int sample = 1; sample <= count; ++sample) names.push_back(std::to_string(sample));
    ForEach(names, "samples of " + report_.source, kFailed,
            [&](std::size_t sample) { ConvertSample(source, static_cast<int>(sample)); });
  }

  // Before there is a target nothing needs cleaning up, and the system itself ends the program.
  void ConvertSample(convert::SourceInUse& source, int sample) {
    if (IsInterrupted()) throw source::Cancelled();  // when the previous one was almost done
    const auto target = targets_.find(sample);
    if (target != targets_.end() && IsDone(source.First(), sample, target->second)) return;
    damage_.Look(source.First(), sample, NameOf(source.First(), sample));
    RequireFunctions(source.First(), {&sample, 1}, request_.conversion.selection.functions,
                     AbsorbanceFunction::kCounts);
    if (target == targets_.end()) {
      const std::optional<InterruptionWatch> watch = Watched();
      StandardOutput output;
      Convert(source, sample, "standard output", output);
    } else {
      ConvertToFile(source, sample, target->second);
    }
    report_.outcome = SourceReport::Outcome::kDone;
  }

  std::optional<InterruptionWatch> Watched() const {
    return shared_.isWatched ? std::nullopt : std::optional<InterruptionWatch>(std::in_place);
  }

  void ConvertToFile(convert::SourceInUse& source, int sample, Target& target) {
    RefuseUnlessFile(target.path);
    RefuseSourceAsTarget(target.path, shared_.owners);
    const std::optional<InterruptionWatch> watch = Watched();
    const auto file = MakeTargetFile(target.path, request_.isForced);
    Convert(source, sample, target.path, *file);
    NoteMade(target);
    if (request_.isQuiet) return;
    shared_.isAlone ? shared_.print(target.path) : report_.printed.push_back(target.path);
  }

  void NoteMade(Target& target) {
    target.isMade = true;
    report_.targets.push_back(target.path);
  }

  // Whether the source has been converted already, and its file is kept. Two sources of one name are not
  // confused.
  bool IsDone(source::Source& source, int sample, Target& target) {
    const std::string& path = target.path;
    if (!target.isMine) {
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
    if (report_.targets.empty()) report_.outcome = SourceReport::Outcome::kSkipped;
    NoteMade(target);
    if (request_.isVerbose) PrintError(source.Path() + " -> " + path + ": is there already");
    return true;
  }

  void Convert(convert::SourceInUse& source, int sample, const std::string& path, convert::ByteSink& target) {
    const std::string name = NameOf(source.First(), sample);
    ProgressBar bar(shared_.isAlone && !request_.isQuiet && IsErrorTerminal(), name);
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
      damage_.Note(error.Message());
      throw FailureOf(error, name + ": ");
    } catch (const source::Error& error) {
      damage_.Note(error.Message());
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

  Shared& shared_;
  const ConvertRequest& request_;
  std::size_t index_;
  int threads_;
  SourceReport& report_;
  DamagePolicy damage_;
  std::map<int, Target> targets_;  // by sample; none for standard output
};

// The path of the log, which is appended to: it must not be a file of a source.
const std::string& LogOf(const ConvertRequest& request, const convert::SourceOwners& owners) {
  if (!request.log.empty()) RefuseSourceAsTarget(request.log, owners);
  return request.log;
}

// All sources of a command.
class Batch {
 public:
  Batch(const ConvertRequest& request, Output& out)
      : request_(request),
        out_(out),
        lanes_(std::min<std::size_t>(request.paths.size(), static_cast<std::size_t>(request.threads))),
        shared_{.request = request,
                .owners = convert::SourceOwners(request.paths),
                .isAlone = lanes_ == 1,
                .isWatched = lanes_ > 1 || !request.log.empty(),
                .print = [this](const std::string& path) { PrintPath(path); }},
        log_(LogOf(request, shared_.owners)),
        bar_(lanes_ > 1 && !request.isQuiet && IsErrorTerminal(), Counted(request.paths.size(), "source")) {}

  // A source that fails does not stop the others.
  void Run() {
    {
      std::optional<InterruptionWatch> watch;
      if (shared_.isWatched) watch.emplace();
      std::vector<std::unique_ptr<convert::Thread>> threads;
      for (std::size_t lane = 1; lane < lanes_; ++lane)
        threads.push_back(std::make_unique<convert::Thread>([this] { Work(); }));
      Work();
      threads.clear();
    }
    bar_.Clear();
    if (error_) std::rethrow_exception(error_);
    if (IsInterrupted()) throw source::Cancelled();
    End();
  }

 private:
  // Everything that has failed is printed; the last of it ends the program.
  void End() {
    std::vector<Failure> failures;
    for (const std::optional<Failure>& failure : {unprinted_, log_.Problem()}) {
      if (failure) failures.push_back(*failure);
    }
    if (!failed_.empty())
      failures.push_back(request_.paths.size() == 1
                             ? *single_
                             : SomeFailed(failed_, request_.paths.size(), "sources", kFailed));
    if (failures.empty()) return;
    for (const Failure& failure : std::span(failures).first(failures.size() - 1)) PrintError(failure.message);
    throw Failure(failures.back());
  }

  // What one thread does. Sources are begun in their order; a large one waits until it is alone, and the next
  // ones wait for it.
  void Work() {
    for (;;) {
      std::size_t index = 0;
      {
        const convert::Lock begin(begin_);
        if (isStopped_ || IsInterrupted() || next_ == request_.paths.size()) return;
        index = next_++;
        if (shared_.isAlone || IsLarge(request_.paths[index])) {
          Count(0);
          ConvertSource(index, request_.threads);
          continue;
        }
        Count(1);
      }
      ConvertSource(index, 1);
      Count(-1);
    }
  }

  static bool IsLarge(const std::string& path) { return convert::SourceStamp(path).Size() >= kLargeSource; }

  // Sources that are being converted; with 0 waits until there are none.
  void Count(int change) {
    convert::Lock lock(mutex_);
    active_ += change;
    if (change < 0) idle_.NotifyAll();
    if (change == 0) idle_.Wait(lock, [this] { return active_ == 0; });
  }

  void ConvertSource(std::size_t index, int threads) {
    SourceReport report = {.source = request_.paths[index]};
    const Clock::time_point began = Clock::now();
    try {
      std::optional<KeptErrors> kept;
      if (!shared_.isAlone) kept.emplace(report.errors);
      SourceConversion(shared_, index, threads, report).Run();
    } catch (const Failure& failure) {
      report.failure = failure;
      report.outcome = SourceReport::Outcome::kFailed;
    } catch (const source::Cancelled&) {
      report.outcome = SourceReport::Outcome::kInterrupted;
    } catch (const std::bad_alloc&) {
      report.failure = Failure(ExitStatus::kUnreadable, "not enough memory for " + report.source);
      report.outcome = SourceReport::Outcome::kFailed;
    } catch (...) {  // the reader of standard output has left
      report.outcome = SourceReport::Outcome::kInterrupted;
      const convert::Lock lock(mutex_);
      error_ = std::current_exception();
      isStopped_ = true;
    }
    report.seconds = std::chrono::duration<double>(Clock::now() - began).count();
    const convert::Lock lock(mutex_);
    log_.Add(report);
    ended_.emplace(index, std::move(report));
    for (; !ended_.empty() && ended_.begin()->first == shown_; ++shown_) {
      Show(ended_.begin()->second);
      ended_.erase(ended_.begin());
    }
  }

  // In the order of the sources.
  void Show(const SourceReport& report) {
    bar_.Clear();
    for (const std::string& message : report.errors) PrintError(message);
    for (const std::string& path : report.printed) PrintPath(path);
    if (report.failure) {
      single_ = report.failure;
      failed_.push_back(report.source);
      if (request_.paths.size() > 1) PrintError(report.failure->message);
    }
    bar_.Update(shown_ + 1, request_.paths.size());
  }

  // The file exists even when its name cannot be printed: that fails the command, at its end, but not the
  // conversion.
  void PrintPath(const std::string& path) {
    if (isPrintingOver_) return;
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

  const ConvertRequest& request_;
  Output& out_;
  std::size_t lanes_;  // threads that go through the sources
  Shared shared_;
  ConvertLog log_;
  ProgressBar bar_;

  convert::Mutex begin_;  // guards the next source to begin
  std::size_t next_ = 0;

  convert::Mutex mutex_;  // guards what follows
  convert::Condition idle_;
  int active_ = 0;
  std::map<std::size_t, SourceReport> ended_;  // that wait to be shown
  std::size_t shown_ = 0;
  std::vector<std::string> failed_;
  std::optional<Failure> single_;  // that of the source shown last
  std::exception_ptr error_;
  std::atomic<bool> isStopped_ = false;
  bool isPrintingOver_ = false;  // the reader has left, or output has failed
  std::optional<Failure> unprinted_;
};

}  // namespace

void ConvertAll(const ConvertRequest& request, Output& out) { Batch(request, out).Run(); }

}  // namespace zrml::tool
