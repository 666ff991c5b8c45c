#include <algorithm>
#include <limits>
#include <new>
#include <zlib.h>

#include "convert/deflate.h"

namespace zrml::convert {
namespace {

constexpr int kWindowBits = 15;
constexpr int kGzip = 16;  // added to the window bits
constexpr int kMemoryLevel = 8;

// zlib counts in 32 bits.
uInt Piece(std::size_t size) {
  return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

}  // namespace

struct Deflater::State {
  State(Wrapper wrapper, int level) {
    const int bits = wrapper == Wrapper::kZlib ? kWindowBits : kWindowBits + kGzip;
    if (deflateInit2(&stream, level, Z_DEFLATED, bits, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { deflateEnd(&stream); }

  z_stream stream{};
};

Deflater::Deflater(Wrapper wrapper, int level) : state_(std::make_unique<State>(wrapper, level)) {}
Deflater::~Deflater() = default;

std::span<const std::byte> Deflater::Compress(std::span<const std::byte> bytes) {
  z_stream& stream = state_->stream;
  deflateReset(&stream);
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(bytes.data()));
  std::size_t written = 0;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    const std::size_t read =
        static_cast<std::size_t>(reinterpret_cast<const std::byte*>(stream.next_in) - bytes.data());
    stream.avail_in = Piece(bytes.size() - read);
    if (buffer_.size() - written < bytes.size() / 8 + 64) buffer_.resize(buffer_.size() * 2 + 4096);
    stream.next_out = reinterpret_cast<Bytef*>(buffer_.data() + written);
    stream.avail_out = Piece(buffer_.size() - written);
    const uInt room = stream.avail_out;
    const bool isLast = bytes.size() - read == stream.avail_in;
    result = deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
    if (result == Z_STREAM_ERROR) throw std::bad_alloc();
    written += room - stream.avail_out;
  }
  return {buffer_.data(), written};
}

std::optional<std::vector<std::byte>> InflateGzip(std::span<const std::byte> stream, std::size_t size) {
  z_stream inflater{};
  if (inflateInit2(&inflater, kWindowBits + kGzip) != Z_OK) throw std::bad_alloc();
  std::vector<std::byte> bytes(size + 1);  // not empty, even for size 0
  inflater.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(stream.data()));
  inflater.avail_in = Piece(stream.size());
  inflater.next_out = reinterpret_cast<Bytef*>(bytes.data());
  inflater.avail_out = Piece(bytes.size());
  const bool isWhole =
      inflate(&inflater, Z_FINISH) == Z_STREAM_END && inflater.avail_in == 0 && inflater.total_out == size;
  inflateEnd(&inflater);
  bytes.resize(size);
  return isWhole ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace zrml::convert
