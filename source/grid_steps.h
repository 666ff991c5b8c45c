// The steps of the grid that several profiles may share. Profiles may lack any points of it, so a step is
// known only where one of them has neighbours.
#pragma once

#include <cstddef>
#include <map>
#include <span>

namespace zrml::source {

/// First all profiles are learned from, then the steps are settled, then they are asked for.
class GridSteps {
 public:
  /// Masses ascend.
  void Learn(std::span<const double> masses);

  /// The steps of instruments grow with m/z, by its square at most. Where points are too rare to be
  /// neighbours, their distances are more than that allows, and the nearest known step counts instead.
  void Settle();

  /// The least step that the grid may have around this mass; 0 where nothing is known.
  double At(double mass) const;

 private:
  struct Bounds {
    double most;
    double least;
  };

  void Note(int place, double step);

  std::map<int, Bounds> bounds_;  // by place on a logarithmic scale
};

/// How many steps are as long as the one before: many in a profile of peaks, few in one of single ions.
std::size_t CountEvenSteps(std::span<const double> masses);

}  // namespace zrml::source
