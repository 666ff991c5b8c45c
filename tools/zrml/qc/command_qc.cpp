// zrml qc: whether runs went well, by metrics that need no identification.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

#include "convert/native_path.h"
#include "convert/source_files.h"
#include "convert/target_file.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/qc/reports.h"
#include "tools/zrml/source_list.h"
#include "tools/zrml/thread_option.h"

namespace zrml::tool {
namespace {

constexpr int kFilesOfASource = 8;

std::optional<double> ParseMass(const std::string& text) {
  double mass = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, mass, std::chars_format::fixed);
  const bool isMass = result.ec == std::errc() && result.ptr == end && mass > 0 && std::isfinite(mass);
  return isMass ? std::optional(mass) : std::nullopt;
}

struct QcRequest {
  SourceArguments sources = {};
  std::optional<double> lockMass = {};
  int threads = 0;
  std::string mzqc = {};
  std::string table = {};
  std::string multiqc = {};
  std::string page = {};
  std::string pages = {};  // folder of the runs' own pages
  bool isForced = false;
  bool hasFullPaths = false;
};

using IsWanted = bool (*)(const AssessedRun& run);
using WriteRuns = std::function<void(AssessedRuns runs, Output& file)>;

// A file, which is whole or not there at all.
struct Report {
  std::string path;
  IsWanted isWanted;  // the file is written when any run is
  WriteRuns write;
  std::unique_ptr<convert::TargetFile> target;
};

bool IsAny(const AssessedRun&) { return true; }

class QcCommand : public Command {
 public:
  explicit QcCommand(CLI::App& parser)
      : Command(parser, "qc", "Report the quality of runs: mzQC, a table, MultiQC, a page") {
    CLI::App& options = Options();
    AddSourceArguments(options, request_.sources);
    AddPath("-b,--file", request_.mzqc, "FILE", "Write the metrics as mzQC, of the runs that are whole");
    AddPath("--tsv", request_.table, "FILE", "Write a table: a row for each run");
    AddPath("--multiqc", request_.multiqc, "DIR", "Write files for MultiQC into this folder");
    AddPath("--html", request_.page, "FILE", "Write a page that compares the runs by date");
    AddPath("--pages", request_.pages, "DIR",
            "Link to the runs' own pages in this folder, as seen from the page");
    AddParsed(options, "--lock-mass", request_.lockMass, ParseMass, "a mass such as 556.2766",
              "Follow this m/z in the reference functions")
        ->option_text("MZ");
    options.add_flag("--full-paths", request_.hasFullPaths,
                     "Write where sources are into mzQC, not only their names");
    options.add_flag("--force", request_.isForced, "Replace files that exist");
    AddThreadOption(options, request_.threads);
  }

  void Run(Output& out) override {
    const std::vector<std::string> sources = ListSources(request_.sources);
    RefuseTargets(sources);
    const int threads = ThreadCount(request_.threads);
    RequireFiles(kFilesOfASource * (threads + 1));
    try {
      const InterruptionWatch watch;
      const std::vector<Report> reports = MakeReports();
      Assessment assessment =
          AssessSources(sources, {.lockMass = request_.lockMass}, threads, IsErrorTerminal());
      LinkPages(assessment.runs);
      if (reports.empty()) {
        WriteQcTable(assessment.runs, out);
        out.Finish();
      }
      WriteAll(reports, assessment.runs, out);
      Judge(sources, assessment);
    } catch (const source::Cancelled&) {
      EndByInterruption();
    } catch (const convert::Error& error) {
      throw FailureOf(error);
    }
  }

 private:
  void AddPath(const std::string& option, std::string& path, const std::string& text,
               const std::string& description) {
    Options().add_option(option, path, description)->option_text(text)->check(IsNotEmpty());
  }

  // Before the work begins.
  void RefuseTargets(const std::vector<std::string>& sources) const {
    const convert::SourceOwners owners(sources);
    MadeFiles named;
    for (const std::string& path : Targets()) {
      if (!named.Claim(path)) throw Failure(ExitStatus::kWrongUsage, path + " is named more than once");
      named.Release(path, true);
      RefuseUnlessFile(path);
      RefuseSourceAsTarget(path, owners);
    }
  }

  std::vector<std::string> Targets() const {
    std::vector<std::string> targets;
    for (const std::string& path : {request_.mzqc, request_.table, request_.page}) {
      if (!path.empty()) targets.push_back(path);
    }
    for (const MultiqcFile& content : MultiqcFiles()) {
      if (!request_.multiqc.empty()) targets.push_back(convert::InFolder(request_.multiqc, content.name));
    }
    return targets;
  }

  // Their files are made, still without a name, before the work begins.
  std::vector<Report> MakeReports() const {
    std::vector<Report> reports;
    const auto location = request_.hasFullPaths ? Location::kFullPath : Location::kNameOnly;
    Add(
        request_.mzqc, IsForMzqc, [=](AssessedRuns runs, Output& file) { WriteMzqc(runs, location, file); },
        reports);
    Add(request_.table, IsAny, WriteQcTable, reports);
    if (!request_.multiqc.empty()) MakeFolder(request_.multiqc);
    for (const MultiqcFile& content : MultiqcFiles()) {
      if (!request_.multiqc.empty())
        Add(convert::InFolder(request_.multiqc, content.name), content.isWanted, content.write, reports);
    }
    Add(request_.page, IsAny, WriteQcPage, reports);
    return reports;
  }

  // Of sources of one name in a folder, the page is that of the first.
  void LinkPages(std::vector<AssessedRun>& runs) const {
    std::map<std::string, std::string> sources;  // of the pages
    for (AssessedRun& run : runs) {
      const std::string page = PageOf(run);
      if (sources.emplace(page, run.source).first->second == run.source) run.page = page;
    }
  }

  // Where `zrml page` makes it for a source, with the folders between a searched folder and the source.
  std::string PageOf(const AssessedRun& run) const {
    if (request_.pages.empty() || run.state == RunState::kUnreadable) return {};
    std::string name = convert::SourceName(run.source, run.format) + ".html";
    for (const std::string& searched : request_.sources.paths) {
      const std::string folder = convert::InFolder(searched, "");
      if (!request_.sources.isSearched || !run.source.starts_with(folder)) continue;
      const std::string below = run.source.substr(folder.size());
      name.insert(0, below, 0, below.rfind('/') + 1);
      break;
    }
    return convert::InFolder(request_.pages, name);
  }

  void Add(const std::string& path, IsWanted isWanted, WriteRuns write, std::vector<Report>& reports) const {
    if (path.empty()) return;
    const auto existing = request_.isForced ? convert::Existing::kReplace : convert::Existing::kKeep;
    reports.push_back({path, isWanted, std::move(write),
                       std::make_unique<convert::TargetFile>(path, existing, IsInterrupted)});
  }

  // The files count, and what is wrong with runs, also when nobody reads their names.
  static void WriteAll(const std::vector<Report>& reports, AssessedRuns runs, Output& out) {
    for (const Report& report : reports) Write(report, runs, out);
    try {
      out.Finish();
    } catch (const ReaderGone&) {
    }
  }

  static void Write(const Report& report, AssessedRuns runs, Output& out) {
    if (!std::any_of(runs.begin(), runs.end(), report.isWanted)) return;
    Output file([&](std::string_view piece) { report.target->Write(piece); });
    report.write(runs, file);
    file.Finish();
    report.target->Finish();
    out.Text(VisibleText(report.path) + "\n");
  }

  static void Judge(const std::vector<std::string>& sources, const Assessment& assessment) {
    ForEach(sources, "sources", "are not whole", [&](std::size_t index) {
      if (assessment.failures[index]) throw Failure(*assessment.failures[index]);
    });
  }

  QcRequest request_;
};

}  // namespace

std::unique_ptr<Command> MakeQcCommand(CLI::App& parser) { return std::make_unique<QcCommand>(parser); }

}  // namespace zrml::tool
