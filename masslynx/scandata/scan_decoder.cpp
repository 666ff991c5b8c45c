#include "masslynx/scandata/scan_decoder.h"

#include <algorithm>
#include <array>
#include <cfloat>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/point_unit_format.h"

namespace zrml::masslynx {
namespace {

using point_unit_format::UnitOf;

// A scan of which `count` points are to be decoded.
struct StoredScan {
  const FunctionRecord& function;
  const ScanIndexEntry& entry;
  const ScanRoom& room;
  Bytes bytes;
  std::size_t count;
};

// Writes points and watches whether each mass is above the one written before it.
class PointWriter {
 public:
  explicit PointWriter(const PointArrays& points) : points_(points) {}

  void Write(std::size_t i, double mass, double intensity) {
    points_.masses[i] = mass;
    points_.intensities[i] = intensity;
    unsorted_ |= mass <= previous_;
    previous_ = mass;
  }

  /// `n` points from place `first` on; n > 0.
  void WriteAll(std::size_t first, std::size_t n, const double* masses, const double* intensities) {
    std::copy_n(masses, n, points_.masses + first);
    std::copy_n(intensities, n, points_.intensities + first);
    unsorted_ |= ChosenKernels().descends(previous_, masses, n);
    previous_ = masses[n - 1];
  }

  void LeaveOut(std::size_t i) {
    if (points_.unwritten != nullptr) points_.unwritten->push_back(i);
  }

  bool Unsorted() const { return unsorted_; }

 private:
  const PointArrays& points_;
  double previous_ = -DBL_MAX;
  bool unsorted_ = false;
};

// Gives whether the masses do not ascend.
using Decoder = bool (*)(const StoredScan& scan, const PointArrays& points);

// Points that are worked on together: what the passes over them leave stays in the fastest cache.
constexpr std::size_t kBlock = 1024;

// Calls `block(first, count)` for blocks of the points.
template <class Block>
void InBlocks(std::size_t count, Block block) {
  for (std::size_t first = 0; first < count; first += kBlock) block(first, std::min(kBlock, count - first));
}

// Formats 0, 8, 9, 12, 13: each point has a raw mass.
template <std::size_t kPointSize, PointKernels::Unpack PointKernels::*kUnpack>
bool DecodeRawMasses(const StoredScan& scan, const PointArrays& points) {
  const PointKernels& kernels = ChosenKernels();
  const ScanCalibration calibration(scan.function, scan.entry);
  double before = -DBL_MAX;
  bool unsorted = false;
  InBlocks(scan.count, [&](std::size_t first, std::size_t n) {
    float raw[kBlock];
    (kernels.*kUnpack)(scan.bytes.data() + first * kPointSize, n, raw, points.intensities + first);
    calibration.Convert(kernels, raw, n, points.masses + first);
    unsorted |= kernels.descends(before, points.masses + first, n);
    before = points.masses[first + n - 1];
  });
  return unsorted;
}

// Format 1: pairs. Deliberate: a second point without intensity is not written. So the padding point of an
// odd count never shows either.
bool DecodePairs(const StoredScan& scan, const PointArrays& points) {
  const std::size_t pairs = (scan.count + 1) / 2;
  const PointKernels& kernels = ChosenKernels();
  const ScanCalibration calibration(scan.function, scan.entry);
  PointWriter writer(points);
  InBlocks(2 * pairs, [&](std::size_t first, std::size_t n) {
    float raw[kBlock];
    double masses[kBlock];
    double intensities[kBlock];
    const bool hasEverySecond =
        kernels.unpackPairs(scan.bytes.data() + first / 2 * kPairSize, n, raw, intensities);
    calibration.Convert(kernels, raw, n, masses);
    if (hasEverySecond && first + n <= scan.count) return writer.WriteAll(first, n, masses, intensities);
    for (std::size_t i = 0; i < n && first + i < scan.count; ++i) {
      if (i % 2 == 0 || intensities[i] != 0) {
        writer.Write(first + i, masses[i], intensities[i]);
      } else {
        writer.LeaveOut(first + i);
      }
    }
  });
  return writer.Unsorted();
}

double ListedIntensity2(const std::byte* p) { return IntensityWord(LoadU16(p)); }
double ListedIntensity11(const std::byte* p) { return FloatWord(LoadU32(p)); }

// Formats 2, 11 and 14: the start masses of the channels are those of the points.
template <std::size_t kPointSize, double (*Intensity)(const std::byte*)>
bool DecodeChannels(const StoredScan& scan, const PointArrays& points) {
  PointWriter writer(points);
  for (std::size_t i = 0; i < scan.count; ++i)
    writer.Write(i, scan.function.startMasses[i], Intensity(scan.bytes.data() + i * kPointSize));
  return writer.Unsorted();
}

// Format 3: the points' numbers are their masses.
bool DecodeNumbered(const StoredScan& scan, const PointArrays& points) {
  ChosenKernels().words(scan.bytes.data(), scan.count, points.intensities);
  for (std::size_t i = 0; i < scan.count; ++i) points.masses[i] = static_cast<double>(i + 1);
  return false;
}

// Formats 4, 5 and 7: groups of up to four points on a linear axis over the first channel's range. A group's
// last word holds the exponents of its points, four bits each.
template <PointKernels::Intensities PointKernels::*kGroups>
bool DecodeLinearAxis(const StoredScan& scan, const PointArrays& points) {
  const FunctionRecord& function = scan.function;
  const std::size_t all = scan.room.points;
  const float range = function.endMasses[0] - function.startMasses[0];
  const double step = all > 1 ? static_cast<double>(range) / static_cast<double>(all - 1) : 0;
  (ChosenKernels().*kGroups)(scan.bytes.data(), scan.count, points.intensities);
  ChosenKernels().linearAxis(function.startMasses[0], step, points.masses, scan.count);
  return !(step > 0);
}

constexpr Decoder kDecodeGroupsOf4 = DecodeLinearAxis<&PointKernels::groupsOf4>;
constexpr Decoder kDecodeGroupsOf2 = DecodeLinearAxis<&PointKernels::groupsOf2>;

// What masses come from.
enum class Masses { kPoints, kNumbers, kChannels, kChannelsThatAreThere, kLinearAxis };

struct Layout {
  Decoder decode = nullptr;
  Masses masses = Masses::kPoints;
};

constexpr int kMixed = 6;

// By data format.
constexpr std::array<Layout, 15> kLayouts = {{
    {DecodeRawMasses<4, &PointKernels::unpack0>},
    {DecodePairs},
    {DecodeChannels<2, ListedIntensity2>, Masses::kChannels},
    {DecodeNumbered, Masses::kNumbers},
    {kDecodeGroupsOf4, Masses::kLinearAxis},
    {kDecodeGroupsOf2, Masses::kLinearAxis},
    {},  // kMixed
    {kDecodeGroupsOf2, Masses::kLinearAxis},
    {DecodeRawMasses<6, &PointKernels::unpack8>},
    {DecodeRawMasses<6, &PointKernels::unpack9>},
    {},
    {DecodeChannels<4, ListedIntensity11>, Masses::kChannelsThatAreThere},
    {DecodeRawMasses<8, &PointKernels::unpack12>},
    {DecodeRawMasses<12, &PointKernels::unpack13>},
    {DecodeChannels<12, ListedIntensity11>, Masses::kChannelsThatAreThere},
}};

// Format 6: deliberately, the last scan of the function is read as format 4, the others as format 3.
int LayoutOf(const FunctionRecord& function, std::size_t position) {
  if (function.dataFormat != kMixed) return function.dataFormat;
  return position + 1 == function.scanIndex.size() ? 4 : 3;
}

// The points that a scan of `declared` can have; no value when its mass list cannot serve.
std::optional<std::size_t> PointsOf(const FunctionRecord& function, Masses masses, std::size_t declared) {
  const std::vector<float>& starts = function.startMasses;
  const auto isPositive = [](float mass) { return mass > 0; };
  switch (masses) {
    case Masses::kPoints:
    case Masses::kNumbers:
      return declared;
    case Masses::kChannels:
      if (declared > starts.size() || !std::all_of(starts.data(), starts.data() + declared, isPositive))
        return std::nullopt;
      return declared;
    case Masses::kChannelsThatAreThere:
      return std::min(declared, starts.size());
    case Masses::kLinearAxis:
      return starts.empty() || function.endMasses.empty() ? std::nullopt : std::optional(declared);
  }
  return std::nullopt;
}

}  // namespace

std::optional<ScanRoom> RoomOf(const FunctionRecord& function, int scan) {
  const auto position = static_cast<std::size_t>(scan);
  if (position >= function.scanIndex.size()) return std::nullopt;
  const int layout = LayoutOf(function, position);
  const auto row = static_cast<std::size_t>(layout);
  if (row >= kLayouts.size() || kLayouts[row].decode == nullptr) return std::nullopt;
  const ScanIndexEntry& entry = function.scanIndex[position];
  const std::optional<std::size_t> points = PointsOf(function, kLayouts[row].masses, entry.pointCount);
  if (!points) return std::nullopt;
  return ScanRoom{entry.DataOffset(), static_cast<std::size_t>(UnitOf(layout).BytesOf(*points)), *points,
                  layout};
}

DecodedPoints DecodeScan(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                         const PointArrays& points) {
  const std::size_t count = room.PointsIn(bytes.size());
  const ScanIndexEntry& entry = function.scanIndex[static_cast<std::size_t>(scan)];
  const Layout& layout = kLayouts[static_cast<std::size_t>(room.layout)];
  return {count, layout.decode({function, entry, room, bytes, count}, points)};
}

}  // namespace zrml::masslynx
