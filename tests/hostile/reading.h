// What a host reads of a source, as text that can be compared, and how many files the process has open.
#pragma once

#include <string>
#include <vector>

#include "plugin/data_server.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {

using Answers = std::vector<std::string>;

/// Opens the source, asks for everything that a sound host would, and closes it. Doubles are told by their
/// bits.
Answers ReadEverything(CDataServerImpl& server, const std::wstring& path);

/// A raw directory with every kind of file.
RawDirectoryBuilder WholeDirectory();

/// Without the one that counts them.
int OpenDescriptors();

}  // namespace zrml
