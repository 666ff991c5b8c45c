#include "spectrum/point_merge.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <tuple>

namespace zrml {
namespace {

// One optional array of the merged spectrum and of its two sources.
template <class T>
struct Column {
  T* merged;
  const T* target;
  const T* source;

  void Copy(std::size_t to, bool fromSource, std::size_t from) const {
    if (merged == nullptr) return;
    const T* const values = fromSource ? source : target;
    merged[to] = values != nullptr ? values[from] : T{};
  }
};

struct PointList {
  explicit PointList(const CZRMassSpectrum& spectrum)
      : masses(spectrum.GetMasses()),
        intensities(spectrum.GetIntensities()),
        count(spectrum.UsablePoints()) {}

  const double* masses;
  const double* intensities;
  std::size_t count;
};

// Calls one of the three for each point of the merged list, in order, with the indices of its source points.
template <class FromTarget, class FromSource, class FromBoth>
void Walk(const PointList& source, const PointList& target, bool sumEqualMasses, FromTarget fromTarget,
          FromSource fromSource, FromBoth fromBoth) {
  std::size_t s = 0;
  std::size_t t = 0;
  while (t < target.count && s < source.count) {
    if (sumEqualMasses && target.masses[t] == source.masses[s]) {
      fromBoth(t++, s++);
    } else if (target.masses[t] > source.masses[s]) {
      fromSource(s++);
    } else {
      fromTarget(t++);
    }
  }
  while (t < target.count) fromTarget(t++);
  while (s < source.count) fromSource(s++);
}

std::size_t MergedCount(const PointList& source, const PointList& target, bool sumEqualMasses) {
  std::size_t count = 0;
  const auto one = [&](std::size_t) { ++count; };
  Walk(source, target, sumEqualMasses, one, one, [&](std::size_t, std::size_t) { ++count; });
  return count;
}

void WriteMasses(const PointList& source, const PointList& target, bool sumEqualMasses,
                 CZRMassSpectrum& merged) {
  double* masses = merged.GetMasses();
  double* intensities = merged.GetIntensities();
  const auto write = [&](double mass, double intensity) {
    *masses++ = mass;
    *intensities++ = intensity;
  };
  Walk(
      source, target, sumEqualMasses, [&](std::size_t t) { write(target.masses[t], target.intensities[t]); },
      [&](std::size_t s) { write(source.masses[s], source.intensities[s]); },
      [&](std::size_t t, std::size_t s) {
        // The mass of the stronger one: 0.0 and -0.0 are equal.
        const bool isTargetStronger = target.intensities[t] > source.intensities[s];
        write(isTargetStronger ? target.masses[t] : source.masses[s],
              target.intensities[t] + source.intensities[s]);
      });
}

void WriteColumns(const CZRMassSpectrum& source, const CZRMassSpectrum& target, bool sumEqualMasses,
                  CZRMassSpectrum& merged) {
  const bool targetOwnsData = target.OwnsPointData();
  const Column<void*> data{merged.GetPointData(), target.GetPointData(),
                           targetOwnsData ? nullptr : source.GetPointData()};
  const std::tuple columns(
      Column<std::uint8_t>{merged.GetPointFlags(), target.GetPointFlags(), source.GetPointFlags()},
      Column<std::int32_t>{merged.GetPointValues(), target.GetPointValues(), source.GetPointValues()},
      Column<std::uint8_t>{merged.GetPointMarks(), target.GetPointMarks(), source.GetPointMarks()});
  const PointList sourcePoints(source);
  const PointList targetPoints(target);
  std::size_t written = 0;
  const auto copy = [&](bool fromSource, std::size_t from) {
    std::apply([&](const auto&... column) { (column.Copy(written, fromSource, from), ...); }, columns);
  };
  const auto take = [&](bool fromSource, std::size_t from) {
    copy(fromSource, from);
    data.Copy(written++, fromSource, from);
  };
  Walk(
      sourcePoints, targetPoints, sumEqualMasses, [&](std::size_t t) { take(false, t); },
      [&](std::size_t s) { take(true, s); },
      [&](std::size_t t, std::size_t s) {
        const bool fromSource = !(targetPoints.intensities[t] > sourcePoints.intensities[s]);
        const bool dataFromSource = fromSource && !targetOwnsData;
        copy(fromSource, fromSource ? s : t);
        data.Copy(written++, dataFromSource, dataFromSource ? s : t);
      });
}

}  // namespace

CZRMassSpectrum MergePoints(const CZRMassSpectrum& source, const CZRMassSpectrum& target,
                            bool sumEqualMasses) {
  constexpr std::size_t kMostPoints = std::numeric_limits<int>::max();
  const PointList sourcePoints(source);
  const PointList targetPoints(target);
  if (sourcePoints.count + targetPoints.count > kMostPoints) throw std::bad_alloc();
  // Counted first: room for all points of both costs more than a second pass over the masses.
  const std::size_t count = MergedCount(sourcePoints, targetPoints, sumEqualMasses);
  CZRMassSpectrum merged;
  merged.Resize(static_cast<int>(count), target.HasPointFlags(), target.HasPointData(),
                target.HasPointValues(), target.HasPointMarks());
  WriteMasses(sourcePoints, targetPoints, sumEqualMasses, merged);
  const bool hasColumns =
      target.HasPointFlags() || target.HasPointData() || target.HasPointValues() || target.HasPointMarks();
  if (hasColumns) WriteColumns(source, target, sumEqualMasses, merged);
  return merged;
}

}  // namespace zrml
