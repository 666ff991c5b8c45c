#include "source/points_look.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "source/scan_faults.h"

namespace zrml::source {
namespace {

using Kind = FindingSubject::Kind;

class PointsLook {
 public:
  PointsLook(Source& source, const Cancel& cancel, const Progress& progress, Onlooker* onlooker)
      : source_(source), cancel_(cancel), progress_(progress), onlooker_(onlooker) {}

  Findings Run() {
    for (const Finding& finding : FindingsOf()) known_.emplace(finding.subject, &finding);
    const int samples = CountOf([&] { return source_.SampleCount(); });
    for (int sample = 0; sample < samples; ++sample) PlanSample(sample);
    for (const Part& part : parts_) LookAt(part);
    faulty_.AddTo(findings_);
    return std::move(findings_);
  }

 private:
  enum class What { kScans, kAbsorbance, kTraces, kFunctionTraces };

  struct Part {
    What what = What::kScans;
    int sample = 0;
    int function = 0;
    int count = 0;
    Function described = {};
    FindingSubject subject = {};

    bool AreTraces() const { return what == What::kTraces || what == What::kFunctionTraces; }
  };

  // 0, once it is found why, where there is no number.
  template <class Count>
  int CountOf(Count count, const FindingSubject& subject = {}) {
    try {
      return static_cast<int>(count());
    } catch (const Error& error) {
      findings_.Add({.code = FindingCode::kFileUnreadable, .problem = error.Message(), .subject = subject});
      return 0;
    }
  }

  std::span<const Finding> FindingsOf() {
    try {
      return source_.Findings();
    } catch (const Error& error) {
      findings_.Add({.code = FindingCode::kFileUnreadable, .problem = error.Message()});
      return {};
    }
  }

  // `count` gives how many there are.
  template <class Count>
  void Plan(Part part, Count count) {
    ThrowIfCancelled(cancel_);
    if (!source_.Includes(part.subject) || IsDataMissing(part.subject)) return;
    part.count = CountOf(count, part.subject);
    all_ += static_cast<std::uint64_t>(part.count);
    parts_.push_back(std::move(part));
  }

  bool IsReport() const { return source_.GetFormat() == Format::kReport; }

  void PlanSample(int sample) {
    const int number = IsReport() ? sample + 1 : 0;
    std::vector<Function> functions;
    CountOf([&] {
      const std::span<const Function> all = source_.Functions(sample);
      functions.assign(all.begin(), all.end());
      return all.size();
    });
    for (int function = 0; function < static_cast<int>(functions.size()); ++function) {
      const Function& described = functions[static_cast<std::size_t>(function)];
      const FunctionId& id = described.id;
      const FindingSubject subject = {Kind::kFunction, number, id.number, id.process, id.repeat};
      Plan({What::kScans, sample, function, 0, described, subject},
           [&] { return source_.ScanCount(sample, function); });
      Plan({What::kFunctionTraces, sample, function, 0, described, subject},
           [&] { return source_.FunctionTraces(sample, function).size(); });
    }
    if (source_.HasAbsorbance(sample)) {
      const Function described = source_.AbsorbanceFunction(sample);
      const FindingSubject subject = {.kind = Kind::kAbsorbance, .function = described.id.number};
      Plan({What::kAbsorbance, sample, 0, 0, described, subject},
           [&] { return source_.AbsorbanceScanCount(sample); });
    }
    const FindingSubject traces = {.kind = Kind::kTraces, .sample = number};
    Plan({What::kTraces, sample, 0, 0, {}, traces}, [&] { return source_.Traces(sample).size(); });
  }

  void LookAt(const Part& part) {
    Numbers unread;
    Numbers lacking;
    Numbers empty;
    const std::vector<bool> known = KnownLosses(part);
    for (int i = 0; i < part.count; ++i) {
      ThrowIfCancelled(cancel_);
      const std::uint64_t number = static_cast<std::uint64_t>(i) + 1;
      try {
        const PointsRead read = Read(part, i);
        if (read.lost > 0 && !known[static_cast<std::size_t>(i)]) lacking.Add(number);
        if (read.lost == 0 && read.count == 0) empty.Add(number);
      } catch (const Error&) {
        unread.Add(number);
      }
      if (progress_) progress_(++done_, all_);
    }
    Notice(part, part.AreTraces() ? FindingCode::kTracesUnreadable : FindingCode::kScansUnreadable, unread,
           "cannot be read");
    // With ion mobility the points are in another file. Those of reports are hidden by their lines, which are
    // known.
    if (!part.described.hasMobility && !IsReport())
      Notice(part, FindingCode::kPointsLost, lacking, "have lost points");
    if (IsReport())
      Notice(part, part.AreTraces() ? FindingCode::kTracesEmpty : FindingCode::kScansEmpty, empty,
             "have no points");
  }

  PointsRead Read(const Part& part, int i) {
    switch (part.what) {
      case What::kAbsorbance:
        return source_.ReadAbsorbance(part.sample, i, x_, y_);
      case What::kTraces:
        return Shown(part, source_.ReadTrace(part.sample, i));
      case What::kFunctionTraces:
        return Shown(part, source_.ReadFunctionTrace(part.sample, part.function, i));
      case What::kScans:
        break;
    }
    const Scan scan = source_.ScanAt(part.sample, part.function, i);
    const PointsRead read = source_.ReadPoints(part.sample, part.function, i, x_, y_);
    if (read.lost == 0)
      faulty_.Add(part.described, i + 1, FaultsOf(source_.GetFormat(), part.described, scan, x_, y_));
    if (onlooker_ != nullptr)
      onlooker_->See({part.sample, part.function, part.described, scan, read, x_, y_});
    return read;
  }

  PointsRead Shown(const Part& part, const Chromatogram& trace) {
    if (onlooker_ != nullptr) onlooker_->See(part.sample, trace);
    return {.count = trace.minutes.size()};
  }

  // Then no scan can be read, which is already reported.
  bool IsDataMissing(const FindingSubject& subject) const {
    const auto [first, last] = known_.equal_range(subject);
    return std::any_of(first, last, [&](const auto& entry) {
      const Finding& finding = *entry.second;
      const bool isUnopened = finding.code == FindingCode::kFileUnreadable && finding.file.ends_with(".DAT");
      return finding.code == FindingCode::kDataMissing || isUnopened;
    });
  }

  // Which scans are known to have lost points.
  std::vector<bool> KnownLosses(const Part& part) const {
    std::vector<bool> scans(static_cast<std::size_t>(part.count));
    const auto [first, last] = known_.equal_range(part.subject);
    for (auto entry = first; entry != last; ++entry) {
      const Finding* const finding = entry->second;
      const bool isOfPoints = finding->code == FindingCode::kDataCut ||
                              finding->code == FindingCode::kDataZeroed ||
                              finding->code == FindingCode::kOffsetsLost;
      if (!isOfPoints) continue;
      finding->scans.ForEach([&](std::uint64_t number) {
        if (number <= scans.size()) scans[static_cast<std::size_t>(number) - 1] = true;
      });
    }
    return scans;
  }

  // The owner of the scans or traces, where no file names it.
  std::string OwnerOf(const Part& part) const {
    if (!part.described.file.empty()) return {};
    if (!IsReport()) return "the run ";
    const std::string sample = "sample " + std::to_string(part.sample + 1) + " ";
    return part.what == What::kTraces ? sample : "function " + TextOf(part.described.id) + " of " + sample;
  }

  void Notice(const Part& part, FindingCode code, const Numbers& some, const std::string& what) {
    if (some.IsEmpty()) return;
    findings_.Add({.code = code,
                   .file = part.described.file,
                   .problem = OwnerOf(part) + "has " + std::to_string(some.Count()) + " of " +
                              std::to_string(part.count) + (part.AreTraces() ? " traces" : " scans") +
                              " that " + what + "; the first is " + (part.AreTraces() ? "trace " : "scan ") +
                              std::to_string(some.First()),
                   .subject = part.subject,
                   .count = some.Count(),
                   .first = some.First()});
  }

  Source& source_;
  const Cancel& cancel_;
  const Progress& progress_;
  Onlooker* onlooker_;
  std::multimap<FindingSubject, const Finding*> known_;  // a report may have one for each of its samples
  std::vector<Part> parts_;
  std::uint64_t done_ = 0;
  std::uint64_t all_ = 0;  // scans and traces
  Findings findings_;
  FaultyScans faulty_;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace

Findings LookAtPoints(Source& source, const Cancel& cancel, const Progress& progress, Onlooker* onlooker) {
  return PointsLook(source, cancel, progress, onlooker).Run();
}

}  // namespace zrml::source
