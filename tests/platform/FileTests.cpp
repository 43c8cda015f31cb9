// Copying, moving and creating, with the system calls under them made to fail.

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

using corvo_test::ReadFile;
using corvo_test::WriteFile;
using testing::ElementsAre;

// The faults that this program's versions of the system calls give the library.
struct Faults {
  bool watching = false;
  int calls = 0;
  int failing = 0;  // the n-th call, from 1
  int error = 0;
  size_t mostWritten = static_cast<size_t>(-1);
  bool noRenameFlags = false;    // a file system that knows no RENAME_NOREPLACE
  bool closedDirectory = false;  // takes no new files
  int noAttributes = 0;          // the error of a file system without owners and permissions
} g_faults;

bool FailsNow() {
  if (!g_faults.watching || ++g_faults.calls != g_faults.failing) return false;
  errno = g_faults.error;
  return true;
}

template <class... Args>
auto Call(Args... args) {
  return FailsNow() ? -1 : ::syscall(args...);
}

}  // namespace

extern "C" {

ssize_t read(int fd, void* bytes, size_t count) {
  return Call(SYS_read, fd, bytes, count);
}

ssize_t write(int fd, const void* bytes, size_t count) {
  return Call(SYS_write, fd, bytes,
              g_faults.watching ? std::min(count, g_faults.mostWritten) : count);
}

int close(int fd) {
  const long result = ::syscall(SYS_close, fd);
  return FailsNow() ? -1 : static_cast<int>(result);
}

int fchown(int, uid_t, gid_t) noexcept {
  if (g_faults.noAttributes != 0) return errno = g_faults.noAttributes, -1;
  return FailsNow() ? -1 : 0;
}

int fchmod(int fd, mode_t mode) noexcept {
  if (g_faults.noAttributes != 0) return errno = g_faults.noAttributes, -1;
  return static_cast<int>(Call(SYS_fchmod, fd, mode));
}

int rename(const char* from, const char* to) noexcept {
  return static_cast<int>(Call(SYS_rename, from, to));
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  if (g_faults.noRenameFlags) return errno = EINVAL, -1;
  return static_cast<int>(Call(SYS_renameat2, from, name, to, newName, flags));
}

int mkostemp(char* name, int flags) {
  if (g_faults.closedDirectory) return errno = EACCES, -1;
  std::memset(std::strstr(name, "XXXXXX"), '0', 6);
  return ::open(name, O_RDWR | O_CREAT | O_EXCL | flags, 0600);
}

}  // extern "C"

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// A directory of its own for each test, with the file "source", and "target" where wanted.
class Files : public testing::Test {
 protected:
  void SetUp() override {
    static int count = 0;
    m_directory = corvo_test::ScratchPath("files" + std::to_string(++count));
    corvo_test::MakeDirectory(m_directory);
    for (int i = 0; m_bytes.size() < 40'000; ++i) m_bytes += std::to_string(i);
    WriteFile(Path("source"), m_bytes);
    ::chmod(Path("source").c_str(), 0640);
  }
  void TearDown() override { g_faults = Faults(); }

  void MakeTarget() {
    WriteFile(Path("target"), std::string(100'000, 'x'));
    ::chmod(Path("target").c_str(), 0604);
  }
  std::string Path(const std::string& name) const { return m_directory + "/" + name; }
  std::vector<std::string> Names() const { return corvo_test::ListDirectory(m_directory); }

  // 0, or the errno that a refused call left.
  int Copy(const std::string& from, const std::string& to, bool failIfExists = false) {
    return Watched([&] { return CopyFile(Path(from).c_str(), Path(to).c_str(), failIfExists); });
  }
  int Move(const std::string& from, const std::string& to) {
    return Watched([&] { return MoveFile(Path(from).c_str(), Path(to).c_str()); });
  }

  std::string m_bytes;

 private:
  template <class Operation>
  int Watched(Operation operation) {
    errno = 0;
    g_faults.calls = 0;
    g_faults.watching = true;
    const bool done = operation() != 0;
    g_faults.watching = false;
    return done ? 0 : errno;
  }

  std::string m_directory;
};

TEST_F(Files, ACopyIsWholeAndPermitsWhatTheSourceDoes) {
  g_faults.mostWritten = 1001;  // a quota, a signal: writes may be short
  EXPECT_EQ(Copy("source", "copy"), 0);
  EXPECT_EQ(ReadFile(Path("copy")), m_bytes);
  EXPECT_EQ(ModeOf(Path("copy")), 0640u);
  EXPECT_THAT(Names(), ElementsAre("copy", "source"));
}

TEST_F(Files, AFileSystemWithoutOwnersAndPermissionsTakesCopies) {
  for (const int error : {EPERM, EINVAL}) {
    g_faults.noAttributes = error;
    EXPECT_EQ(Copy("source", "copy"), 0);
    EXPECT_EQ(ReadFile(Path("copy")), m_bytes);
  }
}

TEST_F(Files, AReplacedTargetKeepsItsPermissionsAndTheLinksToIt) {
  for (const bool closedDirectory : {false, true}) {  // by a file beside it, or in place
    g_faults.closedDirectory = closedDirectory;
    MakeTarget();
    std::filesystem::remove(Path("link"));
    std::filesystem::create_symlink("target", Path("link"));
    EXPECT_EQ(Copy("source", "link", true), EEXIST);
    EXPECT_EQ(Copy("source", "link"), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
    EXPECT_EQ(ReadFile(Path("target")), m_bytes);
    EXPECT_EQ(ModeOf(Path("target")), 0604u);
  }
  EXPECT_EQ(Copy("source", "new"), EACCES);
  EXPECT_THAT(Names(), ElementsAre("link", "source", "target"));
}

TEST_F(Files, EachFailedCallLeavesTheTargetAsItWas) {
  for (const bool replacing : {false, true}) {
    if (replacing) MakeTarget();
    const auto names = Names();
    const std::string before = ReadFile(Path("target"));
    const auto descriptors = corvo_test::ListDirectory("/proc/self/fd").size();
    g_faults.error = EIO;
    g_faults.failing = 1;
    for (int error; (error = Copy("source", "target", !replacing)) != 0; ++g_faults.failing) {
      SCOPED_TRACE(g_faults.failing);
      EXPECT_EQ(error, EIO);
      EXPECT_EQ(Names(), names);
      EXPECT_EQ(ReadFile(Path("target")), before);
      EXPECT_EQ(corvo_test::ListDirectory("/proc/self/fd").size(), descriptors);
      ASSERT_LT(g_faults.failing, 100);
    }
    EXPECT_GT(g_faults.failing, 10);  // 4 reads, 3 writes; permissions, close, rename
    EXPECT_EQ(ReadFile(Path("target")), m_bytes);
    std::filesystem::remove(Path("target"));
  }
}

TEST_F(Files, InterruptedCallsAreMadeAgain) {
  g_faults.error = EINTR;
  for (g_faults.failing = 1; g_faults.failing <= 7; ++g_faults.failing) {
    EXPECT_EQ(Copy("source", "target"), 0) << g_faults.failing;
    EXPECT_EQ(ReadFile(Path("target")), m_bytes);
    std::filesystem::remove(Path("target"));
  }
}

TEST_F(Files, CopiesThatCanNotBeAreRefused) {
  corvo_test::MakeDirectory(Path("directory"));
  ::mkfifo(Path("pipe").c_str(), 0666);
  std::filesystem::create_hard_link(Path("source"), Path("same"));
  const auto names = Names();
  const struct {
    const char* from;
    const char* to;
    int error;
  } kRefusals[] = {{"missing", "copy", ENOENT},     {"directory", "copy", EISDIR},
                   {"pipe", "copy", EINVAL},        {"source", "source", EINVAL},
                   {"source", "same", EINVAL},      {"source", "directory", EISDIR},
                   {"source", "pipe", EINVAL},      {"source", "missing/copy", ENOENT},
                   {"source", "same/copy", ENOTDIR}};
  for (const auto& test : kRefusals) {
    SCOPED_TRACE(std::string(test.from) + " to " + test.to);
    EXPECT_EQ(Copy(test.from, test.to), test.error);
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(ReadFile(Path("source")), m_bytes);
  }
}

TEST_F(Files, MovingNeverReplaces) {
  MakeTarget();
  const std::string before = ReadFile(Path("target"));
  for (const bool noRenameFlags : {false, true}) {
    SCOPED_TRACE(noRenameFlags);
    g_faults.noRenameFlags = noRenameFlags;
    EXPECT_EQ(Move("source", "target"), EEXIST);
    EXPECT_EQ(ReadFile(Path("target")), before);
    EXPECT_EQ(Move("source", "moved"), 0);
    EXPECT_THAT(Names(), ElementsAre("moved", "target"));
    EXPECT_EQ(Move("moved", "source"), 0);
    EXPECT_EQ(ReadFile(Path("source")), m_bytes);
    EXPECT_EQ(Move("missing", "new"), ENOENT);
  }
}

// A recording that was just deleted is put back under its own name, whatever else is there.
TEST_F(Files, ANeighbourThatDiffersInCaseIsNeitherTargetNorInTheWay) {
  corvo_test::MakeDirectory(Path("Dir"));
  WriteFile(Path("Dir/A.WAV"), "another");
  EXPECT_EQ(Copy("SOURCE", "dir\\a.wav"), 0);
  EXPECT_EQ(Move("dir/a.wav", "DIR/a.Wav"), 0);
  EXPECT_EQ(corvo_test::ListDirectory(Path("Dir")), (std::vector<std::string>{"A.WAV", "a.Wav"}));
  EXPECT_EQ(ReadFile(Path("Dir/A.WAV")), "another");
  EXPECT_EQ(ReadFile(Path("Dir/a.Wav")), m_bytes);
}

TEST_F(Files, DirectoriesAreCreatedWithTheirParents) {
  const struct {
    const char* path;
    const char* made;  // null: refused
  } kCases[] = {{"a/b/c", "a/b/c"}, {"a/b/c", "a/b/c"},  {"A\\B\\d\\", "a/b/d"},
                {"x//y//", "x/y"},  {"source", nullptr}, {"source/below", nullptr},
                {"SOURCE", nullptr}};
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.path);
    EXPECT_EQ(CreateDirectory(Path(test.path).c_str(), nullptr) != 0, test.made != nullptr);
    EXPECT_TRUE(std::filesystem::is_directory(Path(test.made != nullptr ? test.made : "")));
  }
  EXPECT_THAT(Names(), ElementsAre("a", "source", "x"));
  EXPECT_EQ(CreateDirectory(std::string(MAX_PATH, 'x').c_str(), nullptr), 0);
  EXPECT_EQ(CreateDirectory(nullptr, nullptr), 0);
}

}  // namespace
