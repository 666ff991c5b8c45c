#include "convert/parquet/page.h"

#include <span>

#include "convert/parquet/compact_writer.h"

namespace zrml::convert::parquet {
namespace {

enum class PageType : std::int32_t { kData = 0, kDictionary = 2 };

// Numbers of the fields in a page's header.
constexpr int kTypeField = 1;
constexpr int kPlainSizeField = 2;
constexpr int kSizeField = 3;
constexpr int kDataField = 5;
constexpr int kDictionaryField = 7;

std::int32_t SizeOf(std::size_t size) { return static_cast<std::int32_t>(size); }

void WriteContent(CompactWriter& writer, PageType type, const PageContent& content) {
  writer.Int32(1, SizeOf(content.count));
  writer.Int32(2, static_cast<std::int32_t>(content.encoding));
  if (type == PageType::kDictionary) return;
  writer.Int32(3, static_cast<std::int32_t>(Encoding::kRuns));  // of definition levels
  writer.Int32(4, static_cast<std::int32_t>(Encoding::kRuns));  // of repetition levels, which there are not
}

std::size_t AppendPage(PageType type, const PageContent& content, Deflater* deflater, std::string& out) {
  std::string_view body = content.body;
  if (deflater != nullptr) {
    const auto packed = deflater->Compress(std::as_bytes(std::span(body)));
    body = {reinterpret_cast<const char*>(packed.data()), packed.size()};
  }
  const std::size_t before = out.size();
  CompactWriter writer(out);
  writer.Int32(kTypeField, static_cast<std::int32_t>(type));
  writer.Int32(kPlainSizeField, SizeOf(content.body.size()));
  writer.Int32(kSizeField, SizeOf(body.size()));
  writer.Struct(type == PageType::kData ? kDataField : kDictionaryField,
                [&](CompactWriter& inner) { WriteContent(inner, type, content); });
  writer.End();
  const std::size_t header = out.size() - before;
  out += body;
  return header + content.body.size();
}

}  // namespace

std::size_t AppendDataPage(const PageContent& content, Deflater* deflater, std::string& out) {
  return AppendPage(PageType::kData, content, deflater, out);
}

std::size_t AppendDictionary(const PageContent& content, Deflater* deflater, std::string& out) {
  return AppendPage(PageType::kDictionary, content, deflater, out);
}

std::string FrontOf(std::string_view levels) { return PlainText(levels); }

}  // namespace zrml::convert::parquet
