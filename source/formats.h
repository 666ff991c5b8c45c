// The formats of Source::Open. Each recognises its own paths and opens them.
#pragma once

#include <memory>
#include <string>

#include "source/source.h"

namespace zrml::source {

/// Null when there is no raw directory at `path`, nor around it when it is a file. Throws Error when there is
/// one that cannot be read, or that looks like one; the message says what is missing.
std::unique_ptr<Source> OpenRawDirectory(const std::string& path);

/// Null when `path` is not a report.
std::unique_ptr<Source> OpenReport(const std::string& path);

}  // namespace zrml::source
