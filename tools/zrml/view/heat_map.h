// A picture of many spectra: time across, m/z or wavelength upwards, the largest value in each cell.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "source/source.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {

/// Spectra over time, wherever they are from. Times ascend.
struct SpectraOverTime {
  std::vector<double> minutes;
  std::function<source::PointsRead(int scan, std::vector<double>& x, std::vector<double>& y)> read;
  /// Points reach to the middle between them, as those of wavelengths do; otherwise each is where it is.
  bool hasEvenPoints = false;
};

/// How a cell's step from 1 to 255 follows its value.
enum class Steps {
  kDecades,  ///< by the logarithm, from a ten-thousandth of the largest value
  kEven,     ///< from the lowest value to the largest
};

struct MapView {
  std::optional<source::Range> minutes = {};   ///< all when absent
  std::optional<source::Range> ordinate = {};  ///< that of the points, with some margin, when absent
  int columns = 1;
  int rows = 1;
};

/// Facts: "minutes" and "ordinate" as [low, high], "lowest" and "largest" value, "isLogarithmic".
Answer MakeHeatMap(const SpectraOverTime& spectra, MapView view, Steps steps, const Work& work);

}  // namespace zrml::view
