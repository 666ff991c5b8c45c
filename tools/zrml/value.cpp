#include "tools/zrml/value.h"

#include <array>

#include "tools/zrml/format.h"

namespace zrml::tool {
namespace {

struct TextWriter {
  std::string operator()(std::monostate) const { return {}; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(int value) const { return std::to_string(value); }
  std::string operator()(double value) const { return Number(value); }
  std::string operator()(const source::Range& range) const {
    return Number(range.low) + " to " + Number(range.high);
  }
  std::string operator()(const std::string& value) const { return VisibleText(value); }
};

struct ValueWriter {
  JsonWriter& json;

  void operator()(std::monostate) const { json.Null(); }
  void operator()(bool value) const { json.Bool(value); }
  void operator()(int value) const { json.Integer(value); }
  void operator()(double value) const { json.Number(value); }
  void operator()(const source::Range& range) const { json.Numbers(std::array{range.low, range.high}); }
  void operator()(const std::string& value) const { json.String(value); }
};

}  // namespace

Value ValueOf(const source::FunctionId& id) {
  return id.process == 0 ? Value(id.number) : Value(source::TextOf(id));
}

std::string TextOf(const Value& value) { return std::visit(TextWriter(), value); }

void WriteJson(const Value& value, JsonWriter& json) { std::visit(ValueWriter{json}, value); }

}  // namespace zrml::tool
