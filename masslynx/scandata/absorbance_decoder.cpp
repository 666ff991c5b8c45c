#include "masslynx/scandata/absorbance_decoder.h"

#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/point_unit_format.h"

namespace zrml::masslynx {
namespace {

constexpr int kPairs = 1;
constexpr int kPoints = 9;

void DecodePoints(Bytes bytes, std::size_t count, const PointArrays& points) {
  constexpr std::size_t kPointSize = 6;
  for (std::size_t i = 0; i < count; ++i) {
    const PackedPoint point = UnpackPoint9(bytes.data() + i * kPointSize);
    points.masses[i] = point.mass;
    points.intensities[i] = point.intensity;
  }
}

// A second point is written when it has a wavelength (in mass spectra, deliberately, when it has an
// intensity).
void DecodePairs(Bytes bytes, std::size_t count, const PointArrays& points) {
  for (std::size_t i = 0; i < count; ++i) {
    const PackedPair packed = UnpackPair(bytes.data() + i / 2 * kPairSize);
    const std::size_t which = i % 2;
    if (which == 1 && packed.rawMass[1] == 0) {
      if (points.unwritten != nullptr) points.unwritten->push_back(i);
      continue;
    }
    points.masses[i] = static_cast<double>(packed.rawMass[which]) / kPairMassScale;
    points.intensities[i] = IntensityWord(packed.intensityWord[which]);
  }
}

}  // namespace

std::optional<ScanRoom> AbsorbanceRoomOf(const FunctionRecord& function, int scan) {
  const auto position = static_cast<std::size_t>(scan);
  const bool isKnown = function.dataFormat == kPairs || function.dataFormat == kPoints;
  if (!isKnown || position >= function.scanIndex.size()) return std::nullopt;
  const ScanIndexEntry& entry = function.scanIndex[position];
  const std::uint64_t bytes = point_unit_format::UnitOf(function.dataFormat).BytesOf(entry.pointCount);
  return ScanRoom{entry.DataOffset(), static_cast<std::size_t>(bytes), entry.pointCount, function.dataFormat};
}

std::size_t DecodeAbsorbance(const ScanRoom& room, Bytes bytes, const PointArrays& points) {
  const std::size_t count = room.PointsIn(bytes.size());
  (room.layout == kPairs ? DecodePairs : DecodePoints)(bytes, count, points);
  return count;
}

}  // namespace zrml::masslynx
