#include "convert/mzml_arrays.h"

#include <bit>

#include "convert/base64.h"
#include "convert/mzml_params.h"
#include "convert/single_precision.h"

namespace zrml::convert {
namespace {

static_assert(std::endian::native == std::endian::little, "arrays go out as they stand in memory");

}  // namespace

void ArrayWriter::Append(std::string& out, const ArrayKind& kind, std::span<const double> values) {
  const bool isExact = kind.precision != Precision::kDouble && RoundToSingle(values, singles_);
  const bool isSingle = isExact || kind.precision == Precision::kSingle;
  const bool isCompressed = deflater_.has_value() && !values.empty();
  std::span<const std::byte> bytes = isSingle ? std::as_bytes(std::span(singles_)) : std::as_bytes(values);
  if (isCompressed) bytes = deflater_->Compress(bytes);
  out += "<binaryDataArray";
  AppendAttribute(out, "encodedLength", Base64Length(bytes.size()));
  out += ">\n";
  AppendCvParam(out, isSingle ? cv::kSingle : cv::kDouble);
  AppendCvParam(out, isCompressed ? cv::kZlib : cv::kNoCompression);
  AppendCvParam(out, kind.term, kind.value, kind.unit);
  out += "<binary>";
  AppendBase64(bytes, out);
  out += "</binary>\n</binaryDataArray>\n";
}

}  // namespace zrml::convert
