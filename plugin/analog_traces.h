// The list of analog traces that a host sees in a sample of a report. It grows with each look at a sample
// without other functions; existing entries keep their places.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "openlynx/report_index.h"

namespace zrml::plugin {

/// The "[CHROMATOGRAM]" lines of a sample's analog functions, by function, once for each look.
class AnalogTraces {
 public:
  /// The result of one look: runs of `positions`, one per function.
  struct Look {
    std::vector<std::uint64_t> positions;
    std::vector<openlynx::Run> runs;

    bool operator==(const Look& other) const;
  };

  void Add(Look look);

  /// Adds the result of the last look again.
  void AddAgain() { count_ += lastCount_; }

  std::size_t Count() const { return count_; }

  /// No value for a number of Count() or more.
  std::optional<std::uint64_t> Position(std::size_t number) const;

 private:
  // A look and any number of later ones with the same result.
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
