// Runs a fuzz target without a fuzzer: on the given files, those in the given folders, and a fixed number of
// damaged forms of each. Every run does the same.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/spectrum/random_numbers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Contents = std::vector<std::uint8_t>;

int runs = 0;

void Run(const Contents& contents) {
  LLVMFuzzerTestOneInput(contents.data(), contents.size());
  ++runs;
}

Contents Read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// One edit: a byte or word set to an interesting value, a bit flipped, a cut, or a part repeated.
void Damage(zrml::RandomNumbers& random, Contents& contents) {
  constexpr std::uint32_t kTelling[] = {0,      1,      0x7F,     0x80,       0xFF,
                                        0x7FFF, 0xFFFF, 0x3FFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
  if (contents.empty()) return contents.push_back(static_cast<std::uint8_t>(random.Next()));
  const auto at = static_cast<std::size_t>(random.Below(static_cast<int>(contents.size())));
  const auto position = contents.begin() + static_cast<std::ptrdiff_t>(at);
  switch (random.Below(5)) {
    case 0:
      contents[at] = static_cast<std::uint8_t>(random.Next());
      break;
    case 1:
      contents[at] ^= static_cast<std::uint8_t>(1u << random.Below(8));
      break;
    case 2: {
      const std::uint32_t word = kTelling[random.Below(static_cast<int>(std::size(kTelling)))];
      for (std::size_t i = 0; i < 4 && at + i < contents.size(); ++i)
        contents[at + i] = static_cast<std::uint8_t>(word >> (8 * i));
      break;
    }
    case 3:
      contents.erase(position,
                     position + std::min<std::ptrdiff_t>(random.Below(64) + 1, contents.end() - position));
      break;
    default: {
      const Contents part(position, position + std::min<std::ptrdiff_t>(32, contents.end() - position));
      contents.insert(contents.begin() + static_cast<std::ptrdiff_t>(at), part.begin(), part.end());
    }
  }
}

void RunDamaged(const Contents& contents, std::uint64_t seed, int forms) {
  zrml::RandomNumbers random(seed * 0x9E3779B97F4A7C15ULL);
  for (int form = 0; form < forms; ++form) {
    Contents damaged = contents;
    for (int edit = random.Below(4); edit >= 0; --edit) Damage(random, damaged);
    Run(damaged);
  }
}

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

/// DAMAGED-FORMS PATH...: status 2 when a path is missing, so a test without input cannot pass.
int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const int forms = std::atoi(argv[1]);
  for (int i = 2; i < argc; ++i) {
    if (!std::filesystem::exists(argv[i])) {
      std::fprintf(stderr, "there is no %s\n", argv[i]);
      return 2;
    }
    std::uint64_t seed = 0;
    for (const std::filesystem::path& file : FilesOf(argv[i])) {
      const Contents contents = Read(file);
      Run(contents);
      RunDamaged(contents, ++seed, forms);
    }
  }
  std::printf("%d inputs\n", runs);
  return runs > 0 ? 0 : 2;
}
