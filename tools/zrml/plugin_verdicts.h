// Judges single answers of a plug-in. The interface wants some to be others than what the files hold; each
// such difference is a row of one table. Every other difference is a fault.
#pragma once

#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "plugin/chromatogram.h"
#include "source/source.h"
#include "tools/zrml/slot_view.h"

namespace zrml::tool {

/// Differences that the interface wants, in the order of kWantedDifferences.
enum class Wanted {
  kRefusedTable,
  kFolderChoice,
  kDroppedChoice,
  kSamplesBehindEnd,
  kListPosition,
  kUnlistedFunction,
  kUnclosedFunction,
  kSharedName,
  kUnnamedFunction,
  kUnknownKind,
  kProcessedMobility,
  kScanDimensions,
  kCutOffsets,
  kLastDriftBin,
  kScanNumber,
  kPolarity,
  kNoPrecursor,
  kNoScanValue,
  kLostPoints,
  kUnwrittenPoints,
  kReportOrder,
  kRefusedSpectrum,
  kRefusedFirstSpectrum,
  kAbsentScanTime,
  kAbsentTime,
  kAbsentTotal,
  kAbsentBasePeak,
  kRefusedMassRange,
  kPrecursorSearch,
  kLostTraces,
  kRepeatedTrace,
  kGrowingTraces,
  kRefusedTrace,
  kAbsorbanceScan,
  kNoMetadata,
  kNoMetadataValue,
  kFolderEnd,
  kCount,
};

struct WantedDifference {
  Wanted difference;
  std::string_view slot;
  std::string_view reason;
};
extern const std::array<WantedDifference, static_cast<std::size_t>(Wanted::kCount)> kWantedDifferences;

struct PluginComparison {
  static constexpr std::size_t kMostFaults = 20;

  long long answers = 0;  // that were compared
  std::array<long long, static_cast<std::size_t>(Wanted::kCount)> wanted = {};
  std::vector<std::string> faults;  // the first of them, a line each
  long long faultCount = 0;
};

/// What is being compared, for whoever reads of a fault. Positions from 0.
struct Place {
  std::optional<int> sample = {};
  std::string function = {};
  std::optional<int> scan = {};
  std::optional<int> trace = {};

  /// " of sample 1, function 2", or nothing.
  std::string Text() const;
};

/// Nothing where `read` throws what a source throws.
template <class Read>
auto Held(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (const source::Error&) {
    return std::nullopt;
  }
}

template <class T>
bool IsSame(const T& a, const T& b) {
  return a == b;
}
inline bool IsSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

class Verdicts {
 protected:
  /// Adds to `result`.
  explicit Verdicts(PluginComparison& result) : result_(result) {}
  PluginComparison& Result() { return result_; }

  void AddFault(std::string_view slot, const std::string& text);

  /// False when they differ; `what` names the part of the slot's answer.
  template <class T>
  bool Check(std::string_view slot, const char* what, const std::type_identity_t<T>& given,
             const T& expected);

  void Count(Wanted difference) { ++result_.wanted[static_cast<std::size_t>(difference)]; }

  /// Where the interface wants `wanted` and the source holds `held`.
  template <class T>
  bool CheckWanted(Wanted difference, const char* what, const T& given, const T& held, const T& wanted) {
    if (!IsSame(held, wanted)) Count(difference);
    return Check(kWantedDifferences[static_cast<std::size_t>(difference)].slot, what, given, wanted);
  }

  /// Where the interface has 0 for what there is not.
  void CheckOptional(Wanted difference, const char* what, double given, const std::optional<double>& held);

  /// How many of a list both sides have.
  int Agreed(std::string_view slot, int given, int expected);

  /// Value by value; one fault at most.
  void CheckColumn(std::string_view slot, const char* what, std::span<const double> given,
                   std::span<const double> expected);

  /// `ask` fills the two ends and tells whether there are any.
  template <class Ask>
  void CheckRange(std::string_view slot, Ask ask, bool isWanted, const source::Range& wanted) {
    source::Range given;
    const bool isGiven = ask(given.low, given.high);
    if (!Check(slot, "success", isGiven, isWanted) || !isGiven) return;
    Check(slot, "low end", given.low, wanted.low);
    Check(slot, "high end", given.high, wanted.high);
  }

  /// Point by point; one fault at most.
  void CheckPoints(std::string_view slot, const Columns& given, const Columns& expected);
  /// The same of a scan that has lost points, or has places that no point fills. Then the slots' own points
  /// count, unless they are as many as those held: so they are in a whole scan of which points were summed.
  void CheckSlotPoints(std::string_view slot, const Columns& given, const Columns& held, bool isLost,
                       const std::optional<StoredPoints>& ofSlots);

  void CheckChromatogram(std::string_view slot, bool isGiven, bool isWanted, const CZRChromatogram& given,
                         std::span<const double> minutes, std::span<const double> intensities);

  Place place_;

 private:
  PluginComparison& result_;
};

}  // namespace zrml::tool
