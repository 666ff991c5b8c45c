// Cuts a file at every length, as a broken copy would.
#pragma once

#include <cstddef>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"

namespace zrml {

/// Calls `check(size)` first with the whole file as the undamaged control, then with each shorter length down
/// to 0. Leaves it empty.
template <class Check>
void TruncateAtEveryLength(const TempDirectory& directory, const std::filesystem::path& name, Check check) {
  for (std::size_t size = directory.Read(name).size();; --size) {
    SCOPED_TRACE(testing::Message() << name << " cut at " << size);
    directory.Truncate(name, size);
    check(size);
    if (size == 0) return;
  }
}

}  // namespace zrml
