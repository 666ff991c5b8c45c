// A target file on systems with missing features. The linker replaces three calls in this program.
#include "convert/target_file.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "convert/error.h"
#include "tests/support/temp_directory.h"

namespace {

bool lacksUnnamedFiles = false;
bool lacksRenaming = false;  // to a new name only
bool lacksRemoving = false;

}  // namespace

extern "C" {
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  std::va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  if (!lacksUnnamedFiles || (flags & O_TMPFILE) != O_TMPFILE) return __real_open(path, flags, mode);
  errno = EOPNOTSUPP;
  return -1;
}
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

namespace fs = std::filesystem;

class TargetFileTest : public testing::Test {
 protected:
  ~TargetFileTest() override { lacksUnnamedFiles = lacksRenaming = lacksRemoving = false; }

  void WriteTarget(Existing existing = Existing::kKeep, const char* name = "run.mzML") const {
    TargetFile target(directory_.Path() / name, existing);
    target.Write("whole");
    target.Finish();
  }

  void ExpectKept() const {
    try {
      WriteTarget();
      ADD_FAILURE() << "replaced";
    } catch (const Error& error) {
      EXPECT_EQ(error.Kind(), ErrorKind::kTargetExists);
    }
  }

  std::size_t SizeOf(const char* name) const { return directory_.Read(name).size(); }

  std::size_t FileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory_.Path()), {}));
  }

  mode_t ModeOf(const char* name) const {
    struct stat status {};
    EXPECT_EQ(::stat((directory_.Path() / name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  TempDirectory directory_;
};

// Ensures that nothing is left when the program is killed.
TEST_F(TargetFileTest, HasNoNameUntilItIsWhole) {
  TargetFile target(directory_.Path() / "run.mzML", Existing::kKeep);
  target.Write("whole");
  EXPECT_EQ(FileCount(), 0U);
  target.Finish();
  EXPECT_EQ(FileCount(), 1U);
  EXPECT_EQ(SizeOf("run.mzML"), 5U);
}

TEST_F(TargetFileTest, SystemWithoutUnnamedFiles) {
  lacksUnnamedFiles = true;
  {
    TargetFile target(directory_.Path() / "run.mzML", Existing::kKeep);
    target.Write("part");
    EXPECT_EQ(FileCount(), 1U);
    EXPECT_FALSE(fs::exists(directory_.Path() / "run.mzML"));
  }
  EXPECT_EQ(FileCount(), 0U) << "an unfinished file is removed";
  for (const Existing existing : {Existing::kKeep, Existing::kReplace}) {
    WriteTarget(existing);
    EXPECT_EQ(SizeOf("run.mzML"), 5U);
    EXPECT_EQ(FileCount(), 1U);
  }
  ExpectKept();
}

TEST_F(TargetFileTest, SystemThatCannotRenameLinks) {
  lacksUnnamedFiles = true;
  lacksRenaming = true;
  WriteTarget();
  EXPECT_EQ(SizeOf("run.mzML"), 5U);
  EXPECT_EQ(FileCount(), 1U);
  ExpectKept();
}

// The whole file is under its name; a second name for it does not make the conversion fail.
TEST_F(TargetFileTest, ExistingFileIsNotReportedAsFailed) {
  lacksUnnamedFiles = true;
  lacksRenaming = true;
  lacksRemoving = true;
  EXPECT_NO_THROW(WriteTarget());
  EXPECT_EQ(SizeOf("run.mzML"), 5U);
}

TEST_F(TargetFileTest, FileMadeMeanwhileIsKept) {
  TargetFile target(directory_.Path() / "run.mzML", Existing::kKeep);
  directory_.WriteText("run.mzML", "of somebody else");
  EXPECT_THROW(target.Finish(), Error);
  EXPECT_EQ(SizeOf("run.mzML"), 16U);
  EXPECT_EQ(FileCount(), 1U);
}

TEST_F(TargetFileTest, ReplacedFileKeepsItsMode) {
  for (const bool isNamed : {false, true}) {
    lacksUnnamedFiles = isNamed;
    directory_.WriteText("run.mzML", "older than this");
    for (const mode_t mode : {0640U, 0604U, 0444U}) {
      ASSERT_EQ(::chmod((directory_.Path() / "run.mzML").c_str(), mode), 0);
      WriteTarget(Existing::kReplace);
      EXPECT_EQ(SizeOf("run.mzML"), 5U);
      EXPECT_EQ(ModeOf("run.mzML"), mode);
      EXPECT_EQ(FileCount(), 1U);
    }
    fs::remove(directory_.Path() / "run.mzML");
  }
}

TEST_F(TargetFileTest, NewFileHasTheModeThatIsNotMasked) {
  const mode_t mask = ::umask(027);
  for (const bool isNamed : {false, true}) {
    lacksUnnamedFiles = isNamed;
    WriteTarget();
    EXPECT_EQ(ModeOf("run.mzML"), 0640U);
    fs::remove(directory_.Path() / "run.mzML");
  }
  ::umask(mask);
}

TEST_F(TargetFileTest, LinkStaysAndItsFileIsReplaced) {
  directory_.MakeDirectory("elsewhere");
  directory_.WriteText("elsewhere/data", "older than this");
  fs::create_symlink("elsewhere/data", directory_.Path() / "run.mzML");
  fs::create_symlink("elsewhere/new", directory_.Path() / "lost.mzML");
  WriteTarget(Existing::kReplace);
  WriteTarget(Existing::kReplace, "lost.mzML");
  EXPECT_TRUE(fs::is_symlink(directory_.Path() / "run.mzML"));
  EXPECT_TRUE(fs::is_symlink(directory_.Path() / "lost.mzML"));
  EXPECT_EQ(SizeOf("elsewhere/data"), 5U);
  EXPECT_EQ(SizeOf("elsewhere/new"), 5U);
  EXPECT_EQ(FileCount(), 3U);
  ExpectKept();
}

TEST_F(TargetFileTest, LinkToItselfIsNotReplaced) {
  fs::create_symlink("run.mzML", directory_.Path() / "run.mzML");
  EXPECT_THROW(WriteTarget(Existing::kReplace), Error);
  EXPECT_TRUE(fs::is_symlink(directory_.Path() / "run.mzML"));
  EXPECT_EQ(FileCount(), 1U);
}

}  // namespace
}  // namespace zrml::convert::test
