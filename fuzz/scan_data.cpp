// The data of one scan in each layout: a byte for the layout, one for the shape of the index, a 16-bit point
// count, calibration, then the data file.
#include <algorithm>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/simulated_files.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/scan_decoder.h"

namespace zrml::fuzz {
namespace {

constexpr int kLayouts = 16;  // one more than there are
constexpr std::size_t kChannels = 32;
constexpr int kMostPoints = 4096;  // larger counts take no other way and a fuzzer long

CalibrationPolynomial TakePolynomial(Input& input) {
  CalibrationPolynomial polynomial;
  polynomial.root = input.Bool();
  polynomial.coefficients.resize(static_cast<std::size_t>(input.Below(8)));
  for (double& coefficient : polynomial.coefficients) coefficient = input.Value<float>();
  return polynomial;
}

FunctionRecord TakeFunction(Input& input) {
  FunctionRecord function;
  function.number = 1;
  function.typeCode = 18;
  function.dataFormat = input.Value<std::uint8_t>() % kLayouts;
  const auto shape = input.Value<std::uint8_t>();
  function.scanIndex.resize(1 + (shape & 1));
  ScanIndexEntry& scan = function.scanIndex.front();
  scan.pointCount = static_cast<std::uint32_t>(input.Below(kMostPoints));
  scan.preCalibrated = (shape & 2) != 0;
  scan.temperatureValid = (shape & 4) != 0;
  scan.segment = shape >> 3 & 3;
  if ((shape & 0x20) != 0) {
    scan.dataOffset = input.Value<std::uint32_t>();
    scan.temperature = input.Value<float>();
    scan.temperatureCoefficient = input.Value<float>();
    function.calTemperature = input.Value<float>();
  }
  if ((shape & 0x40) != 0) {
    function.staticCal = TakePolynomial(input);
    function.modificationCal = TakePolynomial(input);
    function.segmentCals.push_back(TakePolynomial(input));
  }
  const std::size_t channels = (shape & 0x80) != 0 ? 0 : kChannels;
  for (std::size_t i = 0; i < channels; ++i) {
    function.startMasses.push_back(static_cast<float>(input.Value<std::int8_t>()) + 127.5F);
    function.endMasses.push_back(static_cast<float>(input.Value<std::int8_t>()) + 200);
  }
  return function;
}

void CheckDecoded(const platform::File& file, const FunctionRecord& function) {
  CZRMassSpectrum spectrum;
  bool unsorted = false;
  if (!DecodeScan(file, function, 0, spectrum, unsorted)) {
    Check(spectrum.GetCount() == 0, "a scan that is refused leaves the container alone");
    return;
  }
  Check(spectrum.UsablePoints() == static_cast<std::size_t>(spectrum.GetCount()), "points are whole");
  Check(spectrum.UsablePoints() <= function.scanIndex[0].pointCount, "no point more than the index tells");
  const HostVector<double>& masses = spectrum.MassVector();
  // Deliberate: in layout 1 second points without intensity are not written, and the order is that of the
  // others.
  if (!unsorted && function.dataFormat != 1) {
    const auto notAbove = [](double a, double b) { return !(a < b) && a == a && b == b; };
    Check(std::adjacent_find(masses.begin(), masses.end(), notAbove) == masses.end(),
          "masses ascend unless they are told not to");
  }
  if (unsorted) SortByMass(true, spectrum);
  spectrum.UpdateStatistics();
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  fuzz::Input input(data, size);
  const FunctionRecord function = fuzz::TakeFunction(input);
  const Bytes bytes = input.TakeRest();
  fuzz::SetFiles({{L"scan", {bytes.begin(), bytes.end()}}});
  const platform::File file = platform::File::Open(std::wstring(fuzz::kFolder) + L"/scan");
  fuzz::CheckDecoded(file, function);
  CZRAbsorbanceSpectrum absorbance;
  DecodeAbsorbanceScan(file, function, 0, absorbance);
  fuzz::Check(absorbance.Wavelengths().size() == absorbance.Absorbances().size(), "absorbance has pairs");
  return 0;
}
