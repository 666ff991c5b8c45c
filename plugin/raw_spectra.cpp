#include "plugin/raw_spectra.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "common/platform/shared_library.h"
#include "masslynx/function_types.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/sub_scans.h"
#include "plugin/data_server.h"

namespace zrml::plugin {
namespace {

using masslynx::FunctionRecord;
using masslynx::ScanIndexEntry;
using masslynx::ScanRoom;

// Bytes that the file lacks are zero.
std::unique_ptr<std::byte[]> ReadScanBytes(const platform::File& file, const ScanRoom& room) {
  auto bytes = std::make_unique_for_overwrite<std::byte[]>(room.bytes);
  const std::size_t read = file.ReadAt(room.offset, std::span(bytes.get(), room.bytes));
  std::fill(bytes.get() + read, bytes.get() + room.bytes, std::byte{0});
  return bytes;
}

const ScanIndexEntry& EntryOf(const MobilityScan& scan) {
  return scan.record.scanIndex[static_cast<std::size_t>(scan.scan)];
}

void SetBinAttributes(const MobilityScan& scan, int bin, float seconds, CZRMassSpectrum& spectrum) {
  const ScanIndexEntry& entry = EntryOf(scan);
  const double minutes = seconds / 60.0F;
  spectrum.SetStartTime(minutes);
  spectrum.SetEndTime(minutes);
  SetScanAttributes(scan.record, entry, spectrum);
  spectrum.SetFirstScan(scan.scan + 1);  // not narrowed, unlike the numbers of whole scans
  spectrum.SetLastScan(scan.scan + 1);
  if (masslynx::HasPrecursors(scan.record)) spectrum.SetPrecursorMass(scan.record.setMass);
  spectrum.SetFirstDriftBin(bin + 1);
  spectrum.SetLastDriftBin(bin + 1);
  spectrum.SetFirstDriftValue(bin + 1);
  spectrum.SetLastDriftValue(bin + 1);
  spectrum.InvalidateStatistics();
}

}  // namespace

int KindOf(const FunctionRecord& function) {
  switch (masslynx::FunctionKindOfType(function.typeCode)) {
    case masslynx::FunctionKind::kMsMs:
      return kMsMsFunction;
    case masslynx::FunctionKind::kAbsorbance:
      return kAbsorbanceFunction;
    case masslynx::FunctionKind::kMs:
      break;
  }
  return kMsFunction;
}

void SetScanAttributes(const FunctionRecord& function, const ScanIndexEntry& scan,
                       CZRMassSpectrum& spectrum) {
  spectrum.SetScanType(KindOf(function));
  spectrum.SetMSLevel(static_cast<short>(masslynx::MsLevelOfType(function.typeCode)));
  spectrum.SetCentroided(scan.centroided);
  const bool negative = masslynx::PolarityOfIonMode(function.ionMode) == masslynx::Polarity::kNegative;
  spectrum.SetPolarity(negative ? kNegativePolarity : kPositivePolarity);
  spectrum.SetScanAuxValue(masslynx::FactsOf(function, scan).value.value_or(0));
}

bool SumSubScans(CZRMassSpectrum& spectrum) {
  const std::size_t count = spectrum.UsablePoints();
  const std::optional<PeakSum> sum =
      masslynx::SumSubScans({spectrum.GetMasses(), count}, {spectrum.GetIntensities(), count});
  if (!sum) return false;
  CZRMassSpectrum summed;
  summed.SetSize(static_cast<int>(sum->Count()));
  sum->CopyTo(summed.GetMasses(), summed.GetIntensities());
  summed.SetPolarity(spectrum.GetPolarity());
  spectrum.Swap(summed);
  return true;
}

bool DecodeScan(const platform::File& file, const FunctionRecord& function, int scan,
                CZRMassSpectrum& spectrum, bool& unsorted) {
  const std::optional<ScanRoom> room = masslynx::RoomOf(function, scan);
  if (!room) return false;
  unsorted = false;
  if (!spectrum.SetSize(static_cast<int>(room->points))) return false;
  const auto bytes = ReadScanBytes(file, *room);
  unsorted = masslynx::DecodeScan(function, scan, *room, {bytes.get(), room->bytes},
                                  {spectrum.GetMasses(), spectrum.GetIntensities()})
                 .isUnsorted;
  if (unsorted && masslynx::MayHaveSubScans(*room)) SumSubScans(spectrum);
  return true;
}

bool DecodeAbsorbanceScan(const platform::File& file, const FunctionRecord& function, int scan,
                          CZRAbsorbanceSpectrum& spectrum) {
  const std::optional<ScanRoom> room = masslynx::AbsorbanceRoomOf(function, scan);
  if (!room) return false;
  spectrum.SetSize(static_cast<int>(room->points));
  const auto bytes = ReadScanBytes(file, *room);
  masslynx::DecodeAbsorbance(*room, {bytes.get(), room->bytes},
                             {spectrum.GetWavelengths(), spectrum.GetAbsorbances()});
  spectrum.SetTime(function.scanIndex[static_cast<std::size_t>(scan)].retentionTime);
  spectrum.SetScan(scan);
  return true;
}

masslynx::MobilityFunction MobilitySpectra::FunctionOf(const std::wstring& directory, int function) {
  if (directory != directory_) {
    directory_.clear();  // in case memory runs out
    path_ = platform::NarrowPath(directory);
    directory_ = directory;
  }
  return {path_, function + 1};
}

masslynx::MobilityScan MobilitySpectra::ScanOf(const MobilityScan& scan) {
  return {FunctionOf(scan.directory, scan.function), scan.record, scan.scan};
}

int MobilitySpectra::BinCount(const std::wstring& directory, int function) {
  return data_.BinCount(FunctionOf(directory, function));
}

bool MobilitySpectra::ReadMassRange(const MobilityScan& scan, double& low, double& high) {
  return data_.ReadMassRange(ScanOf(scan), low, high);
}

bool MobilitySpectra::ReadBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum) {
  return data_.Prepare(ScanOf(scan), bin, bin) && ReadPreparedBin(scan, bin, spectrum);
}

bool MobilitySpectra::ReadBins(const MobilityScan& scan, int firstBin, int lastBin,
                               HostVector<CZRMassSpectrum>& spectra) {
  if (!data_.Prepare(ScanOf(scan), firstBin, lastBin)) return false;
  const std::size_t wanted = static_cast<std::size_t>(lastBin - firstBin) + 1;
  if (spectra.size() < wanted) spectra.resize(wanted);
  for (int bin = firstBin; bin <= lastBin; ++bin) {
    if (!ReadPreparedBin(scan, bin, spectra[static_cast<std::size_t>(bin - firstBin)])) return false;
  }
  return true;
}

bool MobilitySpectra::ReadPreparedBin(const MobilityScan& scan, int bin, CZRMassSpectrum& spectrum) {
  if (!data_.ReadBin(ScanOf(scan), bin) || !spectrum.SetSize(data_.PointCount())) return false;
  data_.WritePoints(spectrum.GetMasses(), spectrum.GetIntensities());
  SetBinAttributes(scan, bin, data_.Seconds(), spectrum);
  return true;
}

}  // namespace zrml::plugin
