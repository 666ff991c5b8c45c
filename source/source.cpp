#include "source/source.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

#include "common/platform/platform.h"
#include "source/formats.h"
#include "source/position.h"

namespace zrml::source {
namespace {

// Takes a whole number from 1 off the front of `text`.
std::optional<int> TakeNumber(std::string_view& text) {
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || number < 1) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
  return number;
}

void ThrowWhenOutOfReach(const platform::SystemPath& path, const std::string& given) {
  const std::string reason = platform::WhyOutOfReach(path);
  if (!reason.empty()) throw Error(Status::kUnreadable, "cannot reach " + given + " (" + reason + ")");
}

}  // namespace

std::string TextOf(const FunctionId& id) {
  if (id.process == 0) return std::to_string(id.number);
  const std::string text = "p" + std::to_string(id.process);
  return id.repeat == 1 ? text : text + "." + std::to_string(id.repeat);
}

std::optional<FunctionId> ParseFunctionId(std::string_view text) {
  FunctionId id;
  const bool isProcessed = text.starts_with('p');
  if (isProcessed) text.remove_prefix(1);
  const std::optional<int> number = TakeNumber(text);
  if (!number) return std::nullopt;
  (isProcessed ? id.process : id.number) = *number;
  if (isProcessed && text.starts_with('.')) {
    text.remove_prefix(1);
    const std::optional<int> repeat = TakeNumber(text);
    if (!repeat) return std::nullopt;
    id.repeat = *repeat;
  }
  return text.empty() ? std::optional(id) : std::nullopt;
}

std::vector<MetadataItem> Merged(std::vector<MetadataItem> items, std::vector<MetadataItem> own) {
  for (MetadataItem& item : own) {
    const auto known = std::find_if(items.begin(), items.end(),
                                    [&](const MetadataItem& each) { return each.key == item.key; });
    known == items.end() ? items.push_back(std::move(item)) : void(known->value = std::move(item.value));
  }
  return items;
}

Source::~Source() = default;

std::unique_ptr<Source> Source::Open(const std::string& path) {
  const platform::SystemPath given = platform::FromUtf8Path(path);
  if (!platform::IsFile(given) && !platform::IsDirectory(given)) {
    ThrowWhenOutOfReach(given, path);
    throw Error(Status::kNotFound, "there is no file or folder " + path);
  }
  if (std::unique_ptr<Source> source = OpenRawDirectory(path)) return source;
  if (std::unique_ptr<Source> source = OpenReport(path)) return source;
  // A folder that may be listed, but whose files may not be examined, looks empty.
  if (platform::IsDirectory(given))
    ThrowWhenOutOfReach(platform::PathIn(given, platform::FromUtf8Path(".")), "what is in " + path);
  throw Error(Status::kNotRecognised, path + " is neither a raw directory nor a report");
}

std::string Source::ScanProcess(int, int, int) { return {}; }

namespace {

bool AreTimesAlone(const ScanColumns& columns) {
  return columns.endMinutes.empty() && columns.areCentroided.empty() && columns.points.empty() &&
         columns.totalIntensities.empty() && columns.basePeakIntensities.empty() &&
         columns.precursorMz.empty() && columns.scanValues.empty();
}

}  // namespace

void Source::ReadScans(int sample, int function, int first, int count, const ScanColumns& columns) {
  if (AreTimesAlone(columns)) {
    if (columns.minutes.empty()) return;
    const std::vector<double> minutes = Minutes(sample, function);
    std::copy_n(minutes.begin() + first, count, columns.minutes.begin());
    return;
  }
  constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();
  for (std::size_t row = 0; row < static_cast<std::size_t>(count); ++row) {
    const Scan scan = ScanAt(sample, function, first + static_cast<int>(row));
    const auto set = [row](auto column, auto value) {
      if (!column.empty()) column[row] = value;
    };
    set(columns.minutes, scan.minutes);
    set(columns.endMinutes, scan.endMinutes);
    set(columns.areCentroided, static_cast<std::uint8_t>(scan.representation));
    set(columns.points, scan.points);
    set(columns.totalIntensities, scan.totalIntensity.value_or(kAbsent));
    set(columns.basePeakIntensities, scan.basePeakIntensity.value_or(kAbsent));
    set(columns.precursorMz, scan.precursorMz.value_or(kAbsent));
    set(columns.scanValues, scan.scanValue.value_or(kAbsent));
  }
}

PointsRead Source::ReadPoints(int sample, int function, int scan, std::vector<double>& mz,
                              std::vector<double>& intensities) {
  const std::size_t room = ScanAt(sample, function, scan).points;
  mz.resize(room);
  intensities.resize(room);
  const PointsRead read = ReadPoints(sample, function, scan, std::span(mz), std::span(intensities));
  mz.resize(read.count);
  intensities.resize(read.count);
  return read;
}

namespace {

// The first of ascending values that is not below `low`. Searched near `hint`, in steps that double: it moves
// little from scan to scan.
std::size_t FirstFrom(double low, std::span<const double> values, std::size_t hint) {
  std::size_t begin = std::min(hint, values.size());
  std::size_t end = begin;
  for (std::size_t step = 1; begin > 0 && !(values[begin - 1] < low); step *= 2) {
    end = begin - 1;
    begin -= std::min(step, begin);
  }
  for (std::size_t step = 1; end < values.size() && values[end] < low; step *= 2) {
    begin = end + 1;
    end += std::min(step, values.size() - end);
  }
  const auto first = values.begin();
  return static_cast<std::size_t>(std::lower_bound(first + static_cast<std::ptrdiff_t>(begin),
                                                   first + static_cast<std::ptrdiff_t>(end), low) -
                                  first);
}

// The same where `hint` is usually right.
inline std::size_t FirstNear(std::size_t hint, double low, std::span<const double> values) {
  const bool isRight = hint < values.size() && !(values[hint] < low) && (hint == 0 || values[hint - 1] < low);
  return isRight ? hint : FirstFrom(low, values, hint);
}

}  // namespace

std::optional<std::span<const double>> Source::IntensitiesWithin(int sample, int function, int scan,
                                                                 Range range, Points& points) {
  if (AreAllLost(ReadPoints(sample, function, scan, points.mz, points.intensities))) return std::nullopt;
  const std::vector<double>& mz = points.mz;
  const std::size_t begin = FirstFrom(range.low, mz, 0);
  const auto first = mz.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto isBehind = [&](double mass) { return range.high < mass || std::isnan(mass); };
  const auto count = static_cast<std::size_t>(std::find_if(first, mz.end(), isBehind) - first);
  return std::span<const double>(points.intensities).subspan(begin, count);
}

std::vector<MetadataItem> Source::FunctionMetadata(int, int) { return {}; }
std::optional<std::string> Source::FunctionText(int, int) { return std::nullopt; }

int Source::DriftBinCount(int, int) { return 0; }

void Source::ReadDriftBin(int, int, int, int, std::vector<double>&, std::vector<double>&) {
  throw Error(Status::kWrongArgument, "the function has no drift bins");
}

// Scans without a time are not precursors. Scans of equal time stay in order.
std::span<const Source::ScanTime> Source::TimesOf(int sample, int function) {
  if (timesSample_ != sample) times_.clear();
  timesSample_ = sample;
  const auto known = times_.find(function);
  if (known != times_.end()) return known->second;
  std::vector<ScanTime> times;
  int scan = 0;
  for (const double minutes : Minutes(sample, function)) {
    if (!std::isnan(minutes)) times.push_back({minutes, scan});
    ++scan;
  }
  constexpr auto isEarlier = [](const ScanTime& a, const ScanTime& b) { return a.minutes < b.minutes; };
  if (!std::is_sorted(times.begin(), times.end(), isEarlier))
    std::stable_sort(times.begin(), times.end(), isEarlier);
  return times_[function] = std::move(times);
}

// The first or last scan of the earliest ones at the end of `times` that are equally far from `minutes`.
int Source::ScanAtEnd(std::span<const ScanTime> times, double minutes, bool isLast) {
  const double distance = minutes - times.back().minutes;
  const auto first = std::partition_point(
      times.begin(), times.end(), [&](const ScanTime& time) { return minutes - time.minutes > distance; });
  if (first->minutes == times.back().minutes) return (isLast ? times.back() : *first).scan;
  // Times too far away to be distinguished need not be in the order of their scans.
  const auto [lowest, highest] =
      std::minmax_element(first, times.end(), [](const auto& a, const auto& b) { return a.scan < b.scan; });
  return (isLast ? *highest : *lowest).scan;
}

std::optional<ScanPosition> Source::FindPrecursor(int sample, int function, int scan) {
  const std::span<const Function> functions = Functions(sample);
  const Function& own = At(functions, function, "function");
  const double minutes = ScanAt(sample, function, scan).minutes;
  const auto isCentroided = [&](int f) {
    return ScanCount(sample, f) > 0 && ScanAt(sample, f, 0).representation == Representation::kCentroid;
  };
  double nearest = std::numeric_limits<double>::max();
  std::optional<ScanPosition> found;
  for (int f = 0; f < static_cast<int>(functions.size()); ++f) {
    const Function& other = functions[static_cast<std::size_t>(f)];
    if (f == function || !own.msLevel || other.msLevel != *own.msLevel - 1) continue;
    const std::span<const ScanTime> times = TimesOf(sample, f);
    const auto later = std::partition_point(
        times.begin(), times.end(), [&](const ScanTime& time) { return minutes - time.minutes >= 0; });
    if (later == times.begin()) continue;
    // Among equally near scans, those of the same kind as the given one count.
    const bool isAlike = isCentroided(f) == isCentroided(function) && other.polarity == own.polarity;
    const double distance = minutes - std::prev(later)->minutes;
    if (!(distance < nearest || (distance == nearest && isAlike))) continue;
    nearest = distance;
    found = ScanPosition{f, ScanAtEnd({times.begin(), later}, minutes, isAlike)};
  }
  return found;
}

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr double kLowest = std::numeric_limits<double>::lowest();

// A chromatogram's value for the points of a scan, which are added in order; 0 without points.
template <Within kWithin>
class ValueOfPoints {
 public:
  void Add(double intensity) {
    value_ = kWithin == Within::kSum ? value_ + intensity : std::max(value_, intensity);
  }
  double Get() const { return value_ > kNone || kWithin == Within::kSum ? value_ : 0; }

 private:
  static constexpr double kNone = kWithin == Within::kSum ? 0 : kLowest;
  double value_ = kNone;
};

template <Within kWithin>
double OfIntensities(std::span<const double> intensities) {
  ValueOfPoints<kWithin> value;
  for (const double intensity : intensities) value.Add(intensity);
  return value.Get();
}

// The values of a scan for each range, `stride` apart. `hints` are guesses for the first point of each, and
// are set to its place.
template <Within kWithin>
void PutValues(std::span<const Range> ranges, std::span<const double> mz, std::span<const double> intensities,
               std::span<std::size_t> hints, double* to, std::size_t stride) {
  for (std::size_t row = 0; row < ranges.size(); ++row, to += stride) {
    const Range range = ranges[row];
    ValueOfPoints<kWithin> value;
    std::size_t at = hints[row] = FirstNear(hints[row], range.low, mz);
    for (; at < mz.size() && !(range.high < mz[at]) && !std::isnan(mz[at]); ++at) value.Add(intensities[at]);
    *to = value.Get();
  }
}

}  // namespace

Chromatogram Source::TotalIons(int sample, int function) {
  Chromatogram chromatogram;
  chromatogram.minutes = Minutes(sample, function);
  const int scans = static_cast<int>(chromatogram.minutes.size());
  for (int scan = 0; scan < scans; ++scan)
    chromatogram.intensities.push_back(ScanAt(sample, function, scan).totalIntensity.value_or(kNaN));
  return chromatogram;
}

Chromatogram Source::BasePeaks(int sample, int function, const Cancel& cancel) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const int scans = ScanCount(sample, function);
  if (scans == 0 || !ScanAt(sample, function, 0).basePeakIntensity)
    return MassRange(sample, function, {-kInfinity, kInfinity}, Within::kLargest, cancel);
  Chromatogram chromatogram;
  chromatogram.minutes = Minutes(sample, function);
  for (int scan = 0; scan < scans; ++scan)
    chromatogram.intensities.push_back(ScanAt(sample, function, scan).basePeakIntensity.value_or(kNaN));
  return chromatogram;
}

Chromatogram Source::MassRange(int sample, int function, Range range, Within within, const Cancel& cancel) {
  Chromatogram chromatogram;
  chromatogram.minutes = Minutes(sample, function);
  chromatogram.intensities.resize(chromatogram.minutes.size());
  MassRanges(sample, function, {&range, 1}, within, chromatogram.intensities, cancel);
  return chromatogram;
}

void Source::MassRanges(int sample, int function, std::span<const Range> ranges, Within within,
                        std::span<double> rows, const Cancel& cancel) {
  const auto scans = static_cast<std::size_t>(ScanCount(sample, function));
  if (scans != 0 && rows.size() / scans < ranges.size())
    throw Error(Status::kWrongArgument, "there is no room for the chromatograms");
  const bool isSum = within == Within::kSum;
  Points points;
  if (ranges.size() == 1) {  // this may need fewer than all points of a scan
    const auto valueOf = isSum ? OfIntensities<Within::kSum> : OfIntensities<Within::kLargest>;
    for (std::size_t scan = 0; scan < scans; ++scan) {
      ThrowIfCancelled(cancel);
      const auto values = IntensitiesWithin(sample, function, static_cast<int>(scan), ranges.front(), points);
      rows[scan] = values ? valueOf(*values) : kNaN;
    }
    return;
  }
  const auto putValues = isSum ? PutValues<Within::kSum> : PutValues<Within::kLargest>;
  // The values of several scans at a time go into the rows, which are far apart in memory.
  const std::size_t scansAtOnce = std::min<std::size_t>(scans, 256);
  const std::size_t stride =
      scansAtOnce + 8;  // with a power of two the rows would share few lines of the cache
  std::vector<double> block(ranges.size() * stride);
  std::vector<std::size_t> hints(ranges.size());
  for (std::size_t scan = 0; scan < scans; scan += scansAtOnce) {
    const std::size_t count = std::min(scansAtOnce, scans - scan);
    for (std::size_t i = 0; i < count; ++i) {
      ThrowIfCancelled(cancel);
      const PointsRead read =
          ReadPoints(sample, function, static_cast<int>(scan + i), points.mz, points.intensities);
      if (AreAllLost(read)) {
        for (std::size_t row = 0; row < ranges.size(); ++row) block[row * stride + i] = kNaN;
      } else {
        putValues(ranges, points.mz, points.intensities, hints, &block[i], stride);
      }
    }
    for (std::size_t row = 0; row < ranges.size(); ++row)
      std::copy_n(&block[row * stride], count, &rows[row * scans + scan]);
  }
}

std::vector<Trace> Source::FunctionTraces(int, int) { return {}; }
Chromatogram Source::ReadFunctionTrace(int, int, int) {
  throw Error(Status::kWrongArgument, "the function has no traces");
}

bool Source::Includes(const FindingSubject&) const { return true; }

bool Source::HasAbsorbance(int) { return false; }
Function Source::AbsorbanceFunction(int) { return {}; }
int Source::AbsorbanceScanCount(int) { return 0; }
double Source::AbsorbanceMinutes(int, int) { return kNaN; }
PointsRead Source::ReadAbsorbance(int, int, std::vector<double>&, std::vector<double>&) {
  throw Error(Status::kWrongArgument, "the source has no absorbance spectra");
}

}  // namespace zrml::source
