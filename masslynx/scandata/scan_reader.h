// Bytes of data files that are read scan after scan: where one scan follows the other, many are read at once.
#pragma once

#include <vector>

#include "common/bytes.h"
#include "common/platform/platform.h"

namespace zrml::masslynx {

class ScanReader {
 public:
  /// `size` bytes of `file` from `offset` on, or as many as the file has. Valid until the next call.
  Bytes Read(const platform::File& file, std::uint64_t offset, std::size_t size);

  /// For another file in the same place.
  void Forget() { file_ = nullptr; }

 private:
  std::vector<std::byte> buffer_;
  const platform::File* file_ = nullptr;  // of the buffer
  std::uint64_t start_ = 0;               // where in it the buffer begins
  std::size_t filled_ = 0;
  bool isAtEnd_ = false;    // the file has nothing behind the buffer
  std::uint64_t next_ = 0;  // where the last read ended
};

}  // namespace zrml::masslynx
