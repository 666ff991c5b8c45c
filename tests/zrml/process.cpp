#include "tests/zrml/process.h"

#include <fstream>
#include <iterator>

namespace zrml::test {

std::string ReadBytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace zrml::test
