// What of a source cannot be read: a Failure, or, when the user wants what there is, counted and told at the
// end. Used by all workers at once.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/zrml/convert/threads.h"

namespace zrml {

class Losses {
 public:
  enum class Policy { kRefused, kTold };

  explicit Losses(Policy policy) : policy_(policy) {}

  /// " of function 2"; nothing for 0.
  static std::wstring Owner(int function);

  /// What is numbered: "scan", "scans" and " of function 2".
  struct Kind {
    std::wstring one;
    std::wstring many;
    std::wstring owner = {};
  };

  /// Number `number`, from 1, of function `function`, from 1; 0 for the sample's own. The same one counts
  /// once. Throws a Failure unless losses are told.
  void Add(int function, const Kind& kind, int number);

  /// A line for each kind, by function.
  std::vector<std::wstring> Describe() const;

 private:
  Policy policy_;
  mutable Mutex mutex_;  // guards what follows
  std::map<std::pair<int, std::wstring>, std::set<int>> lost_;
};

}  // namespace zrml
