// The formats behind Source::Open. Each says whether a path is its own and opens it.
#pragma once

#include <memory>
#include <string>

#include "source/source.h"

namespace zrml::source {

/// Null when there is no raw directory at `path`, nor around it when it is a file. Throws Error when there is
/// one that cannot be read, and says what is missing when it looks like one.
std::unique_ptr<Source> OpenRawDirectory(const std::string& path);

/// Null when `path` is no report.
std::unique_ptr<Source> OpenReport(const std::string& path);

}  // namespace zrml::source
