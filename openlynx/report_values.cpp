#include "openlynx/report_values.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "common/platform/platform.h"
#include "common/text.h"
#include "openlynx/block_sweep.h"

namespace zrml::openlynx {
namespace {

using namespace report_format;

struct TypeKind {
  std::string_view part;
  FunctionKind kind;
};

// The first one contained in the type counts. "MS/MS" and "MS2" also contain "MS".
constexpr std::array<TypeKind, 10> kTypeKinds = {{
    {"MS/MS", FunctionKind::kMsMs},
    {"MSMS", FunctionKind::kMsMs},
    {"MS2", FunctionKind::kMsMs},
    {"MS3", FunctionKind::kMsMs},
    {"MS4", FunctionKind::kMsMs},
    {"MS5", FunctionKind::kMsMs},
    {"MS6", FunctionKind::kMsMs},
    {"SIM", FunctionKind::kIons},
    {"MRM", FunctionKind::kReactions},
    {"MS", FunctionKind::kMs},
}};

using Places = std::vector<std::size_t>;

// Which of the numbers of two joined lines belong together is not known.
void Drop(const Places& lost, Points& points) {
  std::size_t kept = 0;
  auto next = lost.begin();
  for (std::size_t i = 0; i < points.x.size(); ++i) {
    if (next != lost.end() && *next == i) {
      ++next;
      continue;
    }
    points.x[kept] = points.x[i];
    points.intensities[kept++] = points.intensities[i];
  }
  points.x.resize(kept);
  points.intensities.resize(kept);
  points.lost += lost.size();
}

// Points are lost without their full scale.
template <class Keep>
Points ReadPoints(ReportStream& stream, std::optional<std::uint64_t> list, std::optional<double> fullScale,
                  Keep keep) {
  Points points;
  if (!list) return points;
  std::size_t unscaled = 0;
  std::size_t lines = 0;
  std::size_t longer = 0;  // with more numbers
  Places inLonger;         // points of theirs
  points.lost = ReadDataList(stream, *list, [&](double x, double percent, std::string_view rest) {
    const bool isLonger = HasNumber(rest) && stream.IsCareful();
    ++lines;
    longer += isLonger ? 1 : 0;
    if (!keep(x, percent)) return;
    if (!fullScale) return void(++unscaled);
    if (isLonger) inLonger.push_back(points.x.size());
    points.x.push_back(x);
    points.intensities.push_back(percent * *fullScale / kFullScale);
  });
  points.lost += unscaled;
  if (AreJoined(longer, lines)) Drop(inLonger, points);
  return points;
}

// No value where it is hidden.
std::optional<double> ScaleOf(std::optional<double> number, bool isHidden) {
  return isHidden ? std::nullopt : std::optional(FullScaleOf(number));
}

std::optional<double> NumberOf(const KeyValue& key, bool isCareful) {
  return isCareful && key.isHidden ? std::nullopt : NumberIn(key.value, isCareful);
}

bool IsHidden(const KeyValue& key, bool isCareful) {
  const bool isMeant = key.isHidden || !key.value.empty();
  return isCareful && isMeant && !NumberOf(key, isCareful);
}

}  // namespace

FunctionKind KindOfType(std::string_view type) {
  const auto row = std::find_if(kTypeKinds.begin(), kTypeKinds.end(),
                                [&](const TypeKind& entry) { return Contains(type, entry.part); });
  return row == kTypeKinds.end() ? FunctionKind::kUnknown : row->kind;
}

bool RecordsAbsorbance(std::string_view type, std::string_view description) {
  const std::string text = ToLower(type.empty() ? description : type);
  return std::any_of(std::begin(kAbsorbanceWords), std::end(kAbsorbanceWords),
                     [&](std::string_view word) { return HasWord(text, word); });
}

Polarity PolarityOfIonMode(std::string_view ionMode) {
  if (Contains(ionMode, "+")) return Polarity::kPositive;
  return Contains(ionMode, "-") ? Polarity::kNegative : Polarity::kUnknown;
}

std::vector<std::wstring> ReadTraceNames(ReportStream& stream, std::span<const std::uint64_t> chromatograms) {
  std::vector<std::wstring> names(chromatograms.size());
  ReadKeysOfAll(stream, chromatograms, std::array{kDescriptionKey},
                [&](std::size_t, const LineValue& value, std::span<const std::size_t> blocks) {
                  const std::wstring name = platform::FromCodePage(value.text);
                  for (const std::size_t block : blocks) names[block] = name;
                });
  return names;
}

std::vector<std::wstring> ReadSampleItems(ReportStream& stream, std::uint64_t position,
                                          std::span<const SampleItem> items) {
  std::vector<KeyValue> keys;
  for (const SampleItem& item : items) {
    keys.push_back({item.key});
    if (!item.timeKey.empty()) keys.push_back({item.timeKey});
  }
  ReadKeys(stream, position, keys);
  std::vector<std::wstring> values;
  auto key = keys.begin();
  for (const SampleItem& item : items) {
    std::wstring& value = values.emplace_back(platform::FromCodePage((key++)->value));
    if (!item.timeKey.empty()) value += L"T" + platform::FromCodePage((key++)->value) + L"+00:00";
  }
  return values;
}

ScanSeries ReadScanSeries(ReportStream& stream, std::span<const std::uint64_t> spectra, double missing) {
  ScanSeries series;
  constexpr std::array kKeys = {kBpiKey, kTicKey, kTimeKey};
  const std::array values = {&series.basePeaks, &series.totalIons, &series.minutes};
  for (std::vector<double>* const of : values) of->resize(spectra.size(), missing);
  ReadKeysOfAll(stream, spectra, kKeys,
                [&](std::size_t key, const LineValue& value, std::span<const std::size_t> blocks) {
                  const bool isHidden = value.isCut && stream.IsCareful();
                  const double number =
                      isHidden ? missing : NumberIn(value.text, stream.IsCareful()).value_or(missing);
                  for (const std::size_t block : blocks) (*values[key])[block] = number;
                });
  return series;
}

SpectrumHead ReadSpectrumHead(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 4> keys = {{{kBpiKey}, {kContinuumKey}, {kTicKey}, {kTimeKey}}};
  const std::optional<std::uint64_t> list = ReadKeys(stream, position, keys, kMassList);
  const auto& [bpi, continuum, tic, time] = keys;
  const bool isCareful = stream.IsCareful();
  const bool isRepresentationUnread = !continuum.value.empty() && !IsRepresentation(continuum.value);
  return {NumberOf(time, isCareful),
          NumberOf(bpi, isCareful),
          NumberOf(tic, isCareful),
          continuum.value == kCentroided,
          list,
          IsHidden(bpi, isCareful),
          isCareful && (continuum.isHidden || isRepresentationUnread)};
}

std::wstring ReadProcess(ReportStream& stream, std::uint64_t position, const SpectrumHead& spectrum) {
  BlockWalk walk(stream, position);
  for (std::string_view line; walk.Next(line) && walk.Position() < spectrum.list.value_or(kNoLimit);) {
    if (!line.starts_with(kProcessKey)) continue;
    const std::string_view value = ValueOf(line, kProcessKey).text;
    if (!value.empty()) return platform::FromCodePage(value);
  }
  return {};
}

std::size_t CountSpectrumLines(ReportStream& stream, const SpectrumHead& spectrum) {
  std::size_t count = 0;
  const auto add = [&](std::string_view) { ++count; };
  if (spectrum.list) ForEachDataLine(stream, *spectrum.list, add, [](std::string_view) {});
  return count;
}

Points ReadSpectrumPoints(ReportStream& stream, const SpectrumHead& spectrum) {
  return ReadPoints(stream, spectrum.list, ScaleOf(spectrum.basePeak, spectrum.isScaleHidden),
                    [](double mass, double percent) { return mass > 0.0 && percent > 0.0; });
}

Trace ReadTrace(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 2> keys = {{{kDescriptionKey}, {kMaxIntensityKey}}};
  const std::optional<std::uint64_t> list = ReadKeys(stream, position, keys, kTraceList);
  const auto& [description, maxIntensity] = keys;
  Trace trace;
  const bool isCareful = stream.IsCareful();
  trace.description = platform::FromCodePage(description.value);
  const std::optional<double> scale =
      ScaleOf(NumberOf(maxIntensity, isCareful), IsHidden(maxIntensity, isCareful));
  trace.points = ReadPoints(stream, list, scale, [](double, double) { return true; });
  return trace;
}

}  // namespace zrml::openlynx
