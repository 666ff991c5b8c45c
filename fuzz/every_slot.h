// Asks a data server everything that a host can ask, even with arguments that no sane host would use.
#pragma once

#include <string>

#include "plugin/data_server.h"

namespace zrml::fuzz {

/// Calls every operation of an open or closed server except Open, OpenFileInSet, Close and the destructor.
/// The number of questions and their work are bounded: operations that read scans are left out once about
/// `mostPoints` points have been read.
void AskEverySlot(CDataServerImpl& server, const std::wstring& path, std::size_t mostPoints = 1u << 17);

/// The whole life of a server: closed, open, asked everything, opened again with `file` chosen, closed.
void LiveWith(CDataServerImpl& server, const std::wstring& path, const std::wstring& file);

}  // namespace zrml::fuzz
