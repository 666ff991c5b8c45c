#include "tools/zrml/convert_log.h"

#include <array>
#include <system_error>

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

// Whether the last line of a file has no end: its writer was killed.
bool IsCut(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;  // reading a pipe would wait
  std::ifstream file(path, std::ios::binary);
  return file.seekg(-1, std::ios::end) && file.get() != '\n';
}

}  // namespace

ConvertLog::ConvertLog(const std::string& path) : name_(path), path_(platform::FromUtf8Path(path)) {
  if (name_.empty()) return;
  const bool isCut = IsCut(path_);
  file_.rdbuf()->pubsetbuf(nullptr, 0);  // a line is one write, of which nothing is left over when it fails
  file_.open(path_, std::ios::binary | std::ios::app);
  if (isCut) file_ << '\n';
  if (!file_) throw Broken();
}

void ConvertLog::Add(const SourceReport& report) {
  if (name_.empty()) return;
  std::error_code error;  // devices have no size
  const std::uintmax_t size = std::filesystem::file_size(path_, error);
  file_ << LineOf(report);
  if (file_) return;
  isBroken_ = true;
  file_.clear();
  if (!error) std::filesystem::resize_file(path_, size, error);
}

std::optional<Failure> ConvertLog::Problem() const {
  return isBroken_ ? std::optional(Broken()) : std::nullopt;
}

Failure ConvertLog::Broken() const { return {ExitStatus::kUnreadable, "cannot write " + name_}; }

}  // namespace zrml::tool
