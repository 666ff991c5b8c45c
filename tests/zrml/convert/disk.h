// For libraries that are preloaded into zrml: they define ReadDisk, which replaces the system's reads.
#pragma once

#undef _FORTIFY_SOURCE  // whose headers define the functions that are replaced here
#include <array>
#include <cstdio>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

ssize_t ReadDisk(int file, void* bytes, size_t count, off_t offset);

inline ssize_t ReadSystem(int file, void* bytes, size_t count, off_t offset) {
  return ::syscall(SYS_pread64, file, bytes, count, offset);
}

inline std::string PathOf(int file) {
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

extern "C" __attribute__((visibility("default"))) ssize_t pread(int file, void* bytes, size_t count,
                                                                off_t offset) {
  return ReadDisk(file, bytes, count, offset);
}

extern "C" __attribute__((visibility("default"))) ssize_t pread64(int file, void* bytes, size_t count,
                                                                  off_t offset) {
  return ReadDisk(file, bytes, count, offset);
}
