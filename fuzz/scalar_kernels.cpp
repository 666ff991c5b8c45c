#include "fuzz/scalar_kernels.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

#include "masslynx/scandata/packed_point.h"

namespace zrml {
namespace fuzz {
namespace {

using namespace masslynx;

template <PackedPoint (*kUnpack)(const std::byte*), std::size_t kSize>
void Unpack(const std::byte* points, std::size_t count, float* rawMasses, double* intensities) {
  for (std::size_t i = 0; i < count; ++i) {
    const PackedPoint point = kUnpack(points + i * kSize);
    rawMasses[i] = point.mass;
    if (intensities != nullptr) intensities[i] = point.intensity;
  }
}

bool UnpackPairs(const std::byte* pairs, std::size_t count, float* rawMasses, double* intensities) {
  bool hasEverySecond = true;
  for (std::size_t i = 0; i < count; ++i) {
    const PackedPair pair = UnpackPair(pairs + i / 2 * kPairSize);
    rawMasses[i] = static_cast<float>(pair.rawMass[i % 2]) / kPairMassScale;
    intensities[i] = IntensityWord(pair.intensityWord[i % 2]);
    if (i % 2 == 1 && pair.intensityWord[1] >> 3 == 0) hasEverySecond = false;
  }
  return hasEverySecond;
}

void Words(const std::byte* points, std::size_t count, double* intensities) {
  for (std::size_t i = 0; i < count; ++i) intensities[i] = IntensityWord(LoadU16(points + 2 * i));
}

template <std::size_t kGroup>
void Groups(const std::byte* points, std::size_t count, double* intensities) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::byte* const group = points + i / kGroup * 10;
    const std::size_t place = i % kGroup;
    intensities[i] = PackedIntensity(LoadI16(group + 2 * place), LoadU16(group + 8) >> (4 * place) & 0xFU);
  }
}

void Polynomial(const double* c, std::size_t coefficients, double* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    double y = c[coefficients - 1];
    for (std::size_t k = coefficients - 1; k-- > 0;) y = y * values[i] + c[k];
    values[i] = y;
  }
}

template <bool kIsRoot>
void Calibrate(const double* c, std::size_t coefficients, const float* raw, std::size_t count,
               double* masses) {
  for (std::size_t i = 0; i < count; ++i) {
    masses[i] = kIsRoot ? std::sqrt(double{raw[i]}) : double{raw[i]};
    Polynomial(c, coefficients, masses + i, 1);
    masses[i] = static_cast<float>(kIsRoot ? masses[i] * masses[i] : masses[i]);
  }
}

bool Descends(double before, const double* values, std::size_t count) {
  return std::any_of(values, values + count,
                     [&](double value) { return value <= std::exchange(before, value); });
}

float LeastStep(const float* values, std::size_t count) {
  float least = FLT_MAX;
  for (std::size_t i = 1; i < count; ++i) least = std::min(least, values[i] - values[i - 1]);
  return least;
}

void LinearAxis(double start, double step, double* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, start += step) values[i] = static_cast<float>(start);
}

const PointKernels* chosen = &kScalarKernels;

}  // namespace

constinit const PointKernels kScalarKernels = {
    .unpack0 = Unpack<UnpackPoint0, 4>,
    .unpack8 = Unpack<UnpackPoint8, 6>,
    .unpack9 = Unpack<UnpackPoint9, 6>,
    .unpack12 = Unpack<UnpackPoint12, 8>,
    .unpack13 = Unpack<UnpackPoint12, 12>,
    .unpackPairs = UnpackPairs,
    .words = Words,
    .groupsOf4 = Groups<4>,
    .groupsOf2 = Groups<2>,
    .scale =
        [](float factor, float* values, std::size_t count) {
          std::for_each_n(values, count, [&](float& value) { value *= factor; });
        },
    .root =
        [](double* values, std::size_t count) {
          std::transform(values, values + count, values, [](double x) { return std::sqrt(x); });
        },
    .square =
        [](double* values, std::size_t count) {
          std::transform(values, values + count, values, [](double x) { return x * x; });
        },
    .polynomial = Polynomial,
    .calibrate = Calibrate<false>,
    .calibrateRoot = Calibrate<true>,
    .round =
        [](double* values, std::size_t count) {
          std::transform(values, values + count, values,
                         [](double x) { return double{static_cast<float>(x)}; });
        },
    .widen = [](const float* values, std::size_t count,
                double* widened) { std::copy_n(values, count, widened); },
    .descends = Descends,
    .leastStep = LeastStep,
    .hasZero = [](const double* values,
                  std::size_t count) { return std::find(values, values + count, 0.0) != values + count; },
    .linearAxis = LinearAxis,
};

std::vector<const PointKernels*> FastKernels() {
  std::vector<const PointKernels*> kernels = {&masslynx::kPortableKernels};
  if (__builtin_cpu_supports("avx2")) kernels.push_back(&masslynx::kAvx2Kernels);
  return kernels;
}

void ChooseKernels(const PointKernels& kernels) { chosen = &kernels; }

}  // namespace fuzz

const masslynx::PointKernels& masslynx::ChosenKernels() { return *fuzz::chosen; }

}  // namespace zrml
