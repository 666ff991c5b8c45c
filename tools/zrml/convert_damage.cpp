#include "tools/zrml/convert_damage.h"

#include <algorithm>
#include <span>

#include "convert/native_path.h"
#include "tools/zrml/output.h"

namespace zrml::tool {
namespace {

constexpr const char* kAdvice = " (--damaged converts what there is)";
constexpr const char* kStrict = " (refused by --strict)";

// Of scans that are lost, the count and the first name all, unless others are between them. Scans whose
// points are lost are listed when they are read.
std::string ListedText(const Finding& finding) {
  const bool isListed = SeverityOf(finding.code) == Severity::kLost && finding.scans.HasGaps() &&
                        finding.code != FindingCode::kDataCut && finding.code != FindingCode::kDataZeroed;
  return TextOf(finding) + (isListed ? " (" + finding.scans.Text() + ")" : "");
}

}  // namespace

Failure FailureOf(const convert::Error& error, const std::string& front) {
  const std::string message = front + error.Message();
  switch (error.Kind()) {
    case convert::ErrorKind::kNothingSelected:
      return {ExitStatus::kWrongUsage, message};
    case convert::ErrorKind::kProfile:
      return {ExitStatus::kWrongUsage, message + " (--centroid writes its peaks, --profile the profile)"};
    case convert::ErrorKind::kTargetExists:
      return {ExitStatus::kUnreadable, message + "; --force replaces it"};
    case convert::ErrorKind::kSourceDamaged:
      return {ExitStatus::kDamaged, message + kAdvice};
    case convert::ErrorKind::kSourceSuspect:
      return {ExitStatus::kDamaged, message + kStrict};
    default:
      return {ExitStatus::kUnreadable, message};
  }
}

void DamagePolicy::Look(source::Source& source, int sample, const std::string& name) {
  const convert::Options& options = request_.conversion;
  reported_.clear();
  files_.clear();
  for (const source::Function& function : source.Functions(sample))
    files_[convert::KeyOf(function.id)] = function.file;
  if (source.HasAbsorbance(sample)) {
    const source::Function function = source.AbsorbanceFunction(sample);
    files_[convert::KeyOf(function.id)] = function.file;
  }
  const std::span<const Finding> findings = source.Findings();
  if (!findings.empty()) {
    const convert::ConvertedSubjects converted(source, sample, options.selection, options.format);
    for (const Finding& finding : findings) {
      if (converted.Has(finding)) reported_.push_back(&finding);
    }
  }
  RefuseReported(name);
  for (const Finding* const finding : reported_) Warn(name, ListedText(*finding));
  if (options.selection.isLockMassExcluded) WarnOfMissingLabels(source, name);
}

// All of them are noted then, since one alone is shown.
void DamagePolicy::RefuseReported(const std::string& name) {
  const convert::Options& options = request_.conversion;
  for (const Finding* const finding : reported_) {
    const bool isLost = SeverityOf(finding->code) == Severity::kLost;
    if (isLost ? options.isLossAllowed : !options.isStrict) continue;
    for (const Finding* const each : reported_) Note(TextOf(*each));
    throw Failure(ExitStatus::kDamaged, name + (isLost ? " is damaged: " : " is suspect: ") +
                                            TextOf(*finding) + (isLost ? kAdvice : kStrict));
  }
}

void DamagePolicy::RefuseEmpty(source::Source& source) {
  for (const Finding& finding : source.Findings()) {
    if (SeverityOf(finding.code) == Severity::kLost)
      throw Failure(ExitStatus::kDamaged, source.Path() + " is damaged: " + TextOf(finding));
  }
  throw Failure(ExitStatus::kUnreadable, source.Path() + " has no samples");
}

void DamagePolicy::Report(const convert::Result& result, const std::string& name) {
  for (const convert::Note& note : result.notes) {
    if (!IsReported(note)) Warn(name, note.text);
  }
  for (const convert::Loss& loss : result.losses) Warn(name, FileOf(loss) + convert::TextOf(loss));
  for (const Finding& fault : result.faults.List()) Warn(name, TextOf(fault));
}

// The file's name before its losses; empty for several files, or in a report.
std::string DamagePolicy::FileOf(const convert::Loss& loss) const {
  const auto found = files_.find(convert::KeyOf(loss.function));
  return found == files_.end() || found->second.empty() ? std::string() : found->second + ": ";
}

bool DamagePolicy::IsReported(const convert::Note& note) const {
  return note.kind == convert::Note::Kind::kFileClosed &&
         std::any_of(reported_.begin(), reported_.end(),
                     [&](const Finding* finding) { return finding->file == note.file; });
}

void DamagePolicy::Warn(const std::string& name, const std::string& problem) {
  Note(problem);
  if (!request_.isQuiet) PrintError(name + ": " + problem);
}

// Functions have their names from there.
void DamagePolicy::WarnOfMissingLabels(source::Source& source, const std::string& name) {
  if (source.GetFormat() != source::Format::kRawDirectory) return;
  const platform::SystemPath folder = convert::FolderOfSource(source.Path());
  for (const char* const labels : {"_EXTERN.INF", "_extern.inf"}) {
    if (platform::IsThere(platform::PathIn(folder, platform::FromUtf8Path(labels)))) return;
  }
  Warn(name, "_EXTERN.INF is missing, so no function is known to be a lock mass");
}

}  // namespace zrml::tool
