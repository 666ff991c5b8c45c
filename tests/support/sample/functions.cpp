#include "tests/support/sample/functions.h"

#include <algorithm>
#include <cmath>

#include "tests/support/sample/chemistry.h"
#include "tests/support/sample/instrument.h"
#include "tests/support/sample/portable_math.h"

namespace zrml::sample {
namespace {

// Codes of the function table.
constexpr unsigned kSir = 1;
constexpr unsigned kDad = 12;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kTofMs = 18;
constexpr unsigned kElectrosprayPositive = 8;
constexpr unsigned kElectrosprayNegative = 9;

constexpr double kSecondsPerMinute = 60;
constexpr float kPrecursorSetMass = 391.2843F;  // the background's

// Calls `scan` with the time of each scan in minutes: every `period` seconds, the first after `delay`
// seconds.
template <class Scan>
void EachScan(double period, double delay, Scan scan) {
  const int count = static_cast<int>(kRunMinutes * kSecondsPerMinute / period);
  for (int i = 0; i < count; ++i) scan((i * period + delay) / kSecondsPerMinute);
}

FunctionFiles TofFunction(unsigned type, float scanTime) {
  FunctionFiles function;
  function.record = {.type = type, .ionMode = kElectrosprayPositive, .dataFormat = 9, .scanTime = scanTime};
  function.record.startMasses[0] = TofDetector::kLowMass;
  function.record.endMasses[0] = TofDetector::kHighMass;
  return function;
}

// The isotope patterns of the compounds, computed once.
class Ions {
 public:
  explicit Ions(std::vector<const Compound*> compounds) : compounds_(std::move(compounds)) {
    for (const Compound* compound : compounds_) {
      patterns_.push_back(IsotopePattern(compound->formula, compound->charge));
    }
  }

  void AddTo(TofDetector& detector, double minutes) const {
    for (std::size_t i = 0; i < compounds_.size(); ++i) {
      const double ions = compounds_[i]->response * compounds_[i]->elution.At(minutes);
      for (const MassPeak& peak : patterns_[i]) detector.Add(peak.mass, ions * peak.intensity);
    }
  }

 private:
  std::vector<const Compound*> compounds_;
  std::vector<std::vector<MassPeak>> patterns_;
};

FunctionFiles Continuum(FunctionFiles function, const Ions& ions, double period, double delay, int noiseIons,
                        std::uint64_t seed) {
  TofDetector detector;
  Noise noise(seed);
  EachScan(period, delay, [&](double minutes) {
    ions.AddTo(detector, minutes);
    detector.AddChemicalNoise(noiseIons, noise);
    function.scans.push_back(ScanOf(static_cast<float>(minutes), detector.ReadOut(noise)));
    function.scans.back().index.centroidState = CentroidState::kProfile;
  });
  return function;
}

// The compound with the most ions at a time; the background when no other has enough for a fragment spectrum.
const Compound& Strongest(double minutes) {
  constexpr double kEnough = 600;
  const Compound* strongest = &Background();
  double most = kEnough;
  for (const Compound& compound : Compounds()) {
    const double ions = compound.response * compound.elution.At(minutes);
    if (ions > most) {
      strongest = &compound;
      most = ions;
    }
  }
  return *strongest;
}

// Centroids with errors, as raw masses, in order of mass.
ScanFiles FragmentScan(double minutes, const Compound& compound, double precursor, Noise& noise) {
  constexpr double kRelativeError = 2e-6;
  constexpr double kPrecursorLeft = 0.08;
  constexpr double kDetectable = 3;
  std::vector<MassPeak> peaks = compound.fragments;
  peaks.push_back({precursor, kPrecursorLeft});
  for (MassPeak& peak : peaks) {
    peak.intensity = Counted(0.3 * compound.response * compound.elution.At(minutes) * peak.intensity, noise);
    peak.mass = RawMass(peak.mass * (1 + kRelativeError * noise.Normal()));
  }
  for (int i = 0; i < 12; ++i) {
    peaks.push_back({RawMass(50 + noise.Uniform() * (precursor - 50)), Counted(4, noise)});
  }
  std::erase_if(peaks, [](const MassPeak& peak) { return peak.intensity < kDetectable; });
  std::sort(peaks.begin(), peaks.end(), [](const MassPeak& a, const MassPeak& b) { return a.mass < b.mass; });
  return ScanFrom<StoredPoint9>(static_cast<float>(minutes), peaks);
}

double Absorbance(double wavelength, double minutes) {
  constexpr double kStrongest = 400000;  // microunits
  double sum = 0;
  for (const Compound& compound : Compounds()) {
    const double amount = compound.elution.At(minutes);
    for (const AbsorptionBand& band : compound.bands) {
      const double distance = (wavelength - band.wavelength) / band.width;
      sum += kStrongest * amount * band.height * Exp(-distance * distance / 2);
    }
  }
  // The gradient's organic part absorbs at the short end.
  return sum + 2500 * minutes * Exp((200 - wavelength) / 12);
}

}  // namespace

FunctionFiles Survey() {
  std::vector<const Compound*> compounds = {&Background()};
  for (const Compound& compound : Compounds()) compounds.push_back(&compound);
  return Continuum(TofFunction(kTofMs, 0.45F), Ions(compounds), 1, 0.5, 130, 0x5EED0001);
}

FunctionFiles FragmentSpectra() {
  FunctionFiles function = TofFunction(kTofMsMs, 0.25F);
  function.record.startMasses[0] = 50;
  function.record.setMass = kPrecursorSetMass;
  function.record.defaultScanValue = 30;
  function.statistics = StatisticsLayout{.items = AllItemsBut({62, 80, 103, 104, 105})};
  Noise noise(0x5EED0002);
  EachScan(1, 0.8, [&](double minutes) {
    const Compound& compound = Strongest(minutes);
    const double precursor = IsotopePattern(compound.formula, compound.charge).front().mass;
    ScanFiles scan = FragmentScan(minutes, compound, precursor, noise);
    scan.index.centroidState = CentroidState::kCentroid;
    // Scans of the background have no precursor of their own: the function's set mass applies.
    if (&compound != &Background()) {
      scan.statistics.precursorMass = static_cast<float>(precursor);
      scan.statistics.precursorFlags = masslynx::scan_statistics_format::kPrecursorMassGiven;
    }
    function.scans.push_back(std::move(scan));
  });
  return function;
}

FunctionFiles LockMass() {
  return Continuum(TofFunction(kTofMs, 0.45F), Ions({&LockMassCompound()}), 20, 10.9, 60, 0x5EED0003);
}

FunctionFiles DiodeArray() {
  constexpr int kFirst = 210;  // nm
  constexpr int kLast = 400;
  constexpr int kStep = 2;
  FunctionFiles function;
  function.record = {.type = kDad, .ionMode = kElectrosprayPositive, .dataFormat = 9, .scanTime = 0.2F};
  function.record.startMasses[0] = kFirst;
  function.record.endMasses[0] = kLast;
  Noise noise(0x5EED0004);
  EachScan(1, 0.1, [&](double minutes) {
    std::vector<WantedPoint> points;
    for (int wavelength = kFirst; wavelength <= kLast; wavelength += kStep) {
      points.push_back({static_cast<double>(wavelength),
                        std::round(Absorbance(wavelength, minutes) + 40 * noise.Normal())});
    }
    function.scans.push_back(ScanFrom<StoredPoint9>(static_cast<float>(minutes), points));
  });
  return function;
}

FunctionFiles IonRecording() {
  constexpr double kDeprotonated = 0.2;  // ions of [M-H]- for each of [M+H]+
  FunctionFiles function;
  function.record = {.type = kSir, .ionMode = kElectrosprayNegative, .dataFormat = 8, .scanTime = 0.15F};
  std::vector<std::pair<double, const Compound*>> channels;
  for (const Compound& compound : Compounds()) {
    if (compound.name == "paracetamol" || compound.name == "sulfadimethoxine" ||
        compound.name == "warfarin") {
      channels.emplace_back(IsotopePattern(compound.formula, -1).front().mass, &compound);
    }
  }
  std::sort(channels.begin(), channels.end());
  for (std::size_t i = 0; i < channels.size(); ++i) {
    function.record.startMasses[i] = function.record.endMasses[i] = static_cast<float>(channels[i].first);
  }
  Noise noise(0x5EED0005);
  EachScan(1, 0.95, [&](double minutes) {
    std::vector<WantedPoint> points;
    for (const auto& [mass, compound] : channels) {
      const double ions = kDeprotonated * compound->response * compound->elution.At(minutes) + 12;
      points.push_back({mass, Counted(ions, noise)});
    }
    function.scans.push_back(ScanFrom<StoredPoint8>(static_cast<float>(minutes), points));
    function.scans.back().index.centroidState = CentroidState::kCentroid;
  });
  return function;
}

}  // namespace zrml::sample
