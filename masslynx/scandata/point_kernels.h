// Passes over runs of a few hundred points, written so that the compiler vectorises them and compiled twice:
// for every x86-64 processor and for those with AVX2. The results are bit for bit those of packed_point.h and
// ScanCalibration for single points.
#pragma once

#include <cstddef>

namespace zrml::masslynx {

struct PointKernels {
  /// Raw masses and intensities of `count` stored points, of data format 0, 8, 9 or 12 (or the first eight
  /// bytes of a point of 13). `intensities` may be null.
  using Unpack = void (*)(const std::byte* points, std::size_t count, float* rawMasses, double* intensities);
  Unpack unpack0;
  Unpack unpack8;
  Unpack unpack9;
  Unpack unpack12;
  Unpack unpack13;
  /// The same for `count` / 2 pairs of data format 1. True when the second point of every pair has an
  /// intensity.
  bool (*unpackPairs)(const std::byte* pairs, std::size_t count, float* rawMasses, double* intensities);

  /// Intensities only: words of data format 3, or points of data formats 4 and 5 in groups of 4 or 2, the
  /// last of which may be incomplete.
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
  /// The same for raw masses, rounded to single precision; `calibrateRoot` takes their square roots and
  /// squares the result.
  using Calibrate = void (*)(const double* c, std::size_t coefficients, const float* raw, std::size_t count,
                             double* masses);
  Calibrate calibrate;
  Calibrate calibrateRoot;
  /// To single precision and back.
  void (*round)(double* values, std::size_t count);

  void (*widen)(const float* values, std::size_t count, double* widened);
  /// Whether any value is not above the one before it; `before` precedes the first.
  bool (*descends)(double before, const double* values, std::size_t count);
  /// The smallest difference between a value and the one before it; 0 or less when a value is not above the
  /// one before. For a single value the largest number.
  float (*leastStep)(const float* values, std::size_t count);
  bool (*hasZero)(const double* values, std::size_t count);
  /// start, start + step and so on by repeated addition, each sum stored in single precision.
  void (*linearAxis)(double start, double step, double* values, std::size_t count);
};

extern const PointKernels kPortableKernels;
extern const PointKernels kAvx2Kernels;  ///< only for processors with AVX2

/// The fastest kernels that this processor supports.
const PointKernels& ChosenKernels();

}  // namespace zrml::masslynx
