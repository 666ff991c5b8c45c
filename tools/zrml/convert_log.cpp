#include "tools/zrml/convert_log.h"

#include <array>
#include <filesystem>

#include "common/platform/paths.h"
#include "tools/zrml/format.h"
#include "tools/zrml/value.h"

namespace zrml::tool {
namespace {

// In the order of SourceReport::Outcome.
constexpr std::array<std::string_view, 4> kOutcomes = {"done", "skipped", "failed", "interrupted"};

std::string ListOf(const std::vector<std::string>& texts) {
  std::string list = "[";
  for (const std::string& text : texts) list += (list.size() > 1 ? ", " : "") + QuotedJson(text);
  return list + ']';
}

// A text, as usual; a list of the files of several samples.
std::string TargetOf(const std::vector<std::string>& targets) {
  if (targets.size() > 1) return ListOf(targets);
  return targets.empty() ? "null" : QuotedJson(targets.front());
}

std::string LineOf(const SourceReport& report) {
  const std::string reason = report.failure ? QuotedJson(report.failure->message) : "null";
  return "{\"source\": " + QuotedJson(report.source) + ", \"target\": " + TargetOf(report.targets) +
         ", \"status\": \"" + std::string(kOutcomes.at(static_cast<std::size_t>(report.outcome))) +
         "\", \"reason\": " + reason + ", \"seconds\": " + RoundedNumber(report.seconds) +
         ", \"findings\": " + ListOf(report.findings) + "}\n";
}

}  // namespace

ConvertLog::ConvertLog(std::string path) : path_(std::move(path)) {
  if (path_.empty()) return;
  file_.open(std::filesystem::path(platform::FromUtf8Path(path_)), std::ios::binary | std::ios::app);
  if (!file_) throw Failure(ExitStatus::kUnreadable, "cannot write " + path_);
}

void ConvertLog::Add(const SourceReport& report) {
  if (!path_.empty()) file_ << LineOf(report) << std::flush;
}

void ConvertLog::Finish() {
  if (!path_.empty() && !file_) throw Failure(ExitStatus::kUnreadable, "cannot write " + path_);
}

}  // namespace zrml::tool
