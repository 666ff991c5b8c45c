#include "spectrum/profile_stretches.h"

#include <algorithm>
#include <array>
#include <bit>
#include <emmintrin.h>

namespace zrml {
namespace {

constexpr SampleIndex kBits = 64;

// The lower halves of each number of both.
__m128i HalvesOf(__m128d one, __m128d other) {
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(one), _mm_castpd_ps(other), 0x88));
}

// A bit for each of 64 samples: whether the test of two at a time is true of it. Sixteen results become bits
// at once.
template <class Test>
std::uint64_t BitsOf(const double* samples, Test areTrue) {
  std::uint64_t bits = 0;
  for (SampleIndex i = 0; i < kBits; i += 16) {
    const auto fourFrom = [&](SampleIndex k) {
      return HalvesOf(areTrue(_mm_loadu_pd(samples + i + k)), areTrue(_mm_loadu_pd(samples + i + k + 2)));
    };
    const __m128i eight = _mm_packs_epi32(fourFrom(0), fourFrom(4));
    const __m128i others = _mm_packs_epi32(fourFrom(8), fourFrom(12));
    bits |= static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_packs_epi16(eight, others))) << i;
  }
  return bits;
}

std::uint64_t BitsOfIntensities(const double* samples) {
  const __m128d lowest = _mm_set1_pd(kLowestIntensity);
  const __m128d highest = _mm_set1_pd(kHighestIntensity);
  return BitsOf(samples, [&](__m128d values) {
    return _mm_and_pd(_mm_cmpge_pd(values, lowest), _mm_cmple_pd(values, highest));
  });
}

std::uint64_t BitsOfThoseBelow(const double* samples, double level) {
  const __m128d levels = _mm_set1_pd(level);
  return BitsOf(samples, [&](__m128d values) { return _mm_cmplt_pd(values, levels); });
}

// The intensities without another one in the two samples before and behind. Those at the ends of the 64 have
// surroundings that are not known here.
std::uint64_t AloneAmong(std::uint64_t intensities) {
  constexpr std::uint64_t kInner = ~std::uint64_t{0} >> 4 << 2;
  const std::uint64_t beside = intensities << 1 | intensities << 2 | intensities >> 1 | intensities >> 2;
  return intensities & ~beside & kInner;
}

}  // namespace

Stretches::Stretches(std::span<const double> samples, double least)
    : samples_(samples.data()), count_(static_cast<SampleIndex>(samples.size())), least_(least) {}

// The first sample from there on that is in a stretch, or not in one.
template <bool kIsMember>
SampleIndex Stretches::Find(SampleIndex from) {
  while (from < count_) {
    if (from / kBits != word_) LookAt(from / kBits);
    const std::uint64_t found = (kIsMember ? members_ : ~members_) >> (from % kBits);
    if (found != 0) return std::min(from + std::countr_zero(found), count_);
    from = (from / kBits + 1) * kBits;
  }
  return count_;
}

SampleRange Stretches::Next() {
  const SampleIndex begin = Find<true>(passed_);
  passed_ = Find<false>(begin);
  return {begin, passed_};
}

void Stretches::SkipTo(SampleIndex sample) {
  if (sample > passed_) passed_ = Find<false>(sample);
}

void Stretches::LookAt(SampleIndex word) {
  word_ = word;
  const SampleIndex first = word * kBits;
  const double* samples = samples_ + first;
  std::array<double, kBits> last;
  if (count_ - first < kBits) {
    std::fill(std::copy(samples, samples_ + count_, last.begin()), last.end(), 0.0);
    samples = last.data();
  }
  const std::uint64_t intensities = BitsOfIntensities(samples);
  const bool isEndOfOther = first > 0 && CountedIntensity(samples_[first - 1]) > 0;
  members_ = intensities | intensities << 1 | std::uint64_t{isEndOfOther};
  if (least_ > kLowestIntensity) {
    const std::uint64_t low = AloneAmong(intensities) & BitsOfThoseBelow(samples, least_);
    members_ &= ~(low | low << 1);
  }
}

}  // namespace zrml
