// Files that change or vanish while their directory is open.
#include <filesystem>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/hostile/reading.h"

namespace zrml {
namespace {

class ChangingFilesTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(server_.Open(directory_.WidePath())); }

  bool Read(int scan, CZRMassSpectrum& spectrum) { return server_.GetSpectrum(0, 0, scan, spectrum); }

  const TempDirectory directory_ = WholeDirectory().Build();
  plugin::CMLDataServerImpl server_;
};

TEST_F(ChangingFilesTest, IndexThatVanishesBeforeItsFirstReadingGivesNoScans) {
  directory_.Remove("_FUNC001.IDX");
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  EXPECT_EQ(server_.GetScanCount(0, 1), 2) << "the other functions stay";
}

TEST_F(ChangingFilesTest, IndexThatWasReadIsNotReadAgain) {
  ASSERT_EQ(server_.GetScanCount(0, 0), 2);
  directory_.Truncate("_FUNC001.IDX", 0);
  EXPECT_EQ(server_.GetScanCount(0, 0), 2);
}

TEST_F(ChangingFilesTest, DataThatVanishFailTheReading) {
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(Read(1, spectrum));
  directory_.Remove("_FUNC001.DAT");
  CZRMassSpectrum untouched;
  EXPECT_FALSE(Read(1, untouched));
  EXPECT_EQ(untouched.GetCount(), 0);
}

TEST_F(ChangingFilesTest, DataThatBecomeAFolderFailTheReading) {
  directory_.Remove("_FUNC001.DAT");
  directory_.MakeDirectory("_FUNC001.DAT");
  CZRMassSpectrum spectrum;
  EXPECT_FALSE(Read(0, spectrum));
}

TEST_F(ChangingFilesTest, DataThatShrinkReadAsZeros) {
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(Read(1, spectrum));
  ASSERT_EQ(spectrum.GetTotalIntensity(), 9.0);
  directory_.Truncate("_FUNC001.DAT", 0);
  CZRMassSpectrum after;
  EXPECT_TRUE(Read(1, after));
  EXPECT_EQ(after.GetTotalIntensity(), 0.0);
}

TEST_F(ChangingFilesTest, DirectoryThatIsMovedAwayGivesEmptyResults) {
  std::filesystem::rename(directory_.Path(), directory_.Path().parent_path() / "elsewhere.raw");
  EXPECT_EQ(server_.GetFunctionCount(0), 3);
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  EXPECT_EQ(server_.GetTraceCount(0), 1) << "the absorbance total alone";
  EXPECT_TRUE(server_.Close());
  EXPECT_FALSE(server_.Open(directory_.WidePath()));
}

TEST_F(ChangingFilesTest, OnlyTheHeaderStaysOpen) {
  server_.Close();
  const int descriptors = OpenDescriptors();
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.Open(directory_.WidePath()));
  EXPECT_EQ(OpenDescriptors(), descriptors + 1);
  ASSERT_TRUE(Read(0, spectrum));
  server_.GetTraceCount(0);
  server_.GetAbsorbanceScanCount(0);
  EXPECT_EQ(OpenDescriptors(), descriptors + 1);
  ASSERT_TRUE(server_.Open(directory_.WidePath()));
  EXPECT_EQ(OpenDescriptors(), descriptors + 1) << "of a second open too";
  server_.Close();
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

}  // namespace
}  // namespace zrml
