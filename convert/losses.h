// Lost data of a source: an Error, or listed when the rest is wanted. Also lists suspect scans. Used by all
// workers at once.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "convert/threads.h"
#include "source/scan_faults.h"
#include "source/source.h"

namespace zrml::convert {

struct Loss {
  enum class Kind { kTrace, kScan, kPoints, kTotal, kAbsorbance, kAbsorbancePoints, kRepresentation };

  Kind kind = Kind::kScan;
  source::FunctionId function = {};  ///< number 0 for data of the sample itself
  std::vector<int> numbers = {};     ///< of scans or traces, from 1, ascending
};

/// "scans of function 2 that cannot be read: 3 (17, 20-21)"
std::string TextOf(const Loss& loss);

class Losses {
 public:
  enum class Policy { kRefused, kCounted };

  explicit Losses(Policy policy) : policy_(policy) {}

  /// Scan or trace `number`, from 1, of a function. Throws an Error unless losses are counted, but not for an
  /// unknown representation, of which nothing is left out.
  void Add(Loss::Kind kind, const source::FunctionId& function, int number);

  /// First those of the sample itself, then by function.
  std::vector<Loss> List() const;

  /// Records a fault of scan `number` of a function, whose points are present.
  void AddFaults(const source::Function& function, int number, const std::vector<source::ScanFault>& faults);
  Findings ListFaults() const;

 private:
  Policy policy_;
  mutable Mutex mutex_;  // guards what follows
  std::vector<Loss> lost_;
  source::FaultyScans faulty_;
};

}  // namespace zrml::convert
