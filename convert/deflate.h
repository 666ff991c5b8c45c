// Compression with the system's library: libdeflate on Linux, zlib on Windows. Any inflater reads both
// outputs; the compressed bytes differ between the two.
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

  /// 1 is the fastest, 9 the smallest. docs/convert.md has what each takes.
  static constexpr int kDefaultLevel = 4;
  static constexpr int kMostLevel = 9;

  /// Throws std::bad_alloc.
  explicit Deflater(Wrapper wrapper, int level = kDefaultLevel);
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater();

  /// All of `bytes` as one stream; valid until the next call. Gzip streams may follow each other in a file.
  std::span<const std::byte> Compress(std::span<const std::byte> bytes);

 private:
  struct State;
  std::unique_ptr<State> state_;
  std::vector<std::byte> buffer_;
};

/// The `size` bytes that `stream`, exactly one gzip stream, holds uncompressed; no value when it is anything
/// else. Throws std::bad_alloc.
std::optional<std::vector<std::byte>> InflateGzip(std::span<const std::byte> stream, std::size_t size);

}  // namespace zrml::convert
