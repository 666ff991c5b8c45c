#include "convert/parquet/repeated_column.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "convert/parquet/page.h"
#include "convert/parquet/run_encoder.h"

namespace zrml::convert::parquet {

void RepeatedColumn::Add(std::string_view plain, std::size_t rows) {
  if (rows == 0) return;
  const auto added = static_cast<std::uint32_t>(rows);
  const std::uint32_t value = plain.empty() ? 0 : values_.PlaceOf(plain) + 1;
  if (!runs_.empty() && runs_.back().value == value) {
    runs_.back().rows += added;
  } else {
    runs_.push_back({value, added});
  }
  rows_ += rows;
  plainSize_ += plain.size() * rows;
}

std::string RepeatedColumn::Front() const {
  if (!column_.isOptional) return {};
  std::string levels;
  RunEncoder encoder(1, levels);
  for (const Run& run : runs_) encoder.Add(run.value > 0 ? 1 : 0, run.rows);
  encoder.Finish();
  return FrontOf(levels);
}

// Places in the dictionary, after how many bits each has.
std::string RepeatedColumn::Indices() const {
  const std::size_t last = std::max<std::size_t>(values_.Count(), 2) - 1;
  const int bits = std::bit_width(static_cast<std::uint32_t>(last));
  std::string indices(1, static_cast<char>(bits));
  RunEncoder encoder(bits, indices);
  for (const Run& run : runs_) {
    if (run.value > 0) encoder.Add(run.value - 1, run.rows);
  }
  encoder.Finish();
  return indices;
}

std::string RepeatedColumn::Values() const {
  std::string values;
  values.reserve(plainSize_);
  for (const Run& run : runs_) {
    for (std::size_t row = 0; run.value > 0 && row < run.rows; ++row)
      values += values_.ValueAt(run.value - 1);
  }
  return values;
}

// Through the dictionary where there are `indices`.
std::size_t RepeatedColumn::AppendPages(const std::string& indices, Deflater* deflater, Chunk& chunk) const {
  std::size_t plainSize = 0;
  if (!indices.empty()) {
    const PageContent dictionary = {values_.Count(), Encoding::kPlain, values_.Bytes()};
    plainSize = AppendDictionary(dictionary, deflater, chunk.pages);
    chunk.dictionarySize = chunk.pages.size();
  }
  const std::string body = Front() + (indices.empty() ? Values() : indices);
  const Encoding encoding = indices.empty() ? Encoding::kPlain : Encoding::kDictionary;
  return plainSize + AppendDataPage({rows_, encoding, body}, deflater, chunk.pages);
}

Chunk RepeatedColumn::Finish(Deflater* deflater) {
  Chunk chunk;
  std::string indices = Indices();
  if (indices.size() + values_.Bytes().size() >= plainSize_) indices.clear();
  chunk.plainSize = AppendPages(indices, nullptr, chunk);
  if (deflater != nullptr) {
    Chunk packed = {.plainSize = chunk.plainSize, .codec = Codec::kGzip};
    AppendPages(indices, deflater, packed);
    if (packed.pages.size() < chunk.pages.size()) chunk = std::move(packed);
  }
  for (std::size_t place = 0; place < values_.Count(); ++place)
    chunk.bounds.Widen(column_.type, values_.ValueAt(place));
  for (const Run& run : runs_) chunk.absent += run.value > 0 ? 0 : run.rows;
  chunk.rows = rows_;
  *this = RepeatedColumn(column_);
  return chunk;
}

}  // namespace zrml::convert::parquet
