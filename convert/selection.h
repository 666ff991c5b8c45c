// Which scans of a source are wanted.
#pragma once

#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "source/source.h"

namespace zrml::convert {

/// Numbers from 1 as people list them: "3", "1,4-6", "2-". Without a list every number is in.
class NumberSet {
 public:
  NumberSet() = default;
  /// No value when `text` is no such list.
  static std::optional<NumberSet> Parse(std::string_view text);

  bool Has(int number) const;
  bool IsAll() const { return ranges_.empty(); }

 private:
  friend class FunctionSet;
  struct Range {
    int first = 1;
    int last = std::numeric_limits<int>::max();
  };
  static std::optional<Range> ParseRange(std::string_view text);

  std::vector<Range> ranges_;
};

/// Functions as people list them: "4", "1,3-5", "2-" for acquired ones by the numbers of their files, "p2"
/// and "p2.2" for processed ones. Without a list every function is in.
class FunctionSet {
 public:
  FunctionSet() = default;
  /// No value when `text` is no such list.
  static std::optional<FunctionSet> Parse(std::string_view text);

  bool Has(const source::FunctionId& id) const;
  bool IsAll() const { return acquired_.IsAll() && processed_.empty(); }

 private:
  bool Add(std::string_view text);

  NumberSet acquired_;  // none without ranges, unless nothing is listed at all
  std::vector<source::FunctionId> processed_;
};

/// "0.5-3", "2-" and "-7.25": minutes, both ends included. No value when `text` is none of these.
std::optional<source::Range> ParseTimeRange(std::string_view text);

struct Selection {
  FunctionSet functions;
  NumberSet scans;
  NumberSet msLevels;  ///< absorbance spectra have none
  std::optional<source::Range> minutes;
  bool isLockMassExcluded = false;

  bool IsAll() const {
    return functions.IsAll() && scans.IsAll() && msLevels.IsAll() && !minutes && !isLockMassExcluded;
  }
  /// A time that is no number is in no range.
  bool HasTime(double time) const { return !minutes || (time >= minutes->low && time <= minutes->high); }
};

}  // namespace zrml::convert
