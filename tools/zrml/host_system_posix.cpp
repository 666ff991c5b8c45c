#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"

namespace zrml::tool {
namespace {

constexpr std::size_t kUsualWidth = 80;

// Whether a library's file holds everything that is mapped into memory. The loader would notice too late.
// True for other files: the loader reports those.
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

std::string Reason(int error) { return std::generic_category().message(error); }

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void* LoadSharedLibrary(const std::string& path, std::string& error) {
  std::string native = path;
  if (native.find('/') == std::string::npos)
    native.insert(0, "./");  // a bare name would be looked up in system folders
  struct stat status = {};
  if (::stat(native.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    error = "it is no file";  // a pipe would let the loader wait
    return nullptr;
  }
  if (!IsWhole(native)) {
    error = "the file is cut";
    return nullptr;
  }
  void* const library = ::dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
  const char* const reason = library == nullptr ? ::dlerror() : nullptr;
  if (library == nullptr) error = reason != nullptr ? reason : "unknown error";
  return library;
}

void* FindExport(void* library, const char* name) { return ::dlsym(library, name); }

bool CanOpenFiles(int count, std::string& error) {
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

bool IsErrorTerminal() { return ::isatty(STDERR_FILENO) == 1; }

// Only where there is a screen: on others a browser of text might take the terminal.
void OpenInBrowser(const std::string& address) {
  const bool hasScreen = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
  if (!hasScreen) return;
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    ::posix_spawn_file_actions_addopen(&files, stream, "/dev/null", O_RDWR, 0);
  std::string program = "xdg-open";
  std::string argument = address;
  std::array<char*, 3> arguments = {program.data(), argument.data(), nullptr};
  pid_t process = 0;
  ::posix_spawnp(&process, program.c_str(), &files, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&files);
}

std::size_t ErrorTerminalWidth() {
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

void ReportFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

WriteResult WriteStream(Stream stream, std::string_view utf8, std::string& error) {
  const int file = stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO;
  while (!utf8.empty()) {
    const ssize_t count = ::write(file, utf8.data(), utf8.size());
    if (count >= 0) {
      utf8.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EPIPE) {
      return WriteResult::kReaderGone;
    } else if (errno == EAGAIN) {  // another program has made the pipe non-blocking
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

}  // namespace zrml::tool
