#include "tools/zrml/plugin_library.h"

#include <optional>
#include <utility>

#include "common/platform/platform.h"
#include "tools/zrml/failure.h"

namespace zrml::tool {
namespace {

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitStatus::kNoPlugin, message); }

SharedLibrary LoadLibraryFile(const std::string& path) {
  if (!platform::IsFile(platform::FromNativePath(path))) Refuse("there is no plug-in " + path);
  std::string error;
  std::optional<SharedLibrary> library = SharedLibrary::Load(path, error);
  if (!library) Refuse("cannot load the plug-in " + path + " (" + error + ")");
  return *library;
}

template <class Function>
Function Export(const SharedLibrary& library, const std::string& path, const char* name) {
  const auto function = library.Find<Function>(name);
  if (function == nullptr) Refuse(path + " is not a data provider plug-in: it does not export " + name);
  return function;
}

}  // namespace

PluginLibrary PluginLibrary::Load(const std::string& path) {
  return PluginLibrary(path, LoadLibraryFile(path));
}

PluginLibrary::PluginLibrary(std::string path, SharedLibrary library)
    : path_(std::move(path)), library_(std::move(library)) {
  const auto checkVersion = Export<CheckVersionFunction>(library_, path_, "CheckVersion");
  const auto getInterfaceCount = Export<GetInterfaceCountFunction>(library_, path_, "GetInterfaceCount");
  getInstance_ = Export<GetInstanceFunction>(library_, path_, "GetInstance");
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
