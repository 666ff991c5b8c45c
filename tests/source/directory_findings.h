// The findings of a directory, for tests that damage a sound one by a single edit.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/raw_directory.h"
#include "tests/support/sound_directory.h"

namespace zrml::masslynx::test {

using Edit = void (*)(const TempDirectory& directory);

using zrml::test::SoundDirectory;

inline std::vector<Finding> Collect(const TempDirectory& directory) {
  std::optional<RawDirectory> opened = RawDirectory::Open(directory.SystemPath());
  if (!opened) return {};
  const Findings findings = opened->CollectFindings();
  return {findings.List().begin(), findings.List().end()};
}

using Lines = std::vector<std::string>;

inline Lines LinesOf(const TempDirectory& directory) {
  Lines lines;
  for (const Finding& finding : Collect(directory))
    lines.push_back(std::string(NameOf(finding.code)) + ": " + finding.file + " " + finding.problem);
  return lines;
}

inline void ExpectLines(const RawDirectoryBuilder& raw, const Lines& lines, Edit edit) {
  const TempDirectory directory = raw.Build();
  EXPECT_EQ(LinesOf(directory), Lines()) << "the control";
  edit(directory);
  EXPECT_EQ(LinesOf(directory), lines);
}

inline void ZeroFrom(FileBytes& bytes, std::size_t from) {
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(), std::byte{0});
}

}  // namespace zrml::masslynx::test
