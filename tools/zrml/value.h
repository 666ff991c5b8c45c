// A value of the output, for both text and JSON.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "source/source.h"

namespace zrml::tool {

/// std::monostate is an absent value: left out of text, null in JSON.
using Value = std::variant<std::monostate, bool, std::int64_t, double, source::Range, std::string>;

struct Attribute {
  std::string_view key;
  Value value;
};

inline bool IsAbsent(const Value& value) { return std::holds_alternative<std::monostate>(value); }

/// A function's number; the name of processed data ("p2") is text.
Value ValueOf(const source::FunctionId& id);

template <class T>
Value ValueOrAbsent(const std::optional<T>& value) {
  return value ? Value(*value) : Value();
}

/// UTF-8 on one line.
std::string TextOf(const Value& value);
/// Numbers are the shortest that read back the same; NaN and infinity are null in JSON.
std::string JsonOf(const Value& value);

}  // namespace zrml::tool
