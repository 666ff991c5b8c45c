// A value of the output: what both the text and the JSON form can show.
#pragma once

#include <string>
#include <variant>

#include "tools/zrml/json_writer.h"

namespace zrml {

struct NumberRange {
  double low = 0;
  double high = 0;
};

/// std::monostate stands for a value that there is not: left out of text, null in JSON.
using Value = std::variant<std::monostate, bool, int, double, NumberRange, std::wstring>;

inline bool IsAbsent(const Value& value) { return std::holds_alternative<std::monostate>(value); }

/// UTF-8 on one line.
std::string TextOf(const Value& value);

void WriteJson(const Value& value, JsonWriter& json);

}  // namespace zrml
