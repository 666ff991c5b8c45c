// The program under test, run as a process, and sources for it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/report_writer.h"
#include "tests/support/temp_directory.h"
#include "tests/zrml/process.h"
#include "tests/zrml/small_acquisition.h"

namespace zrml::test {

/// A test with a folder of its own, removed at its end.
class ZrmlTest : public testing::Test {
 protected:
  ZrmlTest();

  /// Runs zrml with `arguments`.
  ProcessResult Run(std::vector<std::string> arguments) const;

  /// Paths as UTF-8 arguments.
  std::string Path(const std::string& name) const;
  std::string Make(const std::string& name, const RawDirectoryBuilder& raw = SmallAcquisition()) const;
  std::string Make(const std::string& name, const ReportLines& report) const;
  std::string MakeFile(const std::string& name, const std::string& text = "data") const;

  const TempDirectory temporary_{"test"};
  const std::filesystem::path folder_ = temporary_.Path();
  ProcessSetup setup_;  // what Run starts from
};

/// A path as an argument.
std::string Argument(const std::filesystem::path& path);

/// `status`, nothing on standard output, and "zrml: `message`" as the one line on standard error.
void ExpectFailure(const ProcessResult& result, int status, const std::string& message);

/// Status 0, `output`, and nothing on standard error.
void ExpectOutput(const ProcessResult& result, const std::string& output);

}  // namespace zrml::test
