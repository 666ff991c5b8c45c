// The bytes of one scan, read in a single read.
#pragma once

#include <algorithm>
#include <memory>

#include "common/platform/platform.h"

namespace zrml {

/// `size` bytes of `file` from `offset` on; those that the file does not have are zero.
inline std::unique_ptr<std::byte[]> ReadScanBytes(const platform::File& file, std::uint64_t offset,
                                                  std::size_t size) {
  auto bytes = std::make_unique_for_overwrite<std::byte[]>(size);
  const std::size_t read = file.ReadAt(offset, std::span(bytes.get(), size));
  std::fill(bytes.get() + read, bytes.get() + size, std::byte{0});
  return bytes;
}

}  // namespace zrml
