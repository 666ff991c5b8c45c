#include "masslynx/scandata/scan_facts.h"

#include <gtest/gtest.h>

namespace zrml::masslynx {
namespace {

constexpr int kProduct = 6;
constexpr int kSurvey = 18;

FunctionRecord FunctionOfType(int type, float setMass) {
  FunctionRecord function;
  function.typeCode = type;
  function.setMass = setMass;
  return function;
}

TEST(FactsOf, ScanEndsAfterTheScanTimeOfTheMethod) {
  FunctionRecord function;
  function.scanTime = 30;
  EXPECT_EQ(FactsOf(function, {.retentionTime = 2}).endMinutes, 2.5F);
}

TEST(FactsOf, OwnPrecursorComesBeforeTheOneOfTheMethod) {
  const FunctionRecord function = FunctionOfType(kProduct, 300);
  const struct {
    ScanIndexEntry scan;
    float mass;
    bool isOfMethod;
  } cases[] = {
      {{.precursorMass = 200, .precursorFlags = 1}, 200, false},
      {{.precursorMass = 200, .precursorFlags = 3}, 200, false},
      {{.precursorMass = 200, .precursorFlags = 2}, 300, true},  // not marked as valid
      {{.precursorMass = 0, .precursorFlags = 1}, 300, true},
      {{.precursorMass = -0.0F, .precursorFlags = 1}, 300, true},
      {{}, 300, true},
  };
  for (const auto& row : cases) {
    const ScanFacts facts = FactsOf(function, row.scan);
    EXPECT_EQ(facts.precursorMass, row.mass);
    EXPECT_EQ(facts.isPrecursorOfMethod, row.isOfMethod);
  }
}

TEST(FactsOf, NoPrecursorIsAbsent) {
  for (const float zero : {0.0F, -0.0F}) {
    const ScanFacts facts = FactsOf(FunctionOfType(kProduct, zero), {});
    EXPECT_EQ(facts.precursorMass, std::nullopt);
    EXPECT_FALSE(facts.isPrecursorOfMethod);
  }
  const ScanFacts facts = FactsOf(FunctionOfType(kSurvey, 300), {.precursorMass = 200, .precursorFlags = 1});
  EXPECT_EQ(facts.precursorMass, std::nullopt);
  EXPECT_FALSE(facts.isPrecursorOfMethod);
}

TEST(FactsOf, AdditionalValueIsTheScansOwnOrTheMethods) {
  FunctionRecord function;
  EXPECT_EQ(FactsOf(function, {}).value, std::nullopt);
  EXPECT_EQ(FactsOf(function, {.auxValue = -7.5F}).value, -7.5F);
  function.defaultScanValue = 20;
  EXPECT_EQ(FactsOf(function, {}).value, 20.0F);
  EXPECT_EQ(FactsOf(function, {.auxValue = -7.5F}).value, -7.5F);
}

}  // namespace
}  // namespace zrml::masslynx
