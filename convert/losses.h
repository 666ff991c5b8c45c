// What of a source is lost: an Error, or, when what is left is wanted, counted. Used by all workers at once.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "convert/threads.h"
#include "source/source.h"

namespace zrml::convert {

struct Loss {
  enum class Kind { kTrace, kScan, kPoints, kTotal, kAbsorbance, kAbsorbancePoints };

  Kind kind = Kind::kScan;
  source::FunctionId function = {};  ///< number 0 for what the sample has without a function
  std::size_t count = 0;             ///< of scans or traces
  int first = 0;                     ///< number of the first of them, from 1
};

/// "scans of function 2 that cannot be read: 3; the first is 17"
std::string TextOf(const Loss& loss);

class Losses {
 public:
  enum class Policy { kRefused, kCounted };

  explicit Losses(Policy policy) : policy_(policy) {}

  /// Scan or trace `number`, from 1, of a function. Throws an Error unless losses are counted.
  void Add(Loss::Kind kind, const source::FunctionId& function, int number);

  /// The sample's own first, then by function.
  std::vector<Loss> List() const;

 private:
  Policy policy_;
  mutable Mutex mutex_;  // guards what follows
  std::vector<Loss> lost_;
};

}  // namespace zrml::convert
