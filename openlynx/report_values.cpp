#include "openlynx/report_values.h"

#include <algorithm>
#include <array>

#include "common/platform/platform.h"
#include "openlynx/block_sweep.h"
#include "plugin/data_server.h"

namespace zrml {
namespace {

using namespace report_format;

struct TypeKind {
  std::string_view part;
  int kind;
};

// The first that the type contains counts. "MS/MS" and "MS2" also contain "MS"; selected ions and reactions
// deliberately share a kind.
constexpr std::array<TypeKind, 10> kTypeKinds = {{
    {"MS/MS", kMsMsFunction},
    {"MSMS", kMsMsFunction},
    {"MS2", kMsMsFunction},
    {"MS3", kMsMsFunction},
    {"MS4", kMsMsFunction},
    {"MS5", kMsMsFunction},
    {"MS6", kMsMsFunction},
    {"SIM", kIonMonitoringFunction},
    {"MRM", kIonMonitoringFunction},
    {"MS", kMsFunction},
}};

template <class Keep>
ReportPoints ReadPoints(ReportStream& stream, std::uint64_t position, std::string_view marker,
                        double fullScale, Keep keep) {
  ReportPoints points;
  if (!FindDataList(stream, position, marker)) return points;
  ReadDataList(stream, [&](double x, double percent) {
    if (!keep(x, percent)) return;
    points.x.push_back(x);
    points.intensities.push_back(percent * fullScale / kFullScale);
  });
  return points;
}

}  // namespace

int KindOfType(std::string_view type) {
  const auto row = std::find_if(kTypeKinds.begin(), kTypeKinds.end(),
                                [&](const TypeKind& entry) { return Contains(type, entry.part); });
  return row == kTypeKinds.end() ? kAbsorbanceFunction : row->kind;
}

int PolarityOfIonMode(std::string_view ionMode) {
  if (Contains(ionMode, "+")) return kPositivePolarity;
  return Contains(ionMode, "-") ? kNegativePolarity : kUnknownPolarity;
}

int MsLevelOfKind(int kind) {
  constexpr std::array<int, 3> kSecondLevel = {kMsMsFunction, kKind16, kKind64};
  return std::find(kSecondLevel.begin(), kSecondLevel.end(), kind) != kSecondLevel.end() ? 2 : 1;
}

std::string_view TypeOf(ReportStream& stream, ReportSampleRecord& sample,
                        const ReportFunctionRecord& function) {
  ReadNames(stream, sample, function);
  return sample.Text(function.type);
}

std::string_view IonModeOf(ReportStream& stream, ReportSampleRecord& sample,
                           const ReportFunctionRecord& function) {
  ReadIonMode(stream, sample, function);
  return sample.Text(function.ionMode);
}

std::wstring NameOf(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function) {
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

ScanTimeSeries ReadScanTimes(ReportStream& stream, std::span<const std::uint64_t> spectra) {
  ScanTimeSeries series;
  constexpr std::array kKeys = {kBpiKey, kTicKey, kTimeKey};
  const std::array values = {&series.bpi, &series.tic, &series.times};
  for (HostVector<double>* const of : values) of->resize(spectra.size());
  ReadKeysOfAll(stream, spectra, kKeys,
                [&](std::size_t key, std::string_view value, std::span<const std::size_t> blocks) {
                  const double number = NumberOf(value);
                  for (const std::size_t block : blocks) (*values[key])[block] = number;
                });
  return series;
}

ReportSpectrum ReadSpectrum(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 3> keys = {{{kBpiKey}, {kContinuumKey}, {kTimeKey}}};
  ReadKeys(stream, position, keys);
  const auto& [bpi, continuum, time] = keys;
  ReportSpectrum spectrum;
  spectrum.minutes = NumberOf(time.value);
  spectrum.isCentroided = continuum.value == kCentroided;
  spectrum.points = ReadPoints(stream, position, kMassList, FullScaleOf(bpi.value),
                               [](double mass, double percent) { return mass > 0.0 && percent > 0.0; });
  return spectrum;
}

ReportTrace ReadTrace(ReportStream& stream, std::uint64_t position) {
  std::array<KeyValue, 2> keys = {{{kDescriptionKey}, {kMaxIntensityKey}}};
  ReadKeys(stream, position, keys);
  const auto& [description, maxIntensity] = keys;
  ReportTrace trace;
  trace.description = platform::FromCodePage(description.value);
  trace.points = ReadPoints(stream, position, kTraceList, FullScaleOf(maxIntensity.value),
                            [](double, double) { return true; });
  return trace;
}

}  // namespace zrml
