#include "convert/parquet/compact_writer.h"

namespace zrml::convert::parquet {
namespace {

// Small numbers of either sign become small ones without a sign.
std::uint64_t Zigzag(std::int64_t value) {
  return static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63);
}

void AppendText(std::string_view text, std::string& out) {
  AppendVarint(text.size(), out);
  out += text;
}

}  // namespace

void AppendVarint(std::uint64_t value, std::string& out) {
  for (; value >= 0x80; value >>= 7) out.push_back(static_cast<char>(value | 0x80));
  out.push_back(static_cast<char>(value));
}

// Fields of these structures are never more than 15 apart, which would need a longer form.
void CompactWriter::Head(int field, Type type) {
  out_.push_back(static_cast<char>(static_cast<unsigned>(field - last_) << 4 | type));
  last_ = field;
}

void CompactWriter::Int(int field, Type type, std::int64_t value) {
  Head(field, type);
  AppendVarint(Zigzag(value), out_);
}

void CompactWriter::Text(int field, std::string_view text) {
  Head(field, kText);
  AppendText(text, out_);
}

void CompactWriter::List(int field, Type type, std::size_t count) {
  constexpr std::size_t kLong = 15;
  Head(field, kList);
  out_.push_back(static_cast<char>((count < kLong ? count : kLong) << 4 | type));
  if (count >= kLong) AppendVarint(count, out_);
}

void CompactWriter::Int32s(int field, std::span<const std::int32_t> values) {
  List(field, kInt32, values.size());
  for (const std::int32_t value : values) AppendVarint(Zigzag(value), out_);
}

void CompactWriter::Texts(int field, std::span<const std::string_view> texts) {
  List(field, kText, texts.size());
  for (const std::string_view text : texts) AppendText(text, out_);
}

void CompactWriter::WrittenStructs(int field, std::size_t count, std::string_view written) {
  List(field, kStruct, count);
  out_ += written;
}

}  // namespace zrml::convert::parquet
