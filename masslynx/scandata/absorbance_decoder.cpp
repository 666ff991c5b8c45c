#include "masslynx/scandata/absorbance_decoder.h"

#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/scan_bytes.h"

namespace zrml {
namespace {

void Write(std::size_t i, double wavelength, double absorbance, CZRAbsorbanceSpectrum& spectrum) {
  spectrum.SetWavelength(static_cast<int>(i), wavelength);
  spectrum.SetAbsorbance(static_cast<int>(i), absorbance);
}

void DecodePoints(const platform::File& file, const ScanIndexEntry& entry, CZRAbsorbanceSpectrum& spectrum) {
  constexpr std::size_t kPointSize = 6;
  const auto bytes = ReadScanBytes(file, entry.dataOffset, entry.pointCount * kPointSize);
  for (std::size_t i = 0; i < entry.pointCount; ++i) {
    const PackedPoint point = UnpackPoint9(bytes.get() + i * kPointSize);
    Write(i, point.mass, point.intensity, spectrum);
  }
}

// A second point is written when it has a wavelength (in mass spectra, deliberately, when it has an
// intensity).
void DecodePairs(const platform::File& file, const ScanIndexEntry& entry, CZRAbsorbanceSpectrum& spectrum) {
  const std::size_t pairs = (std::size_t{entry.pointCount} + 1) / 2;
  const auto bytes = ReadScanBytes(file, entry.dataOffset, pairs * kPairSize);
  for (std::size_t pair = 0; pair < pairs; ++pair) {
    const PackedPair packed = UnpackPair(bytes.get() + pair * kPairSize);
    const auto write = [&](std::size_t which) {
      Write(2 * pair + which, static_cast<double>(packed.rawMass[which]) / kPairMassScale,
            IntensityWord(packed.intensityWord[which]), spectrum);
    };
    write(0);
    if (packed.rawMass[1] != 0) write(1);
  }
}

}  // namespace

bool DecodeAbsorbanceScan(const platform::File& file, const FunctionRecord& function, int scan,
                          CZRAbsorbanceSpectrum& spectrum) {
  const auto position = static_cast<std::size_t>(scan);
  if (position >= function.scanIndex.size()) return false;
  const auto decode = function.dataFormat == 9   ? DecodePoints
                      : function.dataFormat == 1 ? DecodePairs
                                                 : nullptr;
  if (decode == nullptr) return false;
  const ScanIndexEntry& entry = function.scanIndex[position];
  spectrum.SetSize(static_cast<int>(entry.pointCount));
  decode(file, entry, spectrum);
  spectrum.SetTime(entry.retentionTime);
  spectrum.SetScan(scan);
  return true;
}

}  // namespace zrml
