// What of a sample is converted and in which order: one run of the open formats. Holds 16 bytes a spectrum
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

enum class Format { kMzml, kMgf, kTsv };

inline constexpr int kNoPosition = -1;

struct RunFunction {
  source::Function info;
  int position = 0;  // in the source's list; kNoPosition of the absorbance function of a raw directory
  bool isAbsorbance = false;
  int driftBins = 0;                  // 0 without mobility data
  std::vector<double> channels = {};  // of ion monitoring: the m/z of each, where its scans agree on them
};

/// What becomes of a sample's absorbance spectra.
enum class Absorbance {
  kNone,     // there are none, or other functions are asked for
  kLeftOut,  // nobody has asked for them
  kTaken,
  kTakenAlone,  // since there are no other spectra
};

/// As spectra have it: what reactions leave are fragments, whatever the source says of their function.
inline int MsLevelOf(const source::Function& function) {
  constexpr int kFragments = 2;
  return function.monitoring == source::Monitoring::kReactions ? kFragments : function.msLevel;
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
  std::string name;  // of what it becomes
  std::string sampleName;
  std::vector<RunFunction> functions;  // all that are asked for, also without scans
  std::vector<RunEntry> entries;       // by time; those without one last; equal times by function and scan
  std::vector<source::MetadataItem> metadata;
  Selection selection;
  Absorbance absorbance = Absorbance::kNone;

  const RunFunction& FunctionOf(const RunEntry& entry) const {
    return functions[static_cast<std::size_t>(entry.function)];
  }
};

/// Throws an Error when the selection leaves nothing of what there is, or profile spectra for MGF that are
/// not asked for. `cancel` is asked between functions, whose indices may be read here, and between scans of
/// ion monitoring, whose points are.
RunPlan PlanRun(source::Source& source, int sample, const Selection& selection, Format format,
                const Cancel& cancel);

/// Tells functions of a sample apart: process number, then the function's number or, of a processed one,
/// which of that process number it is.
using FunctionKey = std::pair<int, int>;
FunctionKey KeyOf(const source::FunctionId& id);
FunctionKey KeyOf(const FindingSubject& subject);

/// What of a sample would be converted, for whoever has findings about it. `selection` stays alive.
class ConvertedSubjects {
 public:
  ConvertedSubjects(source::Source& source, int sample, const Selection& selection, Format format);

  bool Has(const FindingSubject& subject) const;

 private:
  bool HasFunction(const FindingSubject& subject) const;
  bool HasAbsorbance(const FindingSubject& subject) const;

  int sample_;  // from 1
  const Selection& selection_;
  Format format_;
  bool hasUnlisted_;                       // a single function leaves no others
  std::map<FunctionKey, bool> functions_;  // those that are listed, and whether they are wanted
  std::optional<source::Function> absorbance_;
  bool isAbsorbanceAlone_ = false;
};

}  // namespace zrml::convert
