// Whether this process holds a file or directory open.
#pragma once

#include <filesystem>

namespace zrml {

bool IsHeldOpen(const std::filesystem::path& path);

}  // namespace zrml
