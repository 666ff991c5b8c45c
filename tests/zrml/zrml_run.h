// The program under test, run with the stand-in plug-in, and sources for it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"
#include "tests/zrml/process.h"

namespace zrml::test {

/// A test with a folder of its own, removed at its end.
class ZrmlTest : public testing::Test {
 protected:
  ZrmlTest();

  /// Runs zrml with `arguments` and the stand-in plug-in.
  ProcessResult Run(std::vector<std::string> arguments) const;
  /// The same without naming a plug-in.
  ProcessResult RunBare(std::vector<std::string> arguments) const;

  /// Paths as UTF-8 arguments.
  std::string Path(const std::string& name) const;
  /// A folder that FakeFolder takes when `text` begins with "valid".
  std::string MakeFolder(const std::string& name, const std::string& text = "valid") const;
  std::string MakeFile(const std::string& name) const;

  const TempDirectory temporary_{"test"};
  const std::filesystem::path folder_ = temporary_.Path();
  ProcessSetup setup_;  // what Run starts from
};

/// The path of one of the stand-in plug-ins as an argument.
std::string PluginArgument(const char* path);

/// `status`, nothing on standard output, and "zrml: `message`" as the one line on standard error.
void ExpectFailure(const ProcessResult& result, int status, const std::string& message);

/// Status 0, `output`, and nothing on standard error.
void ExpectOutput(const ProcessResult& result, const std::string& output);

}  // namespace zrml::test
