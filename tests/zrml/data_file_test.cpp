// Whether a command reads data files, as the system reports it. They are opened in any case: a function whose
// data cannot be opened is not listed.
#include <array>
#include <sys/inotify.h>
#include <unistd.h>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class DataFileTest : public ZrmlTest {
 protected:
  // How often the system reports reads of files in the raw directory whose names end in ".DAT".
  int CountReads(const std::vector<std::string>& arguments) const {
    const int watcher = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    EXPECT_GE(::inotify_add_watch(watcher, path_.c_str(), IN_ACCESS), 0);
    EXPECT_EQ(Run(arguments).status, 0);
    int reads = 0;
    alignas(inotify_event) std::array<char, 1 << 16> buffer{};
    for (ssize_t size = 0; (size = ::read(watcher, buffer.data(), buffer.size())) > 0;) {
      for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
        reads += event->len > 0 && std::string(event->name).ends_with(".DAT") ? 1 : 0;
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
    }
    ::close(watcher);
    return reads;
  }

  std::string path_ = Make("run.raw");
};

TEST_F(DataFileTest, TableOfScansReadsNone) {
  EXPECT_EQ(CountReads({"scans", path_}), 0);
  EXPECT_EQ(CountReads({"scans", path_, "--json", "--function", "1"}), 0);
  EXPECT_GT(CountReads({"scans", path_, "--points", "--function", "1"}), 0);
}

TEST_F(DataFileTest, StoredTotalsNeedNone) {
  EXPECT_EQ(CountReads({"chromatogram", path_, "--function", "1"}), 0);
  EXPECT_GT(CountReads({"chromatogram", path_, "--function", "1", "--mz", "100"}), 0);
}

}  // namespace
}  // namespace zrml::test
