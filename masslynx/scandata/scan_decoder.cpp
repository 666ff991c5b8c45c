#include "masslynx/scandata/scan_decoder.h"

#include <algorithm>
#include <array>
#include <cfloat>

#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/point_kernels.h"
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

  /// `n` points from place `first` on; n > 0.
  void WriteAll(std::size_t first, std::size_t n, const double* masses, const double* intensities) {
    std::copy_n(masses, n, masses_ + first);
    std::copy_n(intensities, n, intensities_ + first);
    unsorted_ |= ChosenKernels().descends(previous_, masses, n);
    previous_ = masses[n - 1];
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

// Points that are worked on together: what the passes over them leave stays in the fastest cache.
constexpr std::size_t kBlock = 1024;

// Calls `block(first, count)` for blocks of the points.
template <class Block>
void InBlocks(std::size_t count, Block block) {
  for (std::size_t first = 0; first < count; first += kBlock) block(first, std::min(kBlock, count - first));
}

// Formats 0, 8, 9, 12, 13: each point has a raw mass.
template <std::size_t kPointSize, PointKernels::Unpack PointKernels::*kUnpack>
bool DecodeRawMasses(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::size_t count = source.PointCount();
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(count * kPointSize);
  const PointKernels& kernels = ChosenKernels();
  const ScanCalibration calibration(source.function, source.entry);
  double* const masses = spectrum.GetMasses();
  double* const intensities = spectrum.GetIntensities();
  double before = -DBL_MAX;
  InBlocks(count, [&](std::size_t first, std::size_t n) {
    float raw[kBlock];
    (kernels.*kUnpack)(bytes.get() + first * kPointSize, n, raw, intensities + first);
    calibration.Convert(kernels, raw, n, masses + first);
    unsorted |= kernels.descends(before, masses + first, n);
    before = masses[first + n - 1];
  });
  return true;
}

// Formats 12 and 13: the points may be those of several sub-scans, which are summed. The result still counts
// as unsorted.
template <std::size_t kPointSize, PointKernels::Unpack PointKernels::*kUnpack>
bool DecodeSubScans(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  if (!DecodeRawMasses<kPointSize, kUnpack>(source, spectrum, unsorted)) return false;
  if (unsorted) SumSubScans(spectrum);
  return true;
}

// Format 1: pairs. Deliberate: a second point without intensity is not written and keeps what its place in
// the container held, 0 in a fresh one. So the padding point of an odd count never shows either.
bool DecodePairs(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::size_t count = source.PointCount();
  const std::size_t pairs = (count + 1) / 2;
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(pairs * kPairSize);
  const PointKernels& kernels = ChosenKernels();
  const ScanCalibration calibration(source.function, source.entry);
  PointWriter writer(spectrum);
  InBlocks(2 * pairs, [&](std::size_t first, std::size_t n) {
    float raw[kBlock];
    double masses[kBlock];
    double intensities[kBlock];
    const bool hasEverySecond = kernels.unpackPairs(bytes.get() + first / 2 * kPairSize, n, raw, intensities);
    calibration.Convert(kernels, raw, n, masses);
    if (hasEverySecond && first + n <= count) {
      writer.WriteAll(first, n, masses, intensities);
    } else {
      for (std::size_t i = 0; i < n; ++i) {
        const bool isWritten = i % 2 == 0 || (first + i < count && intensities[i] != 0);
        if (isWritten) writer.Write(first + i, masses[i], intensities[i]);
      }
    }
  });
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
bool DecodeNumbered(const ScanSource& source, CZRMassSpectrum& spectrum, bool&) {
  const std::size_t count = source.PointCount();
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read(count * 2);
  ChosenKernels().words(bytes.get(), count, spectrum.GetIntensities());
  double* const masses = spectrum.GetMasses();
  for (std::size_t i = 0; i < count; ++i) masses[i] = static_cast<double>(i + 1);
  return true;
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
template <std::size_t kGroup, PointKernels::Intensities PointKernels::*kGroups>
bool DecodeLinearAxis(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  constexpr std::size_t kGroupSize = 10;
  const FunctionRecord& function = source.function;
  if (function.startMasses.empty() || function.endMasses.empty()) return false;
  const std::size_t count = source.PointCount();
  if (!SetPointCount(spectrum, count)) return false;
  const auto bytes = source.Read((count + kGroup - 1) / kGroup * kGroupSize);
  const float range = function.endMasses[0] - function.startMasses[0];
  const double step = count > 1 ? static_cast<double>(range) / static_cast<double>(count - 1) : 0;
  (ChosenKernels().*kGroups)(bytes.get(), count, spectrum.GetIntensities());
  ChosenKernels().linearAxis(function.startMasses[0], step, spectrum.GetMasses(), count);
  unsorted = !(step > 0);
  return true;
}

constexpr Decoder kDecodeGroupsOf4 = DecodeLinearAxis<4, &PointKernels::groupsOf4>;
constexpr Decoder kDecodeGroupsOf2 = DecodeLinearAxis<2, &PointKernels::groupsOf2>;

// Format 6: deliberately, the last scan of the function is read as format 4, the others as format 3.
bool DecodeMixed(const ScanSource& source, CZRMassSpectrum& spectrum, bool& unsorted) {
  return (source.isLastScan ? kDecodeGroupsOf4 : DecodeNumbered)(source, spectrum, unsorted);
}

// By data format.
constexpr std::array<Decoder, 15> kDecoders = {
    DecodeRawMasses<4, &PointKernels::unpack0>,
    DecodePairs,
    DecodeChannels,
    DecodeNumbered,
    kDecodeGroupsOf4,
    kDecodeGroupsOf2,
    DecodeMixed,
    kDecodeGroupsOf2,
    DecodeRawMasses<6, &PointKernels::unpack8>,
    DecodeRawMasses<6, &PointKernels::unpack9>,
    nullptr,
    DecodeFloatChannels<4>,
    DecodeSubScans<8, &PointKernels::unpack12>,
    DecodeSubScans<12, &PointKernels::unpack13>,
    DecodeFloatChannels<12>,
};

}  // namespace

bool DecodeScan(const platform::File& file, const FunctionRecord& function, int scan,
                CZRMassSpectrum& spectrum, bool& unsorted) {
  const auto format = static_cast<std::size_t>(function.dataFormat);
  const auto position = static_cast<std::size_t>(scan);
  if (format >= kDecoders.size() || kDecoders[format] == nullptr || position >= function.scanIndex.size())
    return false;
  unsorted = false;
  const bool isLastScan = position + 1 == function.scanIndex.size();
  return kDecoders[format]({file, function, function.scanIndex[position], isLastScan}, spectrum, unsorted);
}

}  // namespace zrml
