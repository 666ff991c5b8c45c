// Raw directories as sources, on the model in masslynx/.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "masslynx/raw_directory.h"
#include "masslynx/scandata/mobility_data.h"
#include "masslynx/scandata/traces.h"
#include "source/source.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::source {

/// What the record of a function says of it, without the name of its data file.
Function Describe(const masslynx::FunctionRecord& record);

class RawSource : public Source {
 public:
  /// `path` is as given to Open; `chosen` names the files of one function ("_FUNC002"), or is empty. Throws
  /// Error.
  RawSource(std::string path, const platform::SystemPath& folder, const std::string& chosen);

  Format GetFormat() const override { return Format::kRawDirectory; }
  int SampleCount() override { return 1; }
  std::string SampleName(int sample) override;
  std::vector<MetadataItem> SampleMetadata(int sample) override;
  std::vector<MetadataItem> FunctionMetadata(int sample, int function) override;

  std::span<const Function> Functions(int) override { return functions_; }
  int ScanCount(int sample, int function) override;
  Scan ScanAt(int sample, int function, int scan) override;
  void ReadScans(int sample, int function, int first, int count, const ScanColumns& columns) override;
  std::vector<double> Minutes(int sample, int function) override;

  PointsRead ReadPoints(int sample, int function, int scan, std::span<double> mz,
                        std::span<double> intensities) override;
  PointsRead ReadPoints(int sample, int function, int scan, std::vector<double>& mz,
                        std::vector<double>& intensities) override;

  int DriftBinCount(int sample, int function) override;
  void ReadDriftBin(int sample, int function, int scan, int bin, std::vector<double>& mz,
                    std::vector<double>& intensities) override;

  std::vector<Trace> Traces(int sample) override;
  Chromatogram ReadTrace(int sample, int trace) override;

  bool HasAbsorbance(int) override { return absorbance_.has_value(); }
  Function AbsorbanceFunction(int sample) override;
  int AbsorbanceScanCount(int sample) override;
  double AbsorbanceMinutes(int sample, int scan) override;
  PointsRead ReadAbsorbance(int sample, int scan, std::vector<double>& wavelengths,
                            std::vector<double>& values) override;

  std::span<const Finding> Findings() override;
  bool Includes(const FindingSubject& subject) const override;

 protected:
  std::optional<std::span<const double>> IntensitiesWithin(int sample, int function, int scan, Range range,
                                                           Points& points) override;

 private:
  // A scan, undecoded, from its data file.
  struct StoredScan {
    masslynx::ScanRoom room;
    Bytes bytes;  // until the next scan is fetched

    std::size_t Points() const { return room.PointsIn(bytes.size()); }
  };

  void List(std::size_t position);
  void NameFunctions();
  std::size_t PositionOf(int function) const;
  std::size_t AbsorbancePosition() const;
  masslynx::FunctionRecord& LoadedAt(std::size_t position);
  static const masslynx::ScanIndexEntry& EntryOf(const masslynx::FunctionRecord& record, int scan);
  template <class What>
  StoredScan Fetch(std::size_t position, const std::optional<masslynx::ScanRoom>& room, What what);
  StoredScan FetchScan(int function, int scan);
  static bool MayBeZeroed(const masslynx::FunctionRecord& record, int scan, const StoredScan& stored);
  PointsRead CloseGapsIn(const masslynx::FunctionRecord& record, int scan, const StoredScan& stored,
                         std::size_t count, std::span<double> x, std::span<double> y);
  PointsRead Decode(int function, int scan, const StoredScan& stored, std::span<double> mz,
                    std::span<double> intensities);
  std::size_t InOrder(std::span<double> mz, std::span<double> intensities, bool mayHaveSubScans,
                      bool isCentroided);
  const masslynx::TraceList& Traced();

  masslynx::RawDirectory directory_;
  std::vector<std::size_t> positions_;  // of the functions, in the directory
  std::vector<Function> functions_;
  std::optional<std::size_t> absorbance_;  // its position in the directory
  std::optional<FindingSubject> chosen_;   // the function, when one of its files was opened
  std::vector<MetadataItem> metadata_;     // filled on first request
  std::optional<masslynx::TraceList> traces_;
  std::string mobilityPath_;
  masslynx::MobilityData mobility_;
  std::vector<std::size_t> unwritten_;
  std::vector<std::size_t> zeroed_;
  CZRMassSpectrum unsorted_;
  std::optional<zrml::Findings> findings_;
};

}  // namespace zrml::source
