// deflate_blocks zlib|gzip FILE: compresses each block of FILE, which stands after its length in four bytes,
// as `zrml convert` does by default: what scripts/bench-convert.sh measures it against. Prints the compressed
// size.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

#include "common/bytes.h"
#include "convert/deflate.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  std::ifstream file(arguments[2], std::ios::binary);
  std::vector<char> blocks(std::filesystem::file_size(arguments[2]));
  file.read(blocks.data(), static_cast<std::streamsize>(blocks.size()));
  using Wrapper = zrml::convert::Deflater::Wrapper;
  zrml::convert::Deflater deflater(std::string_view(arguments[1]) == "gzip" ? Wrapper::kGzip
                                                                            : Wrapper::kZlib);
  std::size_t packed = 0;
  std::span<const std::byte> left = std::as_bytes(std::span(blocks));
  while (left.size() >= sizeof(std::uint32_t)) {
    const std::uint32_t size = zrml::LoadU32(left.data());
    left = left.subspan(sizeof size);
    packed += deflater.Compress(left.first(size)).size();
    left = left.subspan(size);
  }
  std::printf("%zu\n", packed);
}
