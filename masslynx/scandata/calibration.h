// Mass calibration: polynomials from the header's "$$ Cal " lines, applied to the raw masses of a scan.
// docs/calibration.md
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "masslynx/function_record.h"
#include "masslynx/scandata/point_kernels.h"

namespace zrml::masslynx {

enum class CalibrationKind {
  kMs1Static,
  kMs2Static,
  kMs1Dynamic,
  kMs2Dynamic,
  kFunction,
  kModification,
  kSegment,
  kTemperature
};

/// One calibration line of a header, read once for all functions.
struct CalibrationLine {
  CalibrationKind kind{};
  int number = 0;                    ///< function or segment number, where the kind has one
  CalibrationPolynomial polynomial;  ///< empty when the line holds no value
  float temperature = 0;
};

/// The calibration lines among `headerLines`, in order.
std::vector<CalibrationLine> ReadCalibrationLines(const std::vector<std::string_view>& headerLines);

/// Fills the calibration members of `function`, whose number and type are set. The last line of each kind
/// wins. Deliberate: once function 1 has met a segment line, its modification lines are no longer recognised,
/// and a further line of that segment becomes its modification too.
void ParseCalibration(const std::vector<CalibrationLine>& lines, FunctionRecord& function);

/// Whether any polynomial other than the modification is given.
bool HasCalibration(const FunctionRecord& function);

/// Converts the raw masses of one scan to m/z. Refers to the record, which must outlive it.
class ScanCalibration {
 public:
  ScanCalibration(const FunctionRecord& function, const ScanIndexEntry& scan);

  /// A single-precision value, widened. NaN where a square root has no value.
  double operator()(float raw) const;

  /// The same for `count` raw masses, which are overwritten.
  void Convert(const PointKernels& kernels, float* raw, std::size_t count, double* masses) const;

  /// Whether m/z ascends for raw masses from `low` to `high` in steps of at least `step`. Also false where
  /// simple bounds cannot show it.
  bool Ascends(float low, float high, float step) const;

 private:
  template <class Steps>
  void TakeSteps(Steps& steps) const;
  float Corrected(float raw) const { return correctsTemperature_ ? raw * temperatureFactor_ : raw; }

  const CalibrationPolynomial* primary_ = nullptr;
  const CalibrationPolynomial* modification_ = nullptr;  // only with a primary polynomial
  bool correctsTemperature_ = false;
  float temperatureFactor_ = 1;
};

/// ScanCalibration for a single mass.
double CalibrateMass(const FunctionRecord& function, const ScanIndexEntry& scan, float raw);

}  // namespace zrml::masslynx
