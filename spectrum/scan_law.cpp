#include "spectrum/scan_law.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "spectrum/elementary.h"

namespace zrml {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Square(double x) { return x * x; }

}  // namespace

double CZRMSScanLaw::ConstantDelta::Previous(double mass) const {
  const double previous = mass - m_Delta;
  return previous > 0 ? previous : 0;
}
double CZRMSScanLaw::ConstantDelta::Next(double mass) const { return mass + m_Delta; }

double CZRMSScanLaw::TOFDelta::Previous(double mass) const {
  const double root = std::sqrt(mass) - m_Delta;
  return root > 0 ? Square(root) : 0;
}
double CZRMSScanLaw::TOFDelta::Next(double mass) const { return Square(std::sqrt(mass) + m_Delta); }

double CZRMSScanLaw::FTDelta::Previous(double mass) const { return 1 / (1 / mass + m_Delta); }
double CZRMSScanLaw::FTDelta::Next(double mass) const { return 1 / (1 / mass - m_Delta); }

double CZRMSScanLaw::FT2Delta::Previous(double mass) const {
  return 1 / Square(1 / std::sqrt(mass) + m_Delta);
}
double CZRMSScanLaw::FT2Delta::Next(double mass) const { return 1 / Square(1 / std::sqrt(mass) - m_Delta); }

double CZRMSScanLaw::SectorDelta::Previous(double mass) const {
  return PortableExp(PortableLog(mass) - m_Delta);
}
double CZRMSScanLaw::SectorDelta::Next(double mass) const { return PortableExp(PortableLog(mass) + m_Delta); }

namespace {

double Root(double mass) { return std::sqrt(mass); }

template <class Law>
ScanLawHolder MakeLaw(double delta) {
  return std::make_shared<Law>(delta);
}

struct LawKind {
  int type;
  /// The law's step, from a mass and a difference of masses.
  double (*step)(double mass, double difference);
  ScanLawHolder (*make)(double delta);
  ScanLawCoordinate coordinate;
};

// Among equally good laws the earlier one is preferred.
constexpr std::array<LawKind, 5> kLawKinds = {{
    {CZRMSScanLaw::kConstant,
     [](double, double difference) { return difference; },
     MakeLaw<CZRMSScanLaw::ConstantDelta>,
     {[](double mass) { return mass; }, [](double c) { return c > 0 ? c : 0; }}},
    {CZRMSScanLaw::kTOF,
     [](double mass, double difference) { return std::sqrt(mass + difference) - std::sqrt(mass); },
     MakeLaw<CZRMSScanLaw::TOFDelta>,
     {Root, [](double c) { return c > 0 ? Square(c) : 0; }}},
    {CZRMSScanLaw::kSector,
     [](double mass, double difference) { return PortableLog(mass + difference) - PortableLog(mass); },
     MakeLaw<CZRMSScanLaw::SectorDelta>,
     {PortableLog, PortableExp}},
    {CZRMSScanLaw::kFT,
     [](double mass, double difference) { return 1 / mass - 1 / (mass + difference); },
     MakeLaw<CZRMSScanLaw::FTDelta>,
     {[](double mass) { return -1 / mass; }, [](double c) { return c < 0 ? -1 / c : kInfinity; }}},
    {CZRMSScanLaw::kFT2,
     [](double mass, double difference) { return 1 / std::sqrt(mass) - 1 / std::sqrt(mass + difference); },
     MakeLaw<CZRMSScanLaw::FT2Delta>,
     {[](double mass) { return -1 / std::sqrt(mass); },
      [](double c) { return c < 0 ? 1 / Square(c) : kInfinity; }}},
}};

struct MassPair {
  double mass;
  double difference;
};

// The points that both arrays of the spectrum have.
struct PointView {
  explicit PointView(const CZRMassSpectrum& spectrum)
      : count(spectrum.UsablePoints()),
        masses(spectrum.GetMasses()),
        intensities(spectrum.GetIntensities()) {}

  std::size_t count;
  const double* masses;
  const double* intensities;
};

// The pair of neighbours to take from the block [begin, end), by its first point: the first whose second
// point has intensity, so no pair straddles a gap where the acquisition left out zero samples. `end` when
// there is none.
std::size_t PairInBlock(const PointView& points, std::size_t begin, std::size_t end) {
  std::size_t i = begin;
  if (points.intensities[i] == 0) ++i;
  while (i < end && points.intensities[i + 1] == 0) ++i;
  return std::min(i, end);
}

// One pair from each of about a hundred blocks of the spectrum, without the outermost points. All blocks have
// the same size, so the last may extend past the stretch, as far as there are pairs.
std::vector<MassPair> SamplePairs(const PointView& points) {
  constexpr std::size_t kBlocks = 100;
  constexpr std::size_t kTakenWhole = 5;
  const bool whole = points.count <= kTakenWhole;
  const std::size_t pairCount = points.count - (whole ? 1 : 3);
  const std::size_t begin = whole ? 0 : 1;
  const std::size_t end = begin + pairCount;
  const std::size_t blockSize = std::max<std::size_t>(pairCount / kBlocks, 1);
  std::vector<MassPair> pairs;
  pairs.reserve((pairCount - 1 + blockSize) / blockSize);
  for (std::size_t block = begin; block < end; block += blockSize) {
    const std::size_t blockEnd = std::min(block + blockSize, points.count - 1);
    const std::size_t i = PairInBlock(points, block, blockEnd);
    if (i < blockEnd) pairs.push_back({points.masses[i], points.masses[i + 1] - points.masses[i]});
  }
  return pairs;
}

CZRMassSpectrum PositivePoints(const CZRMassSpectrum& spectrum) {
  const PointView points(spectrum);
  CZRMassSpectrum positive;
  positive.SetCentroided(false);
  for (std::size_t i = 0; i < points.count; ++i) {
    if (!(points.intensities[i] > 0)) continue;
    positive.MassVector().push_back(points.masses[i]);
    positive.IntensityVector().push_back(points.intensities[i]);
  }
  positive.SetSize(static_cast<int>(positive.MassVector().size()));
  return positive;
}

}  // namespace

const ScanLawCoordinate* CoordinateOfScanLaw(int type) {
  const auto kind = std::find_if(kLawKinds.begin(), kLawKinds.end(),
                                 [=](const LawKind& candidate) { return candidate.type == type; });
  return kind == kLawKinds.end() ? nullptr : &kind->coordinate;
}

int DetectScanLaw(ScanLawHolder& holder, const CZRMassSpectrum& spectrum) {
  holder.reset();
  if (spectrum.UsablePoints() == 0 || spectrum.IsCentroided()) return CZRMSScanLaw::kNone;
  const int type = FindScanLaw(holder, spectrum);
  return type != CZRMSScanLaw::kNone ? type : FindScanLaw(holder, PositivePoints(spectrum));
}

int FindScanLaw(ScanLawHolder& holder, const CZRMassSpectrum& spectrum) {
  holder.reset();
  const PointView points(spectrum);
  if (spectrum.IsCentroided() || points.count < 2) return CZRMSScanLaw::kNone;
  const std::vector<MassPair> pairs = SamplePairs(points);
  if (pairs.empty()) return CZRMSScanLaw::kNone;

  const LawKind* best = nullptr;
  int bestCount = -1;
  double bestStep = 0;
  std::vector<double> steps(pairs.size());
  for (const LawKind& kind : kLawKinds) {
    std::transform(pairs.begin(), pairs.end(), steps.begin(),
                   [&](const MassPair& pair) { return kind.step(pair.mass, pair.difference); });
    double step = 0;
    const int count = EstimateModeValue(steps.data(), static_cast<int>(steps.size()), step);
    if (count <= bestCount) continue;
    best = &kind;
    bestCount = count;
    bestStep = step;
  }
  holder = best->make(bestStep);
  return best->type;
}

int EstimateModeValue(const double* values, int count, double& value) {
  value = 0;
  int bestCount = 0;
  for (int j = 0; j < count; ++j) {
    const double low = 0.99 * values[j];
    const double high = 1.01 * values[j];
    const auto near = std::count_if(values, values + count, [=](double y) { return low <= y && y <= high; });
    if (near > bestCount) {
      bestCount = static_cast<int>(near);
      value = values[j];
    }
  }
  return bestCount;
}

double NextMass(const ScanLawHolder& law, double mass) {
  const double next = law ? law->Next(mass) : mass;
  return next > mass ? next : mass + 1.0;
}

double PreviousMass(const ScanLawHolder& law, double mass) {
  if (!law || !(mass > 0)) return mass;
  const double previous = law->Previous(mass);
  return previous > mass / 10 ? previous : 0.0;
}

int SameScanLaw(const ScanLawHolder& one, const ScanLawHolder& other) {
  return one && other && one->IsSame(*other) ? 1 : 0;
}

}  // namespace zrml
