// Every system call of a reading fails in turn.
#include "tests/hostile/failing_calls.h"

#include <gtest/gtest.h>

#include "masslynx/ml_data_server.h"
#include "openlynx/openlynx_data_server.h"
#include "tests/hostile/reading.h"

namespace zrml {
namespace {

class FailingCallsTest : public testing::Test {
 protected:
  explicit FailingCallsTest(const RawDirectoryBuilder& raw = WholeDirectory()) : directory_(raw.Build()) {}

  // Reads with each call failing in turn, until none is left, and calls `check(answers)`.
  template <class Check>
  int FailEach(CallFailure failure, FailingCalls::Extent extent, Check check) {
    for (int count = 0;; ++count) {
      SCOPED_TRACE(testing::Message() << "call " << count);
      bool failed = false;
      Answers answers;
      {
        const FailingCalls failing(count, failure, extent);
        answers = ReadEverything(server_, path_);
        failed = failing.HasFailed();
      }
      if (!failed) return count;
      check(answers);
      if (HasFailure()) return count;
    }
  }

  void ExpectSoundAfterwards() {
    EXPECT_EQ(OpenDescriptors(), descriptors_);
    EXPECT_EQ(ReadEverything(server_, path_), expected_);
  }

  const TempDirectory directory_;
  const std::wstring path_ = directory_.WidePath();
  CMLDataServerImpl server_;
  const int descriptors_ = OpenDescriptors();
  const Answers expected_ = ReadEverything(server_, path_);
};

TEST_F(FailingCallsTest, NothingFailsInTheControl) {
  EXPECT_EQ(ReadEverything(server_, path_), expected_);
  EXPECT_EQ(expected_[1], "open 1");
  EXPECT_EQ(expected_[2], "functions 3");
}

TEST_F(FailingCallsTest, ErrorOfOneCallLeavesTheObjectSound) {
  const int calls =
      FailEach(CallFailure::kError, FailingCalls::kOne, [&](const Answers&) { ExpectSoundAfterwards(); });
  EXPECT_GT(calls, 100);
}

TEST_F(FailingCallsTest, ErrorsFromOneCallOnLeaveTheObjectSound) {
  const int calls = FailEach(CallFailure::kError, FailingCalls::kAllFromThere,
                             [&](const Answers&) { ExpectSoundAfterwards(); });
  EXPECT_GT(calls, 100);
}

TEST_F(FailingCallsTest, InterruptedCallsAreTriedAgain) {
  FailEach(CallFailure::kInterrupted, FailingCalls::kOne,
           [&](const Answers& answers) { EXPECT_EQ(answers, expected_); });
}

TEST_F(FailingCallsTest, ShortReadsAreContinued) {
  FailEach(CallFailure::kShort, FailingCalls::kOne,
           [&](const Answers& answers) { EXPECT_EQ(answers, expected_); });
}

// More functions, so that the directory is listed when it is opened.
class FailingListTest : public FailingCallsTest {
 protected:
  FailingListTest() : FailingCallsTest(ManyFunctions()) {}

  static RawDirectoryBuilder ManyFunctions() {
    RawDirectoryBuilder raw = WholeDirectory();
    raw.functions.resize(6, raw.functions.front());
    return raw;
  }
};

TEST_F(FailingListTest, ListThatFailsIsDoneWithout) {
  EXPECT_EQ(expected_[2], "functions 6");
  FailEach(CallFailure::kNoList, FailingCalls::kOne,
           [&](const Answers& answers) { EXPECT_EQ(answers, expected_); });
}

TEST_F(FailingListTest, ErrorOfOneCallLeavesTheObjectSound) {
  FailEach(CallFailure::kError, FailingCalls::kOne, [&](const Answers&) { ExpectSoundAfterwards(); });
}

// What each operation gives when no call succeeds any more.
TEST_F(FailingCallsTest, EveryOperationGivesItsEmptyResult) {
  ASSERT_TRUE(server_.Open(path_));
  const FailingCalls failing(0, CallFailure::kError, FailingCalls::kAllFromThere);
  EXPECT_EQ(server_.GetFunctionCount(0), 3) << "what was read stays";
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  CZRMassSpectrum spectrum;
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetCount(), 0);
  HostVector<double> times(2, 1.0);
  EXPECT_TRUE(server_.GetRetentionTimes(0, 0, times));
  EXPECT_TRUE(times.empty());
  EXPECT_EQ(server_.GetTraceCount(0), 1) << "the absorbance total alone";
  EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 0);
  EXPECT_FALSE(server_.ValidateSource(path_));
  EXPECT_FALSE(server_.Open(path_));
}

TEST_F(FailingCallsTest, ReadErrorInTheDataGivesZeros) {
  ASSERT_TRUE(server_.Open(path_));
  CZRMassSpectrum control;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 1, control));
  ASSERT_EQ(control.GetCount(), 2);
  // The calls of a spectrum: the data file is opened where it was found and looked at, then comes one read.
  const FailingCalls failing(2, CallFailure::kError);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 1, spectrum));
  ASSERT_TRUE(failing.HasFailed());
  // Two points of raw mass 0, which the calibration makes 0.5: equal masses become one.
  ASSERT_EQ(spectrum.GetCount(), 1);
  EXPECT_EQ(spectrum.GetMass(0), 0.5);
  EXPECT_EQ(spectrum.GetTotalIntensity(), 0.0);
}

// Four spectra of 160 kB, with their times at the end: no read reaches beyond two of them.
TEST(FailingReportTest, ReadErrorCostsTheTimeOfOneSpectrumAtMost) {
  std::string text = "[SAMPLE]\n{\n[FUNCTION]\n{\nType\tMS\n";
  for (const char* const time : {"1", "2", "3", "4"}) {
    text += "[SPECTRUM]\n{\n";
    for (int line = 0; line < 20000; ++line) text += "Filler\t\n";
    text += std::string("Time\t") + time + "\n}\n";
  }
  text += "}\n}\n";
  const TempDirectory directory;
  directory.WriteText("long.rpt", text);
  COpenLynxRptDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath("long.rpt")));
  HostVector<double> whole;
  ASSERT_TRUE(server.GetRetentionTimes(0, 0, whole));
  ASSERT_EQ(std::vector<double>(whole.begin(), whole.end()), (std::vector<double>{1, 2, 3, 4}));

  int lost = 0;
  for (int count = 0;; ++count) {
    SCOPED_TRACE(testing::Message() << "call " << count);
    const FailingCalls failing(count, CallFailure::kError);
    HostVector<double> times;
    const bool isRead = server.GetRetentionTimes(0, 0, times);
    if (!failing.HasFailed()) break;
    if (!isRead) continue;  // the file could not be opened
    ASSERT_EQ(times.size(), 4U);
    int zeros = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      zeros += times[i] == 0 ? 1 : 0;
      EXPECT_TRUE(times[i] == 0 || times[i] == whole[i]) << i;
    }
    EXPECT_LE(zeros, 1);
    lost += zeros;
  }
  EXPECT_GE(lost, 1);  // that of the first, at whose beginning a read fails; elsewhere a read tears a line
}

}  // namespace
}  // namespace zrml
