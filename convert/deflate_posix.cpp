#include <libdeflate.h>
#include <new>

#include "convert/deflate.h"

namespace zrml::convert {
struct Deflater::State {
  State(Wrapper kind, int level) : wrapper(kind), compressor(libdeflate_alloc_compressor(level)) {
    if (compressor == nullptr) throw std::bad_alloc();
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { libdeflate_free_compressor(compressor); }

  Wrapper wrapper;
  libdeflate_compressor* compressor;
};

Deflater::Deflater(Wrapper wrapper, int level) : state_(std::make_unique<State>(wrapper, level)) {}
Deflater::~Deflater() = default;

std::span<const std::byte> Deflater::Compress(std::span<const std::byte> bytes) {
  const bool isZlib = state_->wrapper == Wrapper::kZlib;
  libdeflate_compressor* const compressor = state_->compressor;
  const auto bound = isZlib ? libdeflate_zlib_compress_bound : libdeflate_gzip_compress_bound;
  const auto compress = isZlib ? libdeflate_zlib_compress : libdeflate_gzip_compress;
  const std::size_t most = bound(compressor, bytes.size());
  if (buffer_.size() < most) buffer_.resize(most);
  const std::size_t size = compress(compressor, bytes.data(), bytes.size(), buffer_.data(), buffer_.size());
  return {buffer_.data(), size};
}

std::optional<std::vector<std::byte>> InflateGzip(std::span<const std::byte> stream, std::size_t size) {
  const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
      libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  if (!decompressor) throw std::bad_alloc();
  std::vector<std::byte> bytes(size);
  std::size_t read = 0;
  const libdeflate_result result = libdeflate_gzip_decompress_ex(
      decompressor.get(), stream.data(), stream.size(), bytes.data(), size, &read, nullptr);
  return result == LIBDEFLATE_SUCCESS && read == stream.size() ? std::optional(std::move(bytes))
                                                               : std::nullopt;
}

}  // namespace zrml::convert
