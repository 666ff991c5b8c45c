// The runs of `zrml qc` as its reports show them: a source with several samples has a run for each.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qc/run_quality.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/value.h"

namespace zrml::tool {

enum class RunState { kSound, kSuspect, kDamaged, kUnreadable };

/// "sound", "suspect", "damaged", "unreadable".
std::string_view NameOf(RunState state);

struct AssessedRun {
  std::string name;        ///< of the run, as a converted file has it; no other run has the same
  std::string source;      ///< the path as given
  std::string file = {};   ///< its name without folder; no other source has the same
  std::string input = {};  ///< the same with the sample; no other run has the same
  source::Format format = source::Format::kRawDirectory;
  int sample = 0;  ///< from 1 in a source with several, else 0
  RunState state = RunState::kSound;
  std::string problem = {};  ///< why it is unreadable
  std::string page = {};     ///< a page of its own, as seen from the reports
  qc::RunQuality quality = {};
};

struct Assessment {
  std::vector<AssessedRun> runs;
  std::vector<std::optional<Failure>> failures;  ///< of each source: the first of its runs that is not whole
};

/// Several sources at once, each on one thread. Throws Cancelled. The result does not depend on `threads`.
Assessment AssessSources(const std::vector<std::string>& sources, const qc::Wishes& wishes, int threads,
                         bool isProgressShown);

/// The values of a run that no vocabulary has terms for.
std::vector<Attribute> FactsOf(const AssessedRun& run);

/// "_FUNC001.DAT ends before ..." with its severity in front, one after the other.
std::string FindingsText(const AssessedRun& run);

}  // namespace zrml::tool
