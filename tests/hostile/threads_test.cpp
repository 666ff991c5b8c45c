// Objects are independent: one thread each, one directory. ThreadSanitizer checks this in the preset
// linux-tsan.
#include <thread>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/hostile/reading.h"

namespace zrml {
namespace {

TEST(Threads, SixteenObjectsReadTheSameFromOneDirectory) {
  constexpr std::size_t kThreads = 16;
  constexpr int kReadings = 8;
  const TempDirectory directory = WholeDirectory().Build();
  const std::wstring path = directory.WidePath();
  plugin::CMLDataServerImpl alone;
  const Answers expected = ReadEverything(alone, path);
  std::vector<int> equal(kThreads, 0);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      plugin::CMLDataServerImpl server;
      for (int reading = 0; reading < kReadings; ++reading)
        equal[i] += ReadEverything(server, path) == expected;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(equal, std::vector<int>(kThreads, kReadings));
}

}  // namespace
}  // namespace zrml
