// Every system call of a reading fails in turn.
#include "tests/hostile/failing_calls.h"

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "plugin/report_server.h"
#include "source/source.h"
#include "tests/hostile/reading.h"
#include "tools/zrml/command_line.h"

namespace zrml {
namespace {

class FailingCallsTest : public testing::Test {
 protected:
  explicit FailingCallsTest(const RawDirectoryBuilder& raw = WholeDirectory()) : directory_(raw.Build()) {}

  // Reads with each call failing in turn and calls `check(answers)` each time.
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
  plugin::CMLDataServerImpl server_;
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

// More functions, so the directory is listed on opening.
class FailingListTest : public FailingCallsTest {
 protected:
  FailingListTest() : FailingCallsTest(ManyFunctions()) {}

  static RawDirectoryBuilder ManyFunctions() {
    RawDirectoryBuilder raw = WholeDirectory();
    raw.functions.resize(6, raw.functions.front());
    return raw;
  }
};

TEST_F(FailingListTest, FailingListChangesNothing) {
  EXPECT_EQ(expected_[2], "functions 6");
  FailEach(CallFailure::kNoList, FailingCalls::kOne,
           [&](const Answers& answers) { EXPECT_EQ(answers, expected_); });
}

TEST_F(FailingListTest, ErrorOfOneCallLeavesTheObjectSound) {
  FailEach(CallFailure::kError, FailingCalls::kOne, [&](const Answers&) { ExpectSoundAfterwards(); });
}

// The result of each operation when all calls fail from now on.
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
  // The calls of a spectrum: open the data file at its known path, get its status, read once.
  const FailingCalls failing(2, CallFailure::kError);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 1, spectrum));
  ASSERT_TRUE(failing.HasFailed());
  // Two points of raw mass 0, which the calibration makes 0.5: equal masses become one.
  ASSERT_EQ(spectrum.GetCount(), 1);
  EXPECT_EQ(spectrum.GetMass(0), 0.5);
  EXPECT_EQ(spectrum.GetTotalIntensity(), 0.0);
}

// Four spectra of 160 kB, with their times at the end: no read spans more than two of them.
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
  plugin::COpenLynxRptDataServerImpl server;
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
  EXPECT_GE(lost, 1);  // the first, if a read fails at its start; elsewhere a failed read splits a line
}

// Everything that a source gives without looking for damage.
std::string ReadSource(const std::string& path) {
  std::string text;
  const auto add = [&text](const std::vector<double>& values) {
    for (const double value : values) text += std::to_string(value) + ' ';
    text += '\n';
  };
  std::vector<double> x;
  std::vector<double> y;
  const std::unique_ptr<source::Source> source = source::Source::Open(path);
  for (const source::MetadataItem& item : source->SampleMetadata(0)) text += item.value.value_or("-") + '\n';
  for (int f = 0; f < static_cast<int>(source->Functions(0).size()); ++f) {
    text += source->Functions(0)[static_cast<std::size_t>(f)].name + '\n';
    for (int scan = 0; scan < source->ScanCount(0, f); ++scan) {
      const source::Scan read = source->ScanAt(0, f, scan);
      add({read.minutes, read.precursorMz.value_or(0), read.scanValue.value_or(0)});
      source->ReadPoints(0, f, scan, x, y);
      add(x);
      add(y);
    }
  }
  for (const source::Trace& trace : source->Traces(0)) {
    text += trace.name + '\n';
    add(source->ReadTrace(0, trace.number - 1).intensities);
  }
  for (int scan = 0; scan < source->AbsorbanceScanCount(0); ++scan) {
    source->ReadAbsorbance(0, scan, x, y);
    add(y);
  }
  return text;
}

// A source gives everything or reports that it cannot be read.
TEST_F(FailingCallsTest, ReadThatIsRefusedIsAnErrorOfTheSource) {
  const std::string path = directory_.Path().string();
  const std::string whole = ReadSource(path);
  int refused = 0;
  bool hasFailed = true;
  for (int count = 0; hasFailed; ++count) {
    SCOPED_TRACE(testing::Message() << "call " << count);
    const FailingCalls failing(count, CallFailure::kRead);
    try {
      EXPECT_EQ(ReadSource(path), whole);
    } catch (const source::Error& error) {
      ++refused;
    }
    hasFailed = failing.HasFailed();
  }
  EXPECT_GT(refused, 10);
}

// Four samples of 160 kB, each with a function and a trace behind its filler.
std::string ReportOfSamples() {
  std::string text;
  for (const char* const name : {"a", "b", "c", "d"}) {
    text += std::string("[SAMPLE]\n{\nFileName\t") + name + "\n";
    for (int line = 0; line < 20000; ++line) text += "Filler\t\n";
    text += "[FUNCTION]\n{\nType\tMS\n[SPECTRUM]\n{\nTime\t1\n}\n}\n";
    text += "[FUNCTION]\n{\nDescription\tANALOG\n[CHROMATOGRAM]\n{\n}\n}\n}\n";
  }
  return text;
}

std::string ListOf(source::Source& source) {
  std::string list;
  for (int sample = 0; sample < source.SampleCount(); ++sample) {
    list += source.SampleName(sample) + source.SampleMetadata(sample)[2].value.value_or("");
    for (const source::Function& function : source.Functions(sample)) list += ' ' + function.name;
    list += ' ' + std::to_string(source.Traces(sample).size()) + '\n';
  }
  return list;
}

// Samples, functions and texts are either complete or refused, and partial results are not kept.
TEST(FailingReportSourceTest, RefusedReadIsAnErrorAndLeavesNothing) {
  const TempDirectory directory;
  directory.WriteText("long.rpt", ReportOfSamples());
  const std::string path = (directory.Path() / "long.rpt").string();
  const std::string whole = ListOf(*source::Source::Open(path));
  ASSERT_EQ(whole, "a MS 1\nb MS 1\nc MS 1\nd MS 1\n");
  int refusals = 0;
  for (int count = 0;; ++count) {
    SCOPED_TRACE(testing::Message() << "call " << count);
    const std::unique_ptr<source::Source> source = source::Source::Open(path);
    bool hasFailed = false;
    {
      const FailingCalls failing(count, CallFailure::kError);
      try {
        EXPECT_EQ(ListOf(*source), whole);
      } catch (const source::Error& error) {
        EXPECT_EQ(error.GetStatus(), source::Status::kUnreadable);
        ++refusals;
      }
      hasFailed = failing.HasFailed();
    }
    EXPECT_EQ(ListOf(*source), whole) << "afterwards";
    if (!hasFailed || HasFailure()) break;
  }
  EXPECT_GT(refusals, 8);
}

TEST(FailingReportSourceTest, CheckReportsItsFindingsDespiteARefusedRead) {
  const TempDirectory directory;
  directory.WriteText("long.rpt", ReportOfSamples());
  const std::string path = (directory.Path() / "long.rpt").string();
  bool hasOpened = false;  // from then on a failure is a finding, or skipped like a forbidden file
  bool isOneSampleLost = false;
  for (int count = 0;; ++count) {
    SCOPED_TRACE(testing::Message() << "call " << count);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const FailingCalls failing(count, CallFailure::kError);
    const tool::ExitStatus status = tool::RunCommandLine({"check", "--json", path});
    const std::string output = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    if (!failing.HasFailed()) break;
    hasOpened = hasOpened || status == tool::ExitStatus::kDamaged;
    if (!hasOpened) continue;
    ASSERT_TRUE(status == tool::ExitStatus::kDamaged || status == tool::ExitStatus::kDone);
    isOneSampleLost = isOneSampleLost || output.find("\"functions\": 3") != std::string::npos;
  }
  EXPECT_TRUE(isOneSampleLost) << "the functions of the others are counted";
}

}  // namespace
}  // namespace zrml
