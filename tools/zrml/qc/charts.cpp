#include "tools/zrml/qc/charts.h"

#include <algorithm>

#include "qc/statistics.h"
#include "tools/zrml/format.h"

namespace zrml::tool {
namespace {

constexpr double kWidth = 300;
constexpr double kHeight = 116;
constexpr double kSide = 6;
constexpr double kTop = 20;
constexpr double kBottom = 14;

// What an axis shows, at its two ends.
struct Axis {
  source::Range values;
  double low;
  double high;

  std::string At(double value) const {
    const double length = values.high - values.low;
    const double part = length > 0 ? (value - values.low) / length : 0.5;
    return RoundedNumber(low + part * (high - low));
  }
};

Axis Across(source::Range values) { return {values, kSide, kWidth - kSide}; }

// From 0 on, unless values are negative; up to 1 where all are 0.
Axis Up(const std::vector<double>& values) {
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  source::Range range = {std::min(*low, 0.0), std::max(*high, 0.0)};
  if (range.low == range.high) range.high = 1;
  return {range, kHeight - kBottom, kTop};
}

std::string LineText(const std::string& look, const std::string& y) {
  return "<line class=\"" + look + "\" x1=\"0\" x2=\"300\" y1=\"" + y + "\" y2=\"" + y + "\"/>";
}

std::string Label(double x, const std::string& y, const char* anchor, const std::string& text) {
  return "<text x=\"" + RoundedNumber(x) + "\" y=\"" + y + "\" text-anchor=\"" + anchor + "\">" + text +
         "</text>";
}

// With the ends of the vertical axis.
std::string Begin(const Axis& up, NumberText text) {
  std::string svg = "<svg viewBox=\"0 0 300 116\" role=\"img\">";
  svg += LineText("line", up.At(up.values.low));
  svg += Label(0, RoundedNumber(kTop - 8), "start", text(up.values.high));
  return svg + Label(0, RoundedNumber(kHeight - 3), "start", text(up.values.low));
}

}  // namespace

std::string PointChart(const std::vector<ChartPoint>& points, double lastX, NumberText text) {
  std::vector<double> values(points.size());
  std::transform(points.begin(), points.end(), values.begin(),
                 [](const ChartPoint& point) { return point.y; });
  const Axis across = Across({0, lastX});
  const Axis up = Up(values);
  const double median = qc::Quartiles(values)[1];
  std::string svg = Begin(up, text) + LineText("median", up.At(median));
  svg += Label(kWidth, RoundedNumber(kTop - 8), "end", "median " + text(median));
  for (const ChartPoint& point : points) {
    svg += "<a href=\"#" + point.link + "\"><circle class=\"" + point.look + "\" r=\"3\" cx=\"" +
           across.At(point.x) + "\" cy=\"" + up.At(point.y) + "\"><title>" + point.label +
           "</title></circle></a>";
  }
  return svg + "</svg>";
}

std::string CurveChart(const std::vector<double>& x, const std::vector<double>& y, NumberText text) {
  const Axis across = Across({x.front(), x.back()});
  const Axis up = Up(y);
  std::string svg = Begin(up, text) + "<polyline class=\"curve\" points=\"";
  for (std::size_t i = 0; i < x.size(); ++i) svg += across.At(x[i]) + ',' + up.At(y[i]) + ' ';
  svg += "\"/>" + Label(kWidth, RoundedNumber(kHeight - 3), "end", text(x.front()) + " to " + text(x.back()));
  return svg + "</svg>";
}

}  // namespace zrml::tool
