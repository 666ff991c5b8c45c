// The data of one scan in each layout, decoded with each kind of kernel. Input: a byte for the layout, one
// for the shape of the index, a 16-bit point count, calibration, then the data file.
#include <algorithm>
#include <bit>
#include <iterator>
#include <optional>
#include <vector>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/scalar_kernels.h"
#include "fuzz/simulated_files.h"
#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/scan_decoder.h"
#include "plugin/raw_spectra.h"

namespace zrml::fuzz {
namespace {

using namespace masslynx;

constexpr int kLayouts = 16;  // one more than there are
constexpr std::size_t kChannels = 32;
constexpr int kMostPoints = 4096;  // larger counts take the same path and slow the fuzzer down

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

struct Decoded {
  bool accepted = false;
  bool unsorted = false;
  CZRMassSpectrum spectrum;
};

void Decode(const platform::File& file, const FunctionRecord& function, Decoded& result) {
  result.accepted = plugin::DecodeScan(file, function, 0, result.spectrum, result.unsorted);
}

void CheckDecoded(const FunctionRecord& function, const Decoded& decoded) {
  const CZRMassSpectrum& spectrum = decoded.spectrum;
  if (!decoded.accepted) {
    Check(spectrum.GetCount() == 0, "a refused scan leaves the container unchanged");
    return;
  }
  Check(spectrum.UsablePoints() == static_cast<std::size_t>(spectrum.GetCount()), "points are whole");
  Check(spectrum.UsablePoints() <= function.scanIndex[0].pointCount,
        "no more points than the index declares");
  const HostVector<double>& masses = spectrum.MassVector();
  // Deliberate: in layout 1 second points without intensity are not written, and only the others decide the
  // order.
  if (!decoded.unsorted && function.dataFormat != 1) {
    const auto notAbove = [](double a, double b) { return !(a < b) && a == a && b == b; };
    Check(std::adjacent_find(masses.begin(), masses.end(), notAbove) == masses.end(),
          "masses ascend unless reported as unsorted");
  }
}

// Equal to the bit, except that NaNs may have different bit patterns.
bool AreSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

void CheckSame(const Decoded& a, const Decoded& b) {
  Check(a.accepted == b.accepted && a.unsorted == b.unsorted, "each kind of kernel takes the same scans");
  const auto isAlike = [](const HostVector<double>& x, const HostVector<double>& y) {
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), AreSame);
  };
  Check(isAlike(a.spectrum.MassVector(), b.spectrum.MassVector()),
        "each kind of kernel gives the same masses");
  Check(isAlike(a.spectrum.IntensityVector(), b.spectrum.IntensityVector()),
        "each kind of kernel gives the same intensities");
}

bool HasRawMasses(int dataFormat) {
  constexpr int kFormats[] = {0, 1, 8, 9, 12, 13};
  return std::find(std::begin(kFormats), std::end(kFormats), dataFormat) != std::end(kFormats);
}

bool MaySumSubScans(int dataFormat) { return dataFormat == 12 || dataFormat == 13; }

// A scan marked as calibrated shows the raw masses; each is then calibrated by itself.
void CheckCalibration(const platform::File& file, const FunctionRecord& function, const Decoded& decoded) {
  if (!decoded.accepted || !HasRawMasses(function.dataFormat)) return;
  FunctionRecord uncalibrated = function;
  uncalibrated.scanIndex[0].preCalibrated = true;
  Decoded raw;
  Decode(file, uncalibrated, raw);
  if (MaySumSubScans(function.dataFormat) && (decoded.unsorted || raw.unsorted)) return;
  Check(raw.accepted && raw.spectrum.UsablePoints() == decoded.spectrum.UsablePoints(),
        "a calibration does not change how many points there are");
  const ScanCalibration calibration(function, function.scanIndex[0]);
  for (std::size_t i = 0; i < decoded.spectrum.UsablePoints(); ++i) {
    // Unwritten points of layout 1 have neither mass.
    if (function.dataFormat == 1 && decoded.spectrum.IntensityVector()[i] == 0) continue;
    const auto rawMass = static_cast<float>(raw.spectrum.MassVector()[i]);
    Check(AreSame(decoded.spectrum.MassVector()[i], calibration(rawMass)),
          "many masses are calibrated like single ones");
  }
}

// The range goes from the mass of one point to that of another.
void CheckWithin(const platform::File& file, const FunctionRecord& function) {
  const std::optional<ScanRoom> room = RoomOf(function, 0);
  if (!room) return;
  std::vector<std::byte> bytes(room->bytes);
  bytes.resize(file.ReadAt(room->offset, bytes));
  std::vector<double> masses(room->points);
  std::vector<double> intensities(room->points);
  const DecodedPoints all = DecodeScan(function, 0, *room, bytes, {masses.data(), intensities.data()});
  const MassRange range =
      all.count == 0 ? MassRange{} : MassRange{masses[all.count / 4], masses[all.count / 2]};
  std::vector<double> within;
  if (!DecodeWithin(function, 0, *room, bytes, range, within)) return;
  Check(all.count > 0 && !all.isUnsorted, "a range is searched in ascending masses only");
  std::vector<double> expected;
  for (std::size_t i = 0; i < all.count; ++i) {
    if (range.low <= masses[i] && masses[i] <= range.high) expected.push_back(intensities[i]);
  }
  Check(std::equal(within.begin(), within.end(), expected.begin(), expected.end(), AreSame),
        "a range holds the same points as the whole scan");
}

void CheckScan(const platform::File& file, const FunctionRecord& function) {
  static const std::vector<const PointKernels*> fastKernels = FastKernels();
  ChooseKernels(kScalarKernels);
  Decoded reference;
  Decode(file, function, reference);
  CheckDecoded(function, reference);
  CheckCalibration(file, function, reference);
  CheckWithin(file, function);
  for (const PointKernels* kernels : fastKernels) {
    ChooseKernels(*kernels);
    Decoded decoded;
    Decode(file, function, decoded);
    CheckSame(reference, decoded);
    CheckWithin(file, function);
  }
  if (!reference.accepted) return;
  if (reference.unsorted) SortByMass(true, reference.spectrum);
  reference.spectrum.UpdateStatistics();
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  using masslynx::FunctionRecord;
  fuzz::Input input(data, size);
  const FunctionRecord function = fuzz::TakeFunction(input);
  const Bytes bytes = input.TakeRest();
  fuzz::SetFiles({{L"scan", {bytes.begin(), bytes.end()}}});
  const platform::File file = platform::File::Open(std::wstring(fuzz::kFolder) + L"/scan");
  fuzz::CheckScan(file, function);
  CZRAbsorbanceSpectrum absorbance;
  plugin::DecodeAbsorbanceScan(file, function, 0, absorbance);
  fuzz::Check(absorbance.Wavelengths().size() == absorbance.Absorbances().size(), "absorbance has pairs");
  return 0;
}
