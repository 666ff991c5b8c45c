#include "masslynx/scandata/calibration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "common/scan_text.h"
#include "common/text.h"
#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kMaxCoefficients = 7;
constexpr int kSegments = 31;  // what a scan's five bits can name
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

// Whether the line begins as all formats do, which few do: "$$", white space or none, "Cal".
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

// The line as one of `format`'s kind; nothing when it is none.
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
    // Values count only behind the number as it would be printed: not behind "02" or "+2".
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

double ScanCalibration::operator()(float raw) const {
  const float corrected = correctsTemperature_ ? raw * temperatureFactor_ : raw;
  if (primary_ == nullptr) return corrected;

  const bool root = primary_->root;
  const double x = corrected;
  double y = Evaluate(*primary_, root ? std::sqrt(x) : x);
  bool isRoot = root;  // whether y is the square root of a mass
  if (modification_ != nullptr) {
    if (root && !modification_->root) y = y * y;
    if (!root && modification_->root) y = std::sqrt(y);
    y = Evaluate(*modification_, y);
    isRoot = modification_->root;
  }
  return static_cast<float>(isRoot ? y * y : y);
}

void ScanCalibration::Convert(const PointKernels& kernels, float* raw, std::size_t count,
                              double* masses) const {
  const auto evaluate = [&](const CalibrationPolynomial& polynomial) {
    kernels.polynomial(polynomial.coefficients.data(), polynomial.coefficients.size(), masses, count);
  };
  if (correctsTemperature_) kernels.scale(temperatureFactor_, raw, count);
  if (primary_ != nullptr && modification_ == nullptr) {
    const std::vector<double>& c = primary_->coefficients;
    (primary_->root ? kernels.calibrateRoot : kernels.calibrate)(c.data(), c.size(), raw, count, masses);
    return;
  }
  kernels.widen(raw, count, masses);
  if (primary_ == nullptr) return;

  if (primary_->root) kernels.root(masses, count);
  evaluate(*primary_);
  if (primary_->root && !modification_->root) kernels.square(masses, count);
  if (!primary_->root && modification_->root) kernels.root(masses, count);
  evaluate(*modification_);
  if (modification_->root) kernels.square(masses, count);
  kernels.round(masses, count);
}

double CalibrateMass(const FunctionRecord& function, const ScanIndexEntry& scan, float raw) {
  return ScanCalibration(function, scan)(raw);
}

}  // namespace zrml::masslynx
