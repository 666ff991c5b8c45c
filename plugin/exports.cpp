// The library's three entry points. They share no state and may be called from any thread.
#include <array>

#include "masslynx/ml_data_server.h"
#include "openlynx/openlynx_data_server.h"
#include "plugin/data_server.h"
#include "plugin/provider_table.h"

#ifdef _WIN32
#define ZRML_EXPORT extern "C"  // named in exports.def
#else
#define ZRML_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

template <class Server>
zrml::CDataServerImpl* Create() {
  return new Server;
}

constexpr std::array kProviders = {
    Create<zrml::CMLDataServerImpl>,
    Create<zrml::COpenLynxRptDataServerImpl>,
};

}  // namespace

/// Whether a host of interface version `version` may use the library.
ZRML_EXPORT bool CheckVersion(int version) {
  return version == zrml::kInterfaceVersion;
}

ZRML_EXPORT int GetInterfaceCount() {
  return static_cast<int>(kProviders.size());
}

/// Creates a closed data server that the caller owns and destroys through its virtual destructor. For an
/// unknown index: false, `*server` unchanged.
ZRML_EXPORT bool GetInstance(std::uint64_t index, zrml::CDataServerImpl** server) {
  if (index >= kProviders.size()) return false;
  *server = kProviders[index]();
  return true;
}
