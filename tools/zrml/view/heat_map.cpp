#include "tools/zrml/view/heat_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zrml::view {
namespace {

constexpr double kNothing = -std::numeric_limits<double>::infinity();
constexpr double kDecades = 4;
constexpr double kSteps = 254;

struct Cells {
  int first = 0;
  int last = 0;
};

// Kept between 0 and 1, whatever the files hold; NaN becomes 0.
double Share(double share) { return share > 0 ? std::min(share, 1.0) : 0; }

// Those that a place reaches into. At the edge between two it is in the upper one.
Cells CellsOf(source::Range extent, source::Range range, int cells) {
  const auto place = [&](double value) {
    return Share((value - range.low) / (range.high - range.low)) * cells;
  };
  const int first = std::min(static_cast<int>(place(extent.low)), cells - 1);
  return {first, std::max(static_cast<int>(std::ceil(place(extent.high))) - 1, first)};
}

// A place is as wide as half of the way to its neighbours; beside a gap, no wider than towards the other one.
struct Extents {
  const std::vector<double>& places;

  source::Range Of(std::size_t i) const {
    const double place = places[i];
    const double before = i > 0 ? place - places[i - 1] : 0;
    const double after = i + 1 < places.size() ? places[i + 1] - place : 0;
    const double least = before > 0 && after > 0 ? std::min(before, after) : std::max(before, after);
    constexpr double kGap = 3;
    const auto half = [&](double way) { return (way > 0 && way <= kGap * least ? way : least) / 2; };
    return {place - half(before), place + half(after)};
  }
};

class MapMaker {
 public:
  MapMaker(const SpectraOverTime& spectra, MapView view, const Work& work)
      : spectra_(spectra), view_(view), work_(work) {}

  Answer Make(Steps steps) {
    ChooseMinutes();
    ChooseScans();
    if (!view_.ordinate) ChooseOrdinate();
    view_.columns = std::clamp(view_.columns, 1, std::max(static_cast<int>(scans_.size()), 1));
    values_.assign(static_cast<std::size_t>(view_.columns) * static_cast<std::size_t>(view_.rows), kNothing);
    ForEachScan([&](int scan) { Paint(scan); });
    return AnswerOf(steps);
  }

 private:
  void ChooseMinutes() {
    if (view_.minutes) return;
    source::Range all = {0, 0};
    bool isFirst = true;
    for (std::size_t i = 0; i < spectra_.minutes.size(); ++i) {
      const source::Range one = Extents{spectra_.minutes}.Of(i);
      if (std::isnan(one.low)) continue;
      all = isFirst ? one : source::Range{std::min(all.low, one.low), std::max(all.high, one.high)};
      isFirst = false;
    }
    if (!(all.low < all.high)) all = {all.low - 0.5, all.high + 0.5};
    view_.minutes = all;
  }

  void ChooseScans() {
    for (std::size_t i = 0; i < spectra_.minutes.size(); ++i) {
      const source::Range extent = Extents{spectra_.minutes}.Of(i);
      if (extent.high >= view_.minutes->low && extent.low <= view_.minutes->high)
        scans_.push_back(static_cast<int>(i));
    }
    passes_ = view_.ordinate ? 1 : 2;
  }

  void ChooseOrdinate() {
    source::Range range = {std::numeric_limits<double>::infinity(), kNothing};
    ForEachScan([&](int) {
      for (const double x : x_) {
        range.low = std::min(range.low, x);
        range.high = std::max(range.high, x);
      }
    });
    if (!(range.low <= range.high)) range = {0, 1};
    const double margin = range.low < range.high ? (range.high - range.low) / 50 : 0.5;
    view_.ordinate = source::Range{range.low - margin, range.high + margin};
  }

  template <class Look>
  void ForEachScan(Look look) {
    const std::uint64_t all = scans_.size() * passes_;
    for (const int scan : scans_) {
      source::ThrowIfCancelled(work_.cancel);
      spectra_.read(scan, x_, y_);
      look(scan);
      if (work_.progress) work_.progress(++done_, all);
    }
  }

  void Paint(int scan) {
    const Cells columns =
        CellsOf(Extents{spectra_.minutes}.Of(static_cast<std::size_t>(scan)), *view_.minutes, view_.columns);
    for (std::size_t i = 0; i < x_.size(); ++i) {
      if (std::isnan(y_[i])) continue;
      const source::Range extent = spectra_.hasEvenPoints ? Extents{x_}.Of(i) : source::Range{x_[i], x_[i]};
      if (extent.high >= view_.ordinate->low && extent.low <= view_.ordinate->high)
        PaintPoint(columns, CellsOf(extent, *view_.ordinate, view_.rows), y_[i]);
    }
  }

  void PaintPoint(const Cells& columns, const Cells& rows, double value) {
    for (int row = rows.first; row <= rows.last; ++row) {
      double* const cells = &values_[static_cast<std::size_t>(row) * static_cast<std::size_t>(view_.columns)];
      for (int column = columns.first; column <= columns.last; ++column)
        cells[column] = std::max(cells[column], value);
    }
  }

  Answer AnswerOf(Steps steps) const {
    double lowest = std::numeric_limits<double>::infinity();
    double largest = kNothing;
    for (const double value : values_) {
      if (value == kNothing) continue;
      lowest = std::min(lowest, value);
      largest = std::max(largest, value);
    }
    Answer answer;
    answer.grid = {view_.columns, view_.rows, {}};
    for (const double value : values_) answer.grid.cells.push_back(StepOf(value, lowest, largest, steps));
    answer.facts = {{"minutes", {view_.minutes->low, view_.minutes->high}},
                    {"ordinate", {view_.ordinate->low, view_.ordinate->high}},
                    {"isLogarithmic", steps == Steps::kDecades},
                    {"isEmpty", largest == kNothing},
                    {"lowest", lowest},  // null where there is none
                    {"largest", largest}};
    return answer;
  }

  static std::uint8_t StepOf(double value, double lowest, double largest, Steps steps) {
    if (value == kNothing) return 0;
    if (steps == Steps::kDecades) {
      if (!(value > 0)) return 0;
      return static_cast<std::uint8_t>(
          1 + std::lround(kSteps * Share(1 + std::log10(value / largest) / kDecades)));
    }
    const double share = largest > lowest ? (value - lowest) / (largest - lowest) : 1;
    return static_cast<std::uint8_t>(1 + std::lround(kSteps * Share(share)));
  }

  const SpectraOverTime& spectra_;
  MapView view_;
  const Work& work_;
  std::vector<int> scans_;
  std::uint64_t passes_ = 1;
  std::uint64_t done_ = 0;
  std::vector<double> values_;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace

Answer MakeHeatMap(const SpectraOverTime& spectra, MapView view, Steps steps, const Work& work) {
  return MapMaker(spectra, view, work).Make(steps);
}

}  // namespace zrml::view
