// What the program asks of the operating system: its arguments, libraries to load, and the standard streams.
// Text is UTF-8; paths are the system's own bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zrml::tool {

/// The arguments without the program's name, as native text (UTF-8 on Windows).
std::vector<std::string> ProgramArguments(int argc, char** argv);

/// A shared library stays loaded as long as the program runs: an exception from it outlives the code
/// that loaded it. Null when `path` cannot be loaded; `error` then says why.
void* LoadSharedLibrary(const std::string& path, std::string& error);

/// The exported function `name`; null when there is none.
void* FindExport(void* library, const char* name);

/// Whether `count` more files can be open at once; `error` says why not.
bool CanOpenFiles(int count, std::string& error);

/// Asks the system's browser to show `address`; nothing happens where there is none.
void OpenInBrowser(const std::string& address);

enum class Stream { kOutput, kError };
enum class WriteResult { kWritten, kReaderGone, kInterrupted, kFailed };

/// Whether standard error is shown to a person.
bool IsErrorTerminal();

/// Columns of that terminal; a usual number when it is not a terminal or does not say.
std::size_t ErrorTerminalWidth();

/// Makes a write to a closed pipe, or past the largest size that a file may have, a result instead of the end
/// of the program.
void ReportFailedWrites();

/// Writes all of `utf8`, byte for byte. `error` says why it failed. Interrupted when the user wishes to stop
/// (interruption.h) while the program waits for the reader.
WriteResult WriteStream(Stream stream, std::string_view utf8, std::string& error);

}  // namespace zrml::tool
