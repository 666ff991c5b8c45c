#include "masslynx/scandata/mobility_data.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "common/platform/shared_library.h"
#include "masslynx/scandata/calibration.h"

namespace zrml::masslynx {
namespace {

// More mass-axis or drift bins than any instrument has: a reader that reports such a count is not
// trusted.
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

}  // namespace

std::string MobilityPath(const platform::SystemPath& folder) {
#ifdef _WIN32
  constexpr std::string_view kSeparators = "\\/";
#else
  constexpr std::string_view kSeparators = "/";
#endif
  std::string path = platform::NarrowPath(folder);
  if (!path.empty() && kSeparators.find(path.back()) == std::string_view::npos) path += kSeparators.front();
  return path;
}

void MobilityData::Release() {
  mobilityCluster_.reset();
  mobilityClusterFunction_ = 0;
  isUnavailable_ = false;
  rawMassAxis_ = {};
  ownedMassAxis_ = {};
  indices_ = {};
  intensities_ = {};
}

bool MobilityData::EnsureMobilityCluster(const MobilityFunction& function) {
  if (isUnavailable_) return false;
  if (mobilityCluster_ == nullptr || mobilityClusterFunction_ != function.number) {
    if (function.path.empty()) return false;
    mobilityClusterFunction_ = 0;  // until opening has succeeded
    if (mobilityCluster_ != nullptr) {
      mobilityCluster_->Initialise(function.path, function.number);
    } else {
      mobilityCluster_ = open_(function.path, function.number);
    }
    mobilityClusterFunction_ = function.number;
    isUnavailable_ = mobilityCluster_ == nullptr;
  }
  return !isUnavailable_ && mobilityCluster_->IsInitialised();
}

int MobilityData::BinCount(const MobilityFunction& function) {
  int bins = 0;
  const bool known = EnsureMobilityCluster(function) && mobilityCluster_->GetScansInBlock(bins) &&
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
  if (!EnsureMobilityCluster(scan.function) || !ReadRawMassAxis()) return nullptr;
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

bool MobilityData::Prepare(const MobilityScan& scan, int firstBin, int lastBin) {
  if (firstBin < 0 || lastBin < firstBin || !IsIn(scan.record.scanIndex, scan.scan)) return false;
  if (lastBin >= BinCount(scan.function)) return false;
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

bool MobilityData::ReadBin(const MobilityScan& scan, int bin) {
  count_ = 0;
  const bool read = mobilityCluster_->GetRT(scan.scan, bin, seconds_) &&
                    mobilityCluster_->GetScan(scan.scan, bin, indices_.data(), intensities_.data(), count_);
  if (!read || !AreOnAxis(count_)) return false;
  isCentroided_ = EntryOf(scan).centroided;
  pointCount_ = 0;
  ForEachPoint([&](int, double) { ++pointCount_; });
  return true;
}

bool MobilityData::AreOnAxis(int count) const {
  const int length = static_cast<int>(massAxis_->size());
  return count >= 0 && count <= length &&
         std::all_of(indices_.begin(), indices_.begin() + count,
                     [length](int index) { return index >= 0 && index < length; });
}

// Compressed data leave out the zeros. In a profile, those beside a run of data become points again, so that
// a peak falls to the base line. Neighbours are the points that the reader returned, even when their own
// intensity leaves them out.
template <class Visit>
void MobilityData::ForEachPoint(Visit visit) const {
  const int length = static_cast<int>(massAxis_->size());
  for (int i = 0; i < count_; ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (!(intensities_[at] > 0)) continue;
    const int index = indices_[at];
    const int before = i > 0 ? indices_[at - 1] : -2;
    const int after = i + 1 < count_ ? indices_[at + 1] : std::numeric_limits<int>::max();
    if (!isCentroided_ && index >= 1 && before != index - 1) visit(index - 1, 0.0);
    visit(index, double{intensities_[at]});
    if (!isCentroided_ && index < length - 2 && after > index + 2) visit(index + 1, 0.0);
  }
}

void MobilityData::WritePoints(double* masses, double* intensities) const {
  ForEachPoint([&](int index, double intensity) {
    *masses++ = (*massAxis_)[static_cast<std::size_t>(index)];
    *intensities++ = intensity;
  });
}

}  // namespace zrml::masslynx
