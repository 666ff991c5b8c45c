// Which scans of a source are wanted, and what of their points.
#pragma once

#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "source/point_filter.h"
#include "source/source.h"

namespace zrml::convert {

/// Numbers from 1, listed as "3", "1,4-6", "2-". Without a list every number is in.
class NumberSet {
 public:
  NumberSet() = default;
  /// No value when `text` is not such a list.
  static std::optional<NumberSet> Parse(std::string_view text);

  /// What has no number is in no list.
  bool Has(std::optional<int> number) const;
  bool IsAll() const { return ranges_.empty(); }
  /// Those listed alone, not in a range.
  std::vector<int> Named() const;

 private:
  friend class FunctionSet;
  struct Range {
    int first = 1;
    int last = std::numeric_limits<int>::max();
  };
  static std::optional<Range> ParseRange(std::string_view text);

  std::vector<Range> ranges_;
};

/// Functions, listed as "4", "1,3-5", "2-" for acquired ones by the numbers of their files, "p2"
/// and "p2.2" for processed ones. Without a list every function is in.
class FunctionSet {
 public:
  FunctionSet() = default;
  /// No value when `text` is not such a list.
  static std::optional<FunctionSet> Parse(std::string_view text);

  bool Has(const source::FunctionId& id) const;
  bool IsAll() const { return acquired_.IsAll() && processed_.empty(); }
  /// Those listed by name, not in a range.
  std::vector<source::FunctionId> Named() const;
  /// The acquired function that is listed first, or that begins a range. No value when none is listed.
  std::optional<source::FunctionId> First() const;
  /// The listed function when it is one alone, by its name.
  std::optional<source::FunctionId> Only() const;

 private:
  bool Add(std::string_view text);

  NumberSet acquired_;  // none without ranges, unless nothing is listed at all
  std::vector<source::FunctionId> processed_;
};

/// "0.5-3", "2-" and "-7.25": minutes or m/z, both ends included. No value when `text` is none of these.
std::optional<source::Range> ParseTimeRange(std::string_view text);

/// A decimal number without sign or exponent, such as "5", "5." or ".5". No value when `text` is something
/// else.
std::optional<double> ParseDecimal(std::string_view text);

/// What becomes of the points of mass spectra. Absorbance and the channels of ion monitoring stay.
struct PointChoice {
  std::optional<NumberSet> centroidLevels = {};  ///< MS levels whose profiles become centroids
  CentroidOptions centroids = {};
  source::PointFilter filter = {};  ///< of the centroids, where there are any

  bool IsAll() const { return !centroidLevels && filter.TakesAll(); }
};

struct Selection {
  FunctionSet functions = {};
  NumberSet scans = {};
  NumberSet msLevels = {};  ///< absorbance spectra have none; ion monitoring is in such a list when it is
                            ///< listed as a function
  std::optional<source::Range> minutes = {};
  source::Polarity polarity = source::Polarity::kUnknown;  ///< unless unknown, that of the functions
  PointChoice points = {};
  bool isLockMassExcluded = false;
  bool hasAbsorbance = false;        ///< absorbance spectra, also unlisted and beside mass spectra
  bool hasMonitoredSpectra = false;  ///< spectra of ion monitoring beside the chromatograms of its channels
  bool hasProfiles = false;          ///< profile spectra in MGF

  bool IsAll() const {
    return functions.IsAll() && scans.IsAll() && msLevels.IsAll() && !minutes &&
           polarity == source::Polarity::kUnknown && !isLockMassExcluded;
  }
  /// A time that is not a number is in no range. A time that prints like an end of the range is in it: text
  /// has the decimals of single precision.
  bool HasTime(double time) const {
    const auto isAt = [time](double end) { return static_cast<float>(time) == static_cast<float>(end); };
    return !minutes ||
           ((time >= minutes->low || isAt(minutes->low)) && (time <= minutes->high || isAt(minutes->high)));
  }
  /// Absorbance has no polarity.
  bool HasPolarity(const source::Function& function) const {
    return polarity == source::Polarity::kUnknown || function.polarity == polarity;
  }
  /// A scan at a position from 0.
  bool Has(int scan, double time) const { return scans.Has(scan + 1) && HasTime(time); }
};

}  // namespace zrml::convert
