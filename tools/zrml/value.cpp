#include "tools/zrml/value.h"

#include <cmath>

#include "tools/zrml/format.h"

namespace zrml::tool {
namespace {

struct TextWriter {
  std::string operator()(std::monostate) const { return {}; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return ShortNumber(value); }
  std::string operator()(const source::Range& range) const {
    return ShortNumber(range.low) + " to " + ShortNumber(range.high);
  }
  std::string operator()(const std::string& value) const { return VisibleText(value); }
};

struct JsonText : TextWriter {
  using TextWriter::operator();
  std::string operator()(std::monostate) const { return "null"; }
  std::string operator()(double value) const { return std::isfinite(value) ? Number(value) : "null"; }
  std::string operator()(const source::Range& range) const {
    return '[' + (*this)(range.low) + ", " + (*this)(range.high) + ']';
  }
  std::string operator()(const std::string& value) const { return QuotedJson(value); }
};

}  // namespace

Value ValueOf(const source::FunctionId& id) {
  return id.process == 0 ? Value(id.number) : Value(source::TextOf(id));
}

std::string TextOf(const Value& value) { return std::visit(TextWriter(), value); }

std::string JsonOf(const Value& value) { return std::visit(JsonText(), value); }

}  // namespace zrml::tool
