// The exports: what they hand out, and how a host of our own creates servers through them.
#pragma once

#include <cstdint>
#include <memory>

#include "plugin/data_server.h"

namespace zrml {

#ifdef _WIN32
namespace hostabi {
struct Face;
}
/// What GetInstance hands out: a face in the shape that Microsoft's compiler gives to the interface.
using HostInstance = hostabi::Face;
#else
using HostInstance = CDataServerImpl;
#endif

/// The interface version that hosts and this library speak.
inline constexpr int kInterfaceVersion = 10;

// Signatures of the exported functions CheckVersion, GetInterfaceCount and GetInstance.
using CheckVersionFunction = bool (*)(int version);
using GetInterfaceCountFunction = int (*)();
using GetInstanceFunction = bool (*)(std::uint64_t index, HostInstance** instance);

/// What GetInstance hands out for `server`, which it owns.
HostInstance* MakeInstance(std::unique_ptr<CDataServerImpl> server);

/// A new server of provider `index`; null for an unknown index.
std::unique_ptr<CDataServerImpl> CreateServer(GetInstanceFunction getInstance, std::uint64_t index);

}  // namespace zrml
