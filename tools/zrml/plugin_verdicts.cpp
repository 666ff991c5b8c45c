#include "tools/zrml/plugin_verdicts.h"

#include <algorithm>

#include "tools/zrml/format.h"

namespace zrml::tool {

const std::array<WantedDifference, static_cast<std::size_t>(Wanted::kCount)> kWantedDifferences = {{
    {Wanted::kRefusedTable, "Open", "a directory whose function table is cut is refused"},
    {Wanted::kFolderChoice, "Open", "a folder that is called as a data file chooses the function"},
    {Wanted::kDroppedChoice, "OpenFileInSet", "a function that is not in the list is not chosen"},
    {Wanted::kSamplesBehindEnd, "GetFileSampleCount",
     "samples behind the end of a text (Ctrl-Z) do not count"},
    {Wanted::kListPosition, "GetFunctionCount", "functions go by their position in the list, not by number"},
    {Wanted::kUnlistedFunction, "GetFunctionCount", "a function without its data file is not in the list"},
    {Wanted::kUnclosedFunction, "GetScanCount",
     "a function that is never closed has what is in those behind it"},
    {Wanted::kSharedName, "GetFunctionName", "functions of one name end with their position in the list"},
    {Wanted::kUnnamedFunction, "GetFunctionName",
     "a function without a name goes by its position in the list"},
    {Wanted::kUnknownKind, "GetFunctionKind", "a report's function of unknown type is one of absorbance"},
    {Wanted::kProcessedMobility, "HasMobility", "processed data have the mobility of what they were made of"},
    {Wanted::kScanDimensions, "GetScanDimensionCount", "the dimensions of a report's scans are not known"},
    {Wanted::kCutOffsets, "GetScanCount", "offsets that the index leaves out have 32 bits"},
    {Wanted::kLastDriftBin, "GetSpectrum", "without the maker's library the last drift bin is 0"},
    {Wanted::kScanNumber, "GetSpectrum", "scan numbers have 16 bits"},
    {Wanted::kPolarity, "GetSpectrum", "a spectrum whose polarity is not known is positive"},
    {Wanted::kNoPrecursor, "GetSpectrum", "no precursor is a precursor of m/z 0"},
    {Wanted::kNoScanValue, "GetSpectrum", "no scan value is a scan value of 0"},
    {Wanted::kLostPoints, "GetSpectrum", "points that the file lacks are zeros"},
    {Wanted::kUnwrittenPoints, "GetSpectrum", "a place that no point of the file fills is 0"},
    {Wanted::kReportOrder, "GetSpectrum", "points of a report keep their order"},
    {Wanted::kRefusedSpectrum, "GetSpectrum", "a report's spectrum without points is refused"},
    {Wanted::kRefusedFirstSpectrum, "IsCentroided",
     "a function whose first spectrum is refused is continuum"},
    {Wanted::kAbsentScanTime, "GetSpectrum", "a time that no file tells is 0"},
    {Wanted::kAbsentTime, "GetRetentionTimes", "a time that no file tells is 0"},
    {Wanted::kAbsentTotal, "GetTotalIonChromatogram", "a total that no file tells is 0"},
    {Wanted::kAbsentBasePeak, "GetBasePeakChromatogram", "a base peak that no file tells is 0"},
    {Wanted::kRefusedMassRange, "GetScanMassRange", "of raw data it is known with ion mobility only"},
    {Wanted::kPrecursorSearch, "FindPrecursorScan", "a level without scans ends the search for precursors"},
    {Wanted::kLostTraces, "GetTraceCount", "a damaged list of traces has none, nor that of the absorbance"},
    {Wanted::kRepeatedTrace, "GetTraceCount", "a trace of several functions counts in each"},
    {Wanted::kGrowingTraces, "GetTraceCount", "a sample without other functions counts its traces once more"},
    {Wanted::kRefusedTrace, "GetTrace", "a report's trace without points is refused"},
    {Wanted::kAbsorbanceScan, "GetAbsorbanceSpectrum", "scan numbers count from 0"},
    {Wanted::kNoMetadata, "GetMetadataKeys", "a sample without functions has no items"},
    {Wanted::kNoMetadataValue, "GetMetadataValue", "an item without a value is a text that tells nothing"},
    {Wanted::kFolderEnd, "GetMetadataValue", "the folder of raw data ends with a backslash"},
}};

namespace {

std::string Shown(bool value) { return value ? "true" : "false"; }
std::string Shown(int value) { return std::to_string(value); }
std::string Shown(double value) { return Number(value); }
std::string Shown(const std::string& value) {
  constexpr std::size_t kShown = 60;
  const std::string_view first = FirstCharacters(value, kShown);
  return '"' + VisibleText(first) + (first.size() < value.size() ? "...\"" : "\"");
}

}  // namespace

std::string Place::Text() const {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? " of " : ", ") + part; };
  if (sample) add("sample " + std::to_string(*sample + 1));
  if (!function.empty()) add("function " + function);
  if (scan) add("scan " + std::to_string(*scan + 1));
  if (trace) add("trace " + std::to_string(*trace + 1));
  return text;
}

void Verdicts::AddFault(std::string_view slot, const std::string& text) {
  if (result_.faultCount++ >= static_cast<long long>(PluginComparison::kMostFaults)) return;
  result_.faults.push_back(std::string(slot) + place_.Text() + ": " + text);
}

template <class T>
bool Verdicts::Check(std::string_view slot, const char* what, const std::type_identity_t<T>& given,
                     const T& expected) {
  ++result_.answers;
  if (IsSame(given, expected)) return true;
  AddFault(slot, std::string(what) + ": the plug-in gives " + Shown(given) + ", not " + Shown(expected));
  return false;
}
template bool Verdicts::Check(std::string_view, const char*, const bool&, const bool&);
template bool Verdicts::Check(std::string_view, const char*, const int&, const int&);
template bool Verdicts::Check(std::string_view, const char*, const double&, const double&);
template bool Verdicts::Check(std::string_view, const char*, const std::string&, const std::string&);

void Verdicts::CheckOptional(Wanted difference, const char* what, double given,
                             const std::optional<double>& held) {
  if (!held) Count(difference);
  Check(kWantedDifferences[static_cast<std::size_t>(difference)].slot, what, given, held.value_or(0));
}

int Verdicts::Agreed(std::string_view slot, int given, int expected) {
  Check(slot, "count", given, expected);
  return std::max(std::min(given, expected), 0);
}

void Verdicts::CheckColumn(std::string_view slot, const char* what, std::span<const double> given,
                           std::span<const double> expected) {
  if (!Check(slot, "points", static_cast<int>(given.size()), static_cast<int>(expected.size()))) return;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    place_.scan = static_cast<int>(i);
    if (!Check(slot, what, given[i], expected[i])) break;
  }
  place_.scan.reset();
}

void Verdicts::CheckPoints(std::string_view slot, const Columns& given, const Columns& expected) {
  const auto textOf = [](const Columns& columns, std::size_t i) {
    return i < columns.x.size() ? Number(columns.x[i]) + ", " + Number(columns.y[i]) : "no more";
  };
  ++result_.answers;
  const std::size_t both = std::min(given.x.size(), expected.x.size());
  std::size_t i = 0;
  while (i < both && IsSame(given.x[i], expected.x[i]) && IsSame(given.y[i], expected.y[i])) ++i;
  if (i == given.x.size() && i == expected.x.size()) return;
  AddFault(slot, "point " + std::to_string(i + 1) + ": the plug-in gives " + textOf(given, i) + ", not " +
                     textOf(expected, i));
}

void Verdicts::CheckSlotPoints(std::string_view slot, const Columns& given, const Columns& held, bool isLost,
                               const std::optional<StoredPoints>& ofSlots) {
  const auto isSame = [](std::span<const double> a, std::span<const double> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  };
  const Columns own = ofSlots ? ofSlots->View() : held;
  const bool areOthers =
      isLost ? !isSame(own.x, held.x) || !isSame(own.y, held.y) : own.x.size() != held.x.size();
  if (areOthers) Count(isLost ? Wanted::kLostPoints : Wanted::kUnwrittenPoints);
  CheckPoints(slot, given, areOthers ? own : held);
}

void Verdicts::CheckChromatogram(std::string_view slot, bool isGiven, bool isWanted,
                                 const CZRChromatogram& given, std::span<const double> minutes,
                                 std::span<const double> intensities) {
  if (!Check(slot, "success", isGiven, isWanted) || !isGiven) return;
  CheckColumn(slot, "time", given.Times(), minutes);
  CheckColumn(slot, "intensity", given.Intensities(), intensities);
}

}  // namespace zrml::tool
