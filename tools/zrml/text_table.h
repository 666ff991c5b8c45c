// Rows of text in aligned columns. A column that is empty in every row is left out; text longer than 120
// characters shifts only the rest of its own row.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/zrml/output.h"

namespace zrml::tool {

class TextTable {
 public:
  enum class Align { kLeft, kRight };
  struct Column {
    std::string title;
    Align align = Align::kLeft;
  };

  /// Shown in an empty cell.
  static constexpr const char* kNothing = "-";

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// One UTF-8 text per column, on one line.
  void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  /// Titles first, unless all are empty.
  void Print(std::string_view indent, Output& out) const;

 private:
  using Row = std::vector<std::string>;
  bool IsShown(std::size_t column) const;
  std::size_t Width(std::size_t column) const;

  std::vector<Column> columns_;
  std::vector<Row> rows_;
};

}  // namespace zrml::tool
