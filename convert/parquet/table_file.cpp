#include "convert/parquet/table_file.h"

#include <array>

#include "convert/parquet/compact_writer.h"

namespace zrml::convert::parquet {
namespace {

constexpr std::int32_t kFormatVersion = 2;
constexpr std::string_view kMadeBy = "zrml version " ZRML_VERSION;
constexpr std::string_view kRoot = "schema";
constexpr std::int32_t kUtf8 = 0;  // the older of the two ways to say that bytes are text

enum class Repetition : std::int32_t { kRequired = 0, kOptional = 1 };

std::int64_t Signed(std::uint64_t value) { return static_cast<std::int64_t>(value); }

void WriteColumn(CompactWriter& writer, const Column& column) {
  writer.Int32(1, static_cast<std::int32_t>(column.type));
  writer.Int32(3,
               static_cast<std::int32_t>(column.isOptional ? Repetition::kOptional : Repetition::kRequired));
  writer.Text(4, column.name);
  if (column.type != Type::kText) return;
  writer.Int32(6, kUtf8);
  writer.Struct(10, [](CompactWriter& type) { type.Struct(1, [](CompactWriter&) {}); });  // a string
}

void WriteStatistics(CompactWriter& writer, Type type, const Chunk& chunk) {
  writer.Int64(3, Signed(chunk.absent));
  if (chunk.bounds.IsEmpty()) return;
  writer.Text(5, chunk.bounds.High(type));
  writer.Text(6, chunk.bounds.Low(type));
}

void WriteChunk(CompactWriter& writer, const Column& column, const Chunk& chunk, std::uint64_t position) {
  constexpr std::array kWithDictionary = {static_cast<std::int32_t>(Encoding::kPlain),
                                          static_cast<std::int32_t>(Encoding::kRuns),
                                          static_cast<std::int32_t>(Encoding::kDictionary)};
  const std::size_t encodings = chunk.dictionarySize > 0 ? 3 : 2;
  writer.Int32(1, static_cast<std::int32_t>(column.type));
  writer.Int32s(2, std::span(kWithDictionary).first(encodings));
  writer.Texts(3, {&column.name, 1});
  writer.Int32(4, static_cast<std::int32_t>(chunk.codec));
  writer.Int64(5, Signed(chunk.rows));
  writer.Int64(6, Signed(chunk.plainSize));
  writer.Int64(7, Signed(chunk.pages.size()));
  writer.Int64(9, Signed(position + chunk.dictionarySize));
  if (chunk.dictionarySize > 0) writer.Int64(11, Signed(position));
  writer.Struct(12, [&](CompactWriter& statistics) { WriteStatistics(statistics, column.type, chunk); });
}

}  // namespace

void TableFile::Write(std::string_view bytes) {
  out_.Write(bytes);
  position_ += bytes.size();
}

void TableFile::AddRowGroup(std::span<const Chunk> chunks) {
  CompactWriter writer(groups_);
  const std::uint64_t begin = position_;
  std::uint64_t plainSize = 0;
  std::size_t at = 0;
  writer.Structs(1, chunks, [&](CompactWriter& column, const Chunk& chunk) {
    column.Int64(2, Signed(position_));
    column.Struct(3, [&](CompactWriter& inner) { WriteChunk(inner, columns_[at], chunk, position_); });
    Write(chunk.pages);
    plainSize += chunk.plainSize;
    ++at;
  });
  const std::size_t rows = chunks.front().rows;
  writer.Int64(2, Signed(plainSize));
  writer.Int64(3, Signed(rows));
  writer.Int64(5, Signed(begin));
  writer.Int64(6, Signed(position_ - begin));
  writer.End();
  rows_ += rows;
  ++groupCount_;
}

void TableFile::End() {
  std::string footer;
  CompactWriter writer(footer);
  writer.Int32(1, kFormatVersion);
  std::string schema;
  CompactWriter root(schema);
  root.Text(4, kRoot);
  root.Int32(5, static_cast<std::int32_t>(columns_.size()));
  root.End();
  for (const Column& column : columns_) {
    CompactWriter element(schema);
    WriteColumn(element, column);
    element.End();
  }
  writer.WrittenStructs(2, columns_.size() + 1, schema);
  writer.Int64(3, Signed(rows_));
  writer.WrittenStructs(4, groupCount_, groups_);
  writer.Text(6, kMadeBy);
  // The order of the values in statistics: that of their types.
  writer.Structs(7, columns_,
                 [](CompactWriter& order, const Column&) { order.Struct(1, [](CompactWriter&) {}); });
  writer.End();
  Write(footer);
  Write(PlainNumber(Type::kInt32, static_cast<double>(footer.size())));
  Write(kMark);
}

}  // namespace zrml::convert::parquet
