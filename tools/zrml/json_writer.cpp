#include "tools/zrml/json_writer.h"

#include <cmath>

#include "tools/zrml/format.h"

namespace zrml::tool {

void JsonWriter::Indent() {
  out_.Text("\n");
  for (int i = 0; i < depth_; ++i) out_.Text("  ");
}

void JsonWriter::Separate() {
  if (!isKeyed_ && depth_ > 0) {
    if (!isFirst_) out_.Text(",");
    Indent();
  }
  isFirst_ = isKeyed_ = false;
}

JsonWriter& JsonWriter::Key(std::string_view key) {
  Separate();
  out_.Text(QuotedJson(key) + ": ");
  isKeyed_ = true;
  return *this;
}

void JsonWriter::Begin(char bracket) {
  Separate();
  out_.Text({&bracket, 1});
  ++depth_;
  isFirst_ = true;
}

void JsonWriter::End(char bracket) {
  --depth_;
  if (!isFirst_) Indent();
  out_.Text({&bracket, 1});
  isFirst_ = false;
}

void JsonWriter::Raw(std::string_view json) {
  Separate();
  out_.Text(json);
}

void JsonWriter::Put(const Value& value) { Raw(JsonOf(value)); }

void JsonWriter::Members(const std::vector<Attribute>& attributes) {
  for (const Attribute& attribute : attributes) Key(attribute.key).Put(attribute.value);
}

void JsonWriter::Numbers(std::span<const double> values) {
  Separate();
  out_.Text("[");
  std::string_view separator;
  for (const double value : values) {
    out_.Text(separator);
    std::isfinite(value) ? out_.Number(value) : out_.Text("null");
    separator = ", ";
  }
  out_.Text("]");
}

}  // namespace zrml::tool
