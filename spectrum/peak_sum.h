// Sums of many peak lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zrml {

/// Sums peak lists one after the other: the same bits as AddSpectrum(true, `width`, list, sum) gives for one
/// after the other, faster. Each addition merges all peaks of the sum anew, but far from what is added most
/// are left as they are: only the others are visited. That holds as long as the lists are ordinary: masses
/// ascend from 1e-100 on, intensities are 0 or from 1e-200 to 1e200, and there are not so many points of so
/// high masses that rounding could matter (for a width of 0.01 that takes a product of 2 * 10^10). From the
/// first list on that is not, all peaks are visited each time.
class PeakSum {
 public:
  using Values = std::span<const double>;

  /// Starts with the first list as it is. `width` is in mass units and above 0. Masses and intensities are
  /// equal in number, here and in Add(), and in all lists together there are fewer than 2^31.
  PeakSum(double width, Values masses, Values intensities);

  /// Whether that changed the sum; if not, the same list will not change it either. When memory runs out, the
  /// sum is as it was.
  bool Add(Values masses, Values intensities);

  /// Valid until the next addition.
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

    void Reset(std::size_t room);
    void Append(double mass, double intensity);
    void Append(const Peaks& other, std::size_t first, std::size_t last);
    void MarkUnsettled(std::size_t first);
  };

  bool StaysOrdinary(Values masses, Values intensities);
  std::size_t FirstNear(std::size_t first, std::size_t last, double mass) const;
  void MergeGroup(std::size_t first);
  void MergeSeveral(std::size_t first);
  bool IsAsBefore(std::size_t first, std::size_t oldFirst, std::size_t oldLast) const;

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
