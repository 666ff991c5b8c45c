// Which scans of a source are wanted.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tools/zrml/value.h"

namespace zrml {

/// Numbers from 1 as the user lists them: "3", "1,4-6", "2-". Without a list every number is in.
class NumberSet {
 public:
  NumberSet() = default;
  /// No value when `text` is no such list.
  static std::optional<NumberSet> Parse(const std::string& text);

  bool Has(int number) const;
  bool IsAll() const { return ranges_.empty(); }
  /// Whether `number` or a larger one is in.
  bool ReachesTo(int number) const;

 private:
  struct Range {
    int first = 1;
    int last = std::numeric_limits<int>::max();
  };
  static std::optional<Range> ParseRange(std::string_view text);

  std::vector<Range> ranges_;
};

/// "0.5-3", "2-" and "-7.25": minutes, both ends included. No value when `text` is none of these.
std::optional<NumberRange> ParseTimeRange(const std::string& text);

struct Selection {
  NumberSet functions;
  NumberSet scans;
  NumberSet msLevels;
  std::optional<NumberRange> minutes;
  bool isLockMassExcluded = false;

  /// Whether only scans with such numbers are wanted, and so no absorbance spectra, which have none.
  bool IsForMassSpectra() const { return !functions.IsAll() || !scans.IsAll() || !msLevels.IsAll(); }
  bool IsAll() const { return !IsForMassSpectra() && !minutes && !isLockMassExcluded; }
  /// A time that is no number is in no range.
  bool HasTime(double time) const { return !minutes || (time >= minutes->low && time <= minutes->high); }
};

}  // namespace zrml
