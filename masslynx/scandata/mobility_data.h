// Spectra of single drift bins, from the compressed data of the ion-mobility functions ("_FUNC001.CDT") of
// one raw directory. The reader is loaded when first needed and serves all functions; without one every
// request gives its empty result. docs/mobility.md
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "masslynx/function_record.h"
#include "masslynx/scandata/compressed_data_cluster.h"

namespace zrml::masslynx {

/// The path of a directory as the maker's reader takes it: narrow, with a trailing separator. Empty when it
/// has no such form.
std::string MobilityPath(const platform::SystemPath& folder);

/// A function of the maker's reader.
struct MobilityFunction {
  const std::string& path;  ///< see MobilityPath()
  int number;               ///< from 1
};

/// A scan of it. `record.scanIndex` is loaded; `scan` may be outside it.
struct MobilityScan {
  MobilityFunction function;
  FunctionRecord& record;
  int scan;
};

class MobilityData {
 public:
  explicit MobilityData(MobilityClusterOpener open = OpenCompressedDataCluster) : open_(open) {}

  /// Drift bins per scan of a function; 0 when unknown.
  int BinCount(const MobilityFunction& function);

  /// Ends of the calibrated mass axis of a scan, m/z.
  bool ReadMassRange(const MobilityScan& scan, double& low, double& high);

  /// Prepares what the drift bins firstBin to lastBin of a scan have in common. Nothing is loaded for bins
  /// that do not exist.
  bool Prepare(const MobilityScan& scan, int firstBin, int lastBin);

  /// One bin of the prepared scan. It is held until the next call.
  bool ReadBin(const MobilityScan& scan, int bin);
  int PointCount() const { return pointCount_; }
  float Seconds() const { return seconds_; }
  /// Copies into arrays with room for all points.
  void WritePoints(double* masses, double* intensities) const;

  /// Releases the reader. The next request loads it again.
  void Release();

 private:
  bool EnsureMobilityCluster(const MobilityFunction& function);
  const std::vector<double>* CalibratedMassAxis(const MobilityScan& scan);
  bool ReadRawMassAxis();
  bool HasAxisOf(const std::vector<double>& axis);
  bool AreOnAxis(int count) const;
  template <class Visit>
  void ForEachPoint(Visit visit) const;

  MobilityClusterOpener open_;
  std::unique_ptr<MobilityCluster> mobilityCluster_;
  int mobilityClusterFunction_ = 0;
  bool isUnavailable_ = false;  // an attempt to open has failed

  // State of the current request. Not locals, because the library may throw from any operation, and a
  // Microsoft-compiled host may throw while it makes room for the points; their exceptions pass our frames
  // without clean-up.
  std::vector<float> rawMassAxis_;
  std::vector<double> ownedMassAxis_;
  const std::vector<double>* massAxis_ = nullptr;
  std::vector<int> indices_;
  std::vector<float> intensities_;
  int count_ = 0;  // points that the reader gave for the bin
  int pointCount_ = 0;
  float seconds_ = 0;
  bool isCentroided_ = false;
};

}  // namespace zrml::masslynx
