#include "tests/support/sample/report.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>

#include "tests/support/report_writer.h"
#include "tests/support/sample/chemistry.h"
#include "tests/support/sample/functions.h"
#include "tests/support/sample/portable_math.h"

namespace zrml::sample {
namespace {

struct Injection {
  std::string fileName;
  std::string sampleId;
  std::string time;
  double amount = 0;  // of every compound; 1 in the sample of the raw directory
};

using Peaks = std::vector<MassPeak>;

std::string Fixed(double value, int decimals) {
  std::array<char, 40> text;
  const std::to_chars_result end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
  return {text.data(), end.ptr};
}

// "m/z<tab>percent of the largest" under the marker, with the keys for 100 percent.
ReportLines DataLines(std::string_view marker, const Peaks& points, double largest, int decimals) {
  ReportLines lines;
  for (const MassPeak& point : points) {
    const double percent = largest > 0 ? 100 * point.intensity / largest : 0;
    lines.lines.push_back(Fixed(point.mass, decimals) + "\t" + Fixed(percent, 3));
  }
  return Block(marker, lines);
}

double Largest(const Peaks& points) {
  double largest = 0;
  for (const MassPeak& point : points) largest = std::max(largest, point.intensity);
  return largest;
}

ReportLines Spectrum(double minutes, bool isContinuum, const Peaks& points) {
  double sum = 0;
  for (const MassPeak& point : points) sum += point.intensity;
  const double largest = Largest(points);
  return Block("[SPECTRUM]", Keys({{"Time", Fixed(minutes, 4)},
                                   {"Continuum", isContinuum ? "TRUE" : "FALSE"},
                                   {"BPI", Fixed(largest, 0)},
                                   {"TIC", Fixed(sum, 0)}}) +
                                 DataLines("[MS]", points, largest, 4));
}

// One point every three seconds.
ReportLines Chromatogram(const std::string& description, const std::function<double(double minutes)>& value) {
  constexpr int kPointsPerMinute = 20;
  Peaks points;
  for (int i = 0; i <= static_cast<int>(kRunMinutes) * kPointsPerMinute; ++i) {
    const double minutes = static_cast<double>(i) / kPointsPerMinute;
    points.push_back({minutes, value(minutes)});
  }
  const double largest = Largest(points);
  return Block("[CHROMATOGRAM]", Keys({{"Description", description}, {"MaxIntensity", Fixed(largest, 4)}}) +
                                     DataLines("[TRACE]", points, largest, 4));
}

ReportLines Function(const std::string& description, const std::string& type, const std::string& ionMode,
                     const ReportLines& blocks) {
  return FunctionBlock(Keys({{"Description", description}, {"Type", type}, {"IonMode", ionMode}}) + blocks);
}

double IonsOf(const Compound& compound, double minutes, double amount) {
  return amount * compound.response * compound.elution.At(minutes);
}

double AllIons(double minutes, double amount) {
  double ions = IonsOf(Background(), minutes, 1);
  for (const Compound& compound : Compounds()) ions += IonsOf(compound, minutes, amount);
  return ions;
}

// Isotope peaks of everything present at a time, in order of mass. `charge` 0: each compound's own.
Peaks PeaksAt(double minutes, double amount, int charge) {
  constexpr double kDetectable = 20;
  Peaks peaks;
  const auto add = [&](const Compound& compound, double ions) {
    for (MassPeak peak : IsotopePattern(compound.formula, charge != 0 ? charge : compound.charge)) {
      peak.intensity *= ions;
      if (peak.intensity >= kDetectable) peaks.push_back(peak);
    }
  };
  add(Background(), IonsOf(Background(), minutes, 1));
  for (const Compound& compound : Compounds()) add(compound, IonsOf(compound, minutes, amount));
  std::sort(peaks.begin(), peaks.end(), [](const MassPeak& a, const MassPeak& b) { return a.mass < b.mass; });
  return peaks;
}

// Each peak as the samples of a Gaussian.
Peaks Profile(const Peaks& peaks) {
  constexpr double kWidth = 0.06;  // standard deviation, m/z
  constexpr int kSamples = 6;      // to either side, half a standard deviation apart
  Peaks profile;
  for (const MassPeak& peak : peaks) {
    for (int i = -kSamples; i <= kSamples; ++i) {
      const double deviations = 0.5 * i;
      profile.push_back(
          {peak.mass + kWidth * deviations, peak.intensity * Exp(-deviations * deviations / 2)});
    }
  }
  std::sort(profile.begin(), profile.end(),
            [](const MassPeak& a, const MassPeak& b) { return a.mass < b.mass; });
  return profile;
}

// A spectrum at the apex of every compound.
ReportLines Positive(double amount) {
  ReportLines blocks;
  for (const Compound& compound : Compounds()) {
    const double minutes = compound.elution.apex;
    blocks = blocks + Spectrum(minutes, false, PeaksAt(minutes, amount, 0));
  }
  return Function("survey", "MS", "ES+",
                  blocks + Chromatogram("TIC", [=](double minutes) { return AllIons(minutes, amount); }));
}

ReportLines Negative(double amount) {
  ReportLines blocks;
  for (const Compound& compound : Compounds()) {
    const double minutes = compound.elution.apex;
    blocks = blocks + Spectrum(minutes, true, Profile(PeaksAt(minutes, amount, -1)));
  }
  return Function("survey", "MS", "ES-",
                  blocks + Chromatogram("TIC", [=](double minutes) { return AllIons(minutes, amount) / 5; }));
}

// Three channels, one spectrum every half minute.
ReportLines IonMonitoring(double amount) {
  std::vector<const Compound*> channels;
  for (const Compound& compound : Compounds()) {
    if (compound.name == "caffeine" || compound.name == "reserpine" || compound.name == "verapamil") {
      channels.push_back(&compound);
    }
  }
  ReportLines blocks;
  for (double minutes = 0.5; minutes < kRunMinutes; minutes += 0.5) {
    Peaks peaks;
    for (const Compound* channel : channels) {
      peaks.push_back(
          {IsotopePattern(channel->formula, 1).front().mass, 10 + IonsOf(*channel, minutes, amount)});
    }
    std::sort(peaks.begin(), peaks.end(),
              [](const MassPeak& a, const MassPeak& b) { return a.mass < b.mass; });
    blocks = blocks + Spectrum(minutes, false, peaks);
  }
  for (const Compound* channel : channels) {
    blocks = blocks + Chromatogram(std::string(channel->name),
                                   [=](double minutes) { return 10 + IonsOf(*channel, minutes, amount); });
  }
  return Function("targets", "SIM of 3 ions", "ES+", blocks);
}

double Absorbance(double wavelength, double minutes, double amount) {
  double sum = 0;
  for (const Compound& compound : Compounds()) {
    for (const AbsorptionBand& band : compound.bands) {
      const double distance = (wavelength - band.wavelength) / band.width;
      sum += amount * compound.elution.At(minutes) * band.height * Exp(-distance * distance / 2);
    }
  }
  return sum;
}

ReportLines DiodeArray(double amount) {
  ReportLines traces;
  for (const int wavelength : {220, 254}) {
    traces = traces + Chromatogram("UV " + std::to_string(wavelength),
                                   [=](double minutes) { return Absorbance(wavelength, minutes, amount); });
  }
  return Function("diode array", "DAD", "", traces);
}

ReportLines Analog() {
  return Function("ANALOG 1", "", "", Chromatogram("System Pressure", [](double minutes) {
                    return 6200 - 15 * (minutes - 3) * (minutes - 3);
                  }));
}

}  // namespace

std::string Report(LineEnd lineEnd) {
  const std::array<Injection, 3> injections = {{
      {"BLANK_01", "blank", "08:45:00", 0},
      {"MIX10_01", "MIX-10 low", "09:00:00", 0.05},
      {"MIX10_02", "MIX-10", "09:15:00", 1},
  }};
  ReportLines report;
  for (const Injection& injection : injections) {
    // Texts are Windows-1252, as acquisition computers write them.
    report = report + SampleBlock(Keys({{"FileName", injection.fileName},
                                        {"SampleID", injection.sampleId},
                                        {"Date", "14-Nov-2026"},
                                        {"Time", injection.time},
                                        {"UserName", "Ren\xE9 Exemple"},
                                        {"Instrument", "QTOF-SIM"}}) +
                                  Positive(injection.amount) + Negative(injection.amount) +
                                  IonMonitoring(injection.amount) + DiodeArray(injection.amount) + Analog());
  }
  return ReportText(report, lineEnd);
}

}  // namespace zrml::sample
