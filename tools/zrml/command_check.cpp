// zrml check: whether a source is sound.
#include <algorithm>

#include "common/platform/platform.h"
#include "tools/zrml/check/source_check.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert/source_files.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/json_writer.h"

namespace zrml {
namespace {

struct CheckResult {
  std::wstring path;
  long long functions = 0;
  long long scans = 0;
  std::vector<Finding> findings;
};

// Tells how many of a list cannot be read.
class Unreadable {
 public:
  void Add(int number) {
    if (count_++ == 0) first_ = number;
  }
  void Report(const std::wstring& what, int all, CheckResult& result) const {
    if (count_ == 0) return;
    result.findings.push_back({L"", std::to_wstring(count_) + L" of " + std::to_wstring(all) + L" " + what +
                                        L" cannot be read; the first is " + std::to_wstring(first_)});
  }

 private:
  int count_ = 0;
  int first_ = 0;
};

// A report's provider says the same of a spectrum that it cannot read and of one without points.
void ReadFunction(CDataServerImpl& server, int sample, int function, CheckResult& result) {
  const int scans = std::max(server.GetScanCount(sample, function), 0);
  ++result.functions;
  result.scans += scans;
  if (server.IsReportSource()) return;
  Unreadable unreadable;
  for (int scan = 0; scan < scans; ++scan) {
    CZRMassSpectrum spectrum;
    if (!server.GetSpectrum(sample, function, scan, spectrum)) unreadable.Add(scan + 1);
  }
  unreadable.Report(L"scans of function " + std::to_wstring(function + 1), scans, result);
}

void ReadAbsorbance(CDataServerImpl& server, int sample, CheckResult& result) {
  if (!server.HasAbsorbanceData(sample)) return;
  const int scans = std::max(server.GetAbsorbanceScanCount(sample), 0);
  Unreadable unreadable;
  for (int scan = 0; scan < scans; ++scan) {
    CZRAbsorbanceSpectrum spectrum;
    if (!server.GetAbsorbanceSpectrum(sample, scan, spectrum)) unreadable.Add(scan + 1);
  }
  unreadable.Report(L"absorbance spectra", scans, result);
}

void ReadTraces(CDataServerImpl& server, int sample, CheckResult& result) {
  if (server.IsReportSource()) return;  // whose lists may grow with each look at them
  const int traces = std::max(server.GetTraceCount(sample), 0);
  Unreadable unreadable;
  for (int trace = 0; trace < traces; ++trace) {
    CZRChromatogram chromatogram;
    if (!server.GetTrace(sample, trace, chromatogram)) unreadable.Add(trace + 1);
  }
  unreadable.Report(L"traces", traces, result);
}

void ReadSource(const Source& source, CheckResult& result) {
  CDataServerImpl& server = source.Server();
  const int samples = server.GetSampleCount();
  for (int sample = 0; sample < samples; ++sample) {
    const int functions = server.GetFunctionCount(sample);
    for (int function = 0; function < functions; ++function) ReadFunction(server, sample, function, result);
    ReadAbsorbance(server, sample, result);
    ReadTraces(server, sample, result);
  }
}

// The provider reads zeros where a disk fails.
void ReadFiles(const Source& source, CheckResult& result) {
  const bool isReport = source.Server().IsReportSource();
  const SourceFiles files = ListSourceFiles(source.Path(), isReport, Checksums::kLeftOut, 1);
  if (files.error) result.findings.push_back({L"", *files.error});
  for (const std::wstring& name : files.broken)
    result.findings.push_back({name, L"cannot be read to its end"});
}

std::wstring Counted(long long count, const std::wstring& noun) {
  return std::to_wstring(count) + L' ' + noun + (count == 1 ? L"" : L"s");
}

void PrintText(const CheckResult& result, Output& out) {
  for (const Finding& finding : result.findings) {
    out.Text(VisibleUtf8(finding.file.empty() ? finding.problem : finding.file + L' ' + finding.problem) +
             "\n");
  }
  if (!result.findings.empty()) return;
  out.Text(VisibleUtf8(result.path + L" is sound: " + Counted(result.functions, L"function") + L", " +
                       Counted(result.scans, L"scan")) +
           "\n");
}

void PrintJson(const CheckResult& result, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    json.Key("source").String(result.path);
    json.Key("sound").Bool(result.findings.empty());
    json.Key("functions").Integer(result.functions);
    json.Key("scans").Integer(result.scans);
    json.Key("findings").Array([&] {
      for (const Finding& finding : result.findings) {
        json.Object([&] {
          json.Key("file");
          finding.file.empty() ? json.Null() : json.String(finding.file);
          json.Key("problem").String(finding.problem);
        });
      }
    });
  });
  json.Finish();
}

class CheckCommand : public SourceCommand {
 public:
  explicit CheckCommand(CommandLine& line)
      : SourceCommand(line, "check", "Tell a damaged source from a sound one") {}

  void Run(Output& out) override {
    const CheckResult result = Check();
    WantsJson() ? PrintJson(result, out) : PrintText(result, out);
    out.Finish();
    if (result.findings.empty()) return;
    throw Failure(
        ExitStatus::kDamaged,
        result.path + L" is damaged: " + Counted(static_cast<long long>(result.findings.size()), L"finding"));
  }

 private:
  // Where the provider does not open the source, the files may tell why.
  CheckResult Check() const {
    CheckResult result{platform::FromNativePath(Path()), 0, 0, {}};
    try {
      const Source source = OpenSource();
      result.findings = CheckSource(result.path, source.Server().IsReportSource());
      ReadSource(source, result);
      ReadFiles(source, result);
    } catch (const Failure& failure) {
      if (!MayBeOfDamage(failure)) throw;
      result.findings = CheckSource(result.path, false);
      if (result.findings.empty()) throw;
      result.findings.push_back({L"", failure.message});
    }
    return result;
  }
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand(CommandLine& line) { return std::make_unique<CheckCommand>(line); }

}  // namespace zrml
