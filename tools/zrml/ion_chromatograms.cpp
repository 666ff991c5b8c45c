#include "tools/zrml/ion_chromatograms.h"

#include <algorithm>
#include <cmath>

#include "convert/total_ions.h"
#include "tools/zrml/output.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/value.h"

namespace zrml::tool {
namespace {

std::string NameOf(const Target& target) {
  return target.mz ? TextOf(Value(*target.mz)) : TextOf(Value(target.range));
}

bool AreApart(const source::Range& a, const source::Range& b) { return a.high < b.low || b.high < a.low; }

bool HasTime(const Target& target, double minutes) {
  return convert::Selection{.minutes = target.minutes}.HasTime(minutes);
}

}  // namespace

std::optional<ChromatogramPeak> ApexOf(const source::Chromatogram& chromatogram) {
  std::optional<ChromatogramPeak> apex;
  for (std::size_t i = 0; i < chromatogram.minutes.size(); ++i) {
    if (chromatogram.intensities[i] > (apex ? apex->intensity : 0))
      apex = {chromatogram.minutes[i], chromatogram.intensities[i]};
  }
  return apex;
}

double AreaOf(const source::Chromatogram& chromatogram) {
  source::Chromatogram sorted = chromatogram;
  convert::SortByTime(sorted);
  double area = 0;
  std::optional<ChromatogramPeak> before;
  for (std::size_t i = 0; i < sorted.minutes.size(); ++i) {
    const ChromatogramPeak point = {sorted.minutes[i], sorted.intensities[i]};
    if (std::isnan(point.minutes) || std::isnan(point.intensity)) continue;
    if (before) area += (point.minutes - before->minutes) * (point.intensity + before->intensity) / 2;
    before = point;
  }
  return area;
}

std::vector<FunctionPosition> FunctionsForIons(source::Source& source, int sample,
                                               const convert::Selection& selection) {
  RequireFunctions(source, {&sample, 1}, selection.functions, AbsorbanceFunction::kIsNotMeant);
  const std::span<const source::Function> functions = source.Functions(sample);
  const bool isOpen = selection.functions.IsAll() && selection.msLevels.IsAll();
  convert::Selection wanted = selection;
  if (isOpen && functions.size() != 1) wanted.msLevels = *convert::NumberSet::Parse("1");
  std::vector<FunctionPosition> chosen;
  for (int i = 0; i < static_cast<int>(functions.size()); ++i) {
    if (Chooses(wanted, functions[static_cast<std::size_t>(i)])) chosen.push_back({sample, i});
  }
  const auto isListed = [&](const source::Function& function) {
    return selection.functions.Has(function.id);
  };
  const std::optional<source::FunctionId> first = selection.functions.First();
  if (first && std::ranges::none_of(functions, isListed))
    FindFunction(source, sample + 1, *first);  // says which there are
  if (chosen.empty()) RefuseWithoutLevel(source, sample, isOpen ? "of level 1" : "of such a level");
  return chosen;
}

void ReadIons(source::Source& source, const FunctionPosition& at, const IonRequest& request,
              const std::function<void(const Target& target, const source::Chromatogram& points)>& use) {
  const std::vector<double> minutes = source.Minutes(at.sample, at.function);
  std::vector<source::Range> ranges;
  for (const Target& target : request.targets) ranges.push_back(target.range);
  std::vector<double> rows(ranges.size() * minutes.size());
  source.MassRanges(at.sample, at.function, ranges, request.within, rows);
  source::Chromatogram points;
  for (std::size_t row = 0; row < ranges.size(); ++row) {
    const Target& target = request.targets[row];
    points.minutes.clear();
    points.intensities.clear();
    for (std::size_t scan = 0; scan < minutes.size(); ++scan) {
      if (!request.scans.HasTime(minutes[scan]) || !HasTime(target, minutes[scan])) continue;
      points.minutes.push_back(minutes[scan]);
      points.intensities.push_back(rows[row * minutes.size() + scan]);
    }
    use(target, points);
  }
}

void NameTargetsOutside(source::Source& source, const FunctionPosition& at, std::span<const Target> targets) {
  const source::Function& function = FunctionAt(source, at);
  if (!function.massRange) return;
  std::string names;
  for (const Target& target : targets) {
    if (AreApart(target.range, *function.massRange)) names += (names.empty() ? "" : ", ") + NameOf(target);
  }
  if (names.empty()) return;
  PrintError(NameOf(source, at.sample) + ": outside of m/z " + TextOf(Value(*function.massRange)) +
             ", the range of function " + source::TextOf(function.id) + ": " + names);
}

}  // namespace zrml::tool
