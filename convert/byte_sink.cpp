#include "convert/byte_sink.h"

#include <span>

namespace zrml::convert {
namespace {

constexpr std::size_t kPiece = 1u << 17;  // stays in the processor's cache

}  // namespace

void BufferedSink::Write(std::string_view bytes) {
  if (bytes.size() >= shortestDirect_) {
    if (!buffer_.empty()) PassBuffer();
    PassOn(bytes);
    return;
  }
  buffer_ += bytes;
  if (buffer_.size() >= kPiece) PassBuffer();
}

void BufferedSink::Finish() {
  if (!buffer_.empty() || !hasPassed_) PassBuffer();  // empty input compresses to a stream, too
  next_.Finish();
}

void BufferedSink::PassBuffer() {
  PassOn(buffer_);
  buffer_.clear();
}

void BufferedSink::PassOn(std::string_view piece) {
  Pass(piece);
  hasPassed_ = true;
}

void GzipSink::Pass(std::string_view piece) {
  const auto packed = deflater_.Compress(std::as_bytes(std::span(piece)));
  Next().Write({reinterpret_cast<const char*>(packed.data()), packed.size()});
}

}  // namespace zrml::convert
