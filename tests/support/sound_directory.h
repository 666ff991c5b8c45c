// A sound raw directory for tests that damage it.
#pragma once

#include "tests/support/raw_directory_builder.h"

namespace zrml::test {

/// Two functions of data format 9, 6 bytes a point: 3 scans of 2 points and 2 scans of 1 point. The first has
/// statistics.
inline RawDirectoryBuilder SoundDirectory() {
  RawDirectoryBuilder raw;
  raw.functions.resize(2);
  raw.functions[0].statistics = StatisticsLayout();
  for (const float minutes : {0.1F, 0.2F, 0.3F})
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  for (ScanFiles& scan : raw.functions[0].scans) scan.statistics.firstBytes = 2;  // records have values
  for (const float minutes : {0.1F, 0.2F})
    raw.functions[1].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{300, 1}}));
  return raw;
}

}  // namespace zrml::test
