// Every allocation of a reading fails in turn.
#include <new>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/hostile/allocations.h"
#include "tests/hostile/reading.h"

namespace zrml {
namespace {

TEST(FailingMemory, ShowsAsTheExceptionAndLeavesTheObjectSound) {
  const TempDirectory directory = WholeDirectory().Build();
  const std::wstring path = directory.WidePath();
  plugin::CMLDataServerImpl server;
  const Answers expected = ReadEverything(server, path);
  const int descriptors = OpenDescriptors();
  int thrown = 0;
  for (int count = 0;; ++count) {
    SCOPED_TRACE(testing::Message() << "allocation " << count);
    bool failed = false;
    {
      const FailingAllocation failing(count);
      try {
        ReadEverything(server, path);
      } catch (const std::bad_alloc&) {
        ++thrown;
      }
      failed = failing.HasFailed();
    }
    if (!failed) break;
    server.Close();
    ASSERT_EQ(OpenDescriptors(), descriptors);
    ASSERT_EQ(ReadEverything(server, path), expected);
  }
  EXPECT_GT(thrown, 100);
}

// Nothing stays allocated except what a closed object may keep for its next reading.
TEST(FailingMemory, NoMemoryIsLost) {
  const TempDirectory directory = WholeDirectory().Build();
  const std::wstring path = directory.WidePath();
  const std::size_t before = BytesInUse();
  for (int count = 0; count < 2000; count += 7) {
    plugin::CMLDataServerImpl server;
    const FailingAllocation failing(count);
    try {
      ReadEverything(server, path);
    } catch (const std::bad_alloc&) {
    }
  }
  EXPECT_EQ(BytesInUse(), before);
}

}  // namespace
}  // namespace zrml
