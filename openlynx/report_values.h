// The meaning of the values of a report's keys.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "openlynx/report_block.h"

namespace zrml::openlynx {

/// What a function records, by its "Type". Selected ions ("SIM") and reactions ("MRM") are different kinds
/// here.
enum class FunctionKind { kUnknown, kMs, kMsMs, kIons, kReactions };

/// By the first known part that the type contains, case-sensitive.
FunctionKind KindOfType(std::string_view type);

/// Whether a function of unknown kind records absorbance, by the whole words of its texts.
bool RecordsAbsorbance(std::string_view type, std::string_view description);

/// 2 for functions of product ions, else 1.
constexpr int MsLevelOf(FunctionKind kind) { return kind == FunctionKind::kMsMs ? 2 : 1; }

enum class Polarity { kUnknown, kPositive, kNegative };

/// Positive when "IonMode" contains a plus sign, even with a minus sign.
Polarity PolarityOfIonMode(std::string_view ionMode);

/// The names of the chromatograms at ascending positions, from "Description"; empty where they have none.
std::vector<std::wstring> ReadTraceNames(ReportStream& stream, std::span<const std::uint64_t> chromatograms);

/// An item of a sample's metadata: the value of a key. With a time key the two values are joined unchanged,
/// and the zone is always +00:00, whatever the local time was.
struct SampleItem {
  std::string_view name;
  std::string_view key;
  std::string_view timeKey = {};
};

inline constexpr std::array<SampleItem, 4> kSampleItems = {{
    {"OperatorName", report_format::kUserNameKey},
    {"SampleName", report_format::kSampleIdKey},
    {"AnalysisDateTime", report_format::kDateKey, report_format::kTimeKey},
    {"InstrumentDescription", report_format::kInstrumentKey},
}};

/// The values of `items` of the sample at `position`; empty where the keys are missing.
std::vector<std::wstring> ReadSampleItems(ReportStream& stream, std::uint64_t position,
                                          std::span<const SampleItem> items);

/// One entry per spectrum, as written.
struct ScanSeries {
  std::vector<double> minutes;
  std::vector<double> basePeaks;
  std::vector<double> totalIons;
};

/// `missing` replaces an absent value or one that is not a number.
ScanSeries ReadScanSeries(ReportStream& stream, std::span<const std::uint64_t> spectra, double missing);

/// The points of a data list in file order: masses or times, and intensities scaled to the block's full
/// scale.
struct Points {
  std::vector<double> x;
  std::vector<double> intensities;
  std::size_t lost = 0;  ///< whose numbers, or those that they are in percent of, are hidden
};

/// A "[SPECTRUM]" block without its points; no value for what it does not say.
struct SpectrumHead {
  std::optional<double> minutes;
  std::optional<double> basePeak;
  std::optional<double> totalIons;
  bool isCentroided = false;
  std::optional<std::uint64_t> list;    // where its points begin
  bool isScaleHidden = false;           // the number that intensities are in percent of
  bool isRepresentationHidden = false;  // whether it is centroided
};

/// Reads the block in one pass, which ends as soon as everything is found.
SpectrumHead ReadSpectrumHead(ReportStream& stream, std::uint64_t position);

/// What a spectrum was made by: the value of its key ahead of its points, "Combine (5:9-1:3)".
std::wstring ReadProcess(ReportStream& stream, std::uint64_t position, const SpectrumHead& spectrum);

/// How many points ReadSpectrumPoints gives at most: counts lines, without reading their numbers.
std::size_t CountSpectrumLines(ReportStream& stream, const SpectrumHead& spectrum);

/// Without points whose mass or intensity is not positive.
Points ReadSpectrumPoints(ReportStream& stream, const SpectrumHead& spectrum);

/// A "[CHROMATOGRAM]" block. All points are kept, even those that are not positive.
struct Trace {
  std::wstring description;
  Points points;
};

Trace ReadTrace(ReportStream& stream, std::uint64_t position);

}  // namespace zrml::openlynx
