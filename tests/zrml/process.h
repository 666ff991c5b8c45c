// Runs a program as a process and keeps its output.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zrml::test {

enum class OutputTo {
  kFile,        // kept
  kClosedPipe,  // a pipe whose reader is gone
  kFullDisk,    // not on Windows
};

struct ProcessSetup {
  std::filesystem::path program;
  std::vector<std::string> arguments;  // UTF-8
  std::filesystem::path folder;        // to run in; empty for this one
  std::filesystem::path scratch;       // an existing folder for its output
  OutputTo outputTo = OutputTo::kFile;
};

struct ProcessResult {
  int status = -1;  // 128 and the signal when one ended it
  std::string output;
  std::string errors;
};

ProcessResult RunProcess(const ProcessSetup& setup);

/// The bytes of a file.
std::string ReadBytes(const std::filesystem::path& file);

}  // namespace zrml::test
