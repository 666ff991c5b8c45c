// Sources are independent: a thread each, of one path. ThreadSanitizer watches in the preset linux-tsan.
#include <thread>

#include "tests/library/every_call.h"
#include "tests/library/opened.h"
#include "tests/support/sound_directory.h"

namespace zrml::test {
namespace {

TEST(LibraryThreads, TwoSourcesOfOnePathGiveTheSame) {
  const TempDirectory directory = SoundDirectory().Build();
  const std::string path = PathOf(directory);
  const std::string expected = AskEverything(path).text;
  EXPECT_GT(expected.size(), 1000u);
  int same[2] = {0, 0};
  const auto ask = [&](int& count) {
    for (int i = 0; i < 20; ++i) count += AskEverything(path).text == expected;
  };
  std::thread other([&] { ask(same[1]); });
  ask(same[0]);
  other.join();
  EXPECT_EQ(same[0], 20);
  EXPECT_EQ(same[1], 20);
}

// A source may go from thread to thread, one after the other; why opening failed is each thread's own.
TEST(LibraryThreads, MessageOfOpeningIsOfTheThread) {
  zrml_source* source = nullptr;
  EXPECT_EQ(zrml_open("first.raw", &source), ZRML_NOT_FOUND);
  std::string before;
  std::string after;
  std::thread other([&] {
    before = zrml_open_message();
    zrml_source* otherSource = nullptr;
    EXPECT_EQ(zrml_open("second.raw", &otherSource), ZRML_NOT_FOUND);
    after = zrml_open_message();
  });
  other.join();
  EXPECT_EQ(before, "");
  EXPECT_EQ(after, "there is no file or folder second.raw");
  EXPECT_STREQ(zrml_open_message(), "there is no file or folder first.raw");
}

}  // namespace
}  // namespace zrml::test
