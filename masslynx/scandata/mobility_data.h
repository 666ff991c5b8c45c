// Spectra of single drift bins, from the compressed data of the ion-mobility functions ("_FUNC001.CDT") of
// one raw directory. The reader is loaded when it is first needed and serves all functions; without one every
// request gives its empty result. docs/mobility.md
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/host_types.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/compressed_data_cluster.h"
#include "spectrum/mass_spectrum.h"

namespace zrml {

/// A scan of a mobility function of an open directory. `record.scanIndex` is loaded; `scan` need not be in
/// it.
struct MobilityScan {
  const std::wstring& directory;
  int function;  ///< position in the list of functions
  FunctionRecord& record;
  int scan;
};

class MobilityData {
 public:
  explicit MobilityData(MobilityClusterOpener open = OpenCompressedDataCluster) : open_(open) {}

  /// Drift bins of each scan of a function; 0 when they are not known.
  int BinCount(const std::wstring& directory, int function);

  /// Ends of the calibrated mass axis of a scan, m/z.
  bool ReadMassRange(const MobilityScan& scan, double& low, double& high);

  /// The drift bins firstBin to lastBin into elements from 0 on of `spectra`, which grows as needed and never
  /// shrinks. False at the first bin that cannot be read; earlier elements stay filled.
  bool ReadBins(const MobilityScan& scan, int firstBin, int lastBin, HostVector<CZRMassSpectrum>& spectra);
  bool ReadBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum);

  /// Lets go of the reader. The next request loads it anew.
  void Release();

 private:
  bool EnsureMobilityCluster(const std::wstring& directory, int function);
  const std::vector<double>* CalibratedMassAxis(const MobilityScan& scan);
  bool ReadRawMassAxis();
  bool HasAxisOf(const std::vector<double>& axis);
  bool Prepare(const MobilityScan& scan, int firstBin, int lastBin);
  bool ReadMobilityBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum);
  bool AreOnAxis(int count) const;
  template <class Visit>
  void ForEachPoint(int count, bool centroided, Visit visit) const;
  bool WritePoints(int count, bool centroided, CZRMassSpectrum& spectrum) const;

  MobilityClusterOpener open_;
  std::unique_ptr<MobilityCluster> mobilityCluster_;
  int mobilityClusterFunction_ = -1;
  bool isUnavailable_ = false;  // opening was tried in vain

  // Of the request being served. No locals, because a Microsoft-compiled host may throw from its own
  // spectrum's Resize, and the library from any operation, and their exceptions pass our frames without
  // cleaning up.
  std::string path_;
  std::vector<float> rawMassAxis_;
  std::vector<double> ownedMassAxis_;
  const std::vector<double>* massAxis_ = nullptr;
  std::vector<int> indices_;
  std::vector<float> intensities_;
};

}  // namespace zrml
