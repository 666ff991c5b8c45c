#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "tests/zrml/process.h"

namespace zrml::test {
namespace {

/// The program's standard streams, and the folder it runs in.
class FileActions {
 public:
  FileActions(const ProcessSetup& setup, int pipe) {
    ::posix_spawn_file_actions_init(&actions_);
    switch (setup.outputTo) {
      case OutputTo::kFile:
        Open(STDOUT_FILENO, setup.scratch / "output");
        break;
      case OutputTo::kFullDisk:
        Open(STDOUT_FILENO, "/dev/full");
        break;
      case OutputTo::kClosedPipe:
        ::posix_spawn_file_actions_adddup2(&actions_, pipe, STDOUT_FILENO);
        break;
    }
    Open(STDERR_FILENO, setup.scratch / "errors");
    if (!setup.folder.empty()) {
      ::posix_spawn_file_actions_addchdir_np(&actions_, setup.folder.c_str());
    }
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  void Open(int descriptor, const std::filesystem::path& file) {
    ::posix_spawn_file_actions_addopen(&actions_, descriptor, file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                       0600);
  }

  posix_spawn_file_actions_t actions_{};
};

/// The writing end of a pipe without a reader.
int ClosedPipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return -1;
  ::close(ends[0]);
  return ends[1];
}

/// Starts the program with signals set as a shell does; 0 or the error. Never copies the test's memory, which
/// a busy machine may refuse; a refusal despite that is retried.
int Start(const ProcessSetup& setup, const FileActions& actions, char* const* arguments, pid_t& child) {
  sigset_t pipe;
  ::sigemptyset(&pipe);
  ::sigaddset(&pipe, SIGPIPE);
  posix_spawnattr_t attributes;
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setsigdefault(&attributes, &pipe);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  int error = 0;
  for (int attempt = 0; attempt < 50; ++attempt) {
    error = ::posix_spawn(&child, setup.program.c_str(), actions.Get(), &attributes, arguments, environ);
    if (error != EAGAIN && error != ENOMEM) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ::posix_spawnattr_destroy(&attributes);
  return error;
}

}  // namespace

ProcessResult RunProcess(const ProcessSetup& setup) {
  std::vector<std::string> arguments = setup.arguments;
  arguments.insert(arguments.begin(), setup.program.string());
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);

  const int pipe = setup.outputTo == OutputTo::kClosedPipe ? ClosedPipe() : -1;
  pid_t child = 0;
  const int error = Start(setup, FileActions(setup, pipe), pointers.data(), child);
  if (pipe >= 0) ::close(pipe);

  ProcessResult result;
  if (error != 0) {
    result.errors = "cannot be started: " + std::generic_category().message(error);
    return result;
  }
  int state = 0;
  while (::waitpid(child, &state, 0) != child) {
    if (errno == EINTR) continue;
    result.errors = "cannot be waited for: " + std::generic_category().message(errno);
    return result;
  }
  result.status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
  if (setup.outputTo == OutputTo::kFile) result.output = ReadBytes(setup.scratch / "output");
  result.errors = ReadBytes(setup.scratch / "errors");
  return result;
}

}  // namespace zrml::test
