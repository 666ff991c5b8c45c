// Reads the statistics of a function's scans into its index. docs/scan-statistics.md
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "common/findings.h"
#include "common/platform/platform.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// The statistics of one function, part by part. A missing file or one of another version changes nothing;
/// items outside the file or the file's record size read as 0.
class StatisticsReader {
 public:
  StatisticsReader(const platform::SystemPath& folder, const FunctionRecord& function);

  /// Fills the statistics members of the time-ordered index from `first` on; those before are filled. From 0
  /// on it begins anew.
  void Fill(std::span<ScanIndexEntry> entries, std::size_t first = 0);

  /// Whether there are statistics that can be read.
  bool IsKnown() const { return isKnown_; }
  /// Whether masses of all scans filled are calibrated in one way.
  bool HaveOneCalibration() const { return haveOneCalibration_; }
  /// Whether all values of the scans filled may be values.
  bool ArePossible() const { return arePossible_; }
  /// False for precursors and temperatures that no instrument has. In a survey precursors count only where
  /// the file says that it has them.
  bool MayBe(const ScanIndexEntry& scan) const;

  /// Whether some of the scans filled lack what others have, precursors or temperatures.
  bool SomeLackValues() const { return have_ > 0 && lack_ > 0; }

  /// See masslynx::NoticeRefusal().
  void NoticeRefusal(std::string* refusal) const;

  struct Place {
    std::uint16_t recordsOffset = 0;
    std::uint16_t recordSize = 0;
  };

  /// The offsets of the items in a record; 0 for an absent item.
  struct ItemOffsets {
    std::uint16_t auxValue = 0;
    std::uint16_t precursorMass = 0;
    std::uint16_t precursorFlags = 0;
    std::uint16_t temperatureValid = 0;
    std::uint16_t temperature = 0;
    std::uint16_t temperatureCoefficient = 0;
    std::size_t recordSize = 0;  ///< with which a record has all items

    bool HasTemperature() const {
      return temperatureValid != 0 && temperature != 0 && temperatureCoefficient != 0;
    }
    bool HasPartOfTemperature() const {
      return !HasTemperature() && (temperatureValid != 0 || temperature != 0 || temperatureCoefficient != 0);
    }
  };

 private:
  void LookAt(std::span<const ScanIndexEntry> entries, std::size_t first, std::size_t count);

  const platform::SystemPath& folder_;
  const FunctionRecord& function_;
  platform::File file_;
  bool isKnown_ = false;
  bool hasPrecursors_ = false;  // that tell something
  Place place_;
  ItemOffsets items_;
  bool haveOneCalibration_ = true;
  bool arePossible_ = true;
  std::size_t have_ = 0;  // scans with values
  std::size_t lack_ = 0;
};

/// Reports damage that the file, which may be missing, shows next to an index of `scans` scans. Gives whether
/// it has a record for each of them. `someLackValues`: see StatisticsReader; false saves reading the records.
bool NoticeStatistics(const platform::SystemPath& folder, const FunctionRecord& function, std::uint64_t scans,
                      bool someLackValues, Findings& findings);

}  // namespace zrml::masslynx
