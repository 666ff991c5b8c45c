// zrml spectrum: the attributes and points of one scan, of one of its drift bins, or of an absorbance
// spectrum.
#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "source/names.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/names.h"
#include "tools/zrml/printout.h"

namespace zrml::tool {
namespace {

struct Points {
  std::vector<double> masses;
  std::vector<double> intensities;
  std::size_t lost = 0;               // declared by the index, held by no file
  std::optional<source::Range> bins;  // of the scan that the points are from
};

std::vector<Attribute> ScanAttributes(const source::Function& function, const source::Scan& scan,
                                      int number) {
  return {
      {"scan", number},
      {"title", {}},  // no format has a title or a label
      {"label", {}},
      {"startMinutes", scan.minutes},
      {"endMinutes", scan.endMinutes},
      {"msLevel", function.msLevel},
      {"polarity", NameOf(function.polarity)},
      {"centroided", scan.isCentroided},
  };
}

std::vector<Attribute> PrecursorAttributes(source::Source& source, const FunctionPosition& at, int position,
                                           const source::Scan& scan) {
  const auto found = source.FindPrecursor(at.sample, at.function, position);
  Value function;
  if (found) function = ValueOf(FunctionAt(source, {at.sample, found->function}).id);
  return {
      {"precursorMz", ValueOrAbsent(scan.precursorMz)},
      {"precursorFunction", function},
      {"precursorScan", found ? Value(found->scan + 1) : Value()},
  };
}

std::vector<Attribute> PointAttributes(const Points& points) {
  const auto base = std::max_element(points.intensities.begin(), points.intensities.end());
  const bool hasPoints = base != points.intensities.end();
  const auto position = static_cast<std::size_t>(base - points.intensities.begin());
  return {
      {"totalIntensity", std::accumulate(points.intensities.begin(), points.intensities.end(), 0.0)},
      {"basePeakMz", hasPoints ? Value(points.masses[position]) : Value()},
      {"basePeakIntensity", hasPoints ? Value(*base) : Value()},
      {"points", static_cast<int>(points.masses.size())},
      {"lostPoints", points.lost != 0 ? Value(static_cast<int>(points.lost)) : Value()},
  };
}

std::vector<Column> AbsorbanceColumns(std::span<const double> wavelengths, std::span<const double> values) {
  return {{"wavelength", "wavelengths", wavelengths}, {"absorbance", "absorbances", values}};
}

class SpectrumCommand : public FunctionCommand {
 public:
  explicit SpectrumCommand(CLI::App& parser)
      : FunctionCommand(parser, "spectrum", "Print one scan: its attributes and points") {
    AddNumber(Options(), "--scan", scan_, "The scan, counted from 1")->required()->option_text("N REQUIRED");
    CLI::Option* const bin = AddNumber(Options(), "--bin", bin_, "The drift bin of the scan, counted from 1");
    Options()
        .add_flag("--absorbance", isAbsorbance_, "A scan of the sample's absorbance data, not of a function")
        ->option_text(" ")
        ->excludes(bin)
        ->excludes(Options().get_option("--function"));
  }

  void Run(Output& out) override {
    const std::unique_ptr<source::Source> source = OpenSource(Path());
    const int sample = FindItsSample(*source);
    const bool isAbsorbance = isAbsorbance_ || (bin_ == 0 && IsAbsorbance(*source, sample));
    isAbsorbance ? PrintAbsorbance(*source, sample, out) : PrintSpectrum(*source, out);
  }

 private:
  void PrintSpectrum(source::Source& source, Output& out) const {
    const FunctionPosition at = Find(source);
    const source::Function& function = FunctionAt(source, at);
    const int position = PositionOf(scan_, source.ScanCount(at.sample, at.function), "scan",
                                    "function " + source::TextOf(function.id));
    const source::Scan scan = source.ScanAt(at.sample, at.function, position);
    const Points points = Read(source, at, position);
    Printout printout = PrintoutOf(source, at);
    printout.Add(ScanAttributes(function, scan, scan_));
    printout.Add(PrecursorAttributes(source, at, position, scan));
    printout.Add({{"scanValue", ValueOrAbsent(scan.scanValue)},
                  {"driftBins", ValueOrAbsent(points.bins)},
                  {"driftValues", ValueOrAbsent(points.bins)}});  // the values are the numbers of the bins
    printout.Add(PointAttributes(points));
    if (function.kind == source::FunctionKind::kAbsorbance) {
      printout.columns = AbsorbanceColumns(points.masses, points.intensities);
    } else {
      printout.columns = {{"m/z", "masses", points.masses}, {"intensity", "intensities", points.intensities}};
    }
    Print(printout, out);
  }

  Points Read(source::Source& source, const FunctionPosition& at, int scan) const {
    Points points;
    const int bins = source.DriftBinCount(at.sample, at.function);
    if (bin_ == 0) {
      if (bins > 0) points.bins = source::Range{1, static_cast<double>(bins)};
      points.lost = Reading(source, [&] {
        return source.ReadPoints(at.sample, at.function, scan, points.masses, points.intensities).lost;
      });
      return points;
    }
    const std::string owner = "a scan of function " + source::TextOf(FunctionAt(source, at).id);
    const int bin = PositionOf(bin_, bins, "drift bin", owner);
    points.bins = source::Range{static_cast<double>(bin_), static_cast<double>(bin_)};
    Reading(source, [&] {
      source.ReadDriftBin(at.sample, at.function, scan, bin, points.masses, points.intensities);
    });
    return points;
  }

  void PrintAbsorbance(source::Source& source, int sample, Output& out) const {
    const int scans = source.HasAbsorbance(sample) ? source.AbsorbanceScanCount(sample) : 0;
    const int scan = PositionOf(scan_, scans, "absorbance scan", NameOf(source, sample));
    std::vector<double> wavelengths;
    std::vector<double> values;
    Reading(source, [&] { source.ReadAbsorbance(sample, scan, wavelengths, values); });
    Printout printout = PrintoutOf(source, sample);
    printout.Add({{"scan", scan_},
                  {"startMinutes", source.AbsorbanceMinutes(sample, scan)},
                  {"points", static_cast<int>(wavelengths.size())}});
    printout.columns = AbsorbanceColumns(wavelengths, values);
    Print(printout, out);
  }

  int scan_ = 0;
  int bin_ = 0;  // 0: the whole scan
  bool isAbsorbance_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeSpectrumCommand(CLI::App& parser) {
  return std::make_unique<SpectrumCommand>(parser);
}

}  // namespace zrml::tool
