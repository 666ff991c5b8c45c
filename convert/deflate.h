// Compression with the system's library: libdeflate on Linux, zlib on Windows. Both write what any inflater
// reads; the compressed bytes differ between the two.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace zrml::convert {

/// Used by one thread at a time.
class Deflater {
 public:
  enum class Wrapper { kZlib, kGzip };

  /// Throws std::bad_alloc.
  explicit Deflater(Wrapper wrapper);
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater();

  /// The whole of `bytes` as one stream; valid until the next call. A gzip stream may follow another in a
  /// file.
  std::span<const std::byte> Compress(std::span<const std::byte> bytes);

 private:
  struct State;
  std::unique_ptr<State> state_;
  std::vector<std::byte> buffer_;
};

/// What `stream` holds, one gzip stream and nothing else that has `size` bytes without compression; no value
/// when it is none. Throws std::bad_alloc.
std::optional<std::vector<std::byte>> InflateGzip(std::span<const std::byte> stream, std::size_t size);

}  // namespace zrml::convert
