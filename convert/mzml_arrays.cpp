#include "convert/mzml_arrays.h"

#include <bit>
#include <cmath>
#include <immintrin.h>

#include "convert/base64.h"
#include "convert/mzml_params.h"

namespace zrml::convert {
namespace {

static_assert(std::endian::native == std::endian::little, "arrays go out as they stand in memory");

}  // namespace

ArrayWriter::ArrayWriter(bool isCompressed) {
  if (isCompressed) deflater_.emplace(Deflater::Wrapper::kZlib);
}

bool ArrayWriter::Round(std::span<const double> values) {
  singles_.resize(values.size());
  float* out = singles_.data();
  __m128d lost = _mm_setzero_pd();
  std::size_t i = 0;
  for (; values.size() - i >= 2; i += 2, out += 2) {
    const __m128d pair = _mm_loadu_pd(values.data() + i);
    const __m128 rounded = _mm_cvtpd_ps(pair);
    _mm_storel_pi(reinterpret_cast<__m64*>(out), rounded);
    const __m128d differs = _mm_cmpneq_pd(_mm_cvtps_pd(rounded), pair);
    lost = _mm_or_pd(lost, _mm_and_pd(differs, _mm_cmpord_pd(pair, pair)));  // NaN stays NaN
  }
  if (i == values.size()) return _mm_movemask_pd(lost) == 0;
  *out = static_cast<float>(values[i]);
  const bool isLost = static_cast<double>(*out) != values[i] && !std::isnan(values[i]);
  return _mm_movemask_pd(lost) == 0 && !isLost;
}

void ArrayWriter::Append(std::string& out, const ArrayKind& kind, std::span<const double> values) {
  const bool isExact = kind.precision != Precision::kDouble && Round(values);
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
