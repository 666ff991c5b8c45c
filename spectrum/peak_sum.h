// Sums of many peak lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zrml {

/// Sums peak lists one after the other: the same bits as AddSpectrum(true, `width`, list, sum) gives for one
/// after the other, faster. Each addition merges all peaks of the sum anew, but far from what is added most
/// are left as they are: only the others are visited. That holds as long as the lists are ordinary, with
/// positive masses that ascend and intensities that are not negative; from the first one on that is not, all
/// peaks are visited each time.
class PeakSum {
 public:
  using Values = std::span<const double>;

  /// Starts with the first list as it is. `width` is in mass units and above 0. Masses and intensities are
  /// equal in number, here and in Add().
  PeakSum(double width, Values masses, Values intensities);

  /// Whether that changed the sum; if not, the same list will not change it either.
  bool Add(Values masses, Values intensities);

  Values Masses() const { return Values(sum_.masses).first(sum_.count); }
  Values Intensities() const { return Values(sum_.intensities).first(sum_.count); }

  /// What the additions have cost so far, in visits of a peak. Peaks that are sorted count more, those that
  /// are only copied less.
  std::size_t Work() const { return work_; }

 private:
  struct Peaks {
    std::vector<double> masses;  // room for more than there are, as in each of these
    std::vector<double> intensities;
    std::size_t count = 0;
    std::vector<std::uint32_t> unsettled;  // indices of those that the next merge may change, ascending
    std::size_t unsettledCount = 0;

    void MakeRoom(std::size_t most);
    void Append(double mass, double intensity);
    void Append(const Peaks& other, std::size_t first, std::size_t last);
    void MarkUnsettled(std::size_t first);
  };

  bool StaysOrdinary(Values masses, Values intensities);
  std::size_t FirstNear(std::size_t first, std::size_t last, double mass) const;
  void MergeGroup(std::size_t first);
  void MergeSeveral(std::size_t first);

  double half_;
  double reach_;
  double heaviest_ = 0;
  std::size_t points_ = 0;
  std::size_t work_ = 0;
  Peaks sum_;
  Peaks next_;
  std::vector<std::int32_t> order_;
};

}  // namespace zrml
