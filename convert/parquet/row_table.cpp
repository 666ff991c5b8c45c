#include "convert/parquet/row_table.h"

namespace zrml::convert::parquet {

RowTable::RowTable(const std::vector<Column>& columns, ByteSink& out)
    : columns_(columns.begin(), columns.end()), file_(columns, out) {
  file_.Begin();
}

void RowTable::Add(std::span<const std::string> row) {
  for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i].Add(row[i], 1);
  isEmpty_ = false;
  if (++rows_ == kGroupRows) EndGroup();
}

void RowTable::EndGroup() {
  std::vector<Chunk> chunks;
  for (RepeatedColumn& column : columns_) chunks.push_back(column.Finish(&deflater_));
  file_.AddRowGroup(chunks);
  rows_ = 0;
}

void RowTable::End() {
  if (rows_ > 0) EndGroup();
  file_.End();
}

}  // namespace zrml::convert::parquet
