#include "qc/statistics.h"

#include <algorithm>
#include <cmath>

namespace zrml::qc {
namespace {

// The total at a time between two spectra.
double TotalAt(const Spectrum& before, const Spectrum& after, double minutes) {
  return before.total +
         (after.total - before.total) * ((minutes - before.minutes) / (after.minutes - before.minutes));
}

}  // namespace

void SpectrumList::Sort() {
  std::stable_sort(all_.begin(), all_.end(), [](const Spectrum& a, const Spectrum& b) {
    const bool isLast = std::isnan(a.minutes);
    return isLast != std::isnan(b.minutes) ? !isLast : a.minutes < b.minutes;
  });
  const auto end = std::find_if(all_.begin(), all_.end(),
                                [](const Spectrum& spectrum) { return std::isnan(spectrum.minutes); });
  timed_ = static_cast<std::size_t>(end - all_.begin());
}

std::vector<double> TotalsOf(std::span<const Spectrum> spectra) {
  std::vector<double> totals(spectra.size());
  std::transform(spectra.begin(), spectra.end(), totals.begin(),
                 [](const Spectrum& spectrum) { return spectrum.total; });
  return totals;
}

bool AreFinite(std::span<const double> values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

std::vector<double> Quartiles(std::vector<double> values) {
  if (values.empty() || !AreFinite(values)) return {};
  std::sort(values.begin(), values.end());
  std::vector<double> quartiles;
  for (int k = 1; k < kParts; ++k) {
    const double place = static_cast<double>(values.size() - 1) * k / kParts;
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    quartiles.push_back(values[below] +
                        (values[above] - values[below]) * (place - static_cast<double>(below)));
  }
  return quartiles;
}

std::vector<double> QuartilesOfCounts(std::vector<double> counts) {
  std::sort(counts.begin(), counts.end());
  std::vector<double> quartiles;
  for (std::size_t k = 1; k < kParts; ++k)
    quartiles.push_back(counts[(k * counts.size() + kParts - 1) / kParts - 1]);
  return quartiles;
}

std::vector<double> QuartileRatios(std::vector<double> values) {
  std::vector<double> steps = Quartiles(values);
  if (steps.empty()) return {};
  steps.push_back(*std::max_element(values.begin(), values.end()));
  std::vector<double> ratios;
  for (std::size_t i = 1; i < steps.size(); ++i) ratios.push_back(std::log2(steps[i] / steps[i - 1]));
  return AreFinite(ratios) ? ratios : std::vector<double>();
}

double Area(std::span<const Spectrum> spectra, source::Range minutes) {
  double area = 0;
  for (std::size_t i = 1; i < spectra.size(); ++i) {
    const Spectrum& before = spectra[i - 1];
    const Spectrum& after = spectra[i];
    const double from = std::max(before.minutes, minutes.low);
    const double to = std::min(after.minutes, minutes.high);
    if (from < to) area += (TotalAt(before, after, from) + TotalAt(before, after, to)) / 2 * (to - from);
  }
  return area * kSecondsPerMinute;
}

std::vector<double> AccumulationTimes(std::span<const Spectrum> spectra) {
  double total = 0;
  for (const Spectrum& spectrum : spectra) total += spectrum.total;
  if (!(total > 0) || std::isinf(total)) return {};
  std::vector<double> times;
  std::size_t next = 0;
  double sum = 0;
  for (int k = 1; k <= kParts; ++k) {
    while (next < spectra.size() && sum < total * k / kParts) sum += spectra[next++].total;
    times.push_back(spectra[next - 1].minutes);
  }
  return times;
}

std::optional<source::Range> TimeRange(std::span<const Spectrum> timed) {
  if (timed.empty()) return std::nullopt;
  return source::Range{timed.front().minutes, timed.back().minutes};
}

source::Range Quarter(const source::Range& range, int index) {
  const double length = (range.high - range.low) / kParts;
  return {range.low + length * index, index + 1 == kParts ? range.high : range.low + length * (index + 1)};
}

}  // namespace zrml::qc
