#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "common/platform/platform.h"
#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

constexpr std::size_t kUsualWidth = 80;

// Whether all that a library would have in memory is in its file. The loader would find out on the way, too
// late. True of what is no library: the loader says so.
bool IsWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  Elf64_Ehdr header = {};
  if (!file.read(reinterpret_cast<char*>(&header), sizeof header)) return true;
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64)
    return true;
  const auto size = static_cast<std::uint64_t>(file.seekg(0, std::ios::end).tellg());
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    Elf64_Phdr segment = {};
    file.seekg(static_cast<std::streamoff>(header.e_phoff + i * std::uint64_t{header.e_phentsize}));
    if (!file.read(reinterpret_cast<char*>(&segment), sizeof segment)) return false;
    const std::uint64_t end = segment.p_offset + segment.p_filesz;
    if (segment.p_type == PT_LOAD && (end < segment.p_offset || end > size)) return false;
  }
  return true;
}

std::wstring Reason(int error) { return platform::FromNativePath(std::generic_category().message(error)); }

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

std::wstring ProgramFolder() {
  std::error_code ignored;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return platform::FromNativePath((program.parent_path() / "").native());
}

std::optional<SharedLibrary> SharedLibrary::Load(const std::wstring& path, std::wstring& error) {
  std::string native = platform::ToNativePath(path);
  if (native.find('/') == std::string::npos)
    native.insert(0, "./");  // a bare name would be looked up in system folders
  struct stat status = {};
  if (::stat(native.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    error = L"it is no file";  // a pipe would let the loader wait
    return std::nullopt;
  }
  if (!IsWhole(native)) {
    error = L"the file is cut";
    return std::nullopt;
  }
  if (void* handle = ::dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL)) return SharedLibrary(handle);
  const char* reason = ::dlerror();
  error = platform::FromNativePath(reason != nullptr ? reason : "unknown error");
  return std::nullopt;
}

void* SharedLibrary::Symbol(const char* name) const { return ::dlsym(handle_, name); }

std::wstring WhyOutOfReach(const std::wstring& path) {
  struct stat status = {};
  if (::stat(platform::ToNativePath(path).c_str(), &status) == 0) return {};
  const bool isMissing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
  return isMissing ? std::wstring() : Reason(errno);
}

bool CanOpenFiles(int count, std::wstring& error) {
  std::vector<int> files;
  int failure = 0;
  while (failure == 0 && static_cast<int>(files.size()) < count) {
    const int file = ::open("/", O_PATH | O_CLOEXEC);
    if (file >= 0) {
      files.push_back(file);
    } else {
      failure = errno;
    }
  }
  for (const int file : files) ::close(file);
  if (failure != 0) error = Reason(failure);
  return failure == 0;
}

bool IsTerminal(Stream stream) {
  return ::isatty(stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

std::size_t TerminalWidth(Stream stream) {
  winsize size{};
  const int file = stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO;
  return ::ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

void ReportFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

WriteResult WriteStream(Stream stream, std::string_view utf8, std::wstring& error) {
  const int file = stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO;
  while (!utf8.empty()) {
    const ssize_t count = ::write(file, utf8.data(), utf8.size());
    if (count >= 0) {
      utf8.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EPIPE) {
      return WriteResult::kReaderGone;
    } else if (errno == EAGAIN) {  // somebody has made the pipe one that does not wait
      pollfd reader = {file, POLLOUT, 0};
      ::poll(&reader, 1, -1);
    } else if (errno != EINTR) {
      error = Reason(errno);
      return WriteResult::kFailed;
    }
    if (!utf8.empty() && IsInterrupted()) return WriteResult::kInterrupted;
  }
  return WriteResult::kWritten;
}

}  // namespace zrml
