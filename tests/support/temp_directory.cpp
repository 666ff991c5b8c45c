#include "tests/support/temp_directory.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/platform/platform.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace zrml {
namespace {

namespace fs = std::filesystem;

// In memory where the system has such a folder and the user names no other: on a disk, rewriting a file waits
// for the disk.
fs::path FolderForAll() {
#ifndef _WIN32
  const fs::path memory = "/dev/shm";
  if (std::getenv("TMPDIR") == nullptr && ::access(memory.c_str(), W_OK) == 0) return memory;
#endif
  return fs::temp_directory_path();
}

fs::path MakeUniqueFolder() {
  std::random_device random;
  while (true) {
    fs::path folder = FolderForAll() / ("zrml-test-" + std::to_string(random()));
    if (fs::create_directory(folder)) return folder;
  }
}

std::wstring Wide(const fs::path& path) {
  const std::u8string utf8 = path.u8string();
  return platform::FromNativePath({reinterpret_cast<const char*>(utf8.data()), utf8.size()});
}

void Require(bool done, const fs::path& path) {
  if (!done) throw std::runtime_error("cannot access " + path.string());
}

}  // namespace

void WriteFileBytes(const fs::path& path, std::span<const std::byte> bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  Require(!file.fail(), path);
}

TempDirectory::TempDirectory(const fs::path& name) : folder_(MakeUniqueFolder()), path_(folder_ / name) {
  fs::create_directory(path_);
}

TempDirectory::TempDirectory(TempDirectory&& other) noexcept
    : folder_(std::exchange(other.folder_, {})), path_(std::exchange(other.path_, {})) {}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  if (!folder_.empty()) fs::remove_all(folder_, ignored);
}

std::wstring TempDirectory::WidePath() const { return Wide(path_); }

std::wstring TempDirectory::WidePath(const fs::path& name) const { return Wide(path_ / name); }

void TempDirectory::Write(const fs::path& name, std::span<const std::byte> bytes) const {
  WriteFileBytes(path_ / name, bytes);
}

void TempDirectory::WriteText(const fs::path& name, std::string_view text) const {
  Write(name, std::as_bytes(std::span(text)));
}

FileBytes TempDirectory::Read(const fs::path& name) const {
  const fs::path path = path_ / name;
  FileBytes bytes(static_cast<std::size_t>(fs::file_size(path)));
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  Require(!file.fail(), path);
  return bytes;
}

void TempDirectory::Truncate(const fs::path& name, std::uintmax_t size) const {
  fs::resize_file(path_ / name, size);
}

void TempDirectory::Rename(const fs::path& from, const fs::path& to) const {
  fs::rename(path_ / from, path_ / to);
}

void TempDirectory::Remove(const fs::path& name) const {
  Require(fs::remove_all(path_ / name) > 0, path_ / name);
}

void TempDirectory::MakeDirectory(const fs::path& name) const {
  Require(fs::create_directory(path_ / name), path_ / name);
}

}  // namespace zrml
