#include "masslynx/scandata/scan_decoder.h"

#include <algorithm>
#include <array>
#include <cfloat>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/scan_bytes.h"
#include "masslynx/scandata/sub_scans.h"

namespace zrml {
namespace {

struct ScanSource {
  const platform::File& file;
  const FunctionRecord& function;
  const ScanIndexEntry& entry;
  bool isLastScan;

  std::size_t PointCount() const { return entry.pointCount; }
  std::unique_ptr<std::byte[]> Read(std::size_t size) const {
    return ReadScanBytes(file, entry.dataOffset, size);
  }
};

// Writes points and watches whether each mass is above the one written before it.
class PointWriter {
 public:
  explicit PointWriter(CZRMassSpectrum& spectrum)
      : masses_(spectrum.GetMasses()), intensities_(spectrum.GetIntensities()) {}

  void Write(std::size_t i, double mass, double intensity) {
    masses_[i] = mass;
    intensities_[i] = intensity;
    unsorted_ |= mass <= previous_;
    previous_ = mass;
  }

  bool Unsorted() const { return unsorted_; }

 private:
  double* masses_;
  double* intensities_;
  double previous_ = -DBL_MAX;
  bool unsorted_ = false;
};

using Decoder = bool (*)(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted);

bool SetPointCount(CZRMassSpectrum& spectrum, std::size_t count) {
  return spectrum.SetSize(static_cast<int>(count));
}

// Formats 0, 8, 9, 12, 13: each point has a raw mass.
template <std::size_t kPointSize, PackedPoint (*Unpack)(const std::byte*)>
bool DecodeRawMasses(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::size_t count = source.PointCount();
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(count * kPointSize);
  const ScanCalibration calibrate(source.function, source.entry);
  PointWriter writer(spectrum);
  for (std::size_t i = 0; i < count; ++i) {
    const PackedPoint point = Unpack(bytes.get() + i * kPointSize);
    writer.Write(i, calibrate(point.mass), point.intensity);
  }
  unsorted = writer.Unsorted();
  return true;
}

// Formats 12 and 13: the points may be those of several sub-scans, which are summed. The result still counts
// as unsorted.
template <std::size_t kPointSize>
bool DecodeSubScans(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  if (!DecodeRawMasses<kPointSize, UnpackPoint12>(source, spectrum, unsorted)) return false;
  if (unsorted) SumSubScans(spectrum, MostSubScanVisits(spectrum.UsablePoints()));
  return true;
}

// Format 1: pairs. Deliberate: a second point without intensity is not written and keeps what its place in
// the container held, 0 in a fresh one. So the padding point of an odd count never shows either.
bool DecodePairs(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::size_t count = source.PointCount();
  const std::size_t pairs = (count + 1) / 2;
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(pairs * kPairSize);
  const ScanCalibration calibrate(source.function, source.entry);
  PointWriter writer(spectrum);
  for (std::size_t pair = 0; pair < pairs; ++pair) {
    const PackedPair packed = UnpackPair(bytes.get() + pair * kPairSize);
    const auto write = [&](std::size_t which) {
      const float raw = static_cast<float>(packed.rawMass[which]) / kPairMassScale;
      writer.Write(2 * pair + which, calibrate(raw), IntensityWord(packed.intensityWord[which]));
    };
    write(0);
    if (2 * pair + 1 < count && packed.intensityWord[1] >> 3 != 0) write(1);
  }
  unsorted = writer.Unsorted();
  return true;
}

double ListedIntensity2(const std::byte* p) { return IntensityWord(LoadU16(p)); }
double ListedIntensity11(const std::byte* p) { return FloatWord(LoadU32(p)); }

// Points without masses of their own: `mass` tells them by position.
template <std::size_t kPointSize, double (*Intensity)(const std::byte*), class Mass>
bool DecodeListed(const ScanSource& source, std::size_t count, Mass mass, CZRMassSpectrum& spectrum,
                  bool& unsorted) {
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(count * kPointSize);
  PointWriter writer(spectrum);
  for (std::size_t i = 0; i < count; ++i) writer.Write(i, mass(i), Intensity(bytes.get() + i * kPointSize));
  unsorted = writer.Unsorted();
  return true;
}

// Format 2: the start masses of the channels, which must all be positive.
bool DecodeChannels(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::vector<float>& masses = source.function.startMasses;
  const std::size_t count = source.PointCount();
  const auto isPositive = [](float mass) { return mass > 0; };
  if (count > masses.size() ||
      !std::all_of(masses.begin(), masses.begin() + static_cast<std::ptrdiff_t>(count), isPositive)) {
    return false;
  }
  return DecodeListed<2, ListedIntensity2>(
      source, count, [&](std::size_t i) { return masses[i]; }, spectrum, unsorted);
}

// Format 3: the points' numbers are their masses.
bool DecodeNumbered(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  return DecodeListed<2, ListedIntensity2>(
      source, source.PointCount(), [](std::size_t i) { return static_cast<double>(i + 1); }, spectrum,
      unsorted);
}

// Formats 11 and 14: the start masses of the channels, with float words. Points beyond the list are left out.
template <std::size_t kPointSize>
bool DecodeFloatChannels(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::vector<float>& masses = source.function.startMasses;
  return DecodeListed<kPointSize, ListedIntensity11>(
      source, std::min(source.PointCount(), masses.size()), [&](std::size_t i) { return masses[i]; },
      spectrum, unsorted);
}

// Formats 4, 5 and 7: groups of up to four points on a linear axis over the first channel's range. A group's
// last word holds the exponents of its points, four bits each.
template <std::size_t kGroup>
bool DecodeLinearAxis(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  constexpr std::size_t kGroupSize = 10;
  constexpr std::size_t kExponents = 8;
  const FunctionRecord& function = source.function;
  if (function.startMasses.empty() || function.endMasses.empty()) return false;
  const std::size_t count = source.PointCount();
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read((count + kGroup - 1) / kGroup * kGroupSize);
  const float range = function.endMasses[0] - function.startMasses[0];
  const double step = count > 1 ? static_cast<double>(range) / static_cast<double>(count - 1) : 0;
  double* const masses = spectrum.GetMasses();
  double* const intensities = spectrum.GetIntensities();
  double mass = function.startMasses[0];
  for (std::size_t i = 0; i < count; ++i) {
    const std::byte* const group = bytes.get() + i / kGroup * kGroupSize;
    const std::size_t place = i % kGroup;
    const unsigned exponent = LoadU16(group + kExponents) >> (4 * place) & 0xFU;
    masses[i] = static_cast<float>(mass);
    intensities[i] = PackedIntensity(LoadI16(group + 2 * place), exponent);
    mass += step;
  }
  unsorted = !(step > 0);
  return true;
}

// Format 6: deliberately, the last scan of the function is read as format 4, the others as format 3.
bool DecodeMixed(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  return (source.isLastScan ? DecodeLinearAxis<4> : DecodeNumbered)(source, spectrum, unsorted);
}

// By data format.
constexpr std::array<Decoder, 15> kDecoders = {
    DecodeRawMasses<4, UnpackPoint0>,
    DecodePairs,
    DecodeChannels,
    DecodeNumbered,
    DecodeLinearAxis<4>,
    DecodeLinearAxis<2>,
    DecodeMixed,
    DecodeLinearAxis<2>,
    DecodeRawMasses<6, UnpackPoint8>,
    DecodeRawMasses<6, UnpackPoint9>,
    nullptr,
    DecodeFloatChannels<4>,
    DecodeSubScans<8>,
    DecodeSubScans<12>,
    DecodeFloatChannels<12>,
};

}  // namespace

bool DecodeScan(const platform::File& file, const FunctionRecord& function, int scan,
                CZRMassSpectrum& spectrum, bool& unsorted) {
  const auto format = static_cast<std::size_t>(function.dataFormat);
  const auto position = static_cast<std::size_t>(scan);
  if (format >= kDecoders.size() || kDecoders[format] == nullptr || position >= function.scanIndex.size())
    return false;
  const bool isLastScan = position + 1 == function.scanIndex.size();
  return kDecoders[format]({file, function, function.scanIndex[position], isLastScan}, spectrum, unsorted);
}

}  // namespace zrml
