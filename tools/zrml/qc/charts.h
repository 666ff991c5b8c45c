// Small charts as SVG text, without scripts. Colours come from the page's styles.
#pragma once

#include <string>
#include <vector>

namespace zrml::tool {

struct ChartPoint {
  double x = 0;
  double y = 0;
  std::string link;   ///< an anchor of the page
  std::string look;   ///< a class of its styles
  std::string label;  ///< markup, shown under the pointer
};

using NumberText = std::string (*)(double value);

/// Points over x from 0 to `lastX`, with the median of their values as a line.
std::string PointChart(const std::vector<ChartPoint>& points, double lastX, NumberText text);

/// A line through points with ascending x.
std::string CurveChart(const std::vector<double>& x, const std::vector<double>& y, NumberText text);

}  // namespace zrml::tool
