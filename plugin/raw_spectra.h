// Spectra of a raw directory as the contract defines them: the content of its files, written into the host's
// containers. Bytes that a data file lacks count as zero.
#pragma once

#include <optional>
#include <string>

#include "common/host_types.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/mobility_data.h"
#include "plugin/absorbance_spectrum.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::plugin {

/// A FunctionKind of the interface.
int KindOf(const masslynx::FunctionRecord& function);

/// Sets scan type, MS level, centroid flag, polarity and aux value from the function and its scan. The
/// polarity is never unknown: everything that is not negative counts as positive.
void SetScanAttributes(const masslynx::FunctionRecord& function, const masslynx::ScanIndexEntry& scan,
                       CZRMassSpectrum& spectrum);

/// Decodes scan `scan` (a position of the function's index) from the function's data file into the points of
/// `spectrum` and sets `unsorted` when the masses do not ascend. False, with the points untouched, for an
/// unknown data format or an unusable mass list. Sub-scans are summed, whatever the spectrum held; the sum is
/// centroided, has no attributes other than the polarity, and still counts as unsorted. Deliberate: points
/// that are not written keep the values that their places in the container held, 0 in a fresh one.
bool DecodeScan(const platform::File& file, const masslynx::FunctionRecord& function, int scan,
                CZRMassSpectrum& spectrum, bool& unsorted);

/// Sums the sub-scans of a spectrum as above; false, with the spectrum unchanged, when it has none.
bool SumSubScans(CZRMassSpectrum& spectrum);

/// Decodes scan `scan` of the absorbance function from its data file. False, with `spectrum` untouched, for
/// other data formats than 1 and 9. The spectrum's scan number is deliberately the position, counted from 0.
bool DecodeAbsorbanceScan(const platform::File& file, const masslynx::FunctionRecord& function, int scan,
                          CZRAbsorbanceSpectrum& spectrum);

/// A scan of a mobility function of an open directory. `record.scanIndex` is loaded; `scan` may be outside
/// it.
struct MobilityScan {
  const std::wstring& directory;
  int function;  ///< position in the list; deliberately, the maker's reader gets the position plus 1
  masslynx::FunctionRecord& record;
  int scan;
};

/// Drift bins as spectra.
class MobilitySpectra {
 public:
  explicit MobilitySpectra(masslynx::MobilityClusterOpener open = masslynx::OpenCompressedDataCluster)
      : data_(open) {}

  int BinCount(const std::wstring& directory, int function);
  bool ReadMassRange(const MobilityScan& scan, double& low, double& high);

  /// The drift bins firstBin to lastBin into elements from 0 on of `spectra`, which grows as needed and never
  /// shrinks. False at the first bin that cannot be read; earlier elements stay filled.
  bool ReadBins(const MobilityScan& scan, int firstBin, int lastBin, HostVector<CZRMassSpectrum>& spectra);
  bool ReadBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum);

  void Release() { data_.Release(); }

 private:
  masslynx::MobilityFunction FunctionOf(const std::wstring& directory, int function);
  masslynx::MobilityScan ScanOf(const MobilityScan& scan);
  bool ReadPreparedBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum);

  masslynx::MobilityData data_;
  std::wstring directory_;
  std::string path_;  // of the directory; not a local, see MobilityData
};

}  // namespace zrml::plugin
