#include "masslynx/scandata/scan_decoder.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <utility>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/point_unit_format.h"

namespace zrml::masslynx {
namespace {

using point_unit_format::UnitOf;

// A scan with `count` points to decode.
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

// Returns whether the masses do not ascend.
using Decoder = bool (*)(const StoredScan& scan, const PointArrays& points);

// Points processed together: the results of each pass stay in the fastest cache.
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

// The begin and end of a range in a block of raw masses whose m/z ascend: a few of them are calibrated far
// apart, and then those at both ends.
std::pair<std::size_t, std::size_t> PartWithin(MassRange range, const ScanCalibration& calibration,
                                               const float* raw, std::size_t count) {
  constexpr std::size_t kStep = 16;
  const std::size_t steps = count / kStep;
  float some[kBlock / kStep];
  double masses[kBlock / kStep];
  for (std::size_t i = 0; i < steps; ++i) some[i] = raw[i * kStep + kStep - 1];
  calibration.Convert(ChosenKernels(), some, steps, masses);
  const auto countBefore = [&](auto isBefore) {
    const std::size_t first =
        static_cast<std::size_t>(std::count_if(masses, masses + steps, isBefore)) * kStep;
    const std::size_t n = std::min(kStep, count - first);
    float next[kStep];
    double nextMasses[kStep];
    std::copy_n(raw + first, n, next);
    calibration.Convert(ChosenKernels(), next, n, nextMasses);
    return first + static_cast<std::size_t>(std::count_if(nextMasses, nextMasses + n, isBefore));
  };
  return {countBefore([&](double mass) { return mass < range.low; }),
          countBefore([&](double mass) { return !(range.high < mass); })};
}

// The points of a range, when each block is checked to ascend in m/z from the end of the one before.
template <std::size_t kPointSize, PointKernels::Unpack PointKernels::*kUnpack>
bool DecodeRawMassesWithin(const StoredScan& scan, MassRange range, std::vector<double>& intensities) {
  const PointKernels& kernels = ChosenKernels();
  const ScanCalibration calibration(scan.function, scan.entry);
  bool ascends = scan.count > 0;
  float withLast[1 + kBlock];  // the last of the block before
  float* const raw = withLast + 1;
  InBlocks(scan.count, [&](std::size_t first, std::size_t n) {
    if (!ascends) return;
    const std::byte* const points = scan.bytes.data() + first * kPointSize;
    (kernels.*kUnpack)(points, n, raw, nullptr);
    const float* const run = first > 0 ? withLast : raw;
    const float last = raw[n - 1];
    ascends =
        calibration.Ascends(*run, last, kernels.leastStep(run, static_cast<std::size_t>(raw + n - run)));
    if (!ascends) return;
    const auto [begin, end] = PartWithin(range, calibration, raw, n);
    withLast[0] = last;
    if (begin >= end) return;
    const std::size_t before = intensities.size();
    intensities.resize(before + end - begin);
    (kernels.*kUnpack)(points + begin * kPointSize, end - begin, raw, intensities.data() + before);
  });
  return ascends;
}

// Format 1: pairs. Deliberate: a second point without intensity is not written, unless the caller asks for
// all that the file holds. The padding point of an odd count never shows.
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
      if (i % 2 == 0 || intensities[i] != 0 || (points.hasEverySecond && raw[i] != 0)) {
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

// Formats 4, 5 and 7: groups of up to four points on a linear axis over the first channel's range. The last
// word of a group holds the exponents of its points, four bits each.
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

// The source of masses.
enum class Masses { kPoints, kNumbers, kChannels, kChannelsThatAreThere, kLinearAxis };

struct Layout {
  Decoder decode = nullptr;
  Masses masses = Masses::kPoints;
  decltype(&DecodeRawMassesWithin<4, &PointKernels::unpack0>) decodeWithin = nullptr;
};

template <std::size_t kPointSize, PointKernels::Unpack PointKernels::*kUnpack>
constexpr Layout kRawMasses = {DecodeRawMasses<kPointSize, kUnpack>, Masses::kPoints,
                               DecodeRawMassesWithin<kPointSize, kUnpack>};

constexpr int kMixed = 6;

// By data format.
constexpr std::array<Layout, 15> kLayouts = {{
    kRawMasses<4, &PointKernels::unpack0>,
    {DecodePairs},
    {DecodeChannels<2, ListedIntensity2>, Masses::kChannels},
    {DecodeNumbered, Masses::kNumbers},
    {kDecodeGroupsOf4, Masses::kLinearAxis},
    {kDecodeGroupsOf2, Masses::kLinearAxis},
    {},  // kMixed
    {kDecodeGroupsOf2, Masses::kLinearAxis},
    kRawMasses<6, &PointKernels::unpack8>,
    kRawMasses<6, &PointKernels::unpack9>,
    {},
    {DecodeChannels<4, ListedIntensity11>, Masses::kChannelsThatAreThere},
    kRawMasses<8, &PointKernels::unpack12>,
    kRawMasses<12, &PointKernels::unpack13>,
    {DecodeChannels<12, ListedIntensity11>, Masses::kChannelsThatAreThere},
}};

// Format 6: deliberately, the last scan of the function is read as format 4, the others as format 3.
int LayoutOf(const FunctionRecord& function, std::size_t position) {
  if (function.dataFormat != kMixed) return function.dataFormat;
  return position + 1 == function.scanIndex.size() ? 4 : 3;
}

// The number of points that a scan of `declared` can have; no value when its mass list is unusable.
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

void FindPointsWithoutMass(const FunctionRecord& function, const ScanRoom& room, std::size_t count,
                           std::vector<std::size_t>& places) {
  const Masses masses = kLayouts[static_cast<std::size_t>(room.layout)].masses;
  const std::vector<float>& starts = function.startMasses;
  if (starts.empty() || !(starts[0] > 0)) return;
  const bool isOfList = masses == Masses::kChannelsThatAreThere;
  const bool lacksEnd = masses == Masses::kLinearAxis && !(function.endMasses[0] > 0);
  for (std::size_t i = 0; i < count && (isOfList || lacksEnd); ++i) {
    if (lacksEnd || !(starts[i] > 0)) places.push_back(i);
  }
}

PointCounts::PointCounts(const FunctionRecord& function)
    : function_(function), areDeclared_(HasOwnMasses(function.dataFormat)) {}

std::size_t PointCounts::Found(std::size_t scan) const {
  const std::optional<ScanRoom> room = RoomOf(function_, static_cast<int>(scan));
  return room ? room->points : 0;
}

DecodedPoints DecodeScan(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                         const PointArrays& points) {
  const std::size_t count = room.PointsIn(bytes.size());
  const ScanIndexEntry& entry = function.scanIndex[static_cast<std::size_t>(scan)];
  const Layout& layout = kLayouts[static_cast<std::size_t>(room.layout)];
  return {count, layout.decode({function, entry, room, bytes, count}, points)};
}

bool HasOwnMasses(int dataFormat) {
  const auto row = static_cast<std::size_t>(dataFormat);
  return row < kLayouts.size() && kLayouts[row].decode != nullptr && kLayouts[row].masses == Masses::kPoints;
}

bool DecodeWithin(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                  MassRange range, std::vector<double>& intensities) {
  const auto decode = kLayouts[static_cast<std::size_t>(room.layout)].decodeWithin;
  if (decode == nullptr) return false;
  intensities.clear();
  const ScanIndexEntry& entry = function.scanIndex[static_cast<std::size_t>(scan)];
  return decode({function, entry, room, bytes, room.PointsIn(bytes.size())}, range, intensities);
}

}  // namespace zrml::masslynx
