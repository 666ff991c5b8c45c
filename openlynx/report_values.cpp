#include "openlynx/report_values.h"

#include <algorithm>
#include <array>

#include "common/platform/platform.h"
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

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

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
  constexpr std::array kSecondLevel = {4, 16, 64};  // of these, reports have 4 only
  return std::find(kSecondLevel.begin(), kSecondLevel.end(), kind) != kSecondLevel.end() ? 2 : 1;
}

const ReportFunctionRecord::Names& NamesOf(ReportStream& stream, ReportFunctionRecord& function) {
  if (!function.names) {
    std::array<KeyValue, 2> keys = {{{kDescriptionKey}, {kTypeKey}}};
    ReadKeys(stream, function.position, keys);
    function.names = {std::move(keys[0].value), std::move(keys[1].value)};
  }
  return *function.names;
}

const std::string& IonModeOf(ReportStream& stream, ReportFunctionRecord& function) {
  if (!function.ionMode) {
    std::array<KeyValue, 1> keys = {{{kIonModeKey}}};
    ReadKeys(stream, function.position, keys);
    function.ionMode = std::move(keys[0].value);
  }
  return *function.ionMode;
}

std::wstring NameOf(ReportStream& stream, ReportFunctionRecord& function) {
  std::wstring name;
  const auto& [description, type] = NamesOf(stream, function);
  for (const std::string_view part : {std::string_view(IonModeOf(stream, function)), std::string_view(type),
                                      std::string_view(description)}) {
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

ScanTimeSeries ReadScanTimes(ReportStream& stream, const ReportFunctionRecord& function) {
  ScanTimeSeries series;
  for (HostVector<double>* const values : {&series.times, &series.bpi, &series.tic})
    values->reserve(function.spectra.size());
  for (const std::uint64_t position : function.spectra) {
    std::array<KeyValue, 3> keys = {{{kBpiKey}, {kTicKey}, {kTimeKey}}};
    ReadKeys(stream, position, keys);
    const auto& [bpi, tic, time] = keys;
    series.times.push_back(NumberOf(time.value));
    series.bpi.push_back(NumberOf(bpi.value));
    series.tic.push_back(NumberOf(tic.value));
  }
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
