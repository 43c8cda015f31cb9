// Copying, moving and creating, with the system calls under them made to fail.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/Win32Compat.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

using namespace corvo_test;
namespace fs = std::filesystem;
using testing::ElementsAre;

namespace {

// A directory of its own for each test, with a file and a directory.
class Files : public testing::Test {
 protected:
  Files() {
    RemoveTree(Path(""));
    MakeDirectory(Path("Dir"));
    for (int i = 0; m_bytes.size() < 40'000; ++i) m_bytes += std::to_string(i);
    WriteFile(Path("source"), m_bytes);
    fs::permissions(Path("source"), fs::perms(0640));
  }

  static std::string Path(const std::string& name) { return ScratchPath("files/" + name); }
  static std::vector<std::string> Names() { return ListDirectory(Path("")); }
  static fs::perms Permissions(const char* name) { return fs::status(Path(name)).permissions(); }

  // 0, or the errno that a refused call left. System calls then behave again.
  static int Result(int done) {
    const int error = done != 0 ? 0 : errno;
    BehaveAgain();
    return error;
  }
  static int Copy(const char* from, const char* to, bool failIfExists = false) {
    return Result(CopyFile(Path(from).c_str(), Path(to).c_str(), failIfExists));
  }
  static int Move(const char* from, const char* to) {
    return Result(MoveFile(Path(from).c_str(), Path(to).c_str()));
  }

  std::string m_bytes;
};

TEST_F(Files, ACopyIsWholeWhateverItsCallsMeetWith) {
  for (const SystemCall interrupted : {kOpen, kRead, kWrite, kClose}) {
    On(interrupted) = {3, EINTR};
    On(kWrite).most = 5001;
    On(kFchmod) = {1, interrupted == kOpen ? EINVAL : EPERM};  // there are none to give
    On(kFchown) = {2, interrupted == kOpen ? EINVAL : EPERM};
    EXPECT_EQ(Copy("source", "copy"), 0) << interrupted;
    EXPECT_EQ(ReadFile(Path("copy")), m_bytes);
  }
  EXPECT_EQ(Copy("source", "other"), 0);
  EXPECT_EQ(Permissions("other"), fs::perms(0640));
}

TEST_F(Files, AReplacedTargetKeepsItsPermissionsAndTheLinksToIt) {
  fs::create_symlink("target", Path("link"));
  for (const bool closedDirectory : {false, true}) {  // by a file beside it, or in place
    On(kMkostemp) = {closedDirectory, EACCES};
    WriteFile(Path("target"), std::string(100'000, 'x'));
    fs::permissions(Path("target"), fs::perms(0604));
    EXPECT_EQ(Copy("source", "link"), 0);
    EXPECT_TRUE(fs::is_symlink(Path("link")));
    EXPECT_EQ(ReadFile(Path("target")), m_bytes);
    EXPECT_EQ(Permissions("target"), fs::perms(0604));
  }
  EXPECT_EQ(Copy("source", "link", true), EEXIST);
  EXPECT_THAT(Names(), ElementsAre("Dir", "link", "source", "target"));
}

TEST_F(Files, EachFailedCallLeavesTheTargetAsItWas) {
  const struct {
    bool replacing;
    SystemCall call;
    int times;  // that a copy makes it
  } rows[] = {{false, kRead, 4},  {false, kWrite, 3},     {false, kFchmod, 1}, {false, kFchown, 1},
              {false, kClose, 1}, {false, kRenameat2, 1}, {true, kRead, 4},    {true, kRename, 1}};
  for (const auto& row : rows) {
    if (row.replacing) WriteFile(Path("target"), "old");
    const auto names = Names();
    for (int after = 0; after < row.times; ++after) {
      SCOPED_TRACE(testing::Message() << row.call << " " << after);
      On(row.call) = {1, EIO, after};
      EXPECT_EQ(Copy("source", "target", !row.replacing), EIO);
      EXPECT_EQ(Names(), names);
      EXPECT_EQ(ReadFile(Path("target")), row.replacing ? "old" : "");
    }
  }
}

TEST_F(Files, CopiesThatCanNotBeAreRefused) {
  ::mkfifo(Path("pipe").c_str(), 0666);
  fs::create_hard_link(Path("source"), Path("same"));
  const auto names = Names();
  const struct {
    const char *from, *to;
    int error;
  } rows[] = {{"missing", "copy", ENOENT}, {"Dir", "copy", EISDIR},    {"pipe", "copy", EINVAL},
              {"source", "same", EINVAL},  {"source", "pipe", EINVAL}, {"source", "no/to", ENOENT}};
  for (const auto& row : rows) {
    EXPECT_EQ(Copy(row.from, row.to), row.error) << row.from << " to " << row.to;
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(ReadFile(Path("source")), m_bytes);
  }
}

TEST_F(Files, MovingNeverReplaces) {
  WriteFile(Path("target"), "old");
  for (const int noFlags : {0, 1}) {  // on file systems that know no RENAME_NOREPLACE
    On(kRenameat2) = {noFlags, EINVAL};
    EXPECT_EQ(Move("source", "target"), EEXIST);
    EXPECT_EQ(ReadFile(Path("target")), "old");
    On(kRenameat2) = {noFlags, EINVAL};
    EXPECT_EQ(Move("source", "Dir/moved"), 0);
    EXPECT_EQ(Move("Dir/moved", "source"), 0);
    EXPECT_EQ(ReadFile(Path("source")), m_bytes);
  }
}

// A recording that was just deleted is put back under its own name, whatever else is there.
TEST_F(Files, ANeighbourThatDiffersInCaseIsNeitherTargetNorInTheWay) {
  WriteFile(Path("Dir/A.WAV"), "another");
  EXPECT_EQ(Copy("SOURCE", "dir\\a.wav"), 0);
  EXPECT_EQ(Move("dir/a.wav", "DIR/a.Wav"), 0);
  EXPECT_THAT(ListDirectory(Path("Dir")), ElementsAre("A.WAV", "a.Wav"));
  EXPECT_EQ(ReadFile(Path("Dir/A.WAV")), "another");
  EXPECT_EQ(ReadFile(Path("Dir/a.Wav")), m_bytes);
}

TEST_F(Files, DirectoriesAreCreatedWithTheirParents) {
  for (const char* path : {"a/b/c", "a/b/c", "A\\B\\d\\", "a/b//e//"}) {
    EXPECT_TRUE(CreateDirectory(Path(path).c_str(), nullptr)) << path;
  }
  EXPECT_THAT(ListDirectory(Path("a/b")), ElementsAre("c", "d", "e"));
  for (const std::string& path : {Path("source"), Path("SOURCE/x"), std::string(260, 'x')}) {
    EXPECT_FALSE(CreateDirectory(path.c_str(), nullptr)) << path;
  }
}

}  // namespace
