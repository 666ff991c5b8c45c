#include "masslynx/scandata/scan_reader.h"

#include <algorithm>

namespace zrml::masslynx {
namespace {

// How many bytes the file has from `offset` on; no more than `most`.
std::size_t BytesBehind(const platform::File& file, std::uint64_t offset, std::size_t most) {
  const std::uint64_t size = file.Size();
  return static_cast<std::size_t>(std::min<std::uint64_t>(size - std::min(offset, size), most));
}

}  // namespace

Bytes ScanReader::Read(const platform::File& file, std::uint64_t offset, std::size_t size) {
  constexpr std::size_t kAhead = std::size_t{1} << 18;
  const bool isSameFile = file_ == &file;
  const bool isForwards = isSameFile && offset == next_;
  const bool isInBuffer = isSameFile && offset >= start_ && offset - start_ <= filled_ &&
                          (isAtEnd_ || size <= filled_ - (offset - start_));
  if (!isInBuffer) {
    const std::size_t wanted = isForwards ? std::max(size, kAhead) : size;
    if (buffer_.size() < wanted) buffer_.resize(std::max(buffer_.size(), BytesBehind(file, offset, wanted)));
    file_ = &file;
    start_ = offset;
    filled_ = file.ReadAt(offset, std::span(buffer_).first(std::min(wanted, buffer_.size())));
    isAtEnd_ = filled_ < wanted;
  }
  next_ = offset + size;
  const Bytes rest = Bytes(buffer_).first(filled_).subspan(static_cast<std::size_t>(offset - start_));
  return rest.first(std::min(size, rest.size()));
}

}  // namespace zrml::masslynx
