// Judges single answers of a plug-in. The interface requires some to differ from the files; each such
// difference is a row of one table. Every other difference is a fault.
#pragma once

#include <cmath>
#include <map>
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

/// A difference required by the interface.
struct Wanted {
  std::string_view slot;
  std::string_view reason;
};

/// All of them, in the order in which they are printed: by their addresses.
struct AllWanted {
  Wanted refusedTable = {"Open", "a directory whose function table is cut is refused"};
  Wanted folderChoice = {"Open", "a folder that is called as a data file chooses the function"};
  Wanted droppedChoice = {"OpenFileInSet", "a function that is not in the list is not chosen"};
  Wanted samplesBehindEnd = {"GetFileSampleCount", "samples behind the end of a text (Ctrl-Z) do not count"};
  Wanted unendedSample = {"GetSampleName", "a sample that is never closed has the values of those behind it"};
  Wanted listPosition = {"GetFunctionCount", "functions go by their position in the list, not by number"};
  Wanted unlistedFunction = {"GetFunctionCount", "a function without its data file is not in the list"};
  Wanted unclosedFunction = {"GetScanCount",
                             "a function that is never closed has what is in those behind it"};
  Wanted damagedText = {"GetScanCount", "damaged text of a report is read as it stands"};
  Wanted sharedName = {"GetFunctionName", "functions of one name end with their position in the list"};
  Wanted unnamedFunction = {"GetFunctionName", "a function without a name goes by its position in the list"};
  Wanted lostRecord = {"GetFunctionKind", "a function whose record is zeros is read as MS in layout 0"};
  Wanted unknownKind = {"GetFunctionKind", "a report's function of unknown type is one of absorbance"};
  Wanted processedMobility = {"HasMobility", "processed data have the mobility of what they were made of"};
  Wanted scanDimensions = {"GetScanDimensionCount", "the dimensions of a report's scans are not known"};
  Wanted indexOfSlots = {"GetScanCount",
                         "offsets that the index leaves out have 32 bits, damaged records are scans"};
  Wanted lastDriftBin = {"GetSpectrum", "without the maker's library the last drift bin is 0"};
  Wanted scanNumber = {"GetSpectrum", "scan numbers have 16 bits"};
  Wanted polarity = {"GetSpectrum", "a spectrum whose polarity is not known is positive"};
  Wanted noPrecursor = {"GetSpectrum", "no precursor is a precursor of m/z 0"};
  Wanted noScanValue = {"GetSpectrum", "no scan value is a scan value of 0"};
  Wanted lostPoints = {"GetSpectrum", "points that the file lacks are zeros"};
  Wanted unwrittenPoints = {"GetSpectrum", "a place that no point of the file fills is 0"};
  Wanted profileSubScans = {"GetSpectrum", "sub-scans of a profile are summed as peaks"};
  Wanted sortedPoints = {"GetSpectrum",
                         "of points out of order, the most intense of each mass stays, and none of mass 0"};
  Wanted reportOrder = {"GetSpectrum", "points of a report keep their order"};
  Wanted refusedSpectrum = {"GetSpectrum", "a report's spectrum without points is refused"};
  Wanted refusedFirstSpectrum = {"IsCentroided", "a function whose first spectrum is refused is continuum"};
  Wanted absentScanTime = {"GetSpectrum", "a time that no file tells is 0"};
  Wanted absentTime = {"GetRetentionTimes", "a time that no file tells is 0"};
  Wanted absentTotal = {"GetTotalIonChromatogram", "a total that no file tells is 0"};
  Wanted absentBasePeak = {"GetBasePeakChromatogram", "a base peak that no file tells is 0"};
  Wanted refusedMassRange = {"GetScanMassRange", "of raw data it is known with ion mobility only"};
  Wanted precursorSearch = {"FindPrecursorScan", "a level without scans ends the search for precursors"};
  Wanted lostTraces = {"GetTraceCount", "a damaged list of traces has none, nor that of the absorbance"};
  Wanted repeatedTrace = {"GetTraceCount", "a trace of several functions counts in each"};
  Wanted growingTraces = {"GetTraceCount", "a sample without other functions counts its traces once more"};
  Wanted zeroedTrace = {"GetTrace", "records of zeros are points of a trace"};
  Wanted refusedTrace = {"GetTrace", "a report's trace without points is refused"};
  Wanted absorbanceScan = {"GetAbsorbanceSpectrum", "scan numbers count from 0"};
  Wanted noMetadata = {"GetMetadataKeys", "a sample without functions has no items"};
  Wanted noMetadataValue = {"GetMetadataValue", "an item without a value is a text that tells nothing"};
  Wanted dateZone = {"GetMetadataValue", "a time of analysis ends with the zone +00:00"};
  Wanted folderEnd = {"GetMetadataValue", "the folder of raw data ends with a backslash"};
};
inline constexpr AllWanted kWanted = {};

struct PluginComparison {
  static constexpr std::size_t kMostFaults = 20;

  long long answers = 0;                      // compared so far
  std::map<const Wanted*, long long> wanted;  // how often
  std::vector<std::string> faults;            // the first of them, a line each
  long long faultCount = 0;
};

/// What is being compared, for messages about faults. Positions from 0.
struct Place {
  std::optional<int> sample = {};
  std::string function = {};
  std::optional<int> scan = {};
  std::optional<int> trace = {};

  /// " of sample 1, function 2", or empty.
  std::string Text() const;
};

/// No value when `read` throws an error of a source.
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

  void Count(const Wanted& difference) { ++result_.wanted[&difference]; }

  /// Where the interface requires `wanted` and the source holds `held`.
  template <class T>
  bool CheckWanted(const Wanted& difference, const char* what, const T& given, const T& held,
                   const T& wanted) {
    if (!IsSame(held, wanted)) Count(difference);
    return Check(difference.slot, what, given, wanted);
  }

  /// Where the interface has 0 for an absent value.
  void CheckOptional(const Wanted& difference, const char* what, double given,
                     const std::optional<double>& held);

  /// The number of list items that both sides have.
  int Agreed(std::string_view slot, int given, int expected);

  /// Value by value; one fault at most.
  void CheckColumn(std::string_view slot, const char* what, std::span<const double> given,
                   std::span<const double> expected);

  /// `ask` fills the two ends and returns whether there are any.
  template <class Ask>
  void CheckRange(std::string_view slot, Ask ask, const std::optional<source::Range>& wanted) {
    source::Range given;
    const bool isGiven = ask(given.low, given.high);
    if (!Check(slot, "success", isGiven, wanted.has_value()) || !isGiven) return;
    Check(slot, "low end", given.low, wanted->low);
    Check(slot, "high end", given.high, wanted->high);
  }

  /// Point by point; one fault at most.
  void CheckPoints(std::string_view slot, const Columns& given, const Columns& expected);
  /// The same of a scan that has lost points, has places that no point fills, or sub-scans. Then the slots'
  /// own points count, unless they are as many as those held: so they are in a whole scan of summed peaks.
  void CheckSlotPoints(std::string_view slot, const Columns& given, const Columns& held, bool isLost,
                       const std::optional<StoredPoints>& ofSlots);

  /// `ask` fills the chromatogram and returns whether there is one.
  template <class Ask>
  void CheckChromatogram(std::string_view slot, Ask ask, bool isWanted, std::span<const double> minutes,
                         std::span<const double> intensities) {
    CZRChromatogram given;
    const bool isGiven = ask(given);
    if (!Check(slot, "success", isGiven, isWanted) || !isGiven) return;
    CheckColumn(slot, "time", given.Times(), minutes);
    CheckColumn(slot, "intensity", given.Intensities(), intensities);
  }

  Place place_;

 private:
  PluginComparison& result_;
};

}  // namespace zrml::tool
