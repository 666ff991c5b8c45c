// A target file where the system lacks what others have. The linker replaces two calls for this program.
#include "convert/target_file.h"

#include <cerrno>
#include <filesystem>
#include <iterator>

#include <gtest/gtest.h>

#include "convert/error.h"
#include "convert/native_path.h"
#include "tests/support/temp_directory.h"

namespace {

bool lacksRenaming = false;  // to a new name only
bool lacksRemoving = false;

}  // namespace

extern "C" {
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
  if (!lacksRenaming) return __real_renameat2(fromFolder, from, toFolder, to, flags);
  errno = EINVAL;
  return -1;
}
int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  if (!lacksRemoving) return __real_unlink(path);
  errno = EPERM;
  return -1;
}
}

namespace zrml::convert::test {
namespace {

class TargetFileTest : public testing::Test {
 protected:
  ~TargetFileTest() override { lacksRenaming = lacksRemoving = false; }

  void WriteTarget() const {
    TargetFile target(PathText(directory_.Path() / "run.mzML"), Existing::kKeep);
    target.Write("whole");
    target.Finish();
  }

  std::size_t FileCount() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(directory_.Path()), {}));
  }

  TempDirectory directory_;
};

TEST_F(TargetFileTest, SystemThatCannotRenameLinks) {
  lacksRenaming = true;
  WriteTarget();
  EXPECT_EQ(directory_.Read("run.mzML").size(), 5U);
  EXPECT_EQ(FileCount(), 1U);
  try {
    WriteTarget();
    ADD_FAILURE() << "replaced";
  } catch (const Error& error) {
    EXPECT_EQ(error.Kind(), ErrorKind::kTargetExists);
  }
}

// The whole file is under its name; that it has another one, too, is no failure of the conversion.
TEST_F(TargetFileTest, FileThatIsThereIsNotReportedAsFailed) {
  lacksRenaming = true;
  lacksRemoving = true;
  EXPECT_NO_THROW(WriteTarget());
  EXPECT_EQ(directory_.Read("run.mzML").size(), 5U);
}

}  // namespace
}  // namespace zrml::convert::test
