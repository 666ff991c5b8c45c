// A value of the output: what both the text and the JSON form can show.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "source/source.h"
#include "tools/zrml/json_writer.h"

namespace zrml::tool {

/// std::monostate stands for a value that there is not: left out of text, null in JSON.
using Value = std::variant<std::monostate, bool, int, double, source::Range, std::string>;

inline bool IsAbsent(const Value& value) { return std::holds_alternative<std::monostate>(value); }

/// A function's number; the name of processed data ("p2") is text.
Value ValueOf(const source::FunctionId& id);

template <class T>
Value ValueOrAbsent(const std::optional<T>& value) {
  return value ? Value(*value) : Value();
}

/// UTF-8 on one line.
std::string TextOf(const Value& value);

void WriteJson(const Value& value, JsonWriter& json);

}  // namespace zrml::tool
