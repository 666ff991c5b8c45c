// zrml plugin: whether a library is a plug-in, and returns what a source holds.
#include "common/platform/platform.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/plugin_comparison.h"
#include "tools/zrml/plugin_library.h"
#include "tools/zrml/text_table.h"

namespace zrml::tool {
namespace {

std::string Visible(const std::wstring& text) { return VisibleText(platform::ToNativePath(text)); }

void PrintProviders(const std::string& file, const PluginLibrary& plugin, Output& out) {
  TextTable head({{""}, {""}});
  head.AddRow({"Plug-in", VisibleText(file)});
  head.AddRow({"Interface", std::to_string(kInterfaceVersion)});
  head.Print("", out);
  TextTable table({{"No", TextTable::Align::kRight}, {"Name"}, {"GUID"}, {"Files"}});
  for (int i = 0; i < plugin.ProviderCount(); ++i) {
    const std::unique_ptr<CDataServerImpl> server = plugin.CreateServer(i);
    table.AddRow({std::to_string(i + 1), Visible(server->GetProviderName()),
                  Visible(server->GetProviderGuid()), Visible(server->GetFileFilter())});
  }
  out.Text("\nProviders\n");
  table.Print("  ", out);
}

void PrintWanted(const PluginComparison& comparison, Output& out) {
  TextTable table({{"", TextTable::Align::kRight}, {""}, {""}});
  for (const auto& [difference, count] : comparison.wanted)
    table.AddRow({std::to_string(count), std::string(difference->slot), std::string(difference->reason)});
  table.Print("  ", out);
}

void PrintComparison(const std::string& path, const PluginComparison& comparison, Output& out) {
  out.Text("\nSource " + VisibleText(path) + ": " + std::to_string(comparison.answers) +
           " answers compared; where they differ from the files, the interface wants it:\n");
  PrintWanted(comparison, out);
  if (comparison.faultCount == 0) return;
  out.Text("\nFaults\n");
  for (const std::string& fault : comparison.faults) out.Text("  " + fault + "\n");
  const long long more = comparison.faultCount - static_cast<long long>(comparison.faults.size());
  if (more > 0) out.Text("  and " + std::to_string(more) + " more\n");
}

class PluginCommand : public Command {
 public:
  explicit PluginCommand(CLI::App& parser)
      : Command(parser, "plugin", "Load a plug-in as a host does, and compare it with a source") {
    Options()
        .add_option("FILE", file_, "The plug-in: ZRMLProvider-x64.so or .dll")
        ->option_text("REQUIRED")
        ->required()
        ->check(IsNotEmpty());
    Options()
        .add_option("PATH", path_, "A data source that every operation of the plug-in is asked for")
        ->option_text(" ")
        ->check(IsNotEmpty());
  }

  void Run(Output& out) override {
    const PluginLibrary plugin(file_);
    PrintProviders(file_, plugin, out);
    if (path_.empty()) return;
    const std::unique_ptr<source::Source> source = OpenSource(path_);
    const PluginComparison comparison = ComparePlugin(plugin, *source);
    PrintComparison(path_, comparison, out);
    if (comparison.faultCount == 0) return;
    out.Finish();
    throw Failure(ExitStatus::kDamaged, file_ + " does not give what " + path_ +
                                            " holds: " + Counted(comparison.faultCount, "fault"));
  }

 private:
  std::string file_;
  std::string path_;
};

}  // namespace

std::unique_ptr<Command> MakePluginCommand(CLI::App& parser) {
  return std::make_unique<PluginCommand>(parser);
}

}  // namespace zrml::tool
