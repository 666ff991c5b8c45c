// Everything that a host reads from a source, as text for comparison, and the number of files that the
// process has open.
#pragma once

#include <string>
#include <vector>

#include "plugin/data_server.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {

using Answers = std::vector<std::string>;

/// Opens the source, requests everything that a sane host would, and closes it. Doubles are printed as bits.
Answers ReadEverything(CDataServerImpl& server, const std::wstring& path);

/// A raw directory with every kind of file.
RawDirectoryBuilder WholeDirectory();

/// Without the one that counts them.
int OpenDescriptors();

}  // namespace zrml
