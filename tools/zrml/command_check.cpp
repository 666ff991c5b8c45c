// zrml check: whether a source is sound.
#include <algorithm>

#include "convert/source_files.h"
#include "source/points_look.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/progress_bar.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {
namespace {

struct CheckResult {
  std::string path;
  std::int64_t functions = 0;
  std::int64_t scans = 0;
  std::optional<std::int64_t> absorbanceScans;
  std::optional<std::int64_t> absorbanceBeside;  // of those, beside the functions
  Findings findings;

  bool Has(Severity severity) const {
    const std::span<const Finding> list = findings.List();
    return std::any_of(list.begin(), list.end(),
                       [=](const Finding& finding) { return SeverityOf(finding.code) == severity; });
  }
};

// Absorbance is a function where there is nothing else.
void CountAbsorbance(source::Source& source, int sample, bool isAlone, CheckResult& result) {
  const int scans = source.AbsorbanceScanCount(sample);
  const auto addTo = [scans](std::optional<std::int64_t>& sum) { sum = sum.value_or(0) + scans; };
  addTo(result.absorbanceScans);
  if (!isAlone) return addTo(result.absorbanceBeside);
  ++result.functions;
  result.scans += scans;
}

void Count(source::Source& source, CheckResult& result) {
  const int samples = source.SampleCount();
  for (int sample = 0; sample < samples; ++sample) {
    const int functions = static_cast<int>(source.Functions(sample).size());
    result.functions += functions;
    for (int function = 0; function < functions; ++function)
      result.scans += source.ScanCount(sample, function);
    if (source.HasAbsorbance(sample)) CountAbsorbance(source, sample, functions == 0, result);
  }
}

void AddAll(std::span<const Finding> findings, CheckResult& result) {
  for (const Finding& finding : findings) result.findings.Add(finding);
}

void AddUnreadable(const std::string& file, std::string problem, CheckResult& result) {
  result.findings.Add({.code = FindingCode::kFileUnreadable, .file = file, .problem = std::move(problem)});
}

// Errors here are reported by the check of the points.
template <class Ask>
void Attempt(Ask ask) {
  try {
    ask();
  } catch (const source::Error&) {
  }
}

// A failing disk may fail at bytes that a quick look does not read.
void ReadFiles(const source::Source& source, CheckResult& result) {
  const convert::SourceFiles files =
      convert::ListSourceFiles(source.Path(), source.GetFormat(), convert::Checksums::kLeftOut, {});
  if (files.isForbidden) {
    PrintError(source.Path() + ": " + *files.error + ", so only files that are known by name are looked at");
  } else if (files.error) {
    AddUnreadable({}, *files.error, result);
  }
  for (const auto& [file, problem] : files.broken) AddUnreadable(file, problem, result);
}

std::string WithoutPrefix(const std::string& text, const std::string& prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

// `front` precedes each finding.
void PrintText(const CheckResult& result, const std::string& front, Output& out) {
  for (const Finding& finding : result.findings.List())
    out.Text(VisibleText(front + std::string(NameOf(SeverityOf(finding.code))) + ": " + TextOf(finding)) +
             "\n");
  if (result.Has(Severity::kLost)) return;
  const std::string verdict = result.Has(Severity::kSuspect) ? " has lost nothing: " : " is sound: ";
  std::string content = Counted(result.functions, "function") + ", " + Counted(result.scans, "scan");
  if (result.absorbanceBeside) content += ", " + Counted(*result.absorbanceBeside, "absorbance scan");
  out.Text(VisibleText(result.path + verdict + content) + "\n");
}

// The function's name for people; null where there is no function.
Value FunctionOf(const FindingSubject& subject) {
  using Kind = FindingSubject::Kind;
  const bool isOfFunction = subject.kind == Kind::kFunction || subject.kind == Kind::kAbsorbance;
  if (!isOfFunction || (subject.function == 0 && subject.process == 0)) return {};
  return ValueOf(source::FunctionId{subject.function, subject.process, subject.repeat});
}

void PutFinding(const Finding& finding, JsonWriter& json) {
  const auto numberOrNull = [](std::uint64_t number) {
    return number == 0 ? Value() : Value(static_cast<std::int64_t>(number));
  };
  const FindingSubject& subject = finding.subject;
  json.Object([&] {
    json.Members({{"code", std::string(NameOf(finding.code))},
                  {"severity", std::string(NameOf(SeverityOf(finding.code)))},
                  {"file", finding.file.empty() ? Value() : Value(finding.file)},
                  {"sample", numberOrNull(static_cast<std::uint64_t>(subject.sample))},
                  {"function", FunctionOf(subject)},
                  {"count", static_cast<std::int64_t>(finding.count)},
                  {"first", numberOrNull(finding.first)},
                  {"message", TextOf(finding)}});
  });
}

void WriteJson(const CheckResult& result, JsonWriter& json) {
  json.Object([&] {
    json.Members({{"source", result.path},
                  {"sound", !result.Has(Severity::kLost)},
                  {"functions", result.functions},
                  {"scans", result.scans},
                  {"absorbanceScans", result.absorbanceScans ? Value(*result.absorbanceScans) : Value()}});
    json.Key("findings").Array([&] {
      for (const Finding& finding : result.findings.List()) PutFinding(finding, json);
    });
  });
}

class CheckCommand : public Command {
 public:
  explicit CheckCommand(CLI::App& parser) : Command(parser, "check", "Find damage in sources") {
    AddSourceArguments(Options(), sources_);
    Options().add_flag("--json", wantsJson_, "Print JSON, for programs: an object, or a list of several");
    Options().add_flag("--strict", isStrict_, "End with status 7 for findings of any severity");
  }

  void Run(Output& out) override {
    try {
      JsonWriter json(out);
      const auto check = [&] { CheckAll(json, out); };
      wantsJson_&& sources_.IsList() ? json.Array(check) : check();
      if (wantsJson_) json.Finish();
      out.Finish();
      EndBadly();
    } catch (const source::Cancelled&) {
      EndByInterruption();
    }
  }

 private:
  void CheckAll(JsonWriter& json, Output& out) {
    const std::vector<std::string> sources = ListSources(sources_);
    count_ = sources.size();
    try {
      ForEachSource(sources, "are not checked", [&](const std::string& path) {
        const CheckResult result = Check(path);
        wantsJson_ ? WriteJson(result, json) : PrintText(result, sources_.IsList() ? path + ": " : "", out);
        Judge(result);
      });
    } catch (const Failure& failure) {
      if (!sources_.IsList()) throw;
      failure_ = failure;  // the output is completed first
    }
  }

  static CheckResult Check(const std::string& path) {
    CheckResult result;
    result.path = path;
    try {
      const std::unique_ptr<source::Source> source = OpenListed(path);
      Attempt([&] { AddAll(source->Findings(), result); });
      Attempt([&] { Count(*source, result); });
      LookAtPoints(*source, result);
      ReadFiles(*source, result);
    } catch (const Failure& failure) {
      if (failure.status != ExitStatus::kDamaged) throw;  // damage alone is a finding
      AddUnreadable({}, WithoutPrefix(failure.message, path + " is damaged: "), result);
    }
    return result;
  }

  // Removes the bar before an interruption ends the program.
  static void LookAtPoints(source::Source& source, CheckResult& result) {
    const InterruptionWatch watch;
    ProgressBar bar(IsErrorTerminal(), source.Path());
    const auto progress = [&](std::uint64_t done, std::uint64_t all) { bar.Update(done, all); };
    AddAll(source::LookAtPoints(source, IsInterrupted, progress).List(), result);
  }

  void Judge(const CheckResult& result) {
    const bool isDamaged = result.Has(Severity::kLost);
    if (result.findings.IsEmpty() || !(isDamaged || isStrict_)) return;
    ++(isDamaged ? damaged_ : suspect_);
    verdict_ = result.path + (isDamaged ? " is damaged: " : " is suspect: ") +
               Counted(std::ssize(result.findings.List()), "finding");
  }

  // "1 of 3 sources damaged, 2 suspect"
  std::string Summary() const {
    std::string text = std::to_string(damaged_ > 0 ? damaged_ : suspect_) + " of " +
                       Counted(static_cast<std::int64_t>(count_), "source") +
                       (damaged_ > 0 ? " damaged" : " suspect");
    if (damaged_ > 0 && suspect_ > 0) text += ", " + std::to_string(suspect_) + " suspect";
    return text;
  }

  void EndBadly() const {
    const bool isBad = damaged_ + suspect_ > 0;
    if (isBad && failure_) PrintError(Summary());
    if (failure_) throw Failure(*failure_);
    if (isBad) throw Failure(ExitStatus::kDamaged, sources_.IsList() ? Summary() : verdict_);
  }

  SourceArguments sources_;
  bool wantsJson_ = false;
  bool isStrict_ = false;
  std::size_t count_ = 0;
  std::size_t damaged_ = 0;
  std::size_t suspect_ = 0;  // with --strict
  std::string verdict_;      // of the last of them
  std::optional<Failure> failure_;
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand(CLI::App& parser) { return std::make_unique<CheckCommand>(parser); }

}  // namespace zrml::tool
