#include "tools/zrml/convert/byte_sink.h"

#include <span>

#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

constexpr std::size_t kPiece = 1u << 17;  // stays in the processor's cache

}  // namespace

void StandardOutput::Write(std::string_view bytes) {
  std::wstring error;
  switch (WriteStream(Stream::kOutput, bytes, error)) {
    case WriteResult::kWritten:
      return;
    case WriteResult::kReaderGone:
      error = L"its reader is gone";
      break;
    case WriteResult::kInterrupted:
      throw Interrupted();
    case WriteResult::kFailed:
      break;
  }
  throw Failure(ExitStatus::kUnreadable, L"cannot write to standard output (" + error + L")");
}

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
  if (!buffer_.empty() || !hasPassed_) PassBuffer();  // nothing compressed is not nothing
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

}  // namespace zrml
