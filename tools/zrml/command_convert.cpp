// zrml convert: sources into files of open formats.
#include <algorithm>
#include <array>
#include <filesystem>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tools/zrml/check/raw_check.h"
#include "tools/zrml/check/source_check.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/convert/native_path.h"
#include "tools/zrml/convert/progress_bar.h"
#include "tools/zrml/convert/run_converter.h"
#include "tools/zrml/convert/target_file.h"
#include "tools/zrml/convert/threads.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

struct FormatName {
  std::string_view name;
  Format format;
  std::wstring_view extension;
};

constexpr std::array<FormatName, 3> kFormats = {{
    {"mzml", Format::kMzml, L".mzML"},
    {"mgf", Format::kMgf, L".mgf"},
    {"tsv", Format::kTsv, L".tsv"},
}};

struct ArrayName {
  std::string_view name;
  Precision ArrayOptions::*precision;
};

constexpr std::array<ArrayName, 3> kArrays = {{
    {"mz", &ArrayOptions::masses},
    {"intensity", &ArrayOptions::intensities},
    {"time", &ArrayOptions::times},
}};

constexpr int kMostThreads = 256;
constexpr int kMostThreadsUnasked = 8;

// Files that are open at once: of each worker the source's own, one that it reads from, one for a checksum;
// besides the target, and what the system has open for a moment.
constexpr int kFilesOfAWorker = 3;
constexpr int kFilesBesides = 8;

[[noreturn]] void Refuse(const std::string& option, const std::string& text, const std::string& expected) {
  throw CLI::ValidationError(option, "\"" + text + "\" is not " + expected);
}

// A sample that is to become a file: its position, and how many its source has.
struct SampleChoice {
  int position = 0;
  int count = 1;
};

class ConvertCommand : public Command {
 public:
  explicit ConvertCommand(CommandLine& line)
      : Command(line, "convert", "Convert sources to mzML, MGF or TSV") {
    AddSourceOptions();
    AddTargetOptions();
    AddFormatOptions();
    AddArrayOptions();
    AddScanOptions();
    AddFunctionOptions();
    AddReportingOptions();
  }

  void Run(Output& out) override {
    CheckTargets();
    const InterruptionWatch watch;
    try {
      ConvertAll(out);
      if (unprinted_) throw Failure(*unprinted_);
    } catch (const Interrupted&) {
      EndByInterruption();
    }
  }

 private:
  void AddSourceOptions() {
    Options()
        .add_option("PATH", paths_, "The data sources: raw directories, data files of them, report files")
        ->option_text("REQUIRED ...")
        ->required();
    AddNumber("--threads", threads_, "Spectra in the making at once; the processors, 8 at most, unless given",
              kMostThreads);
  }

  void AddTargetOptions() {
    CLI::App& options = Options();
    CLI::Option* const folder =
        options.add_option("-o,--output", folder_, "The folder for the files; the current one unless given");
    folder->option_text("DIR")->check(IsNotEmpty());
    CLI::Option* const file = options.add_option("-b,--file", file_, "The file, for a single source");
    file->option_text("FILE")->check(IsNotEmpty())->excludes(folder);
    CLI::Option* const standard =
        options.add_flag("--stdout", isToStandardOutput_, "To standard output; mzML is not indexed then");
    standard->excludes(folder)->excludes(file)->option_text(" ");
    options.add_flag("--force", isForced_, "Replace files that exist");
  }

  void AddFormatOptions() {
    CLI::App& options = Options();
    options
        .add_option_function<std::string>(
            "--format", [this](const std::string& text) { SetFormat(text); },
            "mzml (so unless given), mgf (MS/MS functions only) or tsv (a row per point)")
        ->option_text("FORMAT");
    options.add_flag_callback(
        "--no-index", [this] { conversion_.isIndexed = false; }, "Write mzML without index and checksum");
    options.add_flag("--gzip", isGzipped_, "Compress the file as a whole");
  }

  void AddArrayOptions() {
    CLI::App& options = Options();
    CLI::Option* const zlib = options.add_flag("-z,--zlib");
    zlib->description("Compress mzML arrays; so unless --no-zlib is given");
    options
        .add_flag_callback(
            "--no-zlib", [this] { conversion_.arrays.isCompressed = false; }, "Do not compress mzML arrays")
        ->excludes(zlib)
        ->option_text(" ");
    zlib->option_text(" ");
    AddPrecision("--32", Precision::kSingle, "Write such mzML arrays with 32 bits a number");
    AddPrecision("--64", Precision::kDouble, "Write such mzML arrays with 64 bits a number");
  }

  void AddScanOptions() {
    AddNumberSet("--scans", conversion_.selection.scans, "Scans of each function, such as 10-20");
    Options()
        .add_option_function<std::string>(
            "--rt",
            [this](const std::string& text) {
              conversion_.selection.minutes = ParseTimeRange(text);
              if (!conversion_.selection.minutes) Refuse("--rt", text, "a time range such as 0.5-3");
            },
            "Minutes to convert, such as 0.5-3")
        ->option_text("LO-HI");
  }

  void AddFunctionOptions() {
    AddNumberSet("--function", conversion_.selection.functions, "Functions to convert, such as 1,3-5");
    AddNumberSet("--ms-level", conversion_.selection.msLevels, "MS levels, such as 2-");
    Options().add_flag("--exclude-lock-mass", conversion_.selection.isLockMassExcluded,
                       "Leave reference functions out");
    AddNumber("--sample", sample_, "The sample of a report, counted from 1; all unless given");
  }

  void AddReportingOptions() {
    Options().add_flag("--damaged", conversion_.isDamageAllowed,
                       "Convert a raw directory of which data are lost, too");
    CLI::Option* const quiet = Options().add_flag("-q,--quiet", isQuiet_, "Print errors only");
    Options()
        .add_flag("-v,--verbose", isVerbose_, "Say on standard error what each file holds")
        ->excludes(quiet)
        ->option_text(" ");
  }

  void AddNumberSet(const std::string& option, NumberSet& numbers, const std::string& description) {
    const auto store = [option, &numbers](const std::string& text) {
      const std::optional<NumberSet> parsed = NumberSet::Parse(text);
      if (!parsed) Refuse(option, text, "a list of numbers such as 1,3-5");
      numbers = *parsed;
    };
    Options().add_option_function<std::string>(option, store, description)->option_text("LIST");
  }

  void AddPrecision(const std::string& option, Precision precision, const std::string& description) {
    const auto store = [this, option, precision](const std::vector<std::string>& names) {
      for (const std::string& name : names) SetPrecision(option, name, precision);
    };
    Options()
        .add_option_function<std::vector<std::string>>(option, store, description + ": mz, intensity or time")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->option_text("ARRAY,...");
  }

  void SetFormat(const std::string& text) {
    for (const FormatName& entry : kFormats) {
      if (entry.name != text) continue;
      conversion_.format = entry.format;
      extension_ = entry.extension;
      return;
    }
    Refuse("--format", text, "mzml, mgf or tsv");
  }

  void SetPrecision(const std::string& option, const std::string& name, Precision precision) {
    for (const ArrayName& entry : kArrays) {
      if (entry.name != name) continue;
      Precision& chosen = conversion_.arrays.*entry.precision;
      if (chosen != Precision::kExact && chosen != precision)
        throw CLI::ValidationError(option, name + " cannot have both 32 and 64 bits");
      chosen = precision;
      return;
    }
    Refuse(option, name, "mz, intensity or time");
  }

  void CheckTargets() {
    if (paths_.size() > 1 && (isToStandardOutput_ || !file_.empty())) {
      throw Failure(ExitStatus::kWrongUsage, L"several sources do not fit into one file");
    }
    if (threads_ == 0) threads_ = std::min(ProcessorCount(), kMostThreadsUnasked);
    if (isToStandardOutput_) conversion_.isIndexed = false;
    RefuseFolderAsFile();
    if (!folder_.empty()) MakeFolder(platform::FromNativePath(folder_));
  }

  void RefuseFolderAsFile() const {
    if (file_.empty()) return;
    const std::wstring path = platform::FromNativePath(file_);
    const bool isFolder = path.ends_with(L'/') || path.ends_with(L'\\') || platform::IsDirectory(path);
    if (isFolder) throw Failure(ExitStatus::kWrongUsage, path + L" is a folder; -o takes one, -b a file");
  }

  // Whether `convert` succeeds. Otherwise its failure is told, since others go on, or passed on, if there are
  // none.
  template <class Convert>
  static bool Survives(bool isAlone, const std::wstring& what, Convert convert) {
    try {
      convert();
      return true;
    } catch (const Failure& failure) {
      if (isAlone) throw;
      PrintError(failure.message);
    } catch (const std::bad_alloc&) {
      if (isAlone) throw;
      PrintError(L"not enough memory for " + what);
    }
    return false;
  }

  // One source that fails does not stop the others.
  void ConvertAll(Output& out) {
    std::vector<std::wstring> failed;
    for (const std::string& path : paths_) {
      const std::wstring name = platform::FromNativePath(path);
      if (!Survives(paths_.size() == 1, name, [&] { ConvertSource(path, out); })) failed.push_back(name);
    }
    if (failed.empty()) return;
    if (unprinted_) PrintError(unprinted_->message);
    throw Failure(ExitStatus::kSomeFailed, std::to_wstring(failed.size()) + L" of " +
                                               std::to_wstring(paths_.size()) +
                                               L" sources are not converted: " + Joined(failed));
  }

  void ConvertSource(const std::string& path, Output& out) {
    RequireFiles(threads_ * kFilesOfAWorker + kFilesBesides);
    SourceInUse source = OpenForWorkers(path);
    const std::vector<Finding> findings = FindDamage(source);
    const std::wstring& name = source.First().Path();
    const int count = source.First().Server().GetSampleCount();
    if (sample_ > 0)
      return ConvertSample(source, findings, {PositionOf(sample_, count, L"sample", name), count}, out);
    if (count != 1 && (isToStandardOutput_ || !file_.empty())) {
      throw Failure(ExitStatus::kWrongUsage,
                    name + L" has " + std::to_wstring(count) + L" samples; --sample chooses one");
    }
    if (count < 1) throw Failure(ExitStatus::kUnreadable, name + L" has no samples");
    ConvertSamples(source, findings, count, out);
  }

  SourceInUse OpenForWorkers(const std::string& path) const {
    SourceStamp stamp(platform::FromNativePath(path));
    std::vector<Source> workers;
    workers.push_back(OpenUndamaged(path));
    while (workers.size() < static_cast<std::size_t>(threads_)) workers.push_back(Open(path));
    return {std::move(workers), std::move(stamp)};
  }

  // One that fails does not stop the others.
  void ConvertSamples(SourceInUse& source, const std::vector<Finding>& findings, int count, Output& out) {
    std::vector<std::wstring> failed;
    for (int sample = 0; sample < count; ++sample) {
      const auto convert = [&] { ConvertSample(source, findings, {sample, count}, out); };
      if (!Survives(count == 1, NameOf(source, {sample, count}), convert))
        failed.push_back(std::to_wstring(sample + 1));
    }
    if (failed.empty()) return;
    throw Failure(ExitStatus::kSomeFailed, std::to_wstring(failed.size()) + L" of " + std::to_wstring(count) +
                                               L" samples of " + source.First().Path() +
                                               L" are not converted: " + Joined(failed));
  }

  // For messages.
  static std::wstring NameOf(const SourceInUse& source, const SampleChoice& sample) {
    const std::wstring& path = source.First().Path();
    return sample.count > 1 ? path + L", sample " + std::to_wstring(sample.position + 1) : path;
  }

  static std::wstring Joined(const std::vector<std::wstring>& items) {
    std::wstring text;
    for (const std::wstring& item : items) text += (text.empty() ? L"" : L", ") + item;
    return text;
  }

  // The files may tell why the provider does not open the source.
  Source OpenUndamaged(const std::string& path) const {
    try {
      return Open(path);
    } catch (const Failure& failure) {
      const std::wstring widePath = platform::FromNativePath(path);
      if (MayBeOfDamage(failure)) RefuseDamage(widePath, CheckSource(widePath, false), L"");
      throw;
    }
  }

  // What of a report's samples has been found is looked at when they are converted.
  std::vector<Finding> FindDamage(SourceInUse& source) const {
    const Source& first = source.First();
    const bool isReport = first.Server().IsReportSource();
    std::vector<Finding> findings = CheckSource(first.Path(), isReport);
    if (isReport) return findings;
    std::erase_if(findings,
                  [&](const Finding& finding) { return !IsWanted(first.Server(), finding.concern); });
    RefuseOrTell(first.Path(), findings, L" (--damaged converts what there is, with zeros for lost points)");
    for (const Finding& finding : findings) source.told.insert(finding.file);
    if (conversion_.selection.isLockMassExcluded) WarnOfMissingLabels(first.Path());
    return {};
  }

  // The provider gives zeros or nothing for what the files have lost: an open file must not pass that off as
  // what was measured. Lesser findings are told. What is about functions that are not asked for counts for
  // nothing.
  void RefuseOrTell(const std::wstring& name, const std::vector<Finding>& findings,
                    const std::wstring& advice) const {
    if (!conversion_.isDamageAllowed) RefuseDamage(name, findings, advice);
    for (const Finding& finding : findings) Warn(name, finding.file + L' ' + finding.problem);
  }

  bool IsWanted(CDataServerImpl& server, const Concern& concern) const {
    const Content content = ContentOf(conversion_.format);
    const Selection& selection = conversion_.selection;
    switch (concern.kind) {
      case Concern::Kind::kAll:
        return true;
      case Concern::Kind::kFunction:
        return IsFunctionWanted(server, 0, concern.number - 1, selection, content);
      case Concern::Kind::kFunctionsFrom:
        return selection.functions.ReachesTo(concern.number);
      case Concern::Kind::kAbsorbance:
        return IsAbsorbanceWanted(selection, content);
      case Concern::Kind::kTraces:
        return content == Content::kAll;
      case Concern::Kind::kSample:
        return true;
      case Concern::Kind::kNone:
        break;
    }
    return false;
  }

  static void RefuseDamage(const std::wstring& path, const std::vector<Finding>& findings,
                           const std::wstring& advice) {
    for (const Finding& finding : findings) {
      if (!finding.losesData) continue;
      std::wstring message = path + L" is damaged: ";
      message.append(finding.file).append(L" ").append(finding.problem).append(advice);
      throw Failure(ExitStatus::kDamaged, message);
    }
  }

  // Functions have their names from there.
  void WarnOfMissingLabels(const std::wstring& path) const {
    std::wstring folder;
    if (!IsRawDirectory(path, folder) || HasLabels(folder)) return;
    Warn(path, L"_EXTERN.INF is missing, so no function is known to be a lock mass");
  }

  void Warn(const std::wstring& path, const std::wstring& problem) const {
    if (!isQuiet_) PrintError(path + L": " + problem);
  }

  // A source must survive its conversion, also with --force.
  static void RefuseSourceAsTarget(const std::wstring& path, const std::wstring& sourcePath) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path target = NativePath(path);
    const fs::path source = NativePath(sourcePath);
    if (fs::exists(target, ignored) && !fs::is_regular_file(target, ignored))
      throw Failure(ExitStatus::kWrongUsage, path + L" is there and no file that could be replaced");
    std::wstring folder;
    const bool isRaw = IsRawDirectory(sourcePath, folder);
    const fs::path parent = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const bool isPart = isRaw && fs::equivalent(parent, NativePath(folder), ignored);
    if (isPart || fs::equivalent(target, source, ignored))
      throw Failure(ExitStatus::kWrongUsage, path + L" is a part of the source");
  }

  void ConvertSample(SourceInUse& source, const std::vector<Finding>& findings, const SampleChoice& sample,
                     Output& out) {
    std::vector<Finding> own = findings;
    std::erase_if(own, [&](const Finding& finding) { return finding.concern.number != sample.position + 1; });
    RefuseOrTell(NameOf(source, sample), own, L" (--damaged converts what there is)");
    const Source& first = source.First();
    std::wstring name = SourceName(first.Path(), first.Server().IsReportSource());
    if (sample.count > 1) name += L"-sample" + std::to_wstring(sample.position + 1);
    if (isToStandardOutput_) {
      StandardOutput target;
      const ConvertedRun run = Convert(source, sample, name, target);
      if (isVerbose_) Describe(first, L"standard output", run);
      return;
    }
    const std::wstring path = TargetOf(name);
    if (targets_.contains(path)) {
      throw Failure(ExitStatus::kUnreadable,
                    first.Path() + L" would replace " + path + L", which another source has become");
    }
    RefuseSourceAsTarget(path, first.Path());
    TargetFile target(path, isForced_ ? Existing::kReplace : Existing::kKeep);
    const ConvertedRun run = Convert(source, sample, name, target);
    targets_.insert(path);
    if (isVerbose_) Describe(first, path, run);
    if (!isQuiet_) PrintPath(path, out);
  }

  // The file is there also when its name cannot be printed: that fails the command, at the end, not the
  // conversion.
  void PrintPath(const std::wstring& path, Output& out) {
    if (isPrintingOver_) return;
    try {
      out.Text(VisibleUtf8(path) + "\n");
      out.Finish();
    } catch (const ReaderGone&) {
      isPrintingOver_ = true;
    } catch (const Failure& failure) {
      isPrintingOver_ = true;
      unprinted_ = failure;
    }
  }

  std::wstring TargetOf(const std::wstring& name) const {
    if (!file_.empty()) return platform::FromNativePath(file_);
    std::wstring folder = platform::FromNativePath(folder_);
    if (!folder.empty() && folder.back() != L'/' && folder.back() != L'\\') folder += L'/';
    return folder + name + extension_ + (isGzipped_ ? L".gz" : L"");
  }

  ConvertedRun Convert(SourceInUse& source, const SampleChoice& sample, const std::wstring& name,
                       ByteSink& target) {
    const std::wstring path = NameOf(source, sample);
    ProgressBar bar(!isQuiet_ && IsTerminal(Stream::kError), path);
    const auto progress = [&](std::size_t done, std::size_t all) { bar.Update(done, all); };
    BufferedSink plain(target);
    GzipSink gzip(target);
    try {
      ConvertedRun run =
          ConvertRun(source, sample.position, name, conversion_, isGzipped_ ? gzip : plain, progress);
      bar.Clear();
      for (const std::wstring& note : run.notes) Warn(path, note);
      return run;
    } catch (const Failure& failure) {
      throw Failure(failure.status, path + L": " + failure.message);
    }
  }

  static void Describe(const Source& source, const std::wstring& path, const ConvertedRun& run) {
    PrintError(source.Path() + L" -> " + path + L": " + std::to_wstring(run.spectra) + L" spectra, " +
               std::to_wstring(run.chromatograms) + L" chromatograms");
  }

  std::vector<std::string> paths_;
  std::string folder_;
  std::string file_;
  bool isToStandardOutput_ = false;
  bool isForced_ = false;
  bool isGzipped_ = false;
  bool isQuiet_ = false;
  bool isVerbose_ = false;
  int threads_ = 0;
  int sample_ = 0;
  std::wstring extension_ = std::wstring(kFormats.front().extension);
  ConvertOptions conversion_;
  std::set<std::wstring> targets_;  // made by this run
  bool isPrintingOver_ = false;     // nobody reads it, or it has failed
  std::optional<Failure> unprinted_;
};

}  // namespace

std::unique_ptr<Command> MakeConvertCommand(CommandLine& line) {
  return std::make_unique<ConvertCommand>(line);
}

}  // namespace zrml
