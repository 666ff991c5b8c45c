// The numbers of scans for people: those of the list in order of time, which the order of the files may not
// be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zrml::masslynx {

struct ScanNumbers {
  std::vector<std::uint32_t> listed = {};  ///< of each record of the index; empty when these are in order

  /// Of the record at `place`, from 0.
  std::uint64_t Of(std::size_t place) const { return listed.empty() ? place + 1 : listed[place]; }
};

}  // namespace zrml::masslynx
