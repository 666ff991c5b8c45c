// Structures in Thrift's compact protocol, in which a Parquet file describes itself: fields by ascending
// number, numbers as zigzag varints. docs/parquet.md
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zrml::convert::parquet {

/// Seven bits a byte, the lowest first.
void AppendVarint(std::uint64_t value, std::string& out);

/// Appends one structure to a text; call End once, after its last field.
class CompactWriter {
 public:
  explicit CompactWriter(std::string& out) : out_(out) {}

  void Int32(int field, std::int32_t value) { Int(field, kInt32, value); }
  void Int64(int field, std::int64_t value) { Int(field, kInt64, value); }
  void Text(int field, std::string_view text);
  void Int32s(int field, std::span<const std::int32_t> values);
  void Texts(int field, std::span<const std::string_view> texts);
  /// A structure with the fields that `write` gives it.
  template <class Write>
  void Struct(int field, Write write) {
    Head(field, kStruct);
    Nested(write);
  }
  /// One for each item.
  template <class Items, class Write>
  void Structs(int field, const Items& items, Write write) {
    List(field, kStruct, items.size());
    for (const auto& item : items) Nested([&](CompactWriter& inner) { write(inner, item); });
  }
  /// The same of structures written before, one after the other.
  void WrittenStructs(int field, std::size_t count, std::string_view written);

  void End() { out_.push_back('\0'); }

 private:
  enum Type : unsigned { kInt32 = 5, kInt64 = 6, kText = 8, kList = 9, kStruct = 12 };

  template <class Write>
  void Nested(Write write) {
    CompactWriter inner(out_);
    write(inner);
    inner.End();
  }
  void Head(int field, Type type);
  void Int(int field, Type type, std::int64_t value);
  void List(int field, Type type, std::size_t count);

  std::string& out_;
  int last_ = 0;  // number of the last field
};

}  // namespace zrml::convert::parquet
