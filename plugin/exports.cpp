// The library's three entry points. They share no state and may be called from any thread.
#include <array>

#include "plugin/provider_table.h"
#include "plugin/raw_server.h"
#include "plugin/report_server.h"

#ifdef _WIN32
#include "plugin/hostabi/failure.h"
#define ZRML_EXPORT extern "C"  // named in exports.def
#else
#define ZRML_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

template <class Server>
zrml::HostInstance* Create() {
  return zrml::MakeInstance(std::make_unique<Server>());
}

constexpr std::array kProviders = {
    Create<zrml::plugin::CMLDataServerImpl>,
    Create<zrml::plugin::COpenLynxRptDataServerImpl>,
};

}  // namespace

/// Whether a host of interface version `version` may use the library.
ZRML_EXPORT bool CheckVersion(int version) { return version == zrml::kInterfaceVersion; }

ZRML_EXPORT int GetInterfaceCount() { return static_cast<int>(kProviders.size()); }

/// Creates a closed data server that the caller owns and destroys through its virtual destructor. An unknown
/// index gives false and leaves `*instance` unchanged. Without memory: the host's out-of-memory exception.
ZRML_EXPORT bool GetInstance(std::uint64_t index, zrml::HostInstance** instance) {
  if (index >= kProviders.size()) return false;
#ifdef _WIN32
  zrml::HostInstance* made = nullptr;
  const zrml::hostabi::Failure failure = zrml::hostabi::Guarded([&] { made = kProviders[index](); });
  if (failure != zrml::hostabi::Failure::kNone) {
    zrml::hostabi::RaiseInHost(failure);
    return false;
  }
  *instance = made;
#else
  *instance = kProviders[index]();
#endif
  return true;
}
