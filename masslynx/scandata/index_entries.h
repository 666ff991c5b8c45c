// The records of a scan index, read in the order of the file, and what is seen of them on the way.
// docs/scan-index.md
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/scan_statistics.h"
#include "masslynx/scandata/scan_times.h"

namespace zrml::masslynx {

/// Times that are not numbers are the latest.
bool EarlierTime(const ScanIndexEntry& a, const ScanIndexEntry& b);

/// What a look at each entry in turn shows.
struct EntryOrder {
  bool inFileOrder = true;     // data offsets ascend
  bool inTimeOrder = true;     // times ascend
  bool areBackToBack = true;   // each begins where the one before ends, the first at 0
  bool haveTimes = true;       // none has one that no run has
  bool areAllOfPoints = true;  // no scan is empty
  std::uint64_t end = 0;       // of the last one
  std::uint64_t reached = 0;   // the last offset that is known
  float latest = -std::numeric_limits<float>::infinity();
};

/// The entries of an index, and whether their data offsets and their times ascend.
struct Entries : EntryOrder {
  std::vector<ScanIndexEntry> list;
  std::size_t filled = 0;  // with statistics, from the first on
  // As measured:
  Places zeroRecords;            // the first one only where its points are missing
  std::size_t dropped = 0;       // of these, at the end of the index
  Places untimed;                // that have a stand-in for their time
  Places unplaced;               // without an offset, behind records that have lost their points to zeros
  bool beginsWithZeros = false;  // the first record

  /// While entries are still in the cache. Those behind one that will move are filled when it has moved.
  void FillFrom(StatisticsReader& statistics);

  std::size_t Records() const { return list.size() + dropped; }

  bool MayLackTimes() const { return !inTimeOrder || !haveTimes || !zeroRecords.empty(); }

  /// The quick look may have been wrong.
  void LookAtTimes();

  /// The first record is an empty scan at 0 minutes, unless its points are missing.
  void LoseFirst();

  /// Records that may have lost their number of points to zeros: those without points, and those whose time
  /// is lost.
  Places Doubtful() const;

  /// Those of them that have lost both.
  Places WithoutTimeAndPoints() const;

  /// Records of zeros at the end are no scans; scans without a time get a stand-in.
  void DropZerosAndLostTimes();

 private:
  // Profile or centroids, which a record of zeros does not tell, also where it is an empty scan. All scans of
  // a function are the same.
  void TakeRepresentationOfSoundRecord();
};

/// The entries of all whole records that can be read; no more than `count`. Some may have their statistics.
Entries ReadEntries(const platform::File& file, std::size_t recordSize, std::size_t count, int dataFormat,
                    IndexView view, StatisticsReader* statistics = nullptr);

}  // namespace zrml::masslynx
