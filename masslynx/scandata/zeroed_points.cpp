#include "masslynx/scandata/zeroed_points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "masslynx/function_types.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/scan_decoder.h"

namespace zrml::masslynx {
namespace {

using platform::File;

constexpr std::uint64_t kNowhere = kNoZeros;

// Totals have 24 bits, and each point of a scan is rounded.
constexpr double kSameTotal = 1e-3;
// Without another proof, a scan that breaks off has lost more than the error of totals.
constexpr double kHalf = 0.5;

// How many bytes of a point define a mass that can occur; the following ones may be zero.
std::uint64_t BytesOfMeaning(int layout) {
  switch (layout) {
    case 8:
      return 5;
    case 13:
      return 8;
    case 14:
      return 4;
    default:
      return point_unit_format::UnitOf(layout).bytes;
  }
}

class TailSearch {
 public:
  TailSearch(const File& data, const FunctionRecord& function, std::uint64_t zeros)
      : data_(data), function_(function), zeros_(zeros), size_(data.Size()) {}

  std::optional<ZeroTail> Run() {
    ForEachScan([&](int scan, const ScanRoom& room) {
      const bool isZero = room.offset >= zeros_;
      if (!isZero && room.offset + room.bytes > zeros_) broken_ = Broken{scan, room};
      const bool hadPoints = EntryOf(scan).totalIntensity > 0 || HasOwnMasses(room.layout);
      if (isZero && hadPoints) begin_ = std::min(begin_, room.offset);
    });
    if (broken_) begin_ = std::min(begin_, CutIn(*broken_));
    return begin_ != kNowhere ? std::optional(CountScans()) : std::nullopt;
  }

 private:
  // A scan in which the zeros begin.
  struct Broken {
    int scan = 0;
    ScanRoom room;
  };

  const ScanIndexEntry& EntryOf(int scan) const {
    return function_.scanIndex[static_cast<std::size_t>(scan)];
  }

  // Of those that begin in the file and have points.
  template <class Visit>
  void ForEachScan(Visit visit) const {
    const bool isAbsorbance = function_.typeCode == kDadType;
    for (int scan = 0; scan < static_cast<int>(function_.scanIndex.size()); ++scan) {
      const auto room = isAbsorbance ? AbsorbanceRoomOf(function_, scan) : RoomOf(function_, scan);
      if (room && room->bytes > 0 && room->offset < size_) visit(scan, *room);
    }
  }

  // The end of the scan's sound points; nowhere when all are sound.
  std::uint64_t CutIn(const Broken& broken) const {
    const ScanRoom& room = broken.room;
    const std::uint64_t unit = point_unit_format::UnitOf(room.layout).bytes;
    const std::uint64_t size = zeros_ - room.offset;
    const std::uint64_t whole = size / unit * unit;
    const std::uint64_t end = whole + (size - whole >= BytesOfMeaning(room.layout) ? unit : 0);
    const std::uint64_t behind =
        whole + (size > whole ? unit : 0);  // a point that the zeros cut into proves nothing
    const bool isProven = begin_ != kNowhere;
    if (HasOwnMasses(room.layout))
      return (isProven ? end : behind) < BytesIn(room) ? room.offset + end : kNowhere;
    const double total = EntryOf(broken.scan).totalIntensity;
    const double least = isProven || AreTotalsSums(broken.scan) ? total * (1 - kSameTotal) : total * kHalf;
    return total > 0 && SumOf(broken) < least ? room.offset + end : kNowhere;
  }

  // Whether the scans before this one add up to their totals.
  bool AreTotalsSums(int scan) const {
    constexpr int kEnough = 3;
    int sums = 0;
    for (int before = scan - 1; before >= 0 && sums < kEnough; --before) {
      const double total = EntryOf(before).totalIntensity;
      const std::optional<ScanRoom> room = RoomOf(function_, before);
      if (!room || !(total > 0)) continue;
      if (!(std::abs(SumOf({before, *room}) - total) <= total * kSameTotal)) return false;
      ++sums;
    }
    return sums > 0;
  }

  std::size_t BytesIn(const ScanRoom& room) const {
    return static_cast<std::size_t>(std::min<std::uint64_t>(room.bytes, size_ - room.offset));
  }

  double SumOf(const Broken& broken) const {
    std::vector<std::byte> bytes(BytesIn(broken.room));
    bytes.resize(data_.ReadAt(broken.room.offset, bytes));
    std::vector<double> masses(broken.room.PointsIn(bytes.size()));
    std::vector<double> intensities(masses.size());
    DecodeScan(function_, broken.scan, broken.room, bytes, {masses.data(), intensities.data()});
    return std::accumulate(intensities.begin(), intensities.end(), 0.0);
  }

  ZeroTail CountScans() const {
    ZeroTail tail = {.begin = begin_};
    ForEachScan([&](int scan, const ScanRoom& room) {
      if (room.offset + room.bytes <= begin_) return;
      tail.scans.Add(static_cast<std::uint64_t>(scan) + 1);
    });
    return tail;
  }

  const File& data_;
  const FunctionRecord& function_;
  std::uint64_t zeros_;  // where they begin
  std::uint64_t size_;
  std::uint64_t begin_ = kNowhere;  // of the lost bytes
  std::optional<Broken> broken_;
};

// Whether the file begins with zeros, too, and neither masses nor totals say that there was more: then
// nothing can be proved, and the file may be large.
bool IsBlank(const File& data, const FunctionRecord& function) {
  const std::optional<ScanRoom> room =
      function.typeCode == kDadType ? AbsorbanceRoomOf(function, 0) : RoomOf(function, 0);
  if (room && HasOwnMasses(room->layout)) return false;
  std::array<std::byte, 512> front{};
  data.ReadAt(0, front);
  return AreZeros(front) && std::none_of(function.scanIndex.begin(), function.scanIndex.end(),
                                         [](const ScanIndexEntry& scan) { return scan.totalIntensity > 0; });
}

// Whether the last significant byte of a mass is zero in any of the points, as it is in few sound ones: a
// quick check, and usually enough.
bool MayHaveZeros(Bytes bytes, std::size_t size, std::size_t meaning) {
  unsigned zeros = 0;
  for (std::size_t at = meaning - 1; at < bytes.size(); at += size)
    zeros += bytes[at] == std::byte{0} ? 1U : 0U;
  return zeros > 0;
}

// Points of zeros, and those that the zeros cut into.
void FindZeros(const StoredPoints& stored, std::vector<std::size_t>& places) {
  const ScanRoom& room = stored.room;
  const Bytes bytes = stored.bytes;
  const std::span<const double> intensities = stored.intensities;
  if (!ChosenKernels().hasZero(intensities.data(), intensities.size())) return;
  const point_unit_format::PointUnit unit = point_unit_format::UnitOf(room.layout);
  const auto size = static_cast<std::size_t>(unit.bytes);
  const auto points = static_cast<std::size_t>(unit.points);
  const auto isZero = [&](std::size_t at) {
    return intensities[at * points] == 0 && AreZeros(bytes.subspan(at * size, size));
  };
  const std::size_t count = bytes.size() / size;
  const std::size_t meaning = static_cast<std::size_t>(BytesOfMeaning(room.layout));
  // Zeros ahead of the scan, too, may reach into its first point.
  bool isBeforeZero = intensities.front() == 0 && stored.masses.front() < stored.lowest;
  if (!isBeforeZero && !MayHaveZeros(bytes, size, meaning)) return;
  for (std::size_t at = 0; at < count && at * points < intensities.size(); ++at) {
    const bool isAtZero = isZero(at);
    const bool isCutBehind =
        isAtZero && !isBeforeZero && at > 0 && bytes[(at - 1) * size + meaning - 1] == std::byte{0};
    const bool isCutBefore = !isAtZero && isBeforeZero && bytes[at * size] == std::byte{0};
    const std::size_t first = (at - (isCutBehind ? 1 : 0)) * points;
    const std::size_t last = std::min((at + (isAtZero || isCutBefore ? 1 : 0)) * points, intensities.size());
    for (std::size_t place = first; place < last; ++place) {
      if (places.empty() || places.back() < place) places.push_back(place);
    }
    isBeforeZero = isAtZero;
  }
}

// The bytes of the highest bits of a mass that can occur, in its unit, and the lowest byte of the mass.
struct MassBytes {
  std::size_t low = 0;
  std::size_t high = 0;
  std::size_t end = 0;
};

MassBytes MassBytesOf(int layout, bool isSecond) {
  switch (layout) {
    case 0:
      return {1, 3, 4};
    case 1:
      return isSecond ? MassBytes{7, 9, 10} : MassBytes{4, 6, 7};
    case 8:
      return {2, 4, 6};
    case 9:
      return {2, 5, 6};
    default:
      return {4, 7, 8};
  }
}

// Whether the mass at a place is less than it can be there.
bool IsTooLow(const StoredPoints& stored, std::size_t place) {
  const std::span<const double> before = stored.masses.first(place);
  const bool doAscend = stored.isInOrder && place > 0 && std::is_sorted(before.begin(), before.end());
  return stored.masses[place] < (doAscend ? before.back() : stored.lowest);
}

// Zeros that begin inside the last point, or pair of points, take the highest bits of its mass, which is less
// than that of the points before then. Sound masses may have such zeros, too, but they ascend.
void FindBrokenEnd(const StoredPoints& stored, std::vector<std::size_t>& places) {
  const std::size_t count = stored.intensities.size();
  if (count == 0 || (!places.empty() && places.back() + 1 == count)) return;
  const point_unit_format::PointUnit unit = point_unit_format::UnitOf(stored.room.layout);
  const auto points = static_cast<std::size_t>(unit.points);
  const std::size_t before = (count - 1) / points * points;  // of its unit
  const Bytes bytes = stored.bytes.subspan(before / points * static_cast<std::size_t>(unit.bytes));
  std::size_t sound = count;
  for (; sound > before; --sound) {
    const std::size_t place = sound - 1;
    const MassBytes mass = MassBytesOf(stored.room.layout, place > before);
    if (!AreZeros(bytes.subspan(mass.high, mass.end - mass.high))) break;
    const bool isZero = AreZeros(bytes.subspan(mass.low, mass.end - mass.low));
    if (!isZero && !IsTooLow(stored, place)) break;
  }
  for (; sound < count; ++sound) places.push_back(sound);
}

// Of absorbance, where few zeros show: they take the highest bits of a wavelength, which is less than the one
// before then, and perhaps the front of the next point or pair. No first wavelength is less than 1 nm.
void FindCutWavelengths(const StoredPoints& stored, std::vector<std::size_t>& places) {
  const std::size_t count = stored.masses.size();
  const point_unit_format::PointUnit unit = point_unit_format::UnitOf(stored.room.layout);
  const auto points = static_cast<std::size_t>(unit.points);
  double before = 1;
  bool isCutBefore = count > 0 && stored.intensities[0] == 0 && stored.masses[0] < before;
  for (std::size_t first = 0; first < count; first += points) {
    const Bytes bytes = stored.bytes.subspan(first / points * static_cast<std::size_t>(unit.bytes));
    bool isCut = isCutBefore && bytes[0] == std::byte{0};
    for (std::size_t place = first; place < std::min(first + points, count); ++place) {
      const MassBytes mass = MassBytesOf(stored.room.layout, place > first);
      const bool isLow =
          AreZeros(bytes.subspan(mass.high, mass.end - mass.high)) &&
          (stored.masses[place] < before || AreZeros(bytes.subspan(mass.low, mass.end - mass.low)));
      isCut = isCut || isLow;
      isCutBefore = isLow;
      isCut ? places.push_back(place) : void(before = stored.masses[place]);
    }
  }
}

}  // namespace

std::uint64_t BeginOfZeros(const File& file) {
  std::vector<std::byte> block;
  std::uint64_t end = file.Size();
  for (std::size_t size = 512; end > 0; size = std::size_t{1} << 18) {
    block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, end)));
    if (file.ReadAt(end - block.size(), block) != block.size()) return kNoZeros;
    const auto last =
        std::find_if(block.rbegin(), block.rend(), [](std::byte byte) { return byte != std::byte{0}; });
    end -= static_cast<std::uint64_t>(last - block.rbegin());
    if (last != block.rend()) break;
  }
  return end;
}

std::optional<ZeroTail> FindZeroTail(const File& data, const FunctionRecord& function) {
  if (function.hasMobilityData || IsBlank(data, function)) return std::nullopt;
  const std::uint64_t begin = BeginOfZeros(data);
  if (begin >= data.Size()) return std::nullopt;
  return TailSearch(data, function, begin).Run();
}

void FindZeroedPoints(const StoredPoints& stored, std::vector<std::size_t>& places) {
  places.clear();
  if (!HasOwnMasses(stored.room.layout)) return;
  if (stored.isAbsorbance) return FindCutWavelengths(stored, places);
  FindZeros(stored, places);
  FindBrokenEnd(stored, places);
}

}  // namespace zrml::masslynx
