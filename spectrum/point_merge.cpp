#include "spectrum/point_merge.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <tuple>

namespace zrml {
namespace {

// One optional array of the merged spectrum and of the two that go into it.
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

class PointMerger {
 public:
  PointMerger(const CZRMassSpectrum& source, const CZRMassSpectrum& target, CZRMassSpectrum& merged)
      : source_{source.GetMasses(), source.GetIntensities(), source.UsablePoints()},
        target_{target.GetMasses(), target.GetIntensities(), target.UsablePoints()},
        masses_(merged.GetMasses()),
        intensities_(merged.GetIntensities()),
        targetOwnsData_(target.OwnsPointData()),
        data_{merged.GetPointData(), target.GetPointData(),
              targetOwnsData_ ? nullptr : source.GetPointData()},
        columns_(
            Column<std::uint8_t>{merged.GetPointFlags(), target.GetPointFlags(), source.GetPointFlags()},
            Column<std::int32_t>{merged.GetPointValues(), target.GetPointValues(), source.GetPointValues()},
            Column<std::uint8_t>{merged.GetPointMarks(), target.GetPointMarks(), source.GetPointMarks()}) {}

  // The number of points written.
  std::size_t Run(bool sumEqualMasses) {
    while (!target_.AtEnd() && !source_.AtEnd()) {
      const double mass = source_.Mass();
      if (sumEqualMasses && target_.Mass() == mass) {
        TakeBoth();
      } else {
        Take(target_.Mass() > mass);
      }
    }
    while (!target_.AtEnd()) Take(false);
    while (!source_.AtEnd()) Take(true);
    return written_;
  }

 private:
  struct List {
    const double* masses;
    const double* intensities;
    std::size_t count;
    std::size_t next = 0;

    bool AtEnd() const { return next == count; }
    double Mass() const { return masses[next]; }
    double Intensity() const { return intensities[next]; }
  };

  List& Of(bool source) { return source ? source_ : target_; }

  void Write(bool fromSource, bool dataFromSource, double intensity) {
    const List& list = Of(fromSource);
    masses_[written_] = list.Mass();
    intensities_[written_] = intensity;
    std::apply([&](const auto&... column) { (column.Copy(written_, fromSource, list.next), ...); }, columns_);
    data_.Copy(written_, dataFromSource, Of(dataFromSource).next);
    ++written_;
  }

  void Take(bool fromSource) {
    List& list = Of(fromSource);
    Write(fromSource, fromSource, list.Intensity());
    ++list.next;
  }

  void TakeBoth() {
    const bool fromSource = !(target_.Intensity() > source_.Intensity());
    Write(fromSource, fromSource && !targetOwnsData_, target_.Intensity() + source_.Intensity());
    ++target_.next;
    ++source_.next;
  }

  List source_;
  List target_;
  double* masses_;
  double* intensities_;
  bool targetOwnsData_;
  Column<void*> data_;
  std::tuple<Column<std::uint8_t>, Column<std::int32_t>, Column<std::uint8_t>> columns_;
  std::size_t written_ = 0;
};

}  // namespace

CZRMassSpectrum MergePoints(const CZRMassSpectrum& source, const CZRMassSpectrum& target,
                            bool sumEqualMasses) {
  constexpr std::size_t kMostPoints = std::numeric_limits<int>::max();
  const std::size_t count = source.UsablePoints() + target.UsablePoints();
  if (count > kMostPoints) throw std::bad_alloc();
  CZRMassSpectrum merged;
  merged.Resize(static_cast<int>(count), target.HasPointFlags(), target.HasPointData(),
                target.HasPointValues(), target.HasPointMarks());
  merged.SetSize(static_cast<int>(PointMerger(source, target, merged).Run(sumEqualMasses)));
  return merged;
}

}  // namespace zrml
