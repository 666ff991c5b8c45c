// zrml check: whether a source is sound.
#include <iterator>
#include <set>
#include <vector>

#include "convert/source_files.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"

namespace zrml::tool {
namespace {

struct Problem {
  std::string file;  // empty when it is about the whole
  std::string text;
};

struct CheckResult {
  std::string path;
  std::int64_t functions = 0;
  std::int64_t scans = 0;
  std::vector<Problem> problems;
};

// What cannot be asked is a finding, and the rest is asked all the same.
template <class Ask>
void Attempt(CheckResult& result, Ask ask) {
  try {
    ask();
  } catch (const source::Error& error) {
    result.problems.push_back({"", error.Message()});
  }
}

// Of a list, those that have something wrong.
void AddFaulty(const std::vector<int>& numbers, int all, const std::string& fault, CheckResult& result) {
  if (numbers.empty()) return;
  result.problems.push_back({"", std::to_string(numbers.size()) + " of " + std::to_string(all) + " " + fault +
                                     "; the first is " + std::to_string(numbers.front())});
}

// Reads all of a list; `read` gives how many points are lost and throws when nothing can be read.
template <class Read>
void ReadAll(const std::string& what, int count, CheckResult& result, Read read) {
  std::vector<int> unreadable;  // numbers from 1
  std::vector<int> incomplete;
  for (int i = 0; i < count; ++i) {
    try {
      if (read(i) != 0) incomplete.push_back(i + 1);
    } catch (const source::Error&) {
      unreadable.push_back(i + 1);
    }
  }
  AddFaulty(unreadable, count, what + " cannot be read", result);
  AddFaulty(incomplete, count, what + " lack points", result);
}

class SourceReader {
 public:
  SourceReader(source::Source& source, CheckResult& result) : source_(source), result_(result) {}

  void Read() {
    Attempt(result_, [&] { ReadFindings(); });
    Attempt(result_, [&] {
      const int samples = source_.SampleCount();
      for (int sample = 0; sample < samples; ++sample) ReadSample(sample);
    });
  }

 private:
  void ReadFindings() {
    for (const Finding& finding : source_.Findings()) {
      if (SeverityOf(finding.code) != Severity::kNote)
        result_.problems.push_back({finding.file, finding.problem});
      if (finding.code == FindingCode::kDataCut || finding.code == FindingCode::kDataMissing)
        lacking_.insert(finding.subject);
    }
  }

  void ReadSample(int sample) {
    Attempt(result_, [&] {
      const int functions = static_cast<int>(source_.Functions(sample).size());
      for (int function = 0; function < functions; ++function)
        Attempt(result_, [&] { ReadFunction(sample, function); });
    });
    Attempt(result_, [&] {
      if (source_.HasAbsorbance(sample)) ReadAbsorbance(sample);
    });
    Attempt(result_, [&] {
      if (source_.GetFormat() == source::Format::kRawDirectory) ReadTraces(sample);
    });
  }

  void ReadFunction(int sample, int function) {
    const source::Function described = FunctionAt(source_, {sample, function});
    const int scans = source_.ScanCount(sample, function);
    ++result_.functions;
    result_.scans += scans;
    if (lacking_.contains(SubjectOf(source_, sample, described.id))) return;
    ReadAll("scans of function " + source::TextOf(described.id), scans, result_, [&](int scan) {
      const std::size_t lost = source_.ReadPoints(sample, function, scan, x_, y_).lost;
      return described.hasMobility ? 0 : lost;  // with mobility the points are elsewhere
    });
  }

  void ReadAbsorbance(int sample) {
    if (lacking_.contains({FindingSubject::Kind::kAbsorbance})) return;
    ReadAll("absorbance spectra", source_.AbsorbanceScanCount(sample), result_,
            [&](int scan) { return source_.ReadAbsorbance(sample, scan, x_, y_).lost; });
  }

  void ReadTraces(int sample) {
    ReadAll("traces", static_cast<int>(source_.Traces(sample).size()), result_, [&](int trace) {
      source_.ReadTrace(sample, trace);
      return 0;
    });
  }

  source::Source& source_;
  CheckResult& result_;
  std::set<FindingSubject> lacking_;  // those known to lack scans: no need to say it twice
  std::vector<double> x_;
  std::vector<double> y_;
};

// A failing disk gives bytes that are not read by whoever looks at the source in passing.
void ReadFiles(const source::Source& source, CheckResult& result) {
  const convert::SourceFiles files =
      convert::ListSourceFiles(source.Path(), source.GetFormat(), convert::Checksums::kLeftOut, 1, {});
  if (files.isForbidden) {
    PrintError(source.Path() + ": " + *files.error + ", so only files that are known by name are looked at");
  } else if (files.error) {
    result.problems.push_back({"", *files.error});
  }
  for (const auto& [file, problem] : files.broken) result.problems.push_back({file, problem});
}

std::string WithoutPrefix(const std::string& text, const std::string& prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

void PrintText(const CheckResult& result, Output& out) {
  for (const Problem& problem : result.problems) {
    out.Text(VisibleText(problem.file.empty() ? problem.text : problem.file + ' ' + problem.text) + "\n");
  }
  if (!result.problems.empty()) return;
  out.Text(VisibleText(result.path + " is sound: " + Counted(result.functions, "function") + ", " +
                       Counted(result.scans, "scan")) +
           "\n");
}

void PrintJson(const CheckResult& result, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    json.Members({{"source", result.path},
                  {"sound", result.problems.empty()},
                  {"functions", result.functions},
                  {"scans", result.scans}});
    json.Key("findings").Array([&] {
      for (const Problem& problem : result.problems) {
        const Value file = problem.file.empty() ? Value() : Value(problem.file);
        json.Object([&] { json.Members({{"file", file}, {"problem", problem.text}}); });
      }
    });
  });
  json.Finish();
}

class CheckCommand : public SourceCommand {
 public:
  explicit CheckCommand(CLI::App& parser) : SourceCommand(parser, "check", "Find damage in a source") {}

  void Run(Output& out) override {
    const CheckResult result = Check();
    WantsJson() ? PrintJson(result, out) : PrintText(result, out);
    out.Finish();
    if (result.problems.empty()) return;
    throw Failure(ExitStatus::kDamaged,
                  result.path + " is damaged: " + Counted(std::ssize(result.problems), "finding"));
  }

 private:
  CheckResult Check() const {
    CheckResult result;
    result.path = Path();
    try {
      const std::unique_ptr<source::Source> source = OpenSource(Path());
      SourceReader(*source, result).Read();
      ReadFiles(*source, result);
    } catch (const Failure& failure) {
      if (failure.status != ExitStatus::kDamaged) throw;  // damage alone is a finding
      result.problems.push_back({"", WithoutPrefix(failure.message, Path() + " is damaged: ")});
    }
    return result;
  }
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand(CLI::App& parser) { return std::make_unique<CheckCommand>(parser); }

}  // namespace zrml::tool
