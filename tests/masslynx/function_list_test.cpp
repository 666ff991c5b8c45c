// The functions and metadata that the provider gives for an open directory.
#include <climits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/raw_directory.h"
#include "tests/masslynx/function_type_rows.h"
#include "tests/masslynx/ml_data_server_fixture.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

// --- the absorbance function ---

/// Functions of the types given, without data.
std::vector<masslynx::FunctionRecord> Table(const std::vector<int>& types) {
  std::vector<masslynx::FunctionRecord> functions;
  for (const int type : types) functions.emplace_back().typeCode = type;
  return functions;
}

TEST(FindAbsorbance, GivesTheLastOfSeveral) {
  EXPECT_EQ(masslynx::FindAbsorbance(Table({18, 6})), std::nullopt);
  EXPECT_EQ(masslynx::FindAbsorbance(Table({18, 12, 6})), 1u);
  EXPECT_EQ(masslynx::FindAbsorbance(Table({12, 18, 12})), 2u);
}

TEST(FindAbsorbance, NeedsNoDataFile) {
  std::vector<masslynx::FunctionRecord> functions = Table({18, 12});
  for (const bool hasDataFile : {true, false}) {
    functions[1].hasDataFile = hasDataFile;
    EXPECT_EQ(masslynx::FindAbsorbance(functions), 1u);
  }
}

// --- the function list ---

TEST(MLDataServerFunctions, EveryTypeHasItsNameKindAndScanType) {
  RawDirectoryBuilder raw;
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    raw.functions.push_back(FunctionOf(static_cast<unsigned>(row.code), {}));
  }
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  ASSERT_EQ(server.GetFunctionCount(0), 31);  // all but the absorbance function
  int function = 0;
  for (const FunctionTypeRow& row : kFunctionTypeRows) {
    if (row.code == static_cast<int>(kDad)) continue;
    EXPECT_EQ(server.GetFunctionName(0, function), row.text + std::wstring(L"ES+"));
    EXPECT_EQ(server.GetFunctionKind(0, function), row.kind) << row.code;
    EXPECT_EQ(server.GetMSMSScanType(0, function), row.scanType) << row.code;
    EXPECT_EQ(server.GetMSLevel(0, function), row.msLevel) << row.code;
    ++function;
  }
}

TEST(MLDataServerFunctions, EveryIonModeHasItsPolarityAndText) {
  RawDirectoryBuilder raw;
  for (unsigned mode = 0; mode < 32; ++mode) {
    raw.functions.push_back(FunctionOf(0, {}));
    raw.functions.back().record.ionMode = mode;
  }
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  for (int mode = 0; mode < 16; ++mode) {
    EXPECT_EQ(server.GetPolarity(0, mode), mode % 2 == 0 ? 1 : 2) << mode;
    EXPECT_EQ(server.GetFunctionName(0, mode), std::wstring(L"MS ") + kIonModeTexts[mode]);
    EXPECT_EQ(Metadata(server, L"IonizationMethod", mode), kIonModeTexts[mode]);
  }
  for (int mode = 16; mode < 32; ++mode) {
    EXPECT_EQ(server.GetPolarity(0, mode), 0) << mode;
    EXPECT_EQ(server.GetFunctionName(0, mode),
              L"MS  " + std::to_wstring(mode + 1));  // sixteen are called "MS "
    EXPECT_EQ(Metadata(server, L"IonizationMethod", mode), L"");
  }
}

TEST(MLDataServerFunctions, FunctionWithoutDataFileIsDropped) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDau, kTofMsMs});
  raw.functions[2] = FunctionOf(kTofMsMs, {0.5F, 1.0F});
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+", L"DAU ES+", L"TOF MS/MS ES+"}));
  server.Close();
  directory.Remove("_FUNC002.DAT");
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+", L"TOF MS/MS ES+"}));
  EXPECT_EQ(server.GetScanCount(0, 1), 2);  // of "_FUNC003.IDX"
}

TEST(MLDataServerFunctions, AbsorbanceFunctionHasNoPosition) {
  const TempDirectory directory = DirectoryOf({kTofMs, kDad, kDau}).Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+", L"DAU ES+"}));
  EXPECT_TRUE(server.HasAbsorbanceData(0));
}

TEST(MLDataServerFunctions, MassRangeIsThatOfTheRecord) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs, 17, 17});
  raw.functions[0].record.startMasses = {50, 100};
  raw.functions[0].record.endMasses = {1000, 2000.5F};
  raw.functions[2].record.mtofLowMass = 10;
  raw.functions[2].record.mtofHighMass = 20;
  raw.functions[3].record.mtofLowMass = 10;
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  double low = -1;
  double high = -2;
  for (const int unknown : {1, 3, -1, 4}) {
    EXPECT_FALSE(server.GetFunctionMassRange(0, unknown, low, high)) << unknown;
    EXPECT_EQ(low, -1.0);
    EXPECT_EQ(high, -2.0);
  }
  EXPECT_TRUE(server.GetFunctionMassRange(0, 0, low, high));
  EXPECT_EQ(low, 50.0);
  EXPECT_EQ(high, 2000.5);
  EXPECT_TRUE(server.GetFunctionMassRange(0, 2, low, high));
  EXPECT_EQ(low, 10.0);
  EXPECT_EQ(high, 20.0);
}

TEST(MLDataServerFunctions, ProcessedFunctionsFollowTheRawOnes) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDau});
  raw.history = std::vector<HistoryStep>{
      {.processNumber = 1, .rawFunctionNumber = 2, .processCode = 2},
      {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 2, .processCode = 3},
      {.processNumber = 3, .rawFunctionNumber = 1, .processCode = 4}};  // without a data file
  raw.processed[1] = FunctionOf(0, {0.5F, 1.0F});
  raw.processed[2] = FunctionOf(0, {0.5F, 1.0F, 1.5F});
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server),
            (Names{L"TOF MS ES+", L"DAU ES+", L"DAU ES+ (Combined)", L"DAU ES+ (Combined, Smoothed)"}));
  EXPECT_EQ(server.GetScanCount(0, 1), 1);
  EXPECT_EQ(server.GetScanCount(0, 2), 2);
  EXPECT_EQ(server.GetScanCount(0, 3), 3);
  EXPECT_EQ(server.GetFunctionKind(0, 3), kMsMsFunction);
}

TEST(MLDataServerFunctions, HistoryPositionsAreThoseBeforeRemoval) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad, kDau});
  raw.history = std::vector<HistoryStep>{{.processNumber = 1, .rawFunctionNumber = 3, .processCode = 2}};
  raw.processed[1] = FunctionOf(0);
  const TempDirectory directory = raw.Build();
  directory.Remove("_FUNC001.DAT");
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"DAU ES+", L"DAU ES+ (Combined)"}));
}

TEST(MLDataServerFunctions, LabelNumbersAreThoseBeforeRemoval) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad, kTofMs});
  raw.labels = {FunctionHeading(1, "first"), FunctionHeading(2, "second"), FunctionHeading(3, "third")};
  const TempDirectory directory = raw.Build();
  directory.Remove("_FUNC001.DAT");
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"TOF MS ES+ third"});
}

// Labels come after the history: a processed function does not inherit its raw function's label, but has its
// own number after the raw functions.
TEST(MLDataServerFunctions, LabelsReachProcessedFunctionsByTheirPosition) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.history = std::vector<HistoryStep>{{.processNumber = 1, .processCode = 2}};
  raw.processed[1] = FunctionOf(0);
  raw.labels = {FunctionHeading(1, "a")};
  const TempDirectory first = raw.Build();
  raw.labels = {FunctionHeading(1, "a"), FunctionHeading(2, "b"), FunctionHeading(3, "c")};
  const TempDirectory second = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(first.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+ a", L"TOF MS ES+ (Combined)"}));
  server.Close();
  ASSERT_TRUE(server.Open(second.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+ a", L"TOF MS ES+ (Combined) b"}));
}

// The place in a name is counted in the remaining list, not in the file.
TEST(MLDataServerFunctions, PlacesInNamesCountListedFunctions) {
  const TempDirectory directory = DirectoryOf({kTofMs, kDad, kTofMs, kTofMs}).Build();
  directory.Remove("_FUNC001.DAT");
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+ 1", L"TOF MS ES+ 2"}));
}

TEST(MLDataServerFunctions, HighEnergyRampMakesAProductIonFunction) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs});
  raw.labels = {CreatorLine("4.2"), FunctionHeading(1, "TOF MS FUNCTION"), "Ramp High Energy from 20 to 30"};
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"MS2 ES+ MS^E Product Ions", L"TOF MS ES+"}));
  EXPECT_EQ(server.GetFunctionKind(0, 0), kMsMsFunction);
  EXPECT_EQ(server.GetMSMSScanType(0, 0), kProductIonScan);
  EXPECT_EQ(server.GetMSLevel(0, 0), 2);
  EXPECT_EQ(server.GetMSLevel(0, 1), 1);
}

// --- metadata ---

class MLDataServerMetadata : public testing::Test {
 protected:
  MLDataServerMetadata() {
    RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs});
    raw.functions[1].record.ionMode = 9;
    raw.header = {"$$ Version: 01.00",
                  "$$ Acquired Date: 5-Mar-2021",
                  "$$ Acquired Time: 09:15:00",
                  "$$ Instrument: QTOF",
                  "$$ User Name: J\xf8rn",
                  "$$ Sample Description: 5 \xb5g/mL ",
                  "$$ MS Method: c:\\methods\\a.exp",
                  "$$ Instrument: second"};
    directory_.emplace(raw.Build());
    EXPECT_TRUE(server_.Open(directory_->WidePath()));
  }

  std::optional<TempDirectory> directory_;
  plugin::CMLDataServerImpl server_;
};

const Names kKeys = {L"AnalysisDateTime", L"InstrumentName", L"OperatorName", L"SampleName",
                     L"DatasetName",      L"ProviderName",   L"MethodName",   L"IonizationMethod"};

TEST_F(MLDataServerMetadata, KeysAreEightInOrder) {
  Names keys = {L"old"};
  EXPECT_TRUE(server_.GetMetadataKeys(0, 0, keys));
  EXPECT_EQ(keys, kKeys);
  EXPECT_TRUE(server_.GetMetadataKeys(0, -1, keys));  // whatever the function
  EXPECT_EQ(keys, kKeys);
}

TEST_F(MLDataServerMetadata, KeysNeedSampleZero) {
  for (const int sample : {1, -1, INT_MAX, INT_MIN}) {
    Names keys = {L"old"};
    EXPECT_FALSE(server_.GetMetadataKeys(sample, 0, keys)) << sample;
    EXPECT_EQ(keys, Names{L"old"});
  }
}

TEST_F(MLDataServerMetadata, EveryKeyHasItsValue) {
  EXPECT_EQ(Metadata(server_, L"AnalysisDateTime"), L"2021-03-5T09:15:00+00:00");
  EXPECT_EQ(Metadata(server_, L"InstrumentName"), L"QTOF");
  EXPECT_EQ(Metadata(server_, L"OperatorName"), L"J\u00f8rn");
  EXPECT_EQ(Metadata(server_, L"SampleName"), L"5 \u00b5g/mL");
  EXPECT_EQ(Metadata(server_, L"DatasetName"), OpenedPath(*directory_));
  EXPECT_EQ(Metadata(server_, L"ProviderName"), L"ZRMLProvider");
  EXPECT_EQ(Metadata(server_, L"MethodName"), L"c:\\methods\\a.exp");
  EXPECT_EQ(Metadata(server_, L"IonizationMethod", 0), L"ES+");
  EXPECT_EQ(Metadata(server_, L"IonizationMethod", 1), L"ES-");
}

TEST_F(MLDataServerMetadata, IonizationMethodAloneNeedsTheFunction) {
  for (const int function : {-1, 2, INT_MAX, INT_MIN}) {
    for (const std::wstring& key : kKeys) {
      std::wstring value = L"old";
      EXPECT_EQ(server_.GetMetadataValue(0, function, key, value), key != L"IonizationMethod") << function;
      EXPECT_NE(value, L"old");
    }
  }
}

TEST_F(MLDataServerMetadata, UnknownKeyEmptiesTheValue) {
  for (const wchar_t* const key :
       {L"", L"instrumentname", L"InstrumentNam", L"InstrumentName ", L"Instrument"}) {
    std::wstring value = L"old";
    EXPECT_FALSE(server_.GetMetadataValue(0, 0, key, value)) << key;
    EXPECT_EQ(value, L"") << key;
  }
}

TEST_F(MLDataServerMetadata, OtherSamplesHaveNoValues) {
  for (const int sample : {1, -1, INT_MAX, INT_MIN}) {
    for (const std::wstring& key : kKeys) {
      std::wstring value = L"old";
      EXPECT_FALSE(server_.GetMetadataValue(sample, 0, key, value)) << sample;
      EXPECT_EQ(value, L"old");
    }
  }
}

TEST(MLDataServerMetadataValue, MissingHeaderValuesAreEmpty) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.header = {"$$ Version: 01.00"};
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  for (const wchar_t* const key : {L"InstrumentName", L"OperatorName", L"SampleName", L"MethodName"}) {
    EXPECT_EQ(Metadata(server, key), L"") << key;
  }
  EXPECT_EQ(Metadata(server, L"AnalysisDateTime"), L"-00-T+00:00");
}

// The metadata slots have no guard against a closed object.
TEST(MLDataServerMetadataValue, ClosedObjectAnswersWithWhatItHas) {
  plugin::CMLDataServerImpl server;
  Names keys;
  EXPECT_TRUE(server.GetMetadataKeys(0, 0, keys));
  EXPECT_EQ(keys, kKeys);
  EXPECT_EQ(Metadata(server, L"AnalysisDateTime"), L"-00-T+00:00");
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"");
  EXPECT_EQ(Metadata(server, L"DatasetName"), L"");
  EXPECT_EQ(Metadata(server, L"ProviderName"), L"ZRMLProvider");
  EXPECT_EQ(Metadata(server, L"IonizationMethod"), L"?");
}

}  // namespace
}  // namespace zrml
