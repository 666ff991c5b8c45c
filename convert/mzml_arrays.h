// Arrays of numbers in mzML: little-endian, compressed or not, in Base64.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "convert/cv_terms.h"
#include "convert/deflate.h"

namespace zrml::convert {

/// How many bits the numbers of an array get. kExact takes 32 where that keeps all numbers of the array
/// unchanged, and 64 otherwise.
enum class Precision { kExact, kSingle, kDouble };

struct ArrayOptions {
  Precision masses = Precision::kExact;  // and wavelengths
  Precision intensities = Precision::kExact;
  Precision times = Precision::kExact;
  bool isCompressed = true;
  int level = Deflater::kDefaultLevel;  // of compression

  /// What compresses, or nothing.
  std::optional<Deflater> MakeDeflater(Deflater::Wrapper wrapper) const {
    return isCompressed ? std::optional<Deflater>(std::in_place, wrapper, level) : std::nullopt;
  }
};

struct ArrayKind {
  CvTerm term;
  const CvTerm* unit;
  Precision precision;
  std::string_view value = {};
};

/// Writes arrays with buffers of its own. Used by one thread at a time.
class ArrayWriter {
 public:
  explicit ArrayWriter(const ArrayOptions& options)
      : deflater_(options.MakeDeflater(Deflater::Wrapper::kZlib)) {}

  /// A binaryDataArray. An empty one is marked as not compressed: readers differ on compressed empty
  /// arrays.
  void Append(std::string& out, const ArrayKind& kind, std::span<const double> values);

 private:
  std::optional<Deflater> deflater_;
  std::vector<float> singles_;
};

}  // namespace zrml::convert
