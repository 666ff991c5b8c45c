// Files that were built with the test program.
#pragma once

#include <filesystem>

namespace zrml {

/// The file at a path from the folder of the running program, as zrml_path_definitions gives it.
std::filesystem::path BuiltFile(const std::filesystem::path& fromProgram);

}  // namespace zrml
