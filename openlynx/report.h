// A report: a text file of samples, their functions, and the spectra and chromatograms of a function. The
// file stays open. What lies where is looked for when it is first needed, and kept; what was not found is
// looked for again. Values and points are read anew whenever they are asked for.
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
/// Whether one of the first ten lines, read in text mode, has a sample's marker in it.
bool BeginsLikeReport(const platform::File& file);

/// Date and time of a sample, joined as they stand; the zone is always +00:00, whatever the local time was.
std::wstring DateTimeText(std::string_view date, std::string_view time);

class Report {
 public:
  Report() = default;
  explicit Report(ReportStream stream) : stream_(std::move(stream)) {}

  bool IsOpen() const { return stream_.IsOpen(); }

  /// Goes on with another file at the positions that are known, and gives the one before.
  ReportStream Exchange(ReportStream stream);

  /// Empty when no file is open.
  std::span<Sample> Samples();
  void ForgetSamples() { samples_.clear(); }

  /// All functions of the sample.
  std::span<Function> FunctionsOf(Sample& sample);
  /// Looks for them again, and forgets the ones before.
  void FindFunctionsAgain(Sample& sample) { FindFunctions(stream_, sample); }

  /// Positions of the blocks of a function.
  std::span<const std::uint64_t> SpectraOf(Sample& sample, Function& function);
  std::span<const std::uint64_t> ChromatogramsOf(Sample& sample, Function& function);
  /// Finds those of all functions that are analog, or that are not, at once.
  void FindAllBlocks(Sample& sample, bool areAnalog) { openlynx::FindAllBlocks(stream_, sample, areAnalog); }

  std::wstring NameOf(Sample& sample, const Function& function);
  std::string_view TypeOf(Sample& sample, const Function& function);
  FunctionKind KindOf(Sample& sample, const Function& function);
  Polarity PolarityOf(Sample& sample, const Function& function);

  /// Of the block at a position.
  std::vector<std::wstring> TextsOf(std::span<const std::uint64_t> positions, std::string_view key) {
    return TextsOfKey(stream_, positions, key);
  }
  std::wstring TextOf(std::uint64_t position, std::string_view key) {
    return TextOfKey(stream_, position, key);
  }
  std::wstring DateTimeOf(std::uint64_t position);
  void ReadKeys(std::uint64_t position, std::span<KeyValue> keys) {
    openlynx::ReadKeys(stream_, position, keys);
  }
  /// No value when the key is not there, or its value is no number.
  std::optional<double> NumberOf(std::uint64_t position, std::string_view key);
  Spectrum ReadSpectrum(std::uint64_t position) { return openlynx::ReadSpectrum(stream_, position); }
  Trace ReadTrace(std::uint64_t position) { return openlynx::ReadTrace(stream_, position); }
  ScanSeries ReadSeries(std::span<const std::uint64_t> spectra, double missing) {
    return ReadScanSeries(stream_, spectra, missing);
  }
  /// As wide text; no value when that is more than 10,000,000 characters.
  std::optional<std::wstring> ReadText(std::uint64_t position);

  /// Looks for samples whose blocks are still open where the next one begins or the file ends, as in a copy
  /// that broke off. `name` is the file's.
  void Check(const std::string& name, Findings& findings);

  ReportStream& Stream() { return stream_; }

 private:
  ReportStream stream_;
  std::vector<Sample> samples_;  // empty until they are needed
};

}  // namespace zrml::openlynx
