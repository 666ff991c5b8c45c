#include "masslynx/scandata/calibration.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <optional>

#include "common/scan_text.h"
#include "common/text.h"
#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kMaxCoefficients = 7;
constexpr int kSegments = 31;  // addressable by a scan's five bits
constexpr std::string_view kRootMark = "T1";

enum class NumberIn { kNowhere, kLine };  // whether a number stands between the keyword and the colon

struct LineFormat {
  CalibrationKind kind;
  std::string_view literal;
  NumberIn number = NumberIn::kNowhere;
};

constexpr std::array<LineFormat, 8> kFormats = {{
    {CalibrationKind::kMs1Static, "$$ Cal MS1 Static: "},
    {CalibrationKind::kMs2Static, "$$ Cal MS2 Static: "},
    {CalibrationKind::kMs1Dynamic, "$$ Cal MS1 Dynamic: "},
    {CalibrationKind::kMs2Dynamic, "$$ Cal MS2 Dynamic: "},
    {CalibrationKind::kFunction, "$$ Cal Function ", NumberIn::kLine},
    {CalibrationKind::kModification, "$$ Cal Modification ", NumberIn::kLine},
    {CalibrationKind::kSegment, "$$ Cal Segment ", NumberIn::kLine},
    {CalibrationKind::kTemperature, "$$ Cal Temperature: "},
}};

// Whether the line begins as in all formats, which few lines do: "$$", optional white space, "Cal".
bool MayBeCalibration(std::string_view line) {
  if (!line.starts_with("$$")) return false;
  line.remove_prefix(2);
  while (!line.empty() && IsSpace(line.front())) line.remove_prefix(1);
  return line.starts_with("Cal");
}

// Up to seven values with commas between them.
std::vector<double> TakeCoefficients(ScanText& scan) {
  std::vector<double> coefficients;
  coefficients.reserve(kMaxCoefficients);
  while (coefficients.size() < kMaxCoefficients) {
    const std::optional<double> value = scan.Double();
    if (!value) break;
    coefficients.push_back(*value);
    if (!scan.Literal(",")) break;
  }
  return coefficients;
}

// The line in `format`; no value when it has another format.
std::optional<CalibrationLine> ReadLine(std::string_view text, const LineFormat& format) {
  ScanText scan(text);
  if (!scan.Literal(format.literal)) return std::nullopt;
  CalibrationLine line;
  line.kind = format.kind;
  if (format.kind == CalibrationKind::kTemperature) {
    const std::optional<float> temperature = scan.Float();
    if (!temperature) return std::nullopt;
    line.temperature = *temperature;
    return line;
  }
  if (format.number == NumberIn::kLine) {
    const std::string_view before = scan.Rest();
    const std::optional<int> number = scan.Int();
    if (!number) return std::nullopt;
    line.number = *number;
    // Values count only after the number in its printed form: not after "02" or "+2".
    const std::string_view written = before.substr(0, before.size() - scan.Rest().size());
    if (written != std::to_string(*number) || !scan.Literal(": ")) return line;
  }
  line.polynomial.coefficients = TakeCoefficients(scan);
  line.polynomial.root = text.find(kRootMark) != std::string_view::npos;
  return line;
}

// Applies the lines to one function, in their order.
class CalibrationParser {
 public:
  explicit CalibrationParser(FunctionRecord& function)
      : function_(function), usesMs2_(UsesMs2Calibration(function.typeCode)) {}

  void Apply(const CalibrationLine& line) {
    switch (line.kind) {
      case CalibrationKind::kMs1Static:
        return Set(function_.staticCal, line, !usesMs2_);
      case CalibrationKind::kMs2Static:
        return Set(function_.staticCal, line, usesMs2_);
      case CalibrationKind::kMs1Dynamic:
        return Set(function_.dynamicCal, line, !usesMs2_);
      case CalibrationKind::kMs2Dynamic:
        return Set(function_.dynamicCal, line, usesMs2_);
      case CalibrationKind::kFunction:
        return Set(function_.functionCal, line, line.number == function_.number);
      case CalibrationKind::kModification:
        return Set(function_.modificationCal, line, line.number == function_.number && !metSegment_);
      case CalibrationKind::kSegment:
        if (function_.number == 1) ApplySegment(line);
        return;
      case CalibrationKind::kTemperature:
        function_.calTemperature = line.temperature;
        return;
    }
  }

 private:
  static void Set(CalibrationPolynomial& polynomial, const CalibrationLine& line, bool applies) {
    if (applies && !line.polynomial.coefficients.empty()) polynomial = line.polynomial;
  }

  // Deliberate: the last segment's format takes the place of the modification's, so that a second line of the
  // same segment is taken for a modification before it is taken for a segment.
  void ApplySegment(const CalibrationLine& line) {
    Set(function_.modificationCal, line, metSegment_ && lastSegment_ == line.number);
    metSegment_ = true;
    lastSegment_ = line.number;
    std::vector<CalibrationPolynomial>& segments = function_.segmentCals;
    const auto wanted = static_cast<std::size_t>(std::clamp(line.number, 0, kSegments));
    if (segments.size() < wanted) segments.resize(wanted);
    if (line.number >= 1 && line.number <= kSegments) {
      Set(segments[wanted - 1], line, true);
    } else if (!line.polynomial.coefficients.empty()) {
      function_.hasUnreachableSegmentCal = true;
    }
  }

  FunctionRecord& function_;
  bool usesMs2_;
  bool metSegment_ = false;
  int lastSegment_ = 0;
};

// c0 + c1 x + c2 x^2 + ... by Horner's rule. There is at least one coefficient.
double Evaluate(const CalibrationPolynomial& polynomial, double x) {
  const std::vector<double>& c = polynomial.coefficients;
  double y = c.back();
  for (std::size_t i = c.size() - 1; i-- > 0;) y = y * x + c[i];
  return y;
}

const CalibrationPolynomial* PrimaryPolynomial(const FunctionRecord& function, std::uint32_t segment) {
  if (segment >= 1 && segment <= function.segmentCals.size()) {
    const CalibrationPolynomial& polynomial = function.segmentCals[segment - 1];
    if (!polynomial.coefficients.empty()) return &polynomial;
  }
  for (const CalibrationPolynomial* polynomial :
       {&function.functionCal, &function.dynamicCal, &function.staticCal}) {
    if (!polynomial->coefficients.empty()) return polynomial;
  }
  return nullptr;
}

}  // namespace

std::vector<CalibrationLine> ReadCalibrationLines(const std::vector<std::string_view>& headerLines) {
  std::vector<CalibrationLine> lines;
  for (const std::string_view text : headerLines) {
    if (!MayBeCalibration(text)) continue;
    for (const LineFormat& format : kFormats) {
      if (std::optional<CalibrationLine> line = ReadLine(text, format)) {
        lines.push_back(std::move(*line));
        break;
      }
    }
  }
  return lines;
}

void ParseCalibration(const std::vector<CalibrationLine>& lines, FunctionRecord& function) {
  function.calTemperature = 0;
  CalibrationParser parser(function);
  for (const CalibrationLine& line : lines) parser.Apply(line);
}

bool HasCalibration(const FunctionRecord& function) {
  const auto isGiven = [](const CalibrationPolynomial& polynomial) {
    return !polynomial.coefficients.empty();
  };
  return isGiven(function.dynamicCal) || isGiven(function.functionCal) || isGiven(function.staticCal) ||
         function.hasUnreachableSegmentCal ||
         std::any_of(function.segmentCals.begin(), function.segmentCals.end(), isGiven);
}

ScanCalibration::ScanCalibration(const FunctionRecord& function, const ScanIndexEntry& scan) {
  if (scan.preCalibrated || !HasCalibration(function)) return;
  correctsTemperature_ = scan.temperatureValid;
  temperatureFactor_ =
      1.0F - (scan.temperature - function.calTemperature) * scan.temperatureCoefficient / 1e6F;
  primary_ = PrimaryPolynomial(function, scan.segment);
  if (primary_ != nullptr && !function.modificationCal.coefficients.empty())
    modification_ = &function.modificationCal;
}

// The steps from the raw mass to the m/z; there is a primary polynomial.
template <class Steps>
void ScanCalibration::TakeSteps(Steps& steps) const {
  bool isRoot = primary_->root;  // whether the value is the square root of a mass
  if (isRoot) steps.Root();
  steps.Evaluate(*primary_);
  if (modification_ != nullptr) {
    if (isRoot && !modification_->root) steps.Square();
    if (!isRoot && modification_->root) steps.Root();
    steps.Evaluate(*modification_);
    isRoot = modification_->root;
  }
  if (isRoot) steps.Square();
}

namespace {

struct OneValue {
  double value;

  void Root() { value = std::sqrt(value); }
  void Square() { value *= value; }
  void Evaluate(const CalibrationPolynomial& polynomial) {
    value = zrml::masslynx::Evaluate(polynomial, value);
  }
};

struct ManyValues {
  const PointKernels& kernels;
  double* values;
  std::size_t count;

  void Root() { kernels.root(values, count); }
  void Square() { kernels.square(values, count); }
  void Evaluate(const CalibrationPolynomial& polynomial) {
    kernels.polynomial(polynomial.coefficients.data(), polynomial.coefficients.size(), values, count);
  }
};

// What is certain of values above 0 that come of ascending ones: as long as `step`, by which they ascend at
// least, is above 0. Where it once is not, it stays so.
struct AscendingValues {
  // No value is off by more, in parts of the greatest that it meets: two of them, each after six
  // multiplications and six additions, are by 24 x 2^-53.
  static constexpr double kRounding = 0x1p-46;

  double low;
  double high;
  double step;

  // Of what rises by `slope` at least and is `greatest` at most.
  void Rise(double slope, double greatest, double rounding) {
    step = low > 0 && step > 0 ? step * slope - greatest * rounding : 0;
  }

  // The same of one operation in single precision, as long as it holds numbers of this size.
  void RiseInSingle(double slope) { Rise(high >= FLT_MIN && high <= FLT_MAX ? slope : 0, high, 0x1p-22); }

  void Root() {
    Rise(0.5 / std::sqrt(high), std::sqrt(high), kRounding);
    low = std::sqrt(low);
    high = std::sqrt(high);
  }

  void Square() {
    Rise(2 * low, high * high, kRounding);
    low *= low;
    high *= high;
  }

  void Evaluate(const CalibrationPolynomial& polynomial) {
    const std::vector<double>& c = polynomial.coefficients;
    double slope = 0;
    double greatest = std::abs(c[0]);
    double lowPower = 1;
    double highPower = 1;
    for (std::size_t i = 1; i < c.size(); ++i) {
      slope += static_cast<double>(i) * c[i] * (c[i] > 0 ? lowPower : highPower);
      lowPower *= low;
      highPower *= high;
      greatest += std::abs(c[i]) * highPower;
    }
    Rise(slope, greatest, kRounding);
    low = zrml::masslynx::Evaluate(polynomial, low);
    high = zrml::masslynx::Evaluate(polynomial, high);
  }
};

}  // namespace

double ScanCalibration::operator()(float raw) const {
  OneValue mass{Corrected(raw)};
  if (primary_ == nullptr) return mass.value;
  TakeSteps(mass);
  return static_cast<float>(mass.value);
}

void ScanCalibration::Convert(const PointKernels& kernels, float* raw, std::size_t count,
                              double* masses) const {
  if (correctsTemperature_) kernels.scale(temperatureFactor_, raw, count);
  if (primary_ != nullptr && modification_ == nullptr) {
    const std::vector<double>& c = primary_->coefficients;
    (primary_->root ? kernels.calibrateRoot : kernels.calibrate)(c.data(), c.size(), raw, count, masses);
    return;
  }
  kernels.widen(raw, count, masses);
  if (primary_ == nullptr) return;
  ManyValues all{kernels, masses, count};
  TakeSteps(all);
  kernels.round(masses, count);
}

bool ScanCalibration::Ascends(float low, float high, float step) const {
  if (primary_ == nullptr && !correctsTemperature_) return step > 0;
  AscendingValues values{Corrected(low), Corrected(high), step};
  if (correctsTemperature_) values.RiseInSingle(temperatureFactor_);
  if (primary_ != nullptr) TakeSteps(values);
  values.RiseInSingle(1);
  return values.step > 0 && std::isfinite(values.step);
}

double CalibrateMass(const FunctionRecord& function, const ScanIndexEntry& scan, float raw) {
  return ScanCalibration(function, scan)(raw);
}

}  // namespace zrml::masslynx
