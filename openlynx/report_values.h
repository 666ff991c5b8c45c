// What the values of a report's keys mean to the interface.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "common/host_types.h"
#include "openlynx/report_block.h"
#include "openlynx/report_index.h"

namespace zrml {

/// A FunctionKind by what "Type" contains, case-sensitive.
int KindOfType(std::string_view type);

/// A Polarity: positive when "IonMode" contains a plus sign, also beside a minus sign.
int PolarityOfIonMode(std::string_view ionMode);

/// MS level of a spectrum of a function of this kind.
int MsLevelOfKind(int kind);

/// The "Type" value of a function, read once.
std::string_view TypeOf(ReportStream& stream, ReportSampleRecord& sample,
                        const ReportFunctionRecord& function);

/// The "IonMode" value of a function, read once.
std::string_view IonModeOf(ReportStream& stream, ReportSampleRecord& sample,
                           const ReportFunctionRecord& function);

/// Ion mode, type and description joined by blanks; empty when all are.
std::wstring NameOf(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function);

/// The value of one key of the block at `position` as wide text; empty when there is none.
std::wstring TextOfKey(ReportStream& stream, std::uint64_t position, std::string_view key);

/// One entry per spectrum, as written: no value stands for a missing one but 0.
struct ScanTimeSeries {
  HostVector<double> times;
  HostVector<double> bpi;
  HostVector<double> tic;
};

ScanTimeSeries ReadScanTimes(ReportStream& stream, std::span<const std::uint64_t> spectra);

/// The points of a data list: masses or times, and intensities scaled to the block's full scale.
struct ReportPoints {
  HostVector<double> x;
  HostVector<double> intensities;
};

/// A "[SPECTRUM]" block. Points without a positive mass and a positive intensity are left out.
struct ReportSpectrum {
  double minutes = 0;
  bool isCentroided = false;
  ReportPoints points;
};

ReportSpectrum ReadSpectrum(ReportStream& stream, std::uint64_t position);

/// A "[CHROMATOGRAM]" block. All points are kept, also those that are not positive.
struct ReportTrace {
  std::wstring description;
  ReportPoints points;
};

ReportTrace ReadTrace(ReportStream& stream, std::uint64_t position);

}  // namespace zrml
