// Asks a data server everything that a host can ask, also with arguments that no sound host would use.
#pragma once

#include <string>

#include "plugin/data_server.h"

namespace zrml::fuzz {

/// Every operation of an open or closed server but Open, OpenFileInSet, Close and the destructor. The number
/// of questions is bounded, and so is the work that they cause: operations that read scans are left out once
/// about `mostPoints` points were read.
void AskEverySlot(CDataServerImpl& server, const std::wstring& path, std::size_t mostPoints = 1u << 17);

/// The whole life of a server: closed, open, asked everything, opened again with `file` chosen, closed.
void LiveWith(CDataServerImpl& server, const std::wstring& path, const std::wstring& file);

}  // namespace zrml::fuzz
