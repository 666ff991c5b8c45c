#include "masslynx/scandata/mobility_data.h"

#include <algorithm>
#include <limits>

#include "common/platform/shared_library.h"
#include "masslynx/scan_attributes.h"
#include "masslynx/scandata/calibration.h"

namespace zrml {
namespace {

// More mass-axis or drift bins than any instrument has: a reader that tells such a count is not to be
// believed.
constexpr int kMostBins = 1 << 24;

bool IsIn(const std::vector<ScanIndexEntry>& scanIndex, int scan) {
  return scan >= 0 && static_cast<std::size_t>(scan) < scanIndex.size();
}

const ScanIndexEntry& EntryOf(const MobilityScan& scan) {
  return scan.record.scanIndex[static_cast<std::size_t>(scan.scan)];
}

bool HasCachedAxis(const FunctionRecord& record) {
  return record.calibrationConstant && !record.cachedMassAxis.empty();
}

void SetBinAttributes(const MobilityScan& scan, int bin, float seconds, CZRMassSpectrum& spectrum) {
  const ScanIndexEntry& entry = EntryOf(scan);
  const double minutes = seconds / 60.0F;
  spectrum.SetStartTime(minutes);
  spectrum.SetEndTime(minutes);
  SetScanAttributes(scan.record, entry, spectrum);
  spectrum.SetFirstScan(scan.scan + 1);  // not narrowed as the numbers of whole scans are
  spectrum.SetLastScan(scan.scan + 1);
  if (HasPrecursor(scan.record)) spectrum.SetPrecursorMass(scan.record.setMass);
  spectrum.SetFirstDriftBin(bin + 1);
  spectrum.SetLastDriftBin(bin + 1);
  spectrum.SetFirstDriftValue(bin + 1);
  spectrum.SetLastDriftValue(bin + 1);
  spectrum.InvalidateStatistics();
}

}  // namespace

void MobilityData::Release() {
  mobilityCluster_.reset();
  mobilityClusterFunction_ = -1;
  isUnavailable_ = false;
  rawMassAxis_ = {};
  ownedMassAxis_ = {};
  indices_ = {};
  intensities_ = {};
}

bool MobilityData::EnsureMobilityCluster(const std::wstring& directory, int function) {
  if (isUnavailable_) return false;
  if (mobilityCluster_ == nullptr || mobilityClusterFunction_ != function) {
    path_ = platform::NarrowPath(directory);
    if (path_.empty()) return false;
    mobilityClusterFunction_ = -1;  // until it is known to be the one
    if (mobilityCluster_ != nullptr) {
      mobilityCluster_->Initialise(path_, function + 1);
    } else {
      mobilityCluster_ = open_(path_, function + 1);
    }
    mobilityClusterFunction_ = function;
    isUnavailable_ = mobilityCluster_ == nullptr;
  }
  return !isUnavailable_ && mobilityCluster_->IsInitialised();
}

int MobilityData::BinCount(const std::wstring& directory, int function) {
  int bins = 0;
  const bool known = EnsureMobilityCluster(directory, function) && mobilityCluster_->GetScansInBlock(bins) &&
                     bins >= 0 && bins <= kMostBins;
  return known ? bins : 0;
}

bool MobilityData::ReadRawMassAxis() {
  int length = 0;
  if (!mobilityCluster_->GetMassAxisLength(length) || length < 1 || length > kMostBins) return false;
  rawMassAxis_.resize(static_cast<std::size_t>(length));
  return mobilityCluster_->GetMassAxis(rawMassAxis_.data());
}

const std::vector<double>* MobilityData::CalibratedMassAxis(const MobilityScan& scan) {
  FunctionRecord& record = scan.record;
  if (HasCachedAxis(record)) return &record.cachedMassAxis;
  if (!EnsureMobilityCluster(scan.directory, scan.function) || !ReadRawMassAxis()) return nullptr;
  std::vector<double>& axis = record.calibrationConstant ? record.cachedMassAxis : ownedMassAxis_;
  axis.resize(rawMassAxis_.size());
  std::transform(rawMassAxis_.begin(), rawMassAxis_.end(), axis.begin(),
                 ScanCalibration(record, EntryOf(scan)));
  return &axis;
}

bool MobilityData::ReadMassRange(const MobilityScan& scan, double& low, double& high) {
  const std::vector<double>* const axis =
      IsIn(scan.record.scanIndex, scan.scan) ? CalibratedMassAxis(scan) : nullptr;
  if (axis == nullptr) return false;
  low = axis->front();
  high = axis->back();
  return true;
}

// The axis may have been cached before the file changed; the reader writes as much as its own axis has.
bool MobilityData::HasAxisOf(const std::vector<double>& axis) {
  int length = 0;
  return mobilityCluster_->GetMassAxisLength(length) && length >= 0 &&
         static_cast<std::size_t>(length) == axis.size();
}

// Everything that the bins of a request have in common. Nothing is loaded for a request that is out of range.
bool MobilityData::Prepare(const MobilityScan& scan, int firstBin, int lastBin) {
  if (firstBin < 0 || lastBin < firstBin || !IsIn(scan.record.scanIndex, scan.scan)) return false;
  if (lastBin >= BinCount(scan.directory, scan.function)) return false;
  int blocks = 0;
  if (!mobilityCluster_->GetNumberOfBlocks(blocks) || scan.scan >= blocks) return false;
  const bool wasCached = HasCachedAxis(scan.record);
  massAxis_ = CalibratedMassAxis(scan);
  if (massAxis_ == nullptr || (wasCached && !HasAxisOf(*massAxis_))) return false;
  if (!mobilityCluster_->LoadDataBlock(scan.scan)) return false;
  indices_.resize(massAxis_->size());
  intensities_.resize(massAxis_->size());
  return true;
}

bool MobilityData::ReadBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum) {
  return Prepare(scan, bin, bin) && ReadMobilityBin(scan, bin, spectrum);
}

bool MobilityData::ReadBins(const MobilityScan& scan, int firstBin, int lastBin,
                            HostVector<CZRMassSpectrum>& spectra) {
  if (!Prepare(scan, firstBin, lastBin)) return false;
  const std::size_t wanted = static_cast<std::size_t>(lastBin - firstBin) + 1;
  if (spectra.size() < wanted) spectra.resize(wanted);
  for (int bin = firstBin; bin <= lastBin; ++bin) {
    if (!ReadMobilityBin(scan, bin, spectra[static_cast<std::size_t>(bin - firstBin)])) return false;
  }
  return true;
}

bool MobilityData::ReadMobilityBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum) {
  float seconds = 0;
  int count = 0;
  const bool read = mobilityCluster_->GetRT(scan.scan, bin, seconds) &&
                    mobilityCluster_->GetScan(scan.scan, bin, indices_.data(), intensities_.data(), count);
  if (!read || !WritePoints(count, EntryOf(scan).centroided, spectrum)) return false;
  SetBinAttributes(scan, bin, seconds, spectrum);
  return true;
}

bool MobilityData::AreOnAxis(int count) const {
  const int length = static_cast<int>(massAxis_->size());
  return count >= 0 && count <= length &&
         std::all_of(indices_.begin(), indices_.begin() + count,
                     [length](int index) { return index >= 0 && index < length; });
}

// Compressed data leave out the zeros. In a profile those beside a run of data are points again, so that a
// peak comes down to the base line. Neighbours are the points that the reader returned, also where their own
// intensity leaves them out.
template <class Visit>
void MobilityData::ForEachPoint(int count, bool centroided, Visit visit) const {
  const int length = static_cast<int>(massAxis_->size());
  for (int i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (!(intensities_[at] > 0)) continue;
    const int index = indices_[at];
    const int before = i > 0 ? indices_[at - 1] : -2;
    const int after = i + 1 < count ? indices_[at + 1] : std::numeric_limits<int>::max();
    if (!centroided && index >= 1 && before != index - 1) visit(index - 1, 0.0);
    visit(index, double{intensities_[at]});
    if (!centroided && index < length - 2 && after > index + 2) visit(index + 1, 0.0);
  }
}

bool MobilityData::WritePoints(int count, bool centroided, CZRMassSpectrum& spectrum) const {
  if (!AreOnAxis(count)) return false;
  int points = 0;
  ForEachPoint(count, centroided, [&](int, double) { ++points; });
  if (!spectrum.SetSize(points)) return false;
  double* masses = spectrum.GetMasses();
  double* intensities = spectrum.GetIntensities();
  ForEachPoint(count, centroided, [&](int index, double intensity) {
    *masses++ = (*massAxis_)[static_cast<std::size_t>(index)];
    *intensities++ = intensity;
  });
  return true;
}

}  // namespace zrml
