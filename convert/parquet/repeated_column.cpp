#include "convert/parquet/repeated_column.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "convert/parquet/page.h"
#include "convert/parquet/run_encoder.h"

namespace zrml::convert::parquet {

void RepeatedColumn::Add(const std::string& plain, std::size_t rows) {
  if (rows == 0) return;
  std::uint32_t value = 0;
  if (!plain.empty()) {
    const auto [known, isNew] = numbers_.try_emplace(plain, static_cast<std::uint32_t>(values_.size() + 1));
    if (isNew) {
      values_.push_back(plain);
      valuesSize_ += plain.size();
    }
    value = known->second;
  }
  if (!runs_.empty() && runs_.back().value == value) {
    runs_.back().rows += rows;
  } else {
    runs_.push_back({value, rows});
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
  const std::size_t last = std::max<std::size_t>(values_.size(), 2) - 1;
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
    for (std::size_t row = 0; run.value > 0 && row < run.rows; ++row) values += values_[run.value - 1];
  }
  return values;
}

// Through the dictionary where there are `indices`.
std::size_t RepeatedColumn::AppendPages(const std::string& indices, Deflater* deflater, Chunk& chunk) const {
  std::size_t plainSize = 0;
  if (!indices.empty()) {
    std::string dictionary;
    for (const std::string& value : values_) dictionary += value;
    plainSize = AppendDictionary({values_.size(), Encoding::kPlain, dictionary}, deflater, chunk.pages);
    chunk.dictionarySize = chunk.pages.size();
  }
  const std::string body = Front() + (indices.empty() ? Values() : indices);
  const Encoding encoding = indices.empty() ? Encoding::kPlain : Encoding::kDictionary;
  return plainSize + AppendDataPage({rows_, encoding, body}, deflater, chunk.pages);
}

Chunk RepeatedColumn::Finish(Deflater* deflater) {
  Chunk chunk;
  std::string indices = Indices();
  if (indices.size() + valuesSize_ >= plainSize_) indices.clear();
  chunk.plainSize = AppendPages(indices, nullptr, chunk);
  if (deflater != nullptr) {
    Chunk packed = {.plainSize = chunk.plainSize, .codec = Codec::kGzip};
    AppendPages(indices, deflater, packed);
    if (packed.pages.size() < chunk.pages.size()) chunk = std::move(packed);
  }
  for (const std::string& value : values_) chunk.bounds.Widen(column_.type, value);
  for (const Run& run : runs_) chunk.absent += run.value > 0 ? 0 : run.rows;
  chunk.rows = rows_;
  *this = RepeatedColumn(column_);
  return chunk;
}

}  // namespace zrml::convert::parquet
