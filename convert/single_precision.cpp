#include "convert/single_precision.h"

#include <cmath>
#include <immintrin.h>

namespace zrml::convert {

bool RoundToSingle(std::span<const double> values, std::vector<float>& singles) {
  singles.resize(values.size());
  float* out = singles.data();
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

}  // namespace zrml::convert
