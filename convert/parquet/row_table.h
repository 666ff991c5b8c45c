// A table that is made row by row, as a Parquet file: row groups of many rows of short values.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "convert/deflate.h"
#include "convert/parquet/repeated_column.h"
#include "convert/parquet/table_file.h"

namespace zrml::convert::parquet {

class RowTable {
 public:
  RowTable(const std::vector<Column>& columns, ByteSink& out);

  /// A value for each column as files have it; an empty text where it is absent.
  void Add(std::span<const std::string> row);
  bool IsEmpty() const { return isEmpty_; }
  /// Call once, after the last Add. Finishing the sink is the caller's.
  void End();

 private:
  static constexpr std::size_t kGroupRows = 1u << 16;

  void EndGroup();

  std::vector<RepeatedColumn> columns_;  // of the row group
  std::size_t rows_ = 0;                 // in it
  bool isEmpty_ = true;
  TableFile file_;
  Deflater deflater_{Deflater::Wrapper::kGzip};
};

}  // namespace zrml::convert::parquet
