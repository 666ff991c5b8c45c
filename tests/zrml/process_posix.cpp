#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/zrml/process.h"

namespace zrml::test {
namespace {

constexpr int kCannotRun = 127;

int OpenForWriting(const std::filesystem::path& file) {
  return ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
}

int OpenOutput(const ProcessSetup& setup) {
  switch (setup.outputTo) {
    case OutputTo::kFile:
      return OpenForWriting(setup.scratch / "output");
    case OutputTo::kFullDisk:
      return ::open("/dev/full", O_WRONLY);
    case OutputTo::kClosedPipe:
      break;
  }
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return -1;
  ::close(ends[0]);
  return ends[1];
}

[[noreturn]] void BecomeProgram(const ProcessSetup& setup) {
  const int output = OpenOutput(setup);
  const int errors = OpenForWriting(setup.scratch / "errors");
  std::signal(SIGPIPE, SIG_DFL);
  const bool isReady = ::dup2(output, STDOUT_FILENO) >= 0 && ::dup2(errors, STDERR_FILENO) >= 0 &&
                       (setup.folder.empty() || ::chdir(setup.folder.c_str()) == 0);
  if (!isReady) ::_exit(kCannotRun);
  std::vector<std::string> arguments = setup.arguments;
  arguments.insert(arguments.begin(), setup.program.string());
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  ::execv(setup.program.c_str(), pointers.data());
  ::_exit(kCannotRun);
}

}  // namespace

ProcessResult RunProcess(const ProcessSetup& setup) {
  const pid_t child = ::fork();
  if (child == 0) BecomeProgram(setup);
  ProcessResult result;
  int state = 0;
  if (child < 0 || ::waitpid(child, &state, 0) != child) return result;
  result.status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
  if (setup.outputTo == OutputTo::kFile) result.output = ReadBytes(setup.scratch / "output");
  result.errors = ReadBytes(setup.scratch / "errors");
  return result;
}

}  // namespace zrml::test
