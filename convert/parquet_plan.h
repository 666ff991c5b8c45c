// How a run becomes a Parquet file: which scans are rendered together, and how many bits its numbers have.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "convert/hooks.h"
#include "convert/mzml_arrays.h"
#include "convert/parquet/column.h"
#include "convert/plan.h"

namespace zrml::convert {

struct ParquetPlan {
  /// Of each batch of entries the place behind its last. A batch has scans of one function.
  std::vector<std::size_t> ends = {};
  parquet::Type time = parquet::Type::kFloat;
  parquet::Type precursor = parquet::Type::kFloat;
  parquet::Type mass = parquet::Type::kFloat;
  parquet::Type intensity = parquet::Type::kFloat;
  std::size_t looked = 0;  ///< entries whose points were read for that

  std::size_t BeginOf(std::size_t batch) const { return batch == 0 ? 0 : ends[batch - 1]; }
};

/// Reads all points, on all `workers`, until it is known that 32 bits are not enough. The progress is that of
/// reading the entries, which may be half of the work, and of writing them.
ParquetPlan PlanParquet(std::span<const std::unique_ptr<source::Source>> workers, const RunPlan& plan,
                        const ArrayOptions& arrays, const Hooks& hooks);

}  // namespace zrml::convert
