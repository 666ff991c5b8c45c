// Matches text the way a scanf format does, piece by piece and independent of the process locale.
#pragma once

#include <optional>
#include <string_view>

namespace zrml {

class ScanText {
 public:
  explicit ScanText(std::string_view text) : rest_(text) {}

  /// Matches the literal part of a format: a blank in `format` matches any run of white space, even an empty
  /// one; every other character matches only itself. On failure the position is where matching stopped, and
  /// later matches should not be tried.
  bool Literal(std::string_view format);

  std::optional<int> Int();        ///< %d
  std::optional<double> Double();  ///< %lf
  std::optional<float> Float();    ///< %f

  std::string_view Rest() const { return rest_; }

 private:
  std::string_view rest_;
};

}  // namespace zrml
