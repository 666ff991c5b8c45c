#include "tools/zrml/plugin_library.h"

#include "common/platform/platform.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitStatus::kNoPlugin, message); }

void* LoadLibraryFile(const std::string& path) {
  if (!platform::IsFile(platform::FromNativePath(path))) Refuse("there is no plug-in " + path);
  std::string error;
  void* const library = LoadSharedLibrary(path, error);
  if (library == nullptr) Refuse("cannot load the plug-in " + path + " (" + error + ")");
  return library;
}

template <class Function>
Function Export(void* library, const std::string& path, const char* name) {
  void* const function = FindExport(library, name);
  if (function == nullptr) Refuse(path + " is not a data provider plug-in: it does not export " + name);
  return reinterpret_cast<Function>(function);
}

}  // namespace

PluginLibrary::PluginLibrary(const std::string& path) : path_(path) {
  void* const library = LoadLibraryFile(path);
  const auto checkVersion = Export<CheckVersionFunction>(library, path, "CheckVersion");
  const auto getInterfaceCount = Export<GetInterfaceCountFunction>(library, path, "GetInterfaceCount");
  getInstance_ = Export<GetInstanceFunction>(library, path, "GetInstance");
  if (!checkVersion(kInterfaceVersion)) {
    Refuse("the plug-in " + path_ + " does not speak version " + std::to_string(kInterfaceVersion) +
           " of the interface");
  }
  providerCount_ = getInterfaceCount();
}

std::unique_ptr<CDataServerImpl> PluginLibrary::CreateServer(int index) const {
  auto server = zrml::CreateServer(getInstance_, static_cast<std::uint64_t>(index));
  if (server == nullptr) {
    Refuse("the plug-in " + path_ + " does not make its provider " + std::to_string(index + 1));
  }
  return server;
}

}  // namespace zrml::tool
