// Pins the order of the virtual operations, to which hosts bind by position.
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

#include <gtest/gtest.h>

#include "plugin/data_server.h"

namespace zrml {
namespace {

/// A virtual operation's place in the table of the class. In the Itanium ABI a pointer to a virtual member
/// function starts with a word of 1 plus the place in bytes, and the virtual destructor takes two places.
template <class MemberFunction>
std::size_t TableIndex(MemberFunction function) {
  std::uintptr_t words[2] = {};
  static_assert(sizeof function == sizeof words);
  std::memcpy(words, &function, sizeof words);
  EXPECT_EQ(words[0] % sizeof(void*), 1U) << "not virtual";
  return words[0] / sizeof(void*);
}

struct Slot {
  std::size_t slot;
  const char* name;
  std::size_t tableIndex;
};

#define ZRML_SLOT(slot, name) \
  { slot, #name, TableIndex(&CDataServerImpl::name) }

TEST(InterfaceOrder, EveryOperationStandsInItsSlot) {
  const Slot slots[] = {
      ZRML_SLOT(1, GetProviderName),
      ZRML_SLOT(2, GetProviderGuid),
      ZRML_SLOT(3, Open),
      ZRML_SLOT(4, Close),
      ZRML_SLOT(5, ValidateSource),
      ZRML_SLOT(6, CanOpen),
      ZRML_SLOT(7, GetSampleCount),
      ZRML_SLOT(8, GetFileSampleCount),
      ZRML_SLOT(9, GetSampleName),
      ZRML_SLOT(10, GetFunctionCount),
      ZRML_SLOT(11, GetFunctionName),
      ZRML_SLOT(12, GetFunctionKind),
      ZRML_SLOT(13, GetMSMSScanType),
      ZRML_SLOT(14, GetPolarity),
      ZRML_SLOT(15, GetMSLevel),
      ZRML_SLOT(16, GetDimensionCount),
      ZRML_SLOT(17, IsCentroided),
      ZRML_SLOT(18, HasMobility),
      ZRML_SLOT(19, GetScanDimensionCount),
      ZRML_SLOT(20, GetScanCount),
      ZRML_SLOT(21, GetMobilityBinCount),
      ZRML_SLOT(22, GetBasePeakChromatogram),
      ZRML_SLOT(23, GetMassRangeBasePeakChromatogram),
      ZRML_SLOT(24, GetTotalIonChromatogram),
      ZRML_SLOT(25, GetMassRangeChromatogram),
      ZRML_SLOT(26, GetRetentionTimes),
      ZRML_SLOT(27, GetScanRetentionTime),
      ZRML_SLOT(28, GetFunctionMassRange),
      ZRML_SLOT(29, GetScanMassRange),
      ZRML_SLOT(30, GetScanMobilityRange),
      ZRML_SLOT(31, GetScanIntensityRange),
      ZRML_SLOT(32, GetMobilityAxis),
      ZRML_SLOT(33, GetSpectrum),
      ZRML_SLOT(34, GetMobilitySpectrum),
      ZRML_SLOT(35, GetMobilitySpectra),
      ZRML_SLOT(36, GetTraceCount),
      ZRML_SLOT(37, GetTraceName),
      ZRML_SLOT(38, GetTrace),
      ZRML_SLOT(39, GetFunctionTraceCount),
      ZRML_SLOT(40, GetFunctionTraceName),
      ZRML_SLOT(41, GetFunctionTrace),
      ZRML_SLOT(42, HasAbsorbanceData),
      ZRML_SLOT(43, GetAbsorbanceScanCount),
      ZRML_SLOT(44, GetAbsorbanceSpectrum),
      ZRML_SLOT(45, GetMetadataValue),
      ZRML_SLOT(46, GetMetadataKeys),
      ZRML_SLOT(47, GetFileFilter),
      ZRML_SLOT(48, OpenFileInSet),
      ZRML_SLOT(49, IsReportSource),
      ZRML_SLOT(50, FindPrecursorScan),
  };
  ASSERT_EQ(std::size(slots), 50U);
  for (std::size_t i = 0; i < std::size(slots); ++i) {
    EXPECT_EQ(slots[i].slot, i + 1) << slots[i].name;
    EXPECT_EQ(slots[i].tableIndex, slots[i].slot + 1) << slots[i].name;
  }
}

TEST(InterfaceOrder, SpectrumResizeFollowsTheDestructor) {
  EXPECT_EQ(TableIndex(&CZRMassSpectrum::Resize), 2U);
}

TEST(InterfaceOrder, ContainersWithoutVirtualOperationsHaveNoTable) {
  static_assert(std::is_polymorphic_v<CDataServerImpl> && std::has_virtual_destructor_v<CDataServerImpl>);
  static_assert(std::is_polymorphic_v<CZRMassSpectrum> && std::has_virtual_destructor_v<CZRMassSpectrum>);
  static_assert(!std::is_polymorphic_v<CZRChromatogram> && !std::is_polymorphic_v<CZRAbsorbanceSpectrum>);
  EXPECT_EQ(sizeof(CDataServerImpl), sizeof(void*));  // no data members
}

#undef ZRML_SLOT

}  // namespace
}  // namespace zrml
