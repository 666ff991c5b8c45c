// What to convert of a sample, and in which order: one run of the open formats. Holds 16 bytes per spectrum
// and no points.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "convert/hooks.h"
#include "convert/selection.h"
#include "source/source.h"

namespace zrml::convert {

enum class Format { kMzml, kMgf, kTsv, kParquet };

/// Whether drift bins are written, where the library that reads them is installed.
inline bool TakesDriftBins(Format format) { return format == Format::kMzml || format == Format::kParquet; }

inline constexpr int kNoPosition = -1;

struct RunFunction {
  source::Function info;
  int position = 0;  // in the source's list; kNoPosition for the absorbance function of a raw directory
  bool isAbsorbance = false;
  int driftBins = 0;                  // 0 without mobility data
  std::vector<double> channels = {};  // of ion monitoring: the m/z of each, where its scans agree on them
};

/// How a sample's absorbance spectra are handled.
enum class Absorbance {
  kNone,     // there are none, or other functions are requested
  kLeftOut,  // they are not requested
  kTaken,
  kTakenAlone,  // since there are no other spectra
};

/// The level of the spectra: products of reactions are fragments, whatever the source says of their function.
/// None where it is not known.
inline std::optional<int> MsLevelOf(const source::Function& function) {
  constexpr int kFragments = 2;
  return function.monitoring == source::Monitoring::kReactions ? kFragments : function.msLevel;
}

/// Whether centroids of a function's profiles are wanted.
inline bool AreCentroidsWanted(const Selection& selection, const source::Function& function) {
  const std::optional<NumberSet>& levels = selection.points.centroidLevels;
  return levels && levels->Has(MsLevelOf(function)) && source::MayHaveProfiles(function);
}
inline bool BecomesCentroids(const Selection& selection, const source::Function& function,
                             const source::Scan& scan) {
  return AreCentroidsWanted(selection, function) && source::IsProfile(function, scan);
}

/// One spectrum.
struct RunEntry {
  double minutes = 0;
  std::int32_t function = 0;  // index into RunPlan::functions
  std::int32_t scan = 0;
};

struct RunPlan {
  source::Format sourceFormat = source::Format::kRawDirectory;
  int sample = 0;
  std::string name;  // of the converted run
  std::string sampleName;
  std::vector<RunFunction> functions;  // all that are requested, also without scans
  std::vector<RunEntry> entries;       // by time; those without one last; equal times by function and scan;
                                       // for Parquet by function and scan alone
  std::vector<source::MetadataItem> metadata;
  Selection selection;
  Absorbance absorbance = Absorbance::kNone;

  const RunFunction& FunctionOf(const RunEntry& entry) const {
    return functions[static_cast<std::size_t>(entry.function)];
  }
};

/// Throws an Error when the selection excludes everything, or when it holds profile spectra for MGF that are
/// not requested. `cancel` is checked between functions, whose indices may be read here, and between scans of
/// ion monitoring, whose points are read.
RunPlan PlanRun(source::Source& source, int sample, const Selection& selection, Format format,
                const Cancel& cancel);

/// Whether spectra with points would be converted, as far as the index says. `selection` is valid for
/// `format`.
bool HasPoints(source::Source& source, int sample, const Selection& selection, Format format);

/// Distinguishes the functions of a sample: process number, then the function's number or, of a processed
/// one, its count among those of that process number.
using FunctionKey = std::pair<int, int>;
FunctionKey KeyOf(const source::FunctionId& id);
FunctionKey KeyOf(const FindingSubject& subject);

/// What would be converted of a sample, for code that has findings about it. `source` and `selection` stay
/// alive.
class ConvertedSubjects {
 public:
  ConvertedSubjects(source::Source& source, int sample, const Selection& selection, Format format);

  bool Has(const Finding& finding) const;

 private:
  bool HasSubject(const FindingSubject& subject) const;
  bool HasScans(const Finding& finding) const;
  std::vector<double> MinutesOf(const FindingSubject& subject) const;
  bool HasFunction(const FindingSubject& subject) const;
  bool HasAbsorbance(const FindingSubject& subject) const;

  source::Source& source_;
  int sample_;
  const Selection& selection_;
  Format format_;
  bool hasUnlisted_;                       // false when a single function was opened
  std::map<FunctionKey, bool> functions_;  // listed functions, and whether they are wanted
  std::optional<source::Function> absorbance_;
  bool isAbsorbanceAlone_ = false;
};

}  // namespace zrml::convert
