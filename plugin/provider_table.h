// The exports: what they return, and how our own hosts create servers through them.
#pragma once

#include <cstdint>
#include <memory>

#include "plugin/data_server.h"

namespace zrml {

#ifdef _WIN32
namespace hostabi {
struct Face;
}
/// The result of GetInstance: a face with the layout that Microsoft's compiler gives the interface.
using HostInstance = hostabi::Face;
#else
using HostInstance = CDataServerImpl;
#endif

/// The interface version that hosts and this library use.
inline constexpr int kInterfaceVersion = 10;

// Signatures of the exported functions CheckVersion, GetInterfaceCount and GetInstance.
using CheckVersionFunction = bool (*)(int version);
using GetInterfaceCountFunction = int (*)();
using GetInstanceFunction = bool (*)(std::uint64_t index, HostInstance** instance);

/// The result of GetInstance for `server`; it owns the server.
HostInstance* MakeInstance(std::unique_ptr<CDataServerImpl> server);

/// A new server for provider `index`; null for an unknown index.
std::unique_ptr<CDataServerImpl> CreateServer(GetInstanceFunction getInstance, std::uint64_t index);

}  // namespace zrml
