// Judges single answers of a plug-in. The interface wants some to be others than what the files hold; each
// such difference is a row of one table. Every other difference is a fault.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "source/source.h"

namespace zrml::tool {

/// Differences that the interface wants, in the order of kWantedDifferences.
enum class Wanted {
  kRefusedTable,
  kListPosition,
  kUnlistedFunction,
  kSharedName,
  kUnknownKind,
  kProcessedMobility,
  kScanDimensions,
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

/// Two columns of points, of one length.
struct Columns {
  std::span<const double> x;
  std::span<const double> y;
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

class Verdicts {
 protected:
  PluginComparison TakeResult() { return std::move(result_); }

  void AddFault(std::string_view slot, const std::string& text);

  /// False when they differ; `what` names the part of the slot's answer.
  bool Check(std::string_view slot, const char* what, bool given, bool expected);
  bool Check(std::string_view slot, const char* what, int given, int expected);
  bool Check(std::string_view slot, const char* what, double given, double expected);
  bool Check(std::string_view slot, const char* what, const std::string& given, const std::string& expected);

  void Count(Wanted difference) { ++result_.wanted[static_cast<std::size_t>(difference)]; }

  /// Where the interface wants `wanted` and the source holds `held`.
  template <class T>
  bool CheckWanted(Wanted difference, const char* what, const T& given, const T& held, const T& wanted) {
    const bool isHeld = held == wanted || (held != held && wanted != wanted);
    if (!isHeld) Count(difference);
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

  /// Every point of `held`, in order, and between them zeros, as long as there are no more points than are
  /// declared; `zeros` is why there may be some.
  void ComparePoints(std::string_view slot, const Columns& given, const Columns& held, std::size_t declared,
                     Wanted zeros);

  Place place_;

 private:
  template <class T>
  bool Judge(std::string_view slot, const char* what, const T& given, const T& expected);

  PluginComparison result_;
};

}  // namespace zrml::tool
