// The functions of a raw directory as its provider lists them: those of the function table, then those that
// the history adds.
#pragma once

#include <string>
#include <vector>

namespace zrml {

inline constexpr int kFormatUnknown = -1;

struct RawFunction {
  std::wstring stem;  // of its files: "_FUNC001"
  int dataFormat = kFormatUnknown;
  bool isAbsorbance = false;
  bool isProcessed = false;
  bool isListed = false;
  int number = 0;  // in the list, from 1; of one that is not listed, that which it would have
};

struct RawFunctions {
  std::vector<RawFunction> functions;
  int listedRaw = 0;
  int listed = 0;
};

/// Without those steps of the history that have no data file, which are nothing unusual.
RawFunctions ReadRawFunctions(const std::wstring& folder);

}  // namespace zrml
