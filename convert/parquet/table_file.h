// A table as a Parquet file: row groups one after the other, and at the end what it holds and where.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "convert/byte_sink.h"
#include "convert/parquet/column.h"

namespace zrml::convert::parquet {

class TableFile {
 public:
  /// Parquet's mark, at both ends of a file.
  static constexpr std::string_view kMark = "PAR1";

  TableFile(std::vector<Column> columns, ByteSink& out) : columns_(std::move(columns)), out_(out) {}

  /// In this order; AddRowGroup with a chunk for each column, all of as many rows. Finishing the sink is the
  /// caller's.
  void Begin() { Write(kMark); }
  void AddRowGroup(std::span<const Chunk> chunks);
  void End();

 private:
  void Write(std::string_view bytes);

  std::vector<Column> columns_;
  ByteSink& out_;
  std::uint64_t position_ = 0;  // in the file
  std::uint64_t rows_ = 0;
  std::string groups_;  // about the row groups, as the end of the file has it
  std::size_t groupCount_ = 0;
};

}  // namespace zrml::convert::parquet
