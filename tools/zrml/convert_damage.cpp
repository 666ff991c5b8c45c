#include "tools/zrml/convert_damage.h"

#include <filesystem>

#include "convert/native_path.h"
#include "tools/zrml/output.h"

namespace zrml::tool {
namespace {

constexpr const char* kAdvice = " (--damaged converts what there is)";

std::string TextOf(const Finding& finding) {
  return finding.file.empty() ? finding.problem : finding.file + ' ' + finding.problem;
}

}  // namespace

Failure FailureOf(const convert::Error& error, const std::string& front) {
  const std::string message = front + error.Message();
  switch (error.Kind()) {
    case convert::ErrorKind::kNothingSelected:
      return {ExitStatus::kWrongUsage, message};
    case convert::ErrorKind::kTargetExists:
      return {ExitStatus::kUnreadable, message + "; --force replaces it"};
    case convert::ErrorKind::kSourceDamaged:
      return {ExitStatus::kDamaged, message + kAdvice};
    default:
      return {ExitStatus::kUnreadable, message};
  }
}

void DamagePolicy::Look(source::Source& source, int sample, const std::string& name) {
  const convert::Options& options = request_.conversion;
  reportedFiles_.clear();
  reportedCuts_.clear();
  isAbsorbanceCutReported_ = false;
  const std::span<const Finding> findings = source.Findings();
  std::vector<const Finding*> reported;
  if (!findings.empty()) {
    const convert::ConvertedSubjects converted(source, sample, options.selection, options.format);
    for (const Finding& finding : findings) {
      const Severity severity = SeverityOf(finding.code);
      if (severity == Severity::kNote || !converted.Has(finding.subject)) continue;
      if (severity == Severity::kLost && !options.isLossAllowed)
        throw Failure(ExitStatus::kDamaged, name + " is damaged: " + TextOf(finding) + kAdvice);
      reported.push_back(&finding);
    }
  }
  for (const Finding* const finding : reported) Warn(name, *finding);
  if (options.selection.isLockMassExcluded) WarnOfMissingLabels(source, name);
}

void DamagePolicy::Warn(const std::string& name, const Finding& finding) {
  Warn(name, TextOf(finding));
  reportedFiles_.insert(finding.file);
  if (finding.code != FindingCode::kDataCut) return;
  using Kind = FindingSubject::Kind;
  if (finding.subject.kind == Kind::kFunction) reportedCuts_.insert(convert::KeyOf(finding.subject));
  if (finding.subject.kind == Kind::kAbsorbance) isAbsorbanceCutReported_ = true;
}

void DamagePolicy::Report(const convert::Result& result, const std::string& name) const {
  for (const convert::Note& note : result.notes) {
    if (!IsReported(note)) Warn(name, note.text);
  }
  for (const convert::Loss& loss : result.losses) {
    if (!IsReported(loss)) Warn(name, convert::TextOf(loss));
  }
}

bool DamagePolicy::IsReported(const convert::Note& note) const {
  return note.kind == convert::Note::Kind::kFileClosed && reportedFiles_.contains(note.file);
}

bool DamagePolicy::IsReported(const convert::Loss& loss) const {
  using Kind = convert::Loss::Kind;
  if (loss.kind == Kind::kAbsorbancePoints) return isAbsorbanceCutReported_;
  return loss.kind == Kind::kPoints && reportedCuts_.contains(convert::KeyOf(loss.function));
}

void DamagePolicy::Warn(const std::string& name, const std::string& problem) const {
  if (!request_.isQuiet) PrintError(name + ": " + problem);
}

// Functions have their names from there.
void DamagePolicy::WarnOfMissingLabels(source::Source& source, const std::string& name) const {
  if (source.GetFormat() != source::Format::kRawDirectory) return;
  const std::filesystem::path own = convert::AbsolutePath(source.Path());
  const std::filesystem::path folder = convert::IsFile(source.Path()) ? own.parent_path() : own;
  std::error_code ignored;
  for (const char* const labels : {"_EXTERN.INF", "_extern.inf"}) {
    if (std::filesystem::exists(folder / labels, ignored)) return;
  }
  Warn(name, "_EXTERN.INF is missing, so no function is known to be a lock mass");
}

}  // namespace zrml::tool
