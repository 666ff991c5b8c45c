#include "spectrum/profile_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace zrml {
namespace {

// Maps step numbers, from 0, to masses, between two masses or outwards from one: evenly in a law's
// coordinate, or with a step that changes evenly from one end to the other.
class Lattice {
 public:
  static Lattice Even(const ScanLawCoordinate& coordinate, double from, double step) {
    Lattice lattice;
    lattice.coordinate_ = &coordinate;
    lattice.origin_ = from;
    lattice.scale_ = step;
    return lattice;
  }

  // `count` steps from a to b; firstStep and lastStep give the change of the steps.
  static Lattice Changing(double a, double b, double count, double firstStep, double lastStep) {
    Lattice lattice;
    lattice.origin_ = a;
    lattice.scale_ = b - a;
    lattice.count_ = count;
    lattice.change_ = (lastStep - firstStep) / (firstStep + lastStep);
    return lattice;
  }

  double Mass(double number) const {
    if (coordinate_ != nullptr) return coordinate_->toMass(origin_ + number * scale_);
    const double u = number / count_;
    return origin_ + scale_ * (u + change_ * u * (u - 1));
  }

  // The number, whole or not, of the step that ends at `mass`.
  double Number(double mass) const {
    if (coordinate_ != nullptr) return (coordinate_->fromMass(mass) - origin_) / scale_;
    const double t = (mass - origin_) / scale_;
    const double linear = 1 - change_;
    return count_ * 2 * t / (linear + std::sqrt(linear * linear + 4 * change_ * t));
  }

 private:
  const ScanLawCoordinate* coordinate_ = nullptr;
  double origin_ = 0;
  double scale_ = 0;
  double count_ = 0;
  double change_ = 0;
};

// Points to be made: the ends of steps 1 to `count`. The ends of a gap are samples, not lattice points.
struct Stretch {
  Lattice lattice;
  double count;  // may be beyond any integer

  std::size_t WholeCount() const { return static_cast<std::size_t>(count); }
  double MassOf(std::size_t number) const { return lattice.Mass(static_cast<double>(number)); }
  bool IsMade(double number) const { return 1 <= number && number <= count; }
};

// The sampling of a target, from its law and its step model.
class Sampling {
 public:
  Sampling(std::span<const double> masses, const ScanLawHolder& law, const SamplingStepModel& model)
      : law_(law), model_(model) {
    if (law_) coordinate_ = CoordinateOfScanLaw(law_->Type());
    if (coordinate_ != nullptr) step_ = MeanStep(masses);
  }

  // A sample, with the values that both of its neighbours need.
  struct Sample {
    double mass;
    bool byLaw;
    double coordinate;  // when byLaw
  };

  Sample At(double mass) const {
    const bool byLaw = mass > 0 && LawHolds(mass);
    return {mass, byLaw, byLaw ? coordinate_->fromMass(mass) : 0};
  }

  // The stretch between two neighbouring samples, unless they are one step apart.
  std::optional<Stretch> Gap(const Sample& a, const Sample& b) const {
    if (!(a.mass < b.mass)) return std::nullopt;
    if (a.byLaw && b.byLaw) {
      const double width = b.coordinate - a.coordinate;
      if (!AreSeveral(width / step_)) return std::nullopt;
      const double steps = WholeSteps(width / step_);
      return Stretch{Lattice::Even(*coordinate_, a.coordinate, width / steps), steps - 1};
    }
    const double firstStep = ModelStep(a.mass);
    const double lastStep = ModelStep(b.mass);
    const double width = (b.mass - a.mass) / (0.5 * (firstStep + lastStep));
    if (!AreSeveral(width)) return std::nullopt;
    const double steps = WholeSteps(width);
    return Stretch{Lattice::Changing(a.mass, b.mass, steps, firstStep, lastStep), steps - 1};
  }

  // The stretch from the sample at `from` outwards to the first point at `to` or beyond.
  Stretch Extension(double from, double to) const {
    const double sign = to > from ? 1 : -1;
    const bool byLaw = from > 0 && LawHolds(from);
    const ScanLawCoordinate& coordinate =
        byLaw ? *coordinate_ : *CoordinateOfScanLaw(CZRMSScanLaw::kConstant);
    const double step = byLaw ? step_ : ModelStep(from);
    const Lattice lattice = Lattice::Even(coordinate, coordinate.fromMass(from), sign * step);
    double steps = std::max(std::ceil(lattice.Number(to)), 1.0);
    if (sign * (to - lattice.Mass(steps)) > 0) ++steps;
    return {lattice, steps};
  }

 private:
  static double WholeSteps(double steps) { return std::floor(steps + 0.5); }
  // Whether there are at least two whole steps; most neighbours are one step apart.
  static bool AreSeveral(double steps) { return steps + 0.5 >= 2; }

  double Clamped(double mass) const {
    return model_.lowMass <= model_.highMass ? std::clamp(mass, model_.lowMass, model_.highMass) : mass;
  }

  // Beyond the fitted range, where a polynomial diverges, the step at its end is used. A curve at its floor
  // of half the smallest step says nothing; the smallest step is used instead.
  double ModelStep(double mass) const {
    const double clamped = Clamped(mass);
    return MeanOf(StepBelow(model_, clamped), StepAbove(model_, clamped));
  }

  double MeanOf(double below, double above) const {
    const double step = 0.5 * (below + above);
    return step > model_.minHalfStep ? step : 2 * model_.minHalfStep;
  }

  // Whether the law's step is within a factor of 2 of the model's, both where the model was fitted. A model
  // without a value does not object.
  bool LawHolds(double mass) const {
    if (!(step_ > 0) || !std::isfinite(step_)) return false;
    const double clamped = Clamped(mass);
    const double below = StepBelow(model_, clamped);
    const double above = StepAbove(model_, clamped);
    const bool isSilent = !(above > model_.minHalfStep && below > model_.minHalfStep);
    if (isSilent) return true;
    const double ratio = (NextMass(law_, clamped) - clamped) / MeanOf(below, above);
    return 0.5 <= ratio && ratio <= 2;
  }

  // The law's step comes from one pair of samples and is good to 1 %. The mean over all neighbours one step
  // apart is good to the last digits, so a long gap gets the right number of points.
  double MeanStep(std::span<const double> masses) const {
    const double middle = masses[masses.size() / 2];
    const double detected = coordinate_->fromMass(NextMass(law_, middle)) - coordinate_->fromMass(middle);
    double sum = 0;
    double count = 0;
    double next = coordinate_->fromMass(masses.front());
    for (std::size_t i = 1; i < masses.size(); ++i) {
      const double last = std::exchange(next, coordinate_->fromMass(masses[i]));
      const double step = next - last;
      if (!(0.5 * detected < step && step < 1.5 * detected)) continue;
      sum += step;
      ++count;
    }
    return count > 0 ? sum / count : detected;
  }

  const ScanLawHolder& law_;
  const SamplingStepModel& model_;
  const ScanLawCoordinate* coordinate_ = nullptr;
  double step_ = 0;  // in the law's coordinate; 0 without a law
};

// The lowest and the highest mass that the grid has to cover.
struct MassRange {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

MassRange PositiveRange(std::span<const double> masses) {
  MassRange range;
  for (const double mass : masses) {
    if (!(mass > 0) || !std::isfinite(mass)) continue;
    range.low = std::min(range.low, mass);
    range.high = std::max(range.high, mass);
  }
  return range;
}

class GridBuilder {
 public:
  GridBuilder(const ProfileView& target, const ProfileView& source, const Sampling& sampling)
      : target_(target), source_(source), sampling_(sampling), range_(PositiveRange(source.masses)) {}

  ProfileGrid Build(std::size_t mostPoints) {
    FindGaps();
    const double dense = CountDense();
    everywhere_ = dense <= static_cast<double>(mostPoints);
    const std::size_t around = target_.masses.size() + 2 * source_.masses.size() + 2;
    const std::size_t room = everywhere_ ? static_cast<std::size_t>(dense) : around;
    if (room > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
    grid_.masses.reserve(room);
    grid_.intensities.reserve(room);
    if (ExtendsBelow()) AddBelow(sampling_.Extension(target_.masses.front(), range_.low));
    AddSamples();
    if (ExtendsAbove()) AddAbove(sampling_.Extension(target_.masses.back(), range_.high));
    return std::move(grid_);
  }

 private:
  bool ExtendsBelow() const { return range_.low < target_.masses.front(); }
  bool ExtendsAbove() const { return range_.high > target_.masses.back(); }

  // A stretch between sample number `after` and the next.
  struct Gap {
    std::size_t after;
    Stretch stretch;
  };

  void FindGaps() {
    Sampling::Sample last = sampling_.At(target_.masses.front());
    for (std::size_t i = 1; i < target_.masses.size(); ++i) {
      const Sampling::Sample next = sampling_.At(target_.masses[i]);
      if (const auto stretch = sampling_.Gap(last, next)) gaps_.push_back({i - 1, *stretch});
      last = next;
    }
  }

  double CountDense() const {
    const std::span<const double> masses = target_.masses;
    double count = static_cast<double>(masses.size());
    if (ExtendsBelow()) count += sampling_.Extension(masses.front(), range_.low).count;
    for (const Gap& gap : gaps_) count += gap.stretch.count;
    if (ExtendsAbove()) count += sampling_.Extension(masses.back(), range_.high).count + 1;
    return count;
  }

  void Put(double mass, double intensity) {
    grid_.masses.push_back(mass);
    grid_.intensities.push_back(intensity);
  }

  // Makes a point if it lies above the last one and below `limit`.
  void Make(double mass, double limit) {
    if (mass < limit && (grid_.masses.empty() || mass > grid_.masses.back())) Put(mass, 0);
  }

  void AddBelow(const Stretch& stretch) {
    const double front = target_.masses.front();
    if (everywhere_) {
      for (std::size_t number = stretch.WholeCount(); number >= 1; --number)
        Make(stretch.MassOf(number), front);
    } else {
      AddAround(stretch, NotBelow(range_.low), NotBelow(front), front);
    }
    grid_.firstIsProvisional = !grid_.masses.empty() && grid_.masses.front() < range_.low;
  }

  void AddSamples() {
    std::size_t next = 0;
    for (const Gap& gap : gaps_) {
      PutSamples(next, gap.after + 1);
      next = gap.after + 1;
      AddGap(gap.stretch, target_.masses[gap.after], target_.masses[next]);
    }
    PutSamples(next, target_.masses.size());
  }

  void PutSamples(std::size_t begin, std::size_t end) {
    const auto append = [=](std::span<const double> from, std::vector<double>& to) {
      const auto samples = from.subspan(begin, end - begin);
      to.insert(to.end(), samples.begin(), samples.end());
    };
    append(target_.masses, grid_.masses);
    append(target_.intensities, grid_.intensities);
  }

  void AddGap(const Stretch& stretch, double a, double b) {
    if (everywhere_) {
      for (std::size_t number = 1; number <= stretch.WholeCount(); ++number) Make(stretch.MassOf(number), b);
    } else {
      AddAround(stretch, Above(a), NotBelow(b), b);
    }
  }

  // Beyond the pole of a reciprocal law there is no mass; the last point is then the source's end itself.
  void AddAbove(const Stretch& stretch) {
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    if (everywhere_) {
      for (std::size_t number = 1; number <= stretch.WholeCount(); ++number)
        Make(stretch.MassOf(number), kNoLimit);
    } else {
      AddAround(stretch, Above(target_.masses.back()), Above(range_.high), kNoLimit);
    }
    if (grid_.masses.back() < range_.high) Make(range_.high, kNoLimit);
  }

  // Indices of the first source sample that is not below, or above, a mass.
  std::size_t NotBelow(double mass) const {
    const std::span<const double> masses = source_.masses;
    return static_cast<std::size_t>(std::lower_bound(masses.begin(), masses.end(), mass) - masses.begin());
  }
  std::size_t Above(double mass) const {
    const std::span<const double> masses = source_.masses;
    return static_cast<std::size_t>(std::upper_bound(masses.begin(), masses.end(), mass) - masses.begin());
  }

  // The points of the stretch that enclose those source samples from `begin` to `end` that have intensity or
  // are the source's ends.
  void AddAround(const Stretch& stretch, std::size_t begin, std::size_t end, double limit) {
    for (std::size_t i = begin; i < end; ++i) {
      const double mass = source_.masses[i];
      const bool isEnd = mass == range_.low || mass == range_.high;
      if (source_.intensities[i] > 0 || isEnd) MakeAround(stretch, mass, limit);
    }
  }

  void MakeAround(const Stretch& stretch, double mass, double limit) {
    const Lattice& lattice = stretch.lattice;
    const double number = std::floor(lattice.Number(mass));
    for (const double shift : {0.0, -1.0, 1.0}) {  // rounding may be off by one step
      double low = number + shift;
      double high = low + 1;
      if (lattice.Mass(low) > lattice.Mass(high)) std::swap(low, high);
      if (!Encloses(lattice.Mass(low), mass, lattice.Mass(high))) continue;
      if (stretch.IsMade(low)) Make(lattice.Mass(low), limit);
      if (stretch.IsMade(high)) Make(lattice.Mass(high), limit);
      return;
    }
    Make(mass, limit);  // steps too fine to distinguish, or the law's pole: the sample itself
  }

  static bool Encloses(double low, double mass, double high) {
    return low <= mass && mass <= high && low < high && std::isfinite(high);
  }

  const ProfileView& target_;
  const ProfileView& source_;
  const Sampling& sampling_;
  MassRange range_;
  std::vector<Gap> gaps_;
  bool everywhere_ = true;
  ProfileGrid grid_;
};

}  // namespace

ProfileGrid BuildProfileGrid(const ProfileView& target, const ProfileView& source, const ScanLawHolder& law,
                             const SamplingStepModel& model, std::size_t mostPoints) {
  const Sampling sampling(target.masses, law, model);
  return GridBuilder(target, source, sampling).Build(mostPoints);
}

}  // namespace zrml
