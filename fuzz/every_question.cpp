#include "fuzz/every_question.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "fuzz/check.h"
#include "source/points_look.h"
#include "source/source.h"

namespace zrml::fuzz {
namespace {

using source::Source;

constexpr int kMostFunctions = 6;
constexpr std::uint64_t kMostPointsAdded = 1u << 12;  // in chromatograms computed from points
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The position in a question: a scan, a trace or a drift bin.
struct Place {
  int sample = 0;
  int function = 0;
  int scan = 0;
};

// The content of an answer as one number.
class Answer {
 public:
  void Add(std::uint64_t value) { digest_ = (digest_ ^ value) * 0x9E3779B97F4A7C15 + (digest_ >> 29); }
  void Add(int value) { Add(static_cast<std::uint64_t>(static_cast<std::int64_t>(value))); }
  void Add(bool value) { Add(std::uint64_t{value}); }
  void Add(double value) { Add(std::bit_cast<std::uint64_t>(value)); }
  void Add(const std::string& text) {
    Add(text.size());
    for (const char c : text) Add(static_cast<std::uint64_t>(static_cast<unsigned char>(c)));
  }
  void Add(std::span<const double> values) {
    Add(values.size());
    for (const double value : values) Add(value);
  }
  template <class T>
  void Add(const std::optional<T>& value) {
    Add(value.has_value());
    if (value) Add(*value);
  }

  std::uint64_t Digest() const { return digest_; }

 private:
  std::uint64_t digest_ = 1;
};

bool IsPosition(int position, std::size_t count) {
  return position >= 0 && static_cast<std::size_t>(position) < count;
}

void Add(const source::Function& function, Answer& answer) {
  answer.Add(TextOf(function.id));
  Check(source::ParseFunctionId(TextOf(function.id)).has_value(), "a function has a usable name");
  answer.Add(function.file);
  answer.Add(function.name);
  answer.Add(function.msLevel.value_or(0));
  answer.Add(static_cast<int>(function.kind));
  answer.Add(static_cast<int>(function.polarity));
  answer.Add(function.hasMobility);
}

void Add(const std::vector<source::MetadataItem>& items, Answer& answer) {
  std::set<std::string> keys;
  for (const source::MetadataItem& item : items) {
    Check(keys.insert(item.key).second, "each key appears once");
    answer.Add(item.key);
    answer.Add(item.value);
  }
}

void Add(const std::vector<source::Trace>& traces, Answer& answer) {
  int number = 0;
  for (const source::Trace& trace : traces) {
    Check(trace.number == ++number, "traces are numbered from 1");
    answer.Add(trace.name);
  }
}

void Add(const source::Chromatogram& chromatogram, Answer& answer) {
  Check(chromatogram.minutes.size() == chromatogram.intensities.size(), "a chromatogram has pairs");
  answer.Add(chromatogram.name);
  answer.Add(chromatogram.minutes);
  answer.Add(chromatogram.intensities);
}

void AddSeries(Source& source, const Place& at, const source::Chromatogram& chromatogram, Answer& answer) {
  Check(chromatogram.minutes.size() == static_cast<std::size_t>(source.ScanCount(at.sample, at.function)),
        "a chromatogram has a point for each scan");
  Add(chromatogram, answer);
}

// Chromatograms that need the points of every scan are requested for small functions only.
bool IsSmall(Source& source, const Place& at) {
  const int scans = source.ScanCount(at.sample, at.function);
  std::uint64_t points = 0;
  for (int scan = 0; scan < scans && points <= kMostPointsAdded; ++scan)
    points += 16 + source.ScanAt(at.sample, at.function, scan).points;
  return points <= kMostPointsAdded;
}

void AskSamples(Source& source, const Place& at, Answer& answer) {
  answer.Add(source.SampleCount());
  answer.Add(source.SampleName(at.sample));
  Add(source.SampleMetadata(at.sample), answer);
}

void AskFunctions(Source& source, const Place& at, Answer& answer) {
  std::set<std::string> names;
  for (const source::Function& function : source.Functions(at.sample)) {
    Check(names.insert(TextOf(function.id)).second, "functions have different numbers");
    Add(function, answer);
  }
}

void AskTexts(Source& source, const Place& at, Answer& answer) {
  Add(source.FunctionMetadata(at.sample, at.function), answer);
  answer.Add(source.FunctionText(at.sample, at.function));
}

void AskScan(Source& source, const Place& at, Answer& answer) {
  const source::Scan scan = source.ScanAt(at.sample, at.function, at.scan);
  Check(IsPosition(at.scan, static_cast<std::size_t>(source.ScanCount(at.sample, at.function))),
        "no scan outside the function");
  answer.Add(scan.minutes);
  answer.Add(scan.endMinutes);
  answer.Add(static_cast<int>(scan.representation));
  answer.Add(std::uint64_t{scan.points});
  answer.Add(scan.totalIntensity);
  answer.Add(scan.basePeakIntensity);
  answer.Add(scan.precursorMz);
  answer.Add(scan.scanValue);
}

void AskMinutes(Source& source, const Place& at, Answer& answer) {
  const std::vector<double> minutes = source.Minutes(at.sample, at.function);
  Check(minutes.size() == static_cast<std::size_t>(source.ScanCount(at.sample, at.function)),
        "there is a time for each scan");
  if (IsPosition(at.scan, minutes.size())) {
    const double own = source.ScanAt(at.sample, at.function, at.scan).minutes;
    const double listed = minutes[static_cast<std::size_t>(at.scan)];
    Check(own == listed || (std::isnan(own) && std::isnan(listed)), "a scan has its time in the list");
  }
  answer.Add(minutes);
}

// Throws nothing else when there is room for all points but one.
void CheckNoRoom(Source& source, const Place& at, std::size_t count) {
  std::vector<double> mz(count - 1);
  std::vector<double> intensities(count);
  try {
    source.ReadPoints(at.sample, at.function, at.scan, std::span(mz), std::span(intensities));
    Check(false, "points without room are refused");
  } catch (const source::Error& error) {
    Check(error.GetStatus() == source::Status::kWrongArgument, "no room is the caller's mistake");
  }
}

void AskPoints(Source& source, const Place& at, Answer& answer) {
  const std::size_t room = source.ScanAt(at.sample, at.function, at.scan).points;
  std::vector<double> mz(room);
  std::vector<double> intensities(room);
  const source::PointsRead read =
      source.ReadPoints(at.sample, at.function, at.scan, std::span(mz), std::span(intensities));
  Check(read.count <= room, "no more points than there is room for");
  if (read.count > 0) CheckNoRoom(source, at, read.count);
  mz.resize(read.count);
  intensities.resize(read.count);
  Check(std::is_sorted(mz.begin(), mz.end()), "points ascend in m/z");
  answer.Add(read.lost);
  answer.Add(mz);
  answer.Add(intensities);
  source.ReadPoints(at.sample, at.function, at.scan, mz, intensities);
  Check(mz.size() == read.count && intensities.size() == read.count, "both ways of reading give the same");
}

void AskPrecursor(Source& source, const Place& at, Answer& answer) {
  const auto found = source.FindPrecursor(at.sample, at.function, at.scan);
  answer.Add(found.has_value());
  if (!found) return;
  const std::span<const source::Function> functions = source.Functions(at.sample);
  Check(IsPosition(found->function, functions.size()), "a precursor's function exists");
  Check(IsPosition(found->scan, static_cast<std::size_t>(source.ScanCount(at.sample, found->function))),
        "a precursor's scan exists");
  Check(functions[static_cast<std::size_t>(found->function)].msLevel <
            functions[static_cast<std::size_t>(at.function)].msLevel,
        "a precursor is of a lower level");
  answer.Add(found->function);
  answer.Add(found->scan);
}

void AskStoredSeries(Source& source, const Place& at, Answer& answer) {
  AddSeries(source, at, source.TotalIons(at.sample, at.function), answer);
  if (IsSmall(source, at)) AddSeries(source, at, source.BasePeaks(at.sample, at.function), answer);
}

void AskRanges(Source& source, const Place& at, Answer& answer) {
  if (!IsSmall(source, at)) return;
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr source::Range kRanges[] = {
      {100, 500}, {500, 100}, {-kInfinity, kInfinity}, {kNaN, 500}, {100, kNaN}};
  for (const source::Range& range : kRanges) {
    for (const source::Within within : {source::Within::kSum, source::Within::kLargest})
      AddSeries(source, at, source.MassRange(at.sample, at.function, range, within), answer);
  }
}

void AskToBeCancelled(Source& source, const Place& at, Answer& answer) {
  if (!IsSmall(source, at)) return;
  int asked = 0;
  const auto cancel = [&] { return ++asked > 1; };
  try {
    source.MassRange(at.sample, at.function, {0, kInfinity}, source::Within::kSum, cancel);
    Check(source.ScanCount(at.sample, at.function) < 2, "long work can be cancelled");
  } catch (const source::Cancelled&) {
    answer.Add(asked);
  }
}

void AskTraces(Source& source, const Place& at, Answer& answer) {
  const std::vector<source::Trace> traces = source.Traces(at.sample);
  Add(traces, answer);
  if (traces.empty()) return;
  const source::Chromatogram trace = source.ReadTrace(at.sample, at.scan);
  Check(IsPosition(at.scan, traces.size()), "no trace outside the list");
  Check(trace.name == traces[static_cast<std::size_t>(at.scan)].name, "a trace has its name in the list");
  Add(trace, answer);
}

void AskFunctionTraces(Source& source, const Place& at, Answer& answer) {
  const std::vector<source::Trace> traces = source.FunctionTraces(at.sample, at.function);
  Add(traces, answer);
  Add(source.ReadFunctionTrace(at.sample, at.function, at.scan), answer);
  Check(IsPosition(at.scan, traces.size()), "no trace outside the function's list");
}

void AskAbsorbance(Source& source, const Place& at, Answer& answer) {
  const int scans = source.AbsorbanceScanCount(at.sample);
  answer.Add(scans);
  Check(scans == 0 || source.HasAbsorbance(at.sample), "scans of absorbance come with absorbance");
  if (source.HasAbsorbance(at.sample)) Add(source.AbsorbanceFunction(at.sample), answer);
  std::vector<double> wavelengths;
  std::vector<double> values;
  answer.Add(source.ReadAbsorbance(at.sample, at.scan, wavelengths, values).lost);
  Check(IsPosition(at.scan, static_cast<std::size_t>(scans)), "no absorbance spectrum outside the scans");
  Check(wavelengths.size() == values.size(), "an absorbance spectrum has pairs");
  answer.Add(source.AbsorbanceMinutes(at.sample, at.scan));
  answer.Add(wavelengths);
  answer.Add(values);
}

void Add(std::span<const Finding> findings, Answer& answer) {
  for (const Finding& finding : findings) {
    Check(!finding.problem.empty(), "a finding says what the problem is");
    Check(finding.count > 0, "a finding is about something");
    answer.Add(TextOf(finding));
    answer.Add(finding.first);
  }
}

void AskFindings(Source& source, const Place&, Answer& answer) { Add(source.Findings(), answer); }

// Of small sources only: each scan is read, whatever bytes others have read, too.
void LookAtAllPoints(Source& source, const Place&, Answer& answer) {
  std::uint64_t work = 0;
  const int samples = source.SampleCount();
  for (int sample = 0; sample < samples; ++sample) {
    const int functions = static_cast<int>(source.Functions(sample).size());
    for (int function = 0; function < functions; ++function) {
      if (++work > kMostPointsAdded || !IsSmall(source, {sample, function, 0})) return;
      work += static_cast<std::uint64_t>(source.ScanCount(sample, function));
    }
  }
  if (work > kMostPointsAdded) return;
  std::uint64_t last = 0;
  const auto progress = [&](std::uint64_t done, std::uint64_t all) {
    Check(done == last + 1 && done <= all, "progress goes on by one, to the end");
    last = done;
  };
  Add(source::LookAtPoints(source, {}, progress).List(), answer);
}

// Answers of the mobility library may change from question to question.
void AskDriftBins(Source& source, const Place& at, Answer&) {
  Check(source.DriftBinCount(at.sample, at.function) >= 0, "the number of drift bins is not negative");
  for (const int bin : {-1, 0, 1, 7, INT_MAX}) {
    std::vector<double> mz;
    std::vector<double> intensities;
    try {
      source.ReadDriftBin(at.sample, at.function, at.scan, bin, mz, intensities);
    } catch (const source::Error&) {
    }
    Check(mz.size() == intensities.size(), "a drift bin has pairs");
  }
}

// The position that an answer depends on.
enum Scope { kSource, kSample, kFunction, kScan };

struct Question {
  void (*ask)(Source&, const Place&, Answer&);
  Scope scope;
};

constexpr Question kQuestions[] = {
    {AskSamples, kSample},  {AskFunctions, kSample},
    {AskTexts, kFunction},  {AskScan, kScan},
    {AskMinutes, kScan},    {AskPoints, kScan},
    {AskPrecursor, kScan},  {AskStoredSeries, kFunction},
    {AskRanges, kFunction}, {AskToBeCancelled, kFunction},
    {AskTraces, kScan},     {AskFunctionTraces, kScan},
    {AskAbsorbance, kScan}, {AskFindings, kSource},
    {AskDriftBins, kScan},  {LookAtAllPoints, kSource},
};
constexpr int kQuestionCount = static_cast<int>(std::size(kQuestions));

class Asker {
 public:
  explicit Asker(Source& source) : source_(source) {}

  void Ask(int question, const Place& at) {
    Answer answer;
    try {
      kQuestions[question].ask(source_, at, answer);
    } catch (const source::Error& error) {
      Check(error.GetStatus() != source::Status::kDone, "an error has a status");
      Check(!error.Message().empty(), "an error says what is wrong");
      answer.Add(error.Message());
    }
    const auto [known, isNew] =
        answers_.emplace(std::tuple(question, at.sample, at.function, at.scan), answer.Digest());
    Check(isNew || known->second == answer.Digest(), "an answer is the same each time");
  }

  void AskAll() {
    AskAllOf(kSource, {});
    const int samples = source_.SampleCount();
    for (const int sample : Positions(std::min(samples, 3))) {
      AskAllOf(kSample, {sample, 0, 0});
      const int functions = std::min(Count([&] { return source_.Functions(sample).size(); }), kMostFunctions);
      for (const int function : Positions(functions)) {
        AskAllOf(kFunction, {sample, function, 0});
        const int scans =
            Count([&] { return static_cast<std::size_t>(source_.ScanCount(sample, function)); });
        for (const int scan : Positions(scans)) AskAllOf(kScan, {sample, function, scan});
      }
    }
  }

 private:
  void AskAllOf(Scope scope, const Place& at) {
    for (int question = 0; question < kQuestionCount; ++question) {
      if (kQuestions[question].scope == scope) Ask(question, at);
    }
  }

  // 0 when counting fails.
  template <class Get>
  static int Count(Get get) {
    try {
      return static_cast<int>(get());
    } catch (const source::Error&) {
      return 0;
    }
  }

  // The ends and the positions next to them outside.
  static std::vector<int> Positions(int count) {
    std::set<int> positions = {-1, 0, 1, count - 1, count};
    return {positions.begin(), positions.end()};
  }

  Source& source_;
  std::map<std::tuple<int, int, int, int>, std::uint64_t> answers_;
};

// Null when there is no readable source.
std::unique_ptr<Source> Open(const std::string& path) {
  try {
    return Source::Open(path);
  } catch (const source::Error& error) {
    Check(error.GetStatus() != source::Status::kDone, "an error has a status");
    return nullptr;
  }
}

// Mostly a plausible position; sometimes one that no source has.
int TakePosition(Input& input) {
  constexpr int kImpossible[] = {-1, INT_MIN, INT_MAX};
  const unsigned byte = input.Value<std::uint8_t>();
  return byte >= 0xFD ? kImpossible[byte - 0xFD] : static_cast<int>(byte % 8);
}

}  // namespace

bool CanOpen(const std::string& path) { return Open(path) != nullptr; }

void AskSource(const std::string& path, Input questions) {
  constexpr int kMostQuestions = 64;
  const std::unique_ptr<Source> source = Open(path);
  if (source == nullptr) return;
  Check(source->Path() == path, "a source's path is the one given");
  Asker asker(*source);
  for (int i = 0; i < kMostQuestions && !questions.IsEmpty(); ++i) {
    const int question = questions.Value<std::uint8_t>() % kQuestionCount;
    const int sample = TakePosition(questions);
    const int function = TakePosition(questions);
    asker.Ask(question, {sample, function, TakePosition(questions)});
  }
  asker.AskAll();
}

}  // namespace zrml::fuzz
