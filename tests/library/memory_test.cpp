// Memory that runs out, and memory that is given back. The library's objects are linked in, so that the
// program's allocations are theirs.
#include <functional>

#include "tests/hostile/allocations.h"
#include "tests/library/every_call.h"
#include "tests/library/opened.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/report_writer.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace zrml::test {
namespace {

class LibraryMemory : public testing::Test {
 protected:
  LibraryMemory() { folder_.WriteText("vials.rpt", ReportText(Vials())); }

  const TempDirectory raw_ = SmallAcquisition().Build();
  const TempDirectory folder_{"reports"};
  const std::string paths_[2] = {PathOf(raw_), PathOf(folder_, "vials.rpt")};
};

// The memory of the test itself may fail, too: then nothing was asked.
TEST_F(LibraryMemory, EveryAllocationThatFailsGivesItsStatus) {
  for (const std::string& path : paths_) {
    const std::string expected = AskEverything(path).text;
    int failures = 0;
    for (int count = 0;; ++count) {
      SCOPED_TRACE(testing::Message() << path << ", allocation " << count);
      Answers answers;
      bool hasFailed = false;
      {
        const FailingAllocation failing(count);
        try {
          answers = AskEverything(path);
          failures += answers.status == ZRML_NO_MEMORY;
        } catch (const std::bad_alloc&) {
          answers.status = ZRML_NO_MEMORY;
        }
        hasFailed = failing.HasFailed();
      }
      if (!hasFailed) break;
      // Sorting does with less when there is no more.
      if (answers.status != ZRML_NO_MEMORY) {
        ASSERT_EQ(answers.text, expected);
      }
    }
    EXPECT_GT(failures, 100);
    EXPECT_EQ(AskEverything(path).text, expected);
  }
}

TEST_F(LibraryMemory, MessageOfNoMemoryNeedsNone) {
  const Opened opened(raw_);
  int count = 0;
  int failures = 0;
  for (int allocation = 0;; ++allocation) {
    const FailingAllocation failing(allocation);
    const zrml_status status = zrml_metadata_count(opened.Get(), 0, ZRML_OF_SAMPLE, &count);
    if (!failing.HasFailed()) break;
    failures += status == ZRML_NO_MEMORY && std::string(zrml_message(opened.Get())) == "out of memory";
  }
  EXPECT_GT(failures, 0);
  int whole = 0;
  const Opened other(raw_);
  ASSERT_EQ(zrml_metadata_count(other.Get(), 0, ZRML_OF_SAMPLE, &whole), ZRML_OK);
  EXPECT_EQ(count, whole);
}

// What is kept in the source is complete, whenever memory ran out before.
TEST_F(LibraryMemory, NothingIncompleteIsKept) {
  raw_.Truncate("_FUNC001.DAT", 1);
  for (const std::string& path : paths_) {
    for (int allocation = 0; allocation < 400; ++allocation) {
      const Opened opened(path);
      int count = 0;
      {
        const FailingAllocation failing(allocation);
        zrml_metadata_count(opened.Get(), 0, ZRML_OF_SAMPLE, &count);
        zrml_finding_count(opened.Get(), &count);
      }
      const Opened other(path);
      for (const bool isOfFindings : {false, true}) {
        const auto ask = [&](const Opened& source) {
          int items = -1;
          isOfFindings ? zrml_finding_count(source.Get(), &items)
                       : zrml_metadata_count(source.Get(), 0, ZRML_OF_SAMPLE, &items);
          return items;
        };
        ASSERT_EQ(ask(opened), ask(other)) << allocation;
      }
    }
  }
}

TEST_F(LibraryMemory, ClosingGivesEverythingBack) {
  for (const std::string& path : paths_) {
    AskEverything(path);
    const std::size_t before = BytesInUse();
    EXPECT_EQ(AskEverything(path).status, ZRML_OK);
    EXPECT_EQ(BytesInUse(), before);
    for (int allocation = 0; allocation < 3000; allocation += 37) {
      const FailingAllocation failing(allocation);
      try {
        AskEverything(path);
      } catch (const std::bad_alloc&) {
      }
    }
    EXPECT_EQ(BytesInUse(), before);
  }
}

TEST_F(LibraryMemory, HundredThousandReadsLeaveNothingBehind) {
  const Opened opened(raw_);
  double x[8];
  double y[8];
  std::size_t count = 0;
  int number = 0;
  const auto read = [&](int times) {
    for (int i = 0; i < times; ++i) {
      zrml_scan scan = {};
      scan.size = sizeof scan;
      zrml_function function = {};
      function.size = sizeof function;
      zrml_metadata item = {};
      item.size = sizeof item;
      zrml_trace trace = {};
      trace.size = sizeof trace;
      number += zrml_get_function(opened.Get(), 0, i % 2, &function);
      number += zrml_get_scan(opened.Get(), 0, 0, i % 3, &scan);
      number += zrml_read_points(opened.Get(), 0, 0, i % 3, x, y, 8, &count, nullptr);
      number += zrml_get_metadata(opened.Get(), 0, 0, i % 4, &item);
      number += zrml_get_trace(opened.Get(), 0, ZRML_OF_SAMPLE, i % 2, &trace);
      number += zrml_read_trace(opened.Get(), 0, ZRML_OF_SAMPLE, i % 2, x, y, 8, &count);
      number += zrml_read_points(opened.Get(), 0, 0, 99, x, y, 8, &count, nullptr) - ZRML_WRONG_ARGUMENT;
    }
  };
  read(100);
  const std::size_t before = BytesInUse();
  read(100'000);
  EXPECT_EQ(number, 0) << zrml_message(opened.Get());
  EXPECT_EQ(BytesInUse(), before);
}

}  // namespace
}  // namespace zrml::test
