// Pages of a column: a header and a body, which is compressed or not.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "convert/deflate.h"
#include "convert/parquet/column.h"

namespace zrml::convert::parquet {

/// The number of rows in a page, or of values in a dictionary, and how they are encoded.
struct PageContent {
  std::size_t count = 0;
  Encoding encoding = Encoding::kPlain;
  std::string_view body = {};
};

/// Append a page, compressed where there is a `deflater`, and return its size without compression.
std::size_t AppendDataPage(const PageContent& content, Deflater* deflater, std::string& out);
std::size_t AppendDictionary(const PageContent& content, Deflater* deflater, std::string& out);

/// What the body of an optional column's page begins with: `levels`, encoded runs of 1 where a row has a
/// value and of 0 where it has none.
std::string FrontOf(std::string_view levels);

}  // namespace zrml::convert::parquet
