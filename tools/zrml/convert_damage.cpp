#include "tools/zrml/convert_damage.h"

#include <algorithm>
#include <span>

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
    case convert::ErrorKind::kProfile:
      return {ExitStatus::kWrongUsage, message + " (--profile writes it all the same)"};
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
  reported_.clear();
  const std::span<const Finding> findings = source.Findings();
  if (!findings.empty()) {
    const convert::ConvertedSubjects converted(source, sample, options.selection, options.format);
    for (const Finding& finding : findings) {
      const Severity severity = SeverityOf(finding.code);
      if (severity == Severity::kNote || !converted.Has(finding.subject)) continue;
      if (severity == Severity::kLost && !options.isLossAllowed)
        throw Failure(ExitStatus::kDamaged, name + " is damaged: " + TextOf(finding) + kAdvice);
      reported_.push_back(&finding);
    }
  }
  for (const Finding* const finding : reported_) Warn(name, TextOf(*finding));
  if (options.selection.isLockMassExcluded) WarnOfMissingLabels(source, name);
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
  return note.kind == convert::Note::Kind::kFileClosed &&
         std::any_of(reported_.begin(), reported_.end(),
                     [&](const Finding* finding) { return finding->file == note.file; });
}

bool DamagePolicy::IsReported(const convert::Loss& loss) const {
  using Kind = FindingSubject::Kind;
  return std::any_of(reported_.begin(), reported_.end(), [&](const Finding* finding) {
    if (finding->code != FindingCode::kDataCut) return false;
    if (loss.kind == convert::Loss::Kind::kAbsorbancePoints)
      return finding->subject.kind == Kind::kAbsorbance;
    return loss.kind == convert::Loss::Kind::kPoints && finding->subject.kind == Kind::kFunction &&
           convert::KeyOf(finding->subject) == convert::KeyOf(loss.function);
  });
}

void DamagePolicy::Warn(const std::string& name, const std::string& problem) const {
  if (!request_.isQuiet) PrintError(name + ": " + problem);
}

// Functions have their names from there.
void DamagePolicy::WarnOfMissingLabels(source::Source& source, const std::string& name) const {
  if (source.GetFormat() != source::Format::kRawDirectory) return;
  const platform::SystemPath folder = convert::FolderOfSource(source.Path());
  for (const char* const labels : {"_EXTERN.INF", "_extern.inf"}) {
    if (platform::IsThere(platform::PathIn(folder, platform::FromUtf8Path(labels)))) return;
  }
  Warn(name, "_EXTERN.INF is missing, so no function is known to be a lock mass");
}

}  // namespace zrml::tool
