// zrml page: a page to keep of each source.
#include "convert/native_path.h"
#include "convert/source_files.h"
#include "convert/target_file.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/progress_bar.h"
#include "tools/zrml/source_list.h"
#include "tools/zrml/view/kept_page.h"

namespace zrml::tool {
namespace {

constexpr const char* kExtension = ".html";
constexpr int kMostMegabytes = 1000;
constexpr std::size_t kMegabyte = 1'000'000;

class PageCommand : public Command {
 public:
  explicit PageCommand(CLI::App& parser)
      : Command(parser, "page", "Make a page to keep of each source: HTML that any browser shows") {
    AddSourceArguments(Options(), sources_);
    CLI::Option* const folder =
        Options().add_option("-o,--output", folder_, "The folder for the files; the current one by default");
    folder->option_text("DIR")->check(IsNotEmpty());
    Options()
        .add_option("-b,--file", file_, "The file, for a single source")
        ->option_text("FILE")
        ->check(IsNotEmpty())
        ->excludes(folder);
    Options().add_flag("--force", isForced_, "Replace files that exist");
    AddNumber(Options(), "--max-size", megabytes_, "The largest size of a file in megabytes; 5 by default",
              kMostMegabytes);
  }

  void Run(Output& out) override {
    std::vector<std::string> sources = ListSources(sources_);
    LeaveOutRepeats(sources, "shown", false);
    if (!file_.empty()) {
      RequireOneSource(sources);
      RefuseFolderAsFile(file_);
      RefuseUnlessFile(file_);
    }
    if (!folder_.empty()) MakeFolder(folder_);
    const convert::SourceOwners owners(sources);
    try {
      ForEachSource(sources, "have no page", [&](const std::string& path) {
        const std::string target = MakePage(path, owners);
        out.Text(VisibleText(target) + "\n");
        out.Finish();
      });
    } catch (const source::Cancelled&) {
      EndByInterruption();
    }
  }

 private:
  // Returns the file's path.
  std::string MakePage(const std::string& path, const convert::SourceOwners& owners) {
    const std::unique_ptr<source::Source> source = OpenListed(path);
    std::string target = TargetOf(*source);
    if (!made_.Claim(target)) {
      throw Failure(ExitStatus::kUnreadable,
                    path + " would replace " + target + ", already written from another source");
    }
    try {
      WritePage(*source, target, owners);
    } catch (...) {
      made_.Release(target, false);
      throw;
    }
    made_.Release(target, true);
    return target;
  }

  void WritePage(source::Source& source, const std::string& target,
                 const convert::SourceOwners& owners) const {
    RefuseUnlessFile(target);
    RefuseSourceAsTarget(target, owners);
    const InterruptionWatch watch;
    try {
      const auto existing = isForced_ ? convert::Existing::kReplace : convert::Existing::kKeep;
      convert::TargetFile file(target, existing, IsInterrupted);
      file.Write(PageOf(source));
      file.Finish();
    } catch (const convert::Error& error) {
      throw FailureOf(error);
    } catch (const source::Error& error) {
      throw FailureOf(error);
    }
  }

  std::string PageOf(source::Source& source) const {
    ProgressBar bar(IsErrorTerminal(), source.Path());
    const view::Work work = {IsInterrupted,
                             [&](std::uint64_t done, std::uint64_t all) { bar.Update(done, all); }};
    return view::MakeKeptPage(source, static_cast<std::size_t>(megabytes_) * kMegabyte, work);
  }

  // One page has all samples of a report.
  std::string TargetOf(source::Source& source) const {
    if (!file_.empty()) return file_;
    const bool isReport = source.GetFormat() == source::Format::kReport;
    const std::string name =
        isReport ? convert::StemOf(platform::FromUtf8Path(source.Path())) : convert::RunName(source, 0);
    return convert::InFolder(folder_, name + kExtension);
  }

  SourceArguments sources_;
  std::string folder_;
  std::string file_;
  bool isForced_ = false;
  int megabytes_ = 5;
  MadeFiles made_;
};

}  // namespace

std::unique_ptr<Command> MakePageCommand(CLI::App& parser) { return std::make_unique<PageCommand>(parser); }

}  // namespace zrml::tool
