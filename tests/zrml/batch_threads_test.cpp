// Many sources at once, small and large ones in turns, and the quality of all: in the preset linux-tsan
// ThreadSanitizer checks the whole program.
#include <filesystem>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

constexpr int kSources = 12;
constexpr std::uintmax_t kLarge = std::uintmax_t{33} << 20;  // all threads convert it together

class BatchThreads : public ZrmlTest {
 protected:
  BatchThreads() {
    for (int i = 0; i < kSources; ++i) Make("in/run" + std::to_string(i) + ".raw");
    for (const char* const name : {"run3", "run8"}) {
      MakeFile("in/" + std::string(name) + ".raw/_LONG.DAT");
      std::filesystem::resize_file(folder_ / "in" / (std::string(name) + ".raw") / "_LONG.DAT", kLarge);
    }
    Make("in/vials.rpt", Vials());
  }

  void Convert(const std::string& format, const std::string& threads) const {
    const ProcessResult result = Run({"convert", "-r", Path("in"), "-o", Path("out" + threads), "--damaged",
                                      "-q", "--format", format, "--threads", threads, "--log", Path("log")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
  }
};

TEST_F(BatchThreads, SourcesSideBySideGiveTheSameFiles) {
  for (const std::string format : {"mzml", "parquet"}) {
    Convert(format, "1");
    Convert(format, "4");
  }
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "out1")) {
    const std::string name = entry.path().filename().string();
    EXPECT_EQ(ReadBytes(folder_ / "out4" / name), ReadBytes(entry.path())) << name;
    ++count;
  }
  EXPECT_GT(count, 2 * kSources);
}

TEST_F(BatchThreads, RunsSideBySideGiveTheSameQuality) {
  const ProcessResult one = Run({"qc", "-r", Path("in"), "--threads", "1"});
  const ProcessResult many = Run({"qc", "-r", Path("in"), "--threads", "4"});
  EXPECT_EQ(many.output, one.output);
  EXPECT_EQ(many.errors, one.errors);
  EXPECT_EQ(many.status, 8);  // a function of an unknown format is lost
}

}  // namespace
}  // namespace zrml::test
