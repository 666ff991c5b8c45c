#include "tools/zrml/plugin_library.h"

#include <optional>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tools/zrml/failure.h"

namespace zrml {
namespace {

[[noreturn]] void Refuse(const std::wstring& message) { throw Failure(ExitStatus::kNoPlugin, message); }

SharedLibrary LoadLibraryFile(const std::wstring& path) {
  if (!platform::IsFile(path)) Refuse(L"there is no plug-in " + path);
  std::wstring error;
  std::optional<SharedLibrary> library = SharedLibrary::Load(path, error);
  if (!library) Refuse(L"cannot load the plug-in " + path + L" (" + error + L")");
  return *library;
}

template <class Function>
Function Export(const SharedLibrary& library, const std::wstring& path, const char* name) {
  const auto function = library.Find<Function>(name);
  if (function == nullptr)
    Refuse(path + L" is not a data provider plug-in: it does not export " + Widen(name));
  return function;
}

}  // namespace

PluginLibrary PluginLibrary::Load(const std::wstring& path) {
  return PluginLibrary(path, LoadLibraryFile(path));
}

PluginLibrary::PluginLibrary(std::wstring path, SharedLibrary library)
    : path_(std::move(path)), library_(library) {
  const auto checkVersion = Export<CheckVersionFunction>(library_, path_, "CheckVersion");
  const auto getInterfaceCount = Export<GetInterfaceCountFunction>(library_, path_, "GetInterfaceCount");
  getInstance_ = Export<GetInstanceFunction>(library_, path_, "GetInstance");
  if (!checkVersion(kInterfaceVersion)) {
    Refuse(L"the plug-in " + path_ + L" does not speak version " + std::to_wstring(kInterfaceVersion) +
           L" of the interface");
  }
  providerCount_ = getInterfaceCount();
}

std::unique_ptr<CDataServerImpl> PluginLibrary::CreateServer(int index) const {
  auto server = zrml::CreateServer(getInstance_, static_cast<std::uint64_t>(index));
  if (server == nullptr) {
    Refuse(L"the plug-in " + path_ + L" does not make its provider " + std::to_wstring(index + 1));
  }
  return server;
}

std::wstring DefaultPluginPath() { return ProgramFolder() + Widen(ZRML_PLUGIN_FILE); }

}  // namespace zrml
