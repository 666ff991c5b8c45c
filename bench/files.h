// Reads whole files, for the floors.
#pragma once

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace zrml::bench {

/// Opens, reads into `buffer`, which grows as needed, and closes.
inline void ReadWhole(const std::filesystem::path& path, std::vector<char>& buffer) {
  const int file = ::open(path.c_str(), O_RDONLY);
  struct stat status {};
  ::fstat(file, &status);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (buffer.size() < size) buffer.resize(size);
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = ::read(file, buffer.data() + done, size - done);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  ::close(file);
}

}  // namespace zrml::bench
