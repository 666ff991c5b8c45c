// Where converted bytes go. Write throws an Error when they cannot be written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "convert/deflate.h"

namespace zrml::convert {

class ByteSink {
 public:
  ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;
  virtual ~ByteSink() = default;

  virtual void Write(std::string_view bytes) = 0;
  /// Call once, after the last Write.
  virtual void Finish() {}
};

/// Gathers small writes into large pieces for another sink; passes large ones on directly.
class BufferedSink : public ByteSink {
 public:
  explicit BufferedSink(ByteSink& next) : BufferedSink(next, 1u << 14) {}
  void Write(std::string_view bytes) override;
  void Finish() override;

 protected:
  BufferedSink(ByteSink& next, std::size_t shortestDirect) : next_(next), shortestDirect_(shortestDirect) {}
  virtual void Pass(std::string_view piece) { next_.Write(piece); }
  ByteSink& Next() { return next_; }

 private:
  void PassBuffer();
  void PassOn(std::string_view piece);

  ByteSink& next_;
  std::size_t shortestDirect_;
  std::string buffer_;
  bool hasPassed_ = false;
};

/// Compresses for another sink: one gzip stream per piece; together they are a gzip file.
class GzipSink : public BufferedSink {
 public:
  explicit GzipSink(ByteSink& next, int level = Deflater::kDefaultLevel)
      : BufferedSink(next, SIZE_MAX),
        deflater_(Deflater::Wrapper::kGzip, level) {}  // short pieces compress worse

 private:
  void Pass(std::string_view piece) override;

  Deflater deflater_;
};

}  // namespace zrml::convert
