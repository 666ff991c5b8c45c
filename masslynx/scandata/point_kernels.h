// Passes over a run of points, a few hundred at a time, written so that the compiler makes vector code of
// them and compiled once for every x86-64 processor and once for those with AVX2. The results are those of
// the functions in packed_point.h and of ScanCalibration for single points, to the bit.
#pragma once

#include <cstddef>

namespace zrml::masslynx {

struct PointKernels {
  /// Raw masses and intensities of `count` stored points, of data format 0, 8, 9, 12 (also the first eight
  /// bytes of a point of 13). `intensities` may be null.
  using Unpack = void (*)(const std::byte* points, std::size_t count, float* rawMasses, double* intensities);
  Unpack unpack0;
  Unpack unpack8;
  Unpack unpack9;
  Unpack unpack12;
  Unpack unpack13;
  /// The same of `count` / 2 pairs of data format 1. True when every second point has an intensity.
  bool (*unpackPairs)(const std::byte* pairs, std::size_t count, float* rawMasses, double* intensities);

  /// Intensities alone: words of data format 3; points of the groups of 4 or 2 of data formats 4 and 5, whose
  /// last group may be in part.
  using Intensities = void (*)(const std::byte* points, std::size_t count, double* intensities);
  Intensities words;
  Intensities groupsOf4;
  Intensities groupsOf2;

  // Arithmetic in place.
  void (*scale)(float factor, float* values, std::size_t count);
  void (*root)(double* values, std::size_t count);
  void (*square)(double* values, std::size_t count);
  /// c[0] + c[1] x + ... by Horner's rule; there are 1 to 7 coefficients.
  void (*polynomial)(const double* c, std::size_t coefficients, double* values, std::size_t count);
  /// The same of raw masses, rounded to single precision; `calibrateRoot` works on their square roots and
  /// squares what comes of it.
  using Calibrate = void (*)(const double* c, std::size_t coefficients, const float* raw, std::size_t count,
                             double* masses);
  Calibrate calibrate;
  Calibrate calibrateRoot;
  /// To single precision and back.
  void (*round)(double* values, std::size_t count);

  void (*widen)(const float* values, std::size_t count, double* widened);
  /// Whether a value is not above the one before it, `before` for the first.
  bool (*descends)(double before, const double* values, std::size_t count);
  /// The least difference of a value from the one before it, or, when one is not above it, 0 or less; of a
  /// single value the greatest of all numbers.
  float (*leastStep)(const float* values, std::size_t count);
  /// start, start + step and so on by repeated addition, each sum stored in single precision.
  void (*linearAxis)(double start, double step, double* values, std::size_t count);
};

extern const PointKernels kPortableKernels;
extern const PointKernels kAvx2Kernels;  ///< for processors that have AVX2 only

/// The fastest that this processor runs.
const PointKernels& ChosenKernels();

}  // namespace zrml::masslynx
