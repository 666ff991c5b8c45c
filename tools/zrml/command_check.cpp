// zrml check: whether a source is sound.
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
  long long functions = 0;
  long long scans = 0;
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

// Counts those of a list that have something wrong.
class Faults {
 public:
  void Add(int position) {
    if (count_++ == 0) first_ = position + 1;
  }
  void Report(const std::string& what, int all, const std::string& fault, CheckResult& result) const {
    if (count_ == 0) return;
    result.problems.push_back({"", std::to_string(count_) + " of " + std::to_string(all) + " " + what + " " +
                                       fault + "; the first is " + std::to_string(first_)});
  }

 private:
  int count_ = 0;
  int first_ = 0;
};

// Reads all of a list; `read` gives how many points are lost and throws when nothing can be read.
template <class Read>
void ReadAll(const std::string& what, int count, CheckResult& result, Read read) {
  Faults unreadable;
  Faults incomplete;
  for (int i = 0; i < count; ++i) {
    try {
      if (read(i) != 0) incomplete.Add(i);
    } catch (const source::Error&) {
      unreadable.Add(i);
    }
  }
  unreadable.Report(what, count, "cannot be read", result);
  incomplete.Report(what, count, "lack points", result);
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

  // Whether it is known already that scans of this one are not there: no need to say it twice.
  bool IsKnownToLack(const FindingSubject& subject) const { return lacking_.contains(subject); }

  FindingSubject SubjectOf(int sample, const source::FunctionId& id) const {
    const bool isReport = source_.GetFormat() == source::Format::kReport;
    return {FindingSubject::Kind::kFunction, isReport ? sample + 1 : 0, id.number, id.process, id.repeat};
  }

  void ReadFunction(int sample, int function) {
    const source::Function& described = source_.Functions(sample)[static_cast<std::size_t>(function)];
    const source::FunctionId id = described.id;
    const bool hasMobility = described.hasMobility;  // whose points are elsewhere
    const int scans = source_.ScanCount(sample, function);
    ++result_.functions;
    result_.scans += scans;
    if (IsKnownToLack(SubjectOf(sample, id))) return;
    ReadAll("scans of function " + source::TextOf(id), scans, result_, [&](int scan) {
      const std::size_t lost = source_.ReadPoints(sample, function, scan, x_, y_).lost;
      return hasMobility ? 0 : lost;
    });
  }

  void ReadAbsorbance(int sample) {
    if (IsKnownToLack({FindingSubject::Kind::kAbsorbance})) return;
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
  std::set<FindingSubject> lacking_;
  std::vector<double> x_;
  std::vector<double> y_;
};

// A failing disk gives bytes that are not read by whoever looks at the source in passing.
void ReadFiles(const source::Source& source, CheckResult& result) {
  const convert::SourceFiles files =
      convert::ListSourceFiles(source.Path(), source.GetFormat(), convert::Checksums::kLeftOut, 1, {});
  if (files.error) result.problems.push_back({"", *files.error});
  for (const std::string& file : files.broken) result.problems.push_back({file, "cannot be read to its end"});
}

std::string WithoutPrefix(const std::string& text, const std::string& prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

std::string Counted(long long count, const std::string& noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
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
    json.Key("source").String(result.path);
    json.Key("sound").Bool(result.problems.empty());
    json.Key("functions").Integer(result.functions);
    json.Key("scans").Integer(result.scans);
    json.Key("findings").Array([&] {
      for (const Problem& problem : result.problems) {
        json.Object([&] {
          json.Key("file");
          problem.file.empty() ? json.Null() : json.String(problem.file);
          json.Key("problem").String(problem.text);
        });
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
    throw Failure(
        ExitStatus::kDamaged,
        result.path + " is damaged: " + Counted(static_cast<long long>(result.problems.size()), "finding"));
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
