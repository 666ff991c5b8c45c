// Reads the bytes of data files scan by scan; many consecutive scans are read at once.
#pragma once

#include <vector>

#include "common/bytes.h"
#include "common/platform/platform.h"

namespace zrml::masslynx {

class ScanReader {
 public:
  /// `size` bytes of `file` from `offset` on, or fewer at the end of the file. Valid until the next call.
  Bytes Read(const platform::File& file, std::uint64_t offset, std::size_t size);

  /// Call it when another file is opened in the same object.
  void Forget() { file_ = nullptr; }

 private:
  std::vector<std::byte> buffer_;
  const platform::File* file_ = nullptr;  // that the buffer was read from
  std::uint64_t start_ = 0;               // where the buffer begins in it
  std::size_t filled_ = 0;
  bool isAtEnd_ = false;    // the file ends with the buffer
  std::uint64_t next_ = 0;  // where the last read ended
};

}  // namespace zrml::masslynx
