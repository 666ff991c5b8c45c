#include "tools/zrml/qc/assessed_run.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "convert/native_path.h"
#include "convert/ordered_pieces.h"
#include "convert/source_files.h"
#include "tools/zrml/format.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/progress_bar.h"
#include "tools/zrml/qc/unique_names.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {
namespace {

// Of one source.
struct Assessed {
  std::vector<AssessedRun> runs;
  std::optional<Failure> failure;
};

RunState StateOf(const qc::RunQuality& quality) {
  const std::optional<Severity> worst = qc::WorstOf(quality.findings);
  if (worst == Severity::kLost) return RunState::kDamaged;
  return worst == Severity::kSuspect ? RunState::kSuspect : RunState::kSound;
}

std::string FileNameOf(const std::string& path) {
  const auto own = platform::AbsolutePath(platform::FromUtf8Path(path));
  return convert::PathText(convert::NameOf(own));
}

Failure DamageOf(source::Source& source, int sample, const qc::RunQuality& quality) {
  const auto lost =
      std::find_if(quality.findings.begin(), quality.findings.end(),
                   [](const Finding& finding) { return SeverityOf(finding.code) == Severity::kLost; });
  return {ExitStatus::kDamaged, NameOf(source, sample) + " is damaged: " + TextOf(*lost)};
}

void AddRuns(source::Source& source, std::vector<qc::RunQuality> qualities, Assessed& assessed) {
  const bool isOne = qualities.size() == 1;
  int sample = 0;
  for (qc::RunQuality& quality : qualities) {
    const RunState state = StateOf(quality);
    if (state == RunState::kDamaged && !assessed.failure)
      assessed.failure = DamageOf(source, sample, quality);
    assessed.runs.push_back({.name = convert::RunName(source, sample),
                             .source = source.Path(),
                             .format = source.GetFormat(),
                             .sample = isOne ? 0 : sample + 1,
                             .state = state,
                             .quality = std::move(quality)});
    ++sample;
  }
}

void AddUnreadable(const std::string& path, Failure failure, Assessed& assessed) {
  assessed.runs = {{.name = convert::SourceName(path, source::Format::kRawDirectory),
                    .source = path,
                    .state = RunState::kUnreadable,
                    .problem = failure.message}};
  assessed.failure = std::move(failure);
}

Assessed AssessSource(const std::string& path, const qc::Wishes& wishes) {
  Assessed assessed;
  try {
    const convert::SourceStamp stamp(path);
    const std::unique_ptr<source::Source> source = OpenListed(path);
    std::vector<qc::RunQuality> qualities =
        Reading(*source, [&] { return qc::AssessRuns(*source, wishes, IsInterrupted); });
    if (const auto file = stamp.FindChange())
      throw Failure(ExitStatus::kUnreadable, path + ": " + *file + " has changed meanwhile");
    if (qualities.empty()) throw Failure(ExitStatus::kUnreadable, path + " has no samples");
    AddRuns(*source, std::move(qualities), assessed);
  } catch (const Failure& failure) {
    AddUnreadable(path, failure, assessed);
  } catch (const std::bad_alloc&) {
    AddUnreadable(path, Failure(ExitStatus::kUnreadable, "not enough memory for " + path), assessed);
  }
  return assessed;
}

void MakeUnique(std::vector<Assessed>& sources) {
  UniqueNames names;
  UniqueNames files;
  UniqueNames inputs;
  for (Assessed& source : sources) {
    const std::string file = files.Unique(FileNameOf(source.runs.front().source));
    for (AssessedRun& run : source.runs) {
      run.name = names.Unique(run.name);
      run.file = file;
      run.input = inputs.Unique(run.sample == 0 ? file : file + " sample " + std::to_string(run.sample));
    }
  }
}

Value TextOrAbsent(const std::string& text) { return text.empty() ? Value() : Value(text); }

}  // namespace

std::string_view NameOf(RunState state) {
  constexpr std::array<std::string_view, 4> kNames = {"sound", "suspect", "damaged", "unreadable"};
  return kNames.at(static_cast<std::size_t>(state));
}

Assessment AssessSources(const std::vector<std::string>& sources, const qc::Wishes& wishes, int threads,
                         bool isProgressShown) {
  std::vector<Assessed> assessed(sources.size());
  const convert::MakePiece make = [&](std::size_t index, std::string&) {
    assessed[index] = AssessSource(sources[index], wishes);
  };
  const std::size_t workers = std::min(static_cast<std::size_t>(threads), sources.size());
  ProgressBar bar(isProgressShown, Counted(std::ssize(sources), "source"));
  {
    convert::OrderedPieces pieces(sources.size(), std::vector(workers, make));
    for (std::size_t i = 0; i < sources.size(); ++i) {
      bar.Update(i, sources.size());
      pieces.Take();
    }
  }
  MakeUnique(assessed);
  Assessment all;
  for (Assessed& one : assessed) {
    std::move(one.runs.begin(), one.runs.end(), std::back_inserter(all.runs));
    all.failures.push_back(std::move(one.failure));
  }
  return all;
}

std::vector<Attribute> FactsOf(const AssessedRun& run) {
  const qc::LockMassCourse& lockMass = run.quality.lockMass;
  const auto valueIf = [](bool isThere, auto value) { return isThere ? Value(value) : Value(); };
  const bool isRead = run.state != RunState::kUnreadable;
  const bool isFound = lockMass.median.has_value();
  return {{"state", std::string(NameOf(run.state))},
          {"findings", TextOrAbsent(FindingsText(run))},
          {"started", TextOrAbsent(run.quality.started)},
          {"instrument", TextOrAbsent(run.quality.instrument)},
          {"sampleName", TextOrAbsent(run.quality.sampleName)},
          {"lockMassSpectra", valueIf(isRead, static_cast<std::int64_t>(lockMass.spectra))},
          {"lockMassFound", valueIf(isRead, static_cast<std::int64_t>(lockMass.found))},
          {"lockMassPpm", ValueOrAbsent(lockMass.median)},
          {"lockMassPpmLow", valueIf(isFound, lockMass.range.low)},
          {"lockMassPpmHigh", valueIf(isFound, lockMass.range.high)}};
}

std::string FindingsText(const AssessedRun& run) {
  std::string text = run.problem;
  for (const Finding& finding : run.quality.findings) {
    text +=
        (text.empty() ? "" : "; ") + std::string(NameOf(SeverityOf(finding.code))) + ": " + TextOf(finding);
  }
  return text;
}

}  // namespace zrml::tool
