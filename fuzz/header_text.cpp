// The text files of a raw directory: lines, metadata, calibration and labels.
#include <algorithm>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/simulated_files.h"
#include "masslynx/header.h"
#include "masslynx/labels.h"
#include "masslynx/scandata/calibration.h"

namespace zrml::fuzz {
namespace {

using namespace masslynx;

constexpr std::size_t kLongestLine = 9999;
constexpr std::size_t kLongestDate = 79;
constexpr std::size_t kMostCoefficients = 7;
constexpr std::size_t kSegments = 31;

void CheckMetadata(const std::vector<std::string_view>& lines) {
  std::wstring date;
  std::wstring time;
  LookupHeaderValue(lines, "Acquired Date", date);
  LookupHeaderValue(lines, "Acquired Time", time);
  Check(AnalysisDateTime(date, time).size() <= kLongestDate, "a date has at most 79 characters");
}

void CheckPolynomial(const CalibrationPolynomial& polynomial) {
  Check(polynomial.coefficients.size() <= kMostCoefficients, "a polynomial has at most seven coefficients");
}

void CheckCalibration(const std::vector<std::string_view>& lines) {
  const std::vector<CalibrationLine> calibration = ReadCalibrationLines(lines);
  for (std::uint16_t number = 1; number <= 3; ++number) {
    FunctionRecord function;
    function.number = number;
    function.typeCode = number == 2 ? 16 : 18;
    ParseCalibration(calibration, function);
    Check(function.segmentCals.size() <= kSegments, "no more segments than a scan can name");
    for (const CalibrationPolynomial& polynomial :
         {function.staticCal, function.dynamicCal, function.functionCal, function.modificationCal})
      CheckPolynomial(polynomial);
    for (const CalibrationPolynomial& polynomial : function.segmentCals) CheckPolynomial(polynomial);
    ScanIndexEntry scan;
    scan.temperatureValid = number == 3;
    scan.segment = static_cast<std::uint8_t>(number);
    for (const float mass : {0.0F, 100.0F, -5.0F, 1e30F}) CalibrateMass(function, scan, mass);
  }
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  using namespace zrml::masslynx;
  const Bytes bytes = fuzz::Input(data, size).TakeRest();
  const std::vector<std::byte> text(bytes.begin(), bytes.end());
  fuzz::SetFiles({{L"_HEADER.TXT", text}, {L"_EXTERN.INF", text}});
  const platform::File file = platform::File::Open(std::wstring(fuzz::kFolder) + L"/_HEADER.TXT");
  IsMassLynxHeader(file);
  const HeaderLines header = ReadHeaderLines(file);
  const std::vector<std::string_view>& lines = header.All();
  fuzz::Check(!lines.empty(), "a header has a line");
  for (const std::string_view line : lines)
    fuzz::Check(line.size() <= fuzz::kLongestLine, "a line has at most 9,999 characters");
  fuzz::CheckMetadata(lines);
  fuzz::CheckCalibration(lines);
  std::vector<FunctionRecord> functions(12);
  ApplyLabels(platform::ToSystemPath(fuzz::kFolder), functions);
  fuzz::Check(functions.size() == 12, "labels make no function");
  return 0;
}
