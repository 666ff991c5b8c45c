#include <windows.h>

#include "common/platform/platform.h"
#include "tests/zrml/process.h"

namespace zrml::test {
namespace {

HANDLE OpenForWriting(const std::filesystem::path& file) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE OpenOutput(const ProcessSetup& setup) {
  if (setup.outputTo != OutputTo::kClosedPipe) return OpenForWriting(setup.scratch / "output");
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE reader = nullptr;
  HANDLE writer = INVALID_HANDLE_VALUE;
  ::CreatePipe(&reader, &writer, &inherited, 0);
  ::CloseHandle(reader);
  return writer;
}

// Quoted as programs split their command line: backslashes are doubled before a quote.
std::wstring Quoted(const std::wstring& argument) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L'"';
}

}  // namespace

ProcessResult RunProcess(const ProcessSetup& setup) {
  std::wstring commandLine = Quoted(setup.program.wstring());
  for (const std::string& argument : setup.arguments) {
    commandLine += L' ' + Quoted(platform::FromNativePath(argument));
  }
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = OpenOutput(setup);
  startup.hStdError = OpenForWriting(setup.scratch / "errors");
  PROCESS_INFORMATION process{};
  const wchar_t* folder = setup.folder.empty() ? nullptr : setup.folder.c_str();
  bool isRunning = false;
  for (int attempt = 0; attempt < 50 && !isRunning; ++attempt) {  // a busy machine may refuse it
    if (attempt > 0) ::Sleep(100);
    isRunning = ::CreateProcessW(setup.program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0,
                                 nullptr, folder, &startup, &process) != 0;
  }
  ::CloseHandle(startup.hStdOutput);
  ::CloseHandle(startup.hStdError);
  ProcessResult result;
  if (!isRunning) return result;
  ::WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 0;
  ::GetExitCodeProcess(process.hProcess, &status);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  result.status = static_cast<int>(status);
  if (setup.outputTo == OutputTo::kFile) result.output = ReadBytes(setup.scratch / "output");
  result.errors = ReadBytes(setup.scratch / "errors");
  return result;
}

}  // namespace zrml::test
