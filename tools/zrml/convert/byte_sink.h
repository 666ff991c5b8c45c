// Where converted bytes go. Write throws a Failure when they cannot be written.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tools/zrml/convert/deflate.h"

namespace zrml {

class ByteSink {
 public:
  ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;
  virtual ~ByteSink() = default;

  virtual void Write(std::string_view bytes) = 0;
  /// To be called once, after the last Write.
  virtual void Finish() {}
};

/// The program's standard output.
class StandardOutput : public ByteSink {
 public:
  void Write(std::string_view bytes) override;
};

/// Gathers small writes into large pieces for another sink.
class BufferedSink : public ByteSink {
 public:
  explicit BufferedSink(ByteSink& next) : next_(next) {}
  void Write(std::string_view bytes) override;
  void Finish() override;

 protected:
  virtual void Pass(std::string_view piece) { next_.Write(piece); }
  ByteSink& Next() { return next_; }

 private:
  void PassBuffer();

  ByteSink& next_;
  std::string buffer_;
  bool hasPassed_ = false;
};

/// Compresses for another sink: one gzip stream a piece, which together are a gzip file.
class GzipSink : public BufferedSink {
 public:
  using BufferedSink::BufferedSink;

 private:
  void Pass(std::string_view piece) override;

  Deflater deflater_{Deflater::Wrapper::kGzip};
};

}  // namespace zrml
