// The output of a command that prints points: attributes, then columns of numbers. Text has "# key: value"
// lines, a line of column names and a line per point, separated by tabs; JSON has the attributes as members
// and each column as an array.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "tools/zrml/json_writer.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/output.h"
#include "tools/zrml/value.h"

namespace zrml::tool {

struct Column {
  std::string_view name;  // in the line of column names
  std::string_view key;   // in JSON
  std::span<const double> values;
};

struct Printout {
  void Add(const std::vector<Attribute>& more) {
    attributes.insert(attributes.end(), more.begin(), more.end());
  }

  std::vector<Attribute> attributes;
  std::vector<Column> columns;  // of one length
};

/// With the attributes that say where the points are from: a function, or a whole sample.
Printout PrintoutOf(source::Source& source, const FunctionPosition& position);
Printout PrintoutOf(source::Source& source, int sample);

void PrintText(const Printout& printout, Output& out);
void PrintJson(const Printout& printout, Output& out);
/// The object of PrintJson as a part of a larger document.
void PutJson(const Printout& printout, JsonWriter& json);

}  // namespace zrml::tool
