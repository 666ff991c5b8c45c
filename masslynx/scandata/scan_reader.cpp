#include "masslynx/scandata/scan_reader.h"

#include <algorithm>

namespace zrml::masslynx {

Bytes ScanReader::Read(const platform::File& file, std::uint64_t offset, std::size_t size) {
  constexpr std::size_t kAhead = std::size_t{1} << 18;
  const bool isSameFile = file_ == &file;
  const bool isForwards = isSameFile && offset == next_;
  const bool isInBuffer = isSameFile && offset >= start_ && offset - start_ <= filled_ &&
                          (isAtEnd_ || size <= filled_ - (offset - start_));
  if (!isInBuffer) {
    const std::size_t wanted = isForwards ? std::max(size, kAhead) : size;
    if (buffer_.size() < wanted) buffer_.resize(wanted);
    file_ = &file;
    start_ = offset;
    filled_ = file.ReadAt(offset, std::span(buffer_).first(wanted));
    isAtEnd_ = filled_ < wanted;
  }
  next_ = offset + size;
  const Bytes rest = Bytes(buffer_).first(filled_).subspan(static_cast<std::size_t>(offset - start_));
  return rest.first(std::min(size, rest.size()));
}

}  // namespace zrml::masslynx
