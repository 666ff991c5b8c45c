// What the values of a report's keys mean.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "openlynx/report_block.h"
#include "openlynx/report_index.h"

namespace zrml::openlynx {

/// What a function records, by its "Type". Chosen ions ("SIM") and reactions ("MRM") are told apart here.
enum class FunctionKind { kUnknown, kMs, kMsMs, kIons, kReactions };

/// By the first part that the type contains, case-sensitive.
FunctionKind KindOfType(std::string_view type);

enum class Polarity { kUnknown, kPositive, kNegative };

/// Positive when "IonMode" contains a plus sign, also beside a minus sign.
Polarity PolarityOfIonMode(std::string_view ionMode);

/// The "Type" value of a function, read once.
std::string_view TypeOf(ReportStream& stream, Sample& sample, const Function& function);

/// The "IonMode" value of a function, read once.
std::string_view IonModeOf(ReportStream& stream, Sample& sample, const Function& function);

/// Ion mode, type and description joined by blanks; empty when all are.
std::wstring NameOf(ReportStream& stream, Sample& sample, const Function& function);

/// The value of one key of the block at `position` as wide text; empty when there is none.
std::wstring TextOfKey(ReportStream& stream, std::uint64_t position, std::string_view key);

/// The same of many blocks, at ascending positions.
std::vector<std::wstring> TextsOfKey(ReportStream& stream, std::span<const std::uint64_t> positions,
                                     std::string_view key);

/// One entry per spectrum, as written.
struct ScanSeries {
  std::vector<double> minutes;
  std::vector<double> basePeaks;
  std::vector<double> totalIons;
};

/// `missing` stands for a value that is not there, or is no number.
ScanSeries ReadScanSeries(ReportStream& stream, std::span<const std::uint64_t> spectra, double missing);

/// The points of a data list in the order of the file: masses or times, and intensities scaled to the block's
/// full scale.
struct Points {
  std::vector<double> x;
  std::vector<double> intensities;
};

/// A "[SPECTRUM]" block; no value for what it does not tell. Points without a positive mass and a positive
/// intensity are left out.
struct Spectrum {
  std::optional<double> minutes;
  std::optional<double> basePeak;
  bool isCentroided = false;
  Points points;
};

Spectrum ReadSpectrum(ReportStream& stream, std::uint64_t position);

/// A "[CHROMATOGRAM]" block. All points are kept, also those that are not positive.
struct Trace {
  std::wstring description;
  Points points;
};

Trace ReadTrace(ReportStream& stream, std::uint64_t position);

}  // namespace zrml::openlynx
