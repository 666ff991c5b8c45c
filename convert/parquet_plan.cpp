#include "convert/parquet_plan.h"

#include <cmath>

#include "convert/losses.h"
#include "convert/ordered_pieces.h"
#include "convert/single_precision.h"
#include "convert/spectrum_reader.h"

namespace zrml::convert {
namespace {

constexpr std::uint64_t kBatchRows = 1u << 16;  // unless a single scan has more

parquet::Type TypeFor(Precision precision, bool isSingleExact) {
  const bool isDouble = precision == Precision::kDouble || (precision == Precision::kExact && !isSingleExact);
  return isDouble ? parquet::Type::kDouble : parquet::Type::kFloat;
}

bool IsSingle(double value) {
  return std::isnan(value) || static_cast<double>(static_cast<float>(value)) == value;
}

// What numbers of 32 bits hold exactly.
struct Exact {
  bool isMass = true;
  bool isIntensity = true;
};

// Looks at the points that will be written, for one worker. What cannot be read is reported when it is
// written.
class PointsLook {
 public:
  PointsLook(source::Source& source, const RunPlan& plan, Losses& losses, Exact looked)
      : reader_(source, plan, losses), exact_(looked) {}

  void Look(const RunEntry& entry) {
    const Spectrum spectrum = reader_.ReadMassOrDrift(entry);
    exact_.isMass = exact_.isMass && RoundToSingle(spectrum.positions, singles_);
    exact_.isIntensity = exact_.isIntensity && RoundToSingle(spectrum.intensities, singles_);
  }

  bool IsNeeded() const { return exact_.isMass || exact_.isIntensity; }
  const Exact& Found() const { return exact_; }

 private:
  SpectrumReader reader_;
  Exact exact_;
  std::vector<float> singles_;
};

class ParquetPlanner {
 public:
  ParquetPlanner(std::span<const std::unique_ptr<source::Source>> workers, const RunPlan& plan,
                 const Hooks& hooks)
      : workers_(workers), plan_(plan), hooks_(hooks) {}

  ParquetPlan Plan(const ArrayOptions& arrays) {
    DivideEntries();
    parquet_.time = TypeFor(arrays.times, areTimesSingle_);
    parquet_.precursor = TypeFor(arrays.masses, arePrecursorsSingle_);
    const Exact exact =
        FindExact({arrays.masses == Precision::kExact, arrays.intensities == Precision::kExact});
    parquet_.mass = TypeFor(arrays.masses, exact.isMass);
    parquet_.intensity = TypeFor(arrays.intensities, exact.isIntensity);
    return std::move(parquet_);
  }

 private:
  void DivideEntries() {
    std::uint64_t rows = 0;
    for (std::size_t i = 0; i < plan_.entries.size(); ++i) {
      ThrowIfCancelled(hooks_.cancel);
      const RunEntry& entry = plan_.entries[i];
      const source::Scan scan = ScanOf(entry);
      const bool isNewFunction = i > 0 && plan_.entries[i - 1].function != entry.function;
      if (isNewFunction || (rows > 0 && rows + scan.points > kBatchRows)) {
        parquet_.ends.push_back(i);
        rows = 0;
      }
      rows += scan.points;
      areTimesSingle_ = areTimesSingle_ && IsSingle(entry.minutes);
      arePrecursorsSingle_ = arePrecursorsSingle_ && IsSingle(scan.precursorMz.value_or(0));
    }
    if (!plan_.entries.empty()) parquet_.ends.push_back(plan_.entries.size());
  }

  source::Scan ScanOf(const RunEntry& entry) {
    try {
      return workers_.front()->ScanAt(plan_.sample, plan_.FunctionOf(entry).position, entry.scan);
    } catch (const source::Error&) {
      return {};
    }
  }

  // Only what is `looked` for is answered.
  Exact FindExact(Exact looked) {
    Losses losses(Losses::Policy::kCounted);
    std::vector<PointsLook> looks;
    for (const std::unique_ptr<source::Source>& worker : workers_)
      looks.emplace_back(*worker, plan_, losses, looked);
    if (!looks.front().IsNeeded()) return looked;
    std::vector<MakePiece> makers;
    makers.reserve(looks.size());
    for (PointsLook& look : looks) {
      makers.push_back([&](std::size_t batch, std::string& found) { LookAtBatch(look, batch, found); });
    }
    OrderedPieces pieces(parquet_.ends.size(), std::move(makers));
    for (std::size_t batch = 0; batch < parquet_.ends.size(); ++batch) {
      ThrowIfCancelled(hooks_.cancel);
      const std::string& found = pieces.Take();
      looked.isMass = looked.isMass && found.front() != 0;
      looked.isIntensity = looked.isIntensity && found.back() != 0;
      parquet_.looked = parquet_.ends[batch];
      if (hooks_.progress) hooks_.progress(parquet_.looked, 2 * plan_.entries.size());
      if (!looked.isMass && !looked.isIntensity) break;
    }
    return looked;
  }

  void LookAtBatch(PointsLook& look, std::size_t batch, std::string& found) const {
    for (std::size_t i = parquet_.BeginOf(batch); i < parquet_.ends[batch] && look.IsNeeded(); ++i)
      look.Look(plan_.entries[i]);
    found = {static_cast<char>(look.Found().isMass), static_cast<char>(look.Found().isIntensity)};
  }

  std::span<const std::unique_ptr<source::Source>> workers_;
  const RunPlan& plan_;
  const Hooks& hooks_;
  ParquetPlan parquet_;
  bool areTimesSingle_ = true;
  bool arePrecursorsSingle_ = true;
};

}  // namespace

ParquetPlan PlanParquet(std::span<const std::unique_ptr<source::Source>> workers, const RunPlan& plan,
                        const ArrayOptions& arrays, const Hooks& hooks) {
  return ParquetPlanner(workers, plan, hooks).Plan(arrays);
}

}  // namespace zrml::convert
