#include "openlynx/report_values.h"

#include <algorithm>
#include <array>

#include "common/platform/platform.h"
#include "openlynx/block_sweep.h"

namespace zrml::openlynx {
namespace {

using namespace report_format;

struct TypeKind {
  std::string_view part;
  FunctionKind kind;
};

// The first that the type contains counts. "MS/MS" and "MS2" also contain "MS".
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

template <class Keep>
Points ReadPoints(ReportStream& stream, std::uint64_t position, std::string_view marker, double fullScale,
                  Keep keep) {
  Points points;
  if (!FindDataList(stream, position, marker)) return points;
  ReadDataList(stream, [&](double x, double percent) {
    if (!keep(x, percent)) return;
    points.x.push_back(x);
    points.intensities.push_back(percent * fullScale / kFullScale);
  });
  return points;
}

}  // namespace

FunctionKind KindOfType(std::string_view type) {
  const auto row = std::find_if(kTypeKinds.begin(), kTypeKinds.end(),
                                [&](const TypeKind& entry) { return Contains(type, entry.part); });
  return row == kTypeKinds.end() ? FunctionKind::kUnknown : row->kind;
}

Polarity PolarityOfIonMode(std::string_view ionMode) {
  if (Contains(ionMode, "+")) return Polarity::kPositive;
  return Contains(ionMode, "-") ? Polarity::kNegative : Polarity::kUnknown;
}

std::string_view TypeOf(ReportStream& stream, Sample& sample, const Function& function) {
  ReadNames(stream, sample, function);
  return sample.Text(function.type);
}

std::string_view IonModeOf(ReportStream& stream, Sample& sample, const Function& function) {
  ReadIonMode(stream, sample, function);
  return sample.Text(function.ionMode);
}

std::wstring NameOf(ReportStream& stream, Sample& sample, const Function& function) {
  ReadNames(stream, sample, function);
  ReadIonMode(stream, sample, function);
  std::wstring name;
  for (const TextNumber number : {function.ionMode, function.type, function.description}) {
    const std::string_view part = sample.Text(number);
    if (part.empty()) continue;
    if (!name.empty()) name += L' ';
    name += platform::FromCodePage(part);
  }
  return name;
}

std::wstring TextOfKey(ReportStream& stream, std::uint64_t position, std::string_view key) {
  std::array<KeyValue, 1> keys = {{{key}}};
  ReadKeys(stream, position, keys);
  return platform::FromCodePage(keys[0].value);
}

std::vector<std::wstring> TextsOfKey(ReportStream& stream, std::span<const std::uint64_t> positions,
                                     std::string_view key) {
  std::vector<std::wstring> texts(positions.size());
  ReadKeysOfAll(stream, positions, std::array{key},
                [&](std::size_t, std::string_view value, std::span<const std::size_t> blocks) {
                  const std::wstring text = platform::FromCodePage(value);
                  for (const std::size_t block : blocks) texts[block] = text;
                });
  return texts;
}

ScanSeries ReadScanSeries(ReportStream& stream, std::span<const std::uint64_t> spectra, double missing) {
  ScanSeries series;
  constexpr std::array kKeys = {kBpiKey, kTicKey, kTimeKey};
  const std::array values = {&series.basePeaks, &series.totalIons, &series.minutes};
  for (std::vector<double>* const of : values) of->resize(spectra.size(), missing);
  ReadKeysOfAll(stream, spectra, kKeys,
                [&](std::size_t key, std::string_view value, std::span<const std::size_t> blocks) {
                  const double number = NumberIn(value).value_or(missing);
                  for (const std::size_t block : blocks) (*values[key])[block] = number;
                });
  return series;
}

Spectrum ReadSpectrum(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 3> keys = {{{kBpiKey}, {kContinuumKey}, {kTimeKey}}};
  ReadKeys(stream, position, keys);
  const auto& [bpi, continuum, time] = keys;
  Spectrum spectrum;
  spectrum.minutes = NumberIn(time.value);
  spectrum.basePeak = NumberIn(bpi.value);
  spectrum.isCentroided = continuum.value == kCentroided;
  spectrum.points = ReadPoints(stream, position, kMassList, FullScaleOf(spectrum.basePeak),
                               [](double mass, double percent) { return mass > 0.0 && percent > 0.0; });
  return spectrum;
}

Trace ReadTrace(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 2> keys = {{{kDescriptionKey}, {kMaxIntensityKey}}};
  ReadKeys(stream, position, keys);
  const auto& [description, maxIntensity] = keys;
  Trace trace;
  trace.description = platform::FromCodePage(description.value);
  trace.points = ReadPoints(stream, position, kTraceList, FullScaleOf(NumberIn(maxIntensity.value)),
                            [](double, double) { return true; });
  return trace;
}

}  // namespace zrml::openlynx
