// How far a conversion is: a line on standard error that is written over and over, for a person at a
// terminal.
#pragma once

#include <chrono>
#include <string>

namespace zrml::tool {

/// "[####      ] 40% folder/run.raw" in fewer than `columns` columns, so that the line does not wrap; a long
/// label is cut to its end.
std::string ProgressLine(std::size_t done, std::size_t all, const std::string& label, std::size_t columns);

class ProgressBar {
 public:
  /// Shows nothing unless `isShown`.
  ProgressBar(bool isShown, std::string label) : isShown_(isShown), label_(std::move(label)) {}
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() { Clear(); }

  void Update(std::size_t done, std::size_t all);
  /// Leaves an empty line.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool isShown_;
  std::string label_;
  std::size_t width_ = 0;  // columns of the line, no fewer than it takes
  Clock::time_point next_ = Clock::now();
};

}  // namespace zrml::tool
