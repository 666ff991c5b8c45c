// The operations of the data server interface in the order of the host's table. Slot 0 is the destructor; the
// list begins at slot 1. Never reorder, insert or remove: hosts bind by position.
#pragma once

#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "plugin/data_server.h"

namespace zrml::hostabi {

template <auto... Operations>
struct OperationList {
  static constexpr std::size_t kSlotCount = 1 + sizeof...(Operations);

  /// The slot of one operation of the list.
  template <auto Operation>
  static constexpr std::size_t SlotOf() {
    constexpr std::array<bool, sizeof...(Operations)> kIsIt = {
        std::is_same_v<std::integral_constant<decltype(Operation), Operation>,
                       std::integral_constant<decltype(Operations), Operations>>...};
    std::size_t slot = 1;
    while (slot <= kIsIt.size() && !kIsIt[slot - 1]) ++slot;
    return slot;
  }
};

using Server = CDataServerImpl;

using Operations = OperationList<
    &Server::GetProviderName, &Server::GetProviderGuid, &Server::Open, &Server::Close,
    &Server::ValidateSource, &Server::CanOpen, &Server::GetSampleCount, &Server::GetFileSampleCount,
    &Server::GetSampleName, &Server::GetFunctionCount, &Server::GetFunctionName, &Server::GetFunctionKind,
    &Server::GetMSMSScanType, &Server::GetPolarity, &Server::GetMSLevel, &Server::GetDimensionCount,
    &Server::IsCentroided, &Server::HasMobility, &Server::GetScanDimensionCount, &Server::GetScanCount,
    &Server::GetMobilityBinCount, &Server::GetBasePeakChromatogram, &Server::GetMassRangeBasePeakChromatogram,
    &Server::GetTotalIonChromatogram, &Server::GetMassRangeChromatogram, &Server::GetRetentionTimes,
    &Server::GetScanRetentionTime, &Server::GetFunctionMassRange, &Server::GetScanMassRange,
    &Server::GetScanMobilityRange, &Server::GetScanIntensityRange, &Server::GetMobilityAxis,
    &Server::GetSpectrum, &Server::GetMobilitySpectrum, &Server::GetMobilitySpectra, &Server::GetTraceCount,
    &Server::GetTraceName, &Server::GetTrace, &Server::GetFunctionTraceCount, &Server::GetFunctionTraceName,
    &Server::GetFunctionTrace, &Server::HasAbsorbanceData, &Server::GetAbsorbanceScanCount,
    &Server::GetAbsorbanceSpectrum, &Server::GetMetadataValue, &Server::GetMetadataKeys,
    &Server::GetFileFilter, &Server::OpenFileInSet, &Server::IsReportSource, &Server::FindPrecursorScan>;

static_assert(Operations::kSlotCount == 51);

}  // namespace zrml::hostabi
