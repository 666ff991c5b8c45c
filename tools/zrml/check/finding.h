// What a look at the files of a source has found.
#pragma once

#include <string>

namespace zrml {

// What a finding is about; functions by their numbers in the provider's list, from 1.
struct Concern {
  enum class Kind {
    kAll,
    kFunction,
    kFunctionsFrom,  // a function is not listed: it and those behind it, whose numbers are not what they were
    kAbsorbance,
    kTraces,  // of the sample
    kSample,  // of a report, from 1
    kNone,    // another function than the one that the path chooses
  };

  Kind kind = Kind::kAll;
  int number = 0;
};

struct Finding {
  std::wstring file;       // its name; empty when it is about the whole
  std::wstring problem;    // "is missing, so the function has no scans"
  bool losesData = false;  // the provider gives zeros or nothing for what was acquired
  Concern concern = {};
};

}  // namespace zrml
