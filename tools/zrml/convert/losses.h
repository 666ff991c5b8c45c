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

  /// Something of function `function`, from 1; 0 for the sample's own. `what` is "trace 2". Throws a Failure
  /// unless losses are told.
  void Add(int function, const std::wstring& what);

  /// One of many: "scan", "scans" and " of function 2" for `number` from 1. The same one counts once.
  struct Kind {
    std::wstring one;
    std::wstring many;
    std::wstring owner = {};
  };
  void AddOneOf(int function, const Kind& kind, int number);

  /// A line for each kind, by function.
  std::vector<std::wstring> Describe() const;

 private:
  [[noreturn]] static void Refuse(const std::wstring& what);

  Policy policy_;
  mutable Mutex mutex_;                                         // guards what follows
  std::map<std::pair<int, std::wstring>, std::set<int>> lost_;  // no numbers: a single thing
};

}  // namespace zrml
