// The list of analog traces that a host sees in a sample of a report: it grows with each look at a sample
// that has no other functions, and what was there keeps its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "openlynx/report_index.h"

namespace zrml::plugin {

/// The "[CHROMATOGRAM]" lines of a sample's analog functions, by function, as often as they were looked for.
class AnalogTraces {
 public:
  /// What one look finds: runs of `positions`, one for each function.
  struct Look {
    std::vector<std::uint64_t> positions;
    std::vector<openlynx::Run> runs;

    bool operator==(const Look& other) const;
  };

  void Add(Look look);

  /// Adds what the last look found once more.
  void AddAgain() { count_ += lastCount_; }

  std::size_t Count() const { return count_; }

  /// No value for a number that is not below Count().
  std::optional<std::uint64_t> Position(std::size_t number) const;

 private:
  // A look, and any number of further ones with the same result.
  struct Looks {
    Look look;
    std::vector<std::size_t> ends;  // of the runs, counted from the first
    std::size_t first = 0;          // number of the first trace
  };

  std::vector<Looks> looks_;
  std::size_t lastCount_ = 0;
  std::size_t count_ = 0;
};

}  // namespace zrml::plugin
