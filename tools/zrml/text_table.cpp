#include "tools/zrml/text_table.h"

#include <algorithm>

#include "tools/zrml/format.h"

namespace zrml::tool {
namespace {

constexpr std::size_t kWidest = 120;

}  // namespace

bool TextTable::IsShown(std::size_t column) const {
  return std::any_of(rows_.begin(), rows_.end(), [&](const Row& row) { return row[column] != kNothing; });
}

std::size_t TextTable::Width(std::size_t column) const {
  std::size_t width = CharacterCount(columns_[column].title);
  for (const Row& row : rows_) width = std::max(width, std::min(CharacterCount(row[column]), kWidest));
  return width;
}

void TextTable::Print(std::string_view indent, Output& out) const {
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) widths.push_back(IsShown(i) ? Width(i) : 0);
  const auto printRow = [&](const Row& cells) {
    std::string line(indent);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (widths[i] == 0) continue;
      const std::size_t width = CharacterCount(cells[i]);
      const std::string padding(widths[i] - std::min(widths[i], width), ' ');
      line += columns_[i].align == Align::kRight ? padding + cells[i] : cells[i] + padding;
      line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out.Text(line + "\n");
  };
  Row titles;
  for (const Column& column : columns_) titles.push_back(column.title);
  const auto isEmpty = [](const std::string& title) { return title.empty(); };
  if (!std::all_of(titles.begin(), titles.end(), isEmpty)) printRow(titles);
  for (const Row& row : rows_) printRow(row);
}

}  // namespace zrml::tool
