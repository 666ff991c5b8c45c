#include "tools/zrml/spectrum_printout.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "source/names.h"

namespace zrml::tool {
namespace {

using source::Function;
using source::Scan;

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

// What scans have in common; unknown when none was added.
Scan CommonOf(source::Source& source, const FunctionPosition& at, const source::ScanSum& sum) {
  Scan common;
  common.minutes = common.endMinutes = kUnknown;
  if (!sum.added.empty()) common = source.ScanAt(at.sample, at.function, sum.added.front());
  common.representation = source::RepresentationOf(sum.isCentroided);
  for (const int position : sum.added) {
    const Scan scan = source.ScanAt(at.sample, at.function, position);
    common.endMinutes = scan.endMinutes;
    if (scan.precursorMz != common.precursorMz) common.precursorMz.reset();
    if (scan.scanValue != common.scanValue) common.scanValue.reset();
  }
  return common;
}

std::vector<Attribute> CombinationAttributes(const Combination& combination) {
  const source::ScanSum* const background = combination.background;
  return {
      {"scans", ListOfScans(combination.sum.added)},
      {"scansAdded", static_cast<int>(combination.sum.added.size())},
      {"scansLeftOut", combination.sum.leftOut},
      {"combined", std::string(combination.isMean ? "mean" : "sum")},
      {"background", background != nullptr ? Value(ListOfScans(background->added)) : Value()},
      {"backgroundLeftOut", background != nullptr ? Value(background->leftOut) : Value()},
  };
}

std::vector<Attribute> ScanAttributes(const Function& function, const Scan& scan) {
  return {
      {"title", {}},  // no format has a title or a label
      {"label", {}},
      {"startMinutes", scan.minutes},
      {"endMinutes", scan.endMinutes},
      {"msLevel", ValueOrAbsent(function.msLevel)},
      {"polarity", NameOf(function.polarity)},
      {"centroided", ValueOrAbsent(IsCentroided(scan))},
  };
}

std::vector<Attribute> PrecursorAttributes(source::Source& source, const FunctionPosition& at,
                                           const Scan& scan,
                                           const std::optional<source::ScanPosition>& from) {
  Value function;
  if (from) function = ValueOf(FunctionAt(source, {at.sample, from->function}).id);
  return {
      {"precursorMz", ValueOrAbsent(scan.precursorMz)},
      {"precursorFunction", function},
      {"precursorScan", from ? Value(from->scan + 1) : Value()},
  };
}

std::vector<Attribute> PointAttributes(const SpectrumPoints& points) {
  const auto base = std::max_element(points.intensities.begin(), points.intensities.end());
  const bool hasPoints = base != points.intensities.end();
  const bool isLost = !hasPoints && points.lost != 0;
  const auto position = static_cast<std::size_t>(base - points.intensities.begin());
  const double total = std::accumulate(points.intensities.begin(), points.intensities.end(), 0.0);
  return {
      {"totalIntensity", isLost ? Value() : Value(total)},
      {"basePeakMz", hasPoints ? Value(points.masses[position]) : Value()},
      {"basePeakIntensity", hasPoints ? Value(*base) : Value()},
      {"points", static_cast<int>(points.masses.size())},
      {"lostPoints", points.lost != 0 ? Value(static_cast<int>(points.lost)) : Value()},
  };
}

std::vector<Column> AbsorbanceColumns(const SpectrumPoints& points) {
  return {{"wavelength", "wavelengths", points.masses}, {"absorbance", "absorbances", points.intensities}};
}

// Makes centroids and filters; the answer says so.
std::vector<Attribute> Choose(const convert::PointChoice& choice, const Function& function, Scan& scan,
                              SpectrumPoints& points) {
  std::vector<Attribute> said;
  if (choice.centroidLevels) {
    const bool isPicked = IsProfile(function, scan);
    if (isPicked) source::TakeCentroids(choice.centroids, points.masses, points.intensities);
    if (isPicked) scan.representation = source::Representation::kCentroid;
    const std::string intensities = choice.centroids.isArea ? "areas" : "heights";
    said.push_back({"centroids", isPicked ? Value(intensities) : Value()});
  }
  if (!choice.filter.TakesAll()) {
    Filter(choice.filter, points.masses, points.intensities);
    said.push_back({"filter", TextOf(choice.filter)});
  }
  return said;
}

// The rest of a scan's printout, after what says which scan it is.
void AddScan(source::Source& source, const FunctionPosition& at, Scan scan,
             const std::optional<source::ScanPosition>& precursor, const convert::PointChoice& choice,
             SpectrumPoints& points, Printout& printout) {
  const Function& function = FunctionAt(source, at);
  const std::vector<Attribute> said = Choose(choice, function, scan, points);
  printout.Add(ScanAttributes(function, scan));
  printout.Add(PrecursorAttributes(source, at, scan, precursor));
  printout.Add({{"scanValue", ValueOrAbsent(scan.scanValue)},
                {"driftBins", ValueOrAbsent(points.bins)},
                {"driftValues", ValueOrAbsent(points.bins)}});  // the values are the numbers of the bins
  printout.Add(said);
  printout.Add(PointAttributes(points));
  if (function.kind == source::FunctionKind::kAbsorbance) {
    printout.columns = AbsorbanceColumns(points);
  } else {
    printout.columns = {{"m/z", "masses", points.masses}, {"intensity", "intensities", points.intensities}};
  }
}

}  // namespace

std::string ListOfScans(std::span<const int> positions) {
  std::string list;
  for (std::size_t i = 0; i < positions.size();) {
    std::size_t last = i;
    while (last + 1 < positions.size() && positions[last + 1] == positions[last] + 1) ++last;
    if (!list.empty()) list += ',';
    list += std::to_string(positions[i] + 1);
    if (last > i) list += '-' + std::to_string(positions[last] + 1);
    i = last + 1;
  }
  return list;
}

Printout PrintoutOfScan(source::Source& source, const FunctionPosition& at, int position,
                        const convert::PointChoice& choice, SpectrumPoints& points) {
  Printout printout = PrintoutOf(source, at);
  printout.Add({{"scan", position + 1}});
  AddScan(source, at, source.ScanAt(at.sample, at.function, position),
          source.FindPrecursor(at.sample, at.function, position), choice, points, printout);
  return printout;
}

Printout PrintoutOfSum(source::Source& source, const FunctionPosition& at, const Combination& combination,
                       const convert::PointChoice& choice, SpectrumPoints& points) {
  Printout printout = PrintoutOf(source, at);
  printout.Add({{"scan", {}}});
  printout.Add(CombinationAttributes(combination));
  AddScan(source, at, CommonOf(source, at, combination.sum), {}, choice, points, printout);
  return printout;
}

Printout PrintoutOfAbsorbance(source::Source& source, int sample, int position,
                              const SpectrumPoints& points) {
  Printout printout = PrintoutOf(source, sample);
  printout.Add({{"scan", position + 1},
                {"startMinutes", source.AbsorbanceMinutes(sample, position)},
                {"points", static_cast<int>(points.masses.size())}});
  printout.columns = AbsorbanceColumns(points);
  return printout;
}

Printout PrintoutOfAbsorbanceSum(source::Source& source, int sample, const Combination& combination,
                                 const SpectrumPoints& points) {
  Printout printout = PrintoutOf(source, sample);
  printout.Add({{"scan", {}}});
  printout.Add(CombinationAttributes(combination));
  const std::vector<int>& added = combination.sum.added;
  const bool isEmpty = added.empty();
  printout.Add({{"startMinutes", isEmpty ? kUnknown : source.AbsorbanceMinutes(sample, added.front())},
                {"endMinutes", isEmpty ? kUnknown : source.AbsorbanceMinutes(sample, added.back())},
                {"points", static_cast<int>(points.masses.size())}});
  printout.columns = AbsorbanceColumns(points);
  return printout;
}

}  // namespace zrml::tool
