// zrml view: the page of sources, live, in a browser on this machine.
#include <cstdlib>
#include <limits>

#include "convert/error.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/source_list.h"
#include "tools/zrml/view/server.h"

namespace zrml::tool {
namespace {

class ViewCommand : public Command {
 public:
  explicit ViewCommand(CLI::App& parser)
      : Command(parser, "view", "Show sources in the browser, until Ctrl-C") {
    AddSourceArguments(Options(), sources_);
    AddNumber(Options(), "--port", port_, "The port to listen on; a free one by default",
              std::numeric_limits<unsigned short>::max());
    Options().add_flag("--no-open", isNotOpened_, "Only print the address");
  }

  void Run(Output& out) override {
    const std::vector<std::string> sources = OpenableSources();
    const InterruptionWatch watch;
    try {
      view::Server server(sources, static_cast<unsigned short>(port_));
      out.Text(server.Address() + "\n");
      out.Finish();
      if (!isNotOpened_) OpenInBrowser(server.Address());
      server.Run(IsInterrupted);
      std::_Exit(0);  // nothing is written, and a worker may wait long for a slow disk
    } catch (const convert::Error& error) {
      throw FailureOf(error);
    }
  }

 private:
  // Those that cannot be opened are reported, and the others shown.
  std::vector<std::string> OpenableSources() const {
    std::vector<std::string> openable;
    try {
      ForEachSource(ListSources(sources_), "are not shown", [&](const std::string& path) {
        OpenListed(path);
        openable.push_back(path);
      });
    } catch (const Failure& failure) {
      if (openable.empty()) throw;
      PrintError(failure.message);
    }
    return openable;
  }

  SourceArguments sources_;
  int port_ = 0;
  bool isNotOpened_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeViewCommand(CLI::App& parser) { return std::make_unique<ViewCommand>(parser); }

}  // namespace zrml::tool
