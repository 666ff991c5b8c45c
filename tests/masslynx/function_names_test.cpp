#include "masslynx/function_names.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::masslynx {
namespace {

constexpr int kMs = 0;
constexpr int kTofMsMs = 16;
constexpr int kElectrosprayPositive = 8;
constexpr int kElectrosprayNegative = 9;
constexpr int kNoSuchMode = 16;

FunctionRecord Function(int typeCode, int ionMode, std::vector<std::uint16_t> processChain = {},
                        const std::wstring& label = {}) {
  FunctionRecord record;
  record.typeCode = typeCode;
  record.ionMode = ionMode;
  record.processChain = std::move(processChain);
  record.label = label;
  return record;
}

FunctionRecord Labelled(const std::wstring& label) { return Function(kMs, kElectrosprayPositive, {}, label); }

std::vector<std::wstring> NamesOf(std::vector<FunctionRecord> functions) {
  MarkSharedNames(functions);
  std::vector<std::wstring> names;
  for (std::size_t i = 0; i < functions.size(); ++i) names.push_back(FunctionName(functions, i));
  return names;
}

std::wstring ShownNameOf(const FunctionRecord& function) { return NamesOf({function}).front(); }

using Names = std::vector<std::wstring>;

TEST(FunctionName, EmptyListStaysEmpty) { EXPECT_EQ(NamesOf({}), Names{}); }

TEST(FunctionName, JoinsTypeAndIonMode) {
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive)), L"MS ES+");
  EXPECT_EQ(ShownNameOf(Function(kTofMsMs, kElectrosprayNegative)), L"TOF MS/MS ES-");
  EXPECT_EQ(ShownNameOf(Function(32, kElectrosprayPositive)), L"Unknown ES+");
}

// The blank belongs to the type's text and is kept even without a mode after it: deliberate.
TEST(FunctionName, TypeKeepsItsBlankWithoutIonModeText) {
  EXPECT_EQ(ShownNameOf(Function(kMs, kNoSuchMode)), L"MS ");
  EXPECT_EQ(ShownNameOf(Function(kMs, kNoSuchMode, {2}, L"x")), L"MS  (Combined) x");
}

TEST(FunctionName, ProcessChainIsListedFrontToBack) {
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {2, 3})), L"MS ES+ (Combined, Smoothed)");
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {3, 2, 27})),
            L"MS ES+ (Smoothed, Combined, Acc Mass Auto Peak Det)");
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {4})), L"MS ES+ (Centroided)");
}

TEST(FunctionName, ProcessCodesWithoutTextAreSkipped) {
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {0, 2, 22, 3, 28})),
            L"MS ES+ (Combined, Smoothed)");
}

TEST(FunctionName, ChainWithoutAnyTextAddsNothing) {
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {0, 22, 65535})), L"MS ES+");
}

TEST(FunctionName, LabelIsAppendedAfterTheProcessChain) {
  EXPECT_EQ(ShownNameOf(Labelled(L"Lock Mass")), L"MS ES+ Lock Mass");
  EXPECT_EQ(ShownNameOf(Function(kMs, kElectrosprayPositive, {2, 3}, L"Lock Mass")),
            L"MS ES+ (Combined, Smoothed) Lock Mass");
}

TEST(FunctionName, EqualNamesGetTheirPlaceInTheList) {
  EXPECT_EQ(NamesOf({Function(kMs, kElectrosprayPositive), Function(kTofMsMs, kElectrosprayPositive),
                     Function(kMs, kElectrosprayPositive)}),
            (Names{L"MS ES+ 1", L"TOF MS/MS ES+", L"MS ES+ 3"}));
}

TEST(FunctionName, PlaceIsNotTheFunctionNumber) {
  std::vector<FunctionRecord> functions(2, Function(kMs, kElectrosprayPositive));
  functions[0].number = 7;
  functions[1].number = 9;
  EXPECT_EQ(NamesOf(functions), (Names{L"MS ES+ 1", L"MS ES+ 2"}));
}

TEST(FunctionName, SeveralGroupsOfEqualNamesCountPlacesInTheWholeList) {
  EXPECT_EQ(NamesOf({Labelled(L"a"), Labelled(L"b"), Labelled(L"b"), Labelled(L"a"), Labelled(L"a")}),
            (Names{L"MS ES+ a 1", L"MS ES+ b 2", L"MS ES+ b 3", L"MS ES+ a 4", L"MS ES+ a 5"}));
}

TEST(FunctionName, TwoDigitPlacesAreNotPadded) {
  const Names names = NamesOf(std::vector<FunctionRecord>(12, Function(kMs, kElectrosprayPositive)));
  EXPECT_EQ(names.front(), L"MS ES+ 1");
  EXPECT_EQ(names.back(), L"MS ES+ 12");
}

TEST(FunctionName, NamesDifferingInCaseAreDifferent) {
  EXPECT_EQ(NamesOf({Labelled(L"a"), Labelled(L"A")}), (Names{L"MS ES+ a", L"MS ES+ A"}));
}

// Deliberate: names are compared before places are added, so a place can make a new twin.
TEST(FunctionName, ComparesNamesBeforePlacesAreAdded) {
  EXPECT_EQ(NamesOf({Labelled(L""), Labelled(L""), Labelled(L"1")}),
            (Names{L"MS ES+ 1", L"MS ES+ 2", L"MS ES+ 1"}));
}

TEST(FunctionName, FunctionsThatAreGoneShareNothing) {
  std::vector<FunctionRecord> functions(2, Function(kMs, kElectrosprayPositive));
  MarkSharedNames(functions);
  EXPECT_EQ(FunctionName(functions, 0), L"MS ES+ 1");
  functions.pop_back();
  MarkSharedNames(functions);
  EXPECT_EQ(FunctionName(functions, 0), L"MS ES+");
}

}  // namespace
}  // namespace zrml::masslynx
