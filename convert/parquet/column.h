// Columns of a table in a Parquet file: their types, values as they stand in the file, and what is known of
// the values of a row group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zrml::convert::parquet {

/// By the numbers that files have for them; text is a byte array, of UTF-8.
enum class Type : std::int32_t { kInt32 = 1, kInt64 = 2, kFloat = 4, kDouble = 5, kText = 6 };

struct Column {
  std::string_view name;
  Type type;
  bool isOptional;  // values may be absent
};

/// A value as files have it: little-endian, a text after its length in four bytes.
std::string PlainNumber(Type type, double value);
std::string PlainText(std::string_view text);

/// The smallest and the largest value, as files have them; both empty where there is none. NaN counts for
/// nothing.
class Bounds {
 public:
  void Widen(Type type, std::string_view plain);
  void Widen(Type type, const Bounds& bounds);

  bool IsEmpty() const { return low_.empty(); }
  /// For statistics, which have texts without their length, and the sign of a zero as it excludes neither.
  std::string Low(Type type) const;
  std::string High(Type type) const;

 private:
  std::string low_;
  std::string high_;
};

enum class Codec : std::int32_t { kNone = 0, kGzip = 2 };
enum class Encoding : std::int32_t { kPlain = 0, kRuns = 3, kDictionary = 8 };

/// The values of a column in a row group, ready for the file.
struct Chunk {
  std::string pages = {};          // with their headers; the dictionary first
  std::size_t plainSize = 0;       // of the pages before their compression
  std::size_t dictionarySize = 0;  // of the dictionary's page; 0 when there is none
  Codec codec = Codec::kNone;
  Bounds bounds = {};
  std::size_t rows = 0;
  std::size_t absent = 0;
};

}  // namespace zrml::convert::parquet
