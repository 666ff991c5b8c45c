// A report: a text file of samples, their functions, and the spectra and chromatograms of a function. The
// file stays open. Positions are searched when first needed and kept; what was not found is searched again.
// Values and points are read again on every request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/findings.h"
#include "common/platform/platform.h"
#include "openlynx/report_block.h"
#include "openlynx/report_index.h"
#include "openlynx/report_stream.h"
#include "openlynx/report_values.h"

namespace zrml::openlynx {

/// Whether a name ends in ".rpt", ASCII letters in any case.
bool HasReportExtension(const platform::SystemPath& path);
/// Whether one of the first ten lines, read in text mode, contains a sample's marker.
bool BeginsLikeReport(const platform::File& file);

/// The number of items of a list, for callers that count in `int`.
int CountOf(std::size_t size);

class Report {
 public:
  Report() = default;
  explicit Report(ReportStream stream) : stream_(std::move(stream)) {}

  /// Continues with another file at the known positions; returns the previous file.
  ReportStream Exchange(ReportStream stream);

  /// Empty when no file is open.
  std::span<Sample> Samples();
  void ForgetSamples() { samples_.clear(); }

  /// All functions of the sample.
  std::span<Function> FunctionsOf(Sample& sample);
  /// Searches them again and forgets the previous ones.
  void FindFunctionsAgain(Sample& sample) { FindFunctions(stream_, sample); }

  /// Positions of the blocks of a function.
  std::span<const std::uint64_t> SpectraOf(Sample& sample, Function& function);
  std::span<const std::uint64_t> ChromatogramsOf(Sample& sample, Function& function);
  /// Finds those of all analog functions, or of all others, at once.
  void FindAllBlocks(Sample& sample, bool areAnalog) { openlynx::FindAllBlocks(stream_, sample, areAnalog); }
  /// Finds those of all functions, each block only for the innermost function around it.
  void FindOwnBlocks(Sample& sample) { openlynx::FindOwnBlocks(stream_, sample); }

  std::wstring NameOf(const Sample& sample);
  std::vector<std::wstring> ReadItems(const Sample& sample, std::span<const SampleItem> items) {
    return ReadSampleItems(stream_, sample.position, items);
  }

  /// Ion mode, type and description joined by blanks; empty when all three are.
  std::wstring NameOf(Sample& sample, const Function& function);
  std::string_view TypeOf(Sample& sample, const Function& function);
  /// Unknown, too, where the type is hidden.
  FunctionKind KindOf(Sample& sample, const Function& function) {
    const std::string_view type = TypeOf(sample, function);
    return function.isTypeHidden ? FunctionKind::kUnknown : KindOfType(type);
  }
  bool RecordsAbsorbance(Sample& sample, const Function& function) {
    const std::string_view type = TypeOf(sample, function);
    return !function.isTypeHidden && KindOfType(type) == FunctionKind::kUnknown &&
           openlynx::RecordsAbsorbance(type, sample.Text(function.description));
  }
  Polarity PolarityOf(Sample& sample, const Function& function);
  /// As the first spectrum is; false when that has no points.
  bool IsCentroided(Sample& sample, Function& function);

  std::vector<std::wstring> TraceNames(std::span<const std::uint64_t> chromatograms) {
    return ReadTraceNames(stream_, chromatograms);
  }
  Trace ReadTrace(std::uint64_t position) { return openlynx::ReadTrace(stream_, position); }

  SpectrumHead ReadSpectrumHead(std::uint64_t position) {
    return openlynx::ReadSpectrumHead(stream_, position);
  }
  std::wstring ReadProcess(std::uint64_t position, const SpectrumHead& spectrum) {
    return openlynx::ReadProcess(stream_, position, spectrum);
  }
  std::size_t CountLines(const SpectrumHead& spectrum) { return CountSpectrumLines(stream_, spectrum); }
  Points ReadPoints(const SpectrumHead& spectrum) { return ReadSpectrumPoints(stream_, spectrum); }
  ScanSeries ReadSeries(std::span<const std::uint64_t> spectra, double missing) {
    return ReadScanSeries(stream_, spectra, missing);
  }
  /// The lines of a function that begin before `end`; no value when that is more than 10,000,000 characters.
  std::optional<std::wstring> ReadText(const Function& function, std::uint64_t end = kNoLimit);

  /// Reports samples whose blocks are still open where the next sample begins or the file ends, as in an
  /// incomplete copy, and lines that are not read as they are meant. `name` is the file's.
  void Check(const std::string& name, Findings& findings);

  ReportStream& Stream() { return stream_; }

 private:
  ReportStream stream_;
  std::vector<Sample> samples_;  // empty until needed
};

}  // namespace zrml::openlynx
