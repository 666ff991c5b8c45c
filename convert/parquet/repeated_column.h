// A column whose values repeat: gathered for a row group as runs, then written through a dictionary where
// that is shorter than the values themselves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "convert/deflate.h"
#include "convert/parquet/column.h"
#include "convert/parquet/dictionary.h"

namespace zrml::convert::parquet {

class RepeatedColumn {
 public:
  explicit RepeatedColumn(const Column& column) : column_(column) {}

  /// A value as files have it, or an empty text where it is absent, for as many rows.
  void Add(std::string_view plain, std::size_t rows);

  /// The row group; compressed by `deflater`, unless that is null or makes it longer. The column is empty
  /// then.
  Chunk Finish(Deflater* deflater);

 private:
  struct Run {
    std::uint32_t value;  // from 1, in the order of the dictionary; 0 where it is absent
    std::uint32_t rows;
  };

  std::string Front() const;
  std::string Indices() const;
  std::string Values() const;
  std::size_t AppendPages(const std::string& indices, Deflater* deflater, Chunk& chunk) const;

  Column column_;
  std::vector<Run> runs_;
  Dictionary values_;
  std::size_t plainSize_ = 0;  // bytes of all values
  std::size_t rows_ = 0;
};

}  // namespace zrml::convert::parquet
