// The exports: how a host reaches the providers.
#pragma once

#include <cstdint>

namespace zrml {

class CDataServerImpl;

/// The interface version that hosts and this library speak.
inline constexpr int kInterfaceVersion = 10;

// Signatures of the exported functions CheckVersion, GetInterfaceCount and GetInstance.
using CheckVersionFunction = bool (*)(int version);
using GetInterfaceCountFunction = int (*)();
using GetInstanceFunction = bool (*)(std::uint64_t index, CDataServerImpl** server);

}  // namespace zrml
