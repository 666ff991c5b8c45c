// Reports as sources. Functions are those with spectra or chromatograms; their numbers count all functions of
// the sample, so that they do not depend on the contents of others. A function that is never closed contains
// those after it: each spectrum, chromatogram and line of text belongs to the innermost function only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "openlynx/report.h"
#include "source/source.h"

namespace zrml::source {

/// The name of a sample, by its number when the report has none, and its items, as `report` reads them.
std::string SampleNameOf(openlynx::Report& report, const openlynx::Sample& sample, std::int64_t number);
std::vector<MetadataItem> SampleItemsOf(openlynx::Report& report, const openlynx::Sample& sample);

class ReportSource final : public Source {
 public:
  ReportSource(std::string path, openlynx::ReportStream stream);

  Format GetFormat() const override { return Format::kReport; }

  int SampleCount() override;
  std::string SampleName(int sample) override;
  std::vector<MetadataItem> SampleMetadata(int sample) override;
  std::optional<std::string> FunctionText(int sample, int function) override;

  std::span<const Function> Functions(int sample) override;
  int ScanCount(int sample, int function) override;
  Scan ScanAt(int sample, int function, int scan) override;
  std::string ScanProcess(int sample, int function, int scan) override;
  std::vector<double> Minutes(int sample, int function) override;
  PointsRead ReadPoints(int sample, int function, int scan, std::span<double> mz,
                        std::span<double> intensities) override;
  using Source::ReadPoints;
  std::optional<ScanPosition> FindPrecursor(int sample, int function, int scan) override;

  Chromatogram TotalIons(int sample, int function) override;
  Chromatogram BasePeaks(int sample, int function, const Cancel& cancel) override;

  /// Of the analog functions.
  std::vector<Trace> Traces(int sample) override;
  Chromatogram ReadTrace(int sample, int trace) override;
  std::vector<Trace> FunctionTraces(int sample, int function) override;
  Chromatogram ReadFunctionTrace(int sample, int function, int trace) override;

  std::span<const Finding> Findings() override;

 private:
  // A sample that has been searched.
  struct KnownSample {
    openlynx::Sample* sample = nullptr;
    std::vector<Function> functions;
    std::vector<std::size_t> numbers;   // their positions among all functions of the sample
    std::vector<std::uint64_t> traces;  // the "[CHROMATOGRAM]" lines of its analog functions
  };

  // A spectrum without its points, room that they fit into, and how it was made.
  struct KnownSpectrum {
    std::uint64_t position = 0;
    openlynx::SpectrumHead head;
    std::size_t room = 0;
  };

  std::span<openlynx::Sample> Samples();
  openlynx::Sample& SampleAt(int sample);
  KnownSample& LookedThrough(int sample);
  openlynx::Function& FunctionAt(KnownSample& known, int function);
  std::span<const std::uint64_t> SpectraOf(int sample, int function);
  std::span<const std::uint64_t> ChromatogramsOf(int sample, int function);
  std::uint64_t SpectrumAt(int sample, int function, int scan);

  KnownSample ReadFunctions(openlynx::Sample& sample);
  Function Describe(openlynx::Sample& sample, std::size_t position);
  const KnownSpectrum& SpectrumOf(std::uint64_t position);
  Chromatogram Series(int sample, int function, std::vector<double> openlynx::ScanSeries::*intensities);
  std::vector<Trace> NamesOf(std::span<const std::uint64_t> chromatograms, const char* noun);
  Chromatogram ReadTraceAt(std::span<const std::uint64_t> chromatograms, int trace, const char* noun);

  // The result of `read`. Throws when the system does not read to the end of the file.
  template <class Read>
  auto Reading(Read read);

  std::string name_;  // of the file
  openlynx::Report report_;
  std::vector<KnownSample> known_;  // by sample
  int metadataSample_ = -1;         // whose `metadata_` are
  std::vector<MetadataItem> metadata_;
  std::optional<KnownSpectrum> spectrum_;  // the last one: callers ask for it, then for its points
  std::optional<zrml::Findings> findings_;
};

}  // namespace zrml::source
