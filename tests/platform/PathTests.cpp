// Path texts, the lookup that ignores case, and where the program is.

#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

using corvo_test::ScratchPath;

const char* g_program = nullptr;  // what the kernel says the program is; null: the truth
bool g_noModules = false;

}  // namespace

extern "C" ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  if (g_program == nullptr) return ::syscall(SYS_readlink, path, buffer, size);
  return static_cast<ssize_t>(std::string_view(g_program).copy(buffer, size));
}

extern "C" int dlinfo(void* module, int request, void* answer) noexcept {
  if (g_noModules) return -1;
  return reinterpret_cast<decltype(&::dlinfo)>(::dlsym(RTLD_NEXT, "dlinfo"))(module, request,
                                                                             answer);
}

namespace {

TEST(SplitPath, TakesPathsApart) {
  const struct {
    const char *path, *drive, *directory, *name, *extension;
  } kCases[] = {{"/rec/a.wav", "", "/rec/", "a", ".wav"},
                {"C:\\rec\\a.b.wav", "C:", "\\rec\\", "a.b", ".wav"},
                {"x\\y/z", "", "x\\y/", "z", ""},
                {"a.wav", "", "", "a", ".wav"},
                {"/d.x/", "", "/d.x/", "", ""},
                {"/.readme", "", "/", ".readme", ""},
                {"/.a.wav", "", "/", ".a", ".wav"},
                {"..", "", "", "..", ""},
                {"a.", "", "", "a", "."},
                {"1:x", "", "", "1:x", ""},
                {"", "", "", "", ""}};
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.path);
    char drive[3], directory[16], name[16], extension[16];
    EXPECT_EQ(_splitpath_s(test.path, drive, sizeof drive, directory, sizeof directory, name,
                           sizeof name, extension, sizeof extension),
              0);
    EXPECT_STREQ(drive, test.drive);
    EXPECT_STREQ(directory, test.directory);
    EXPECT_STREQ(name, test.name);
    EXPECT_STREQ(extension, test.extension);
  }
}

TEST(SplitPath, APartThatDoesNotFitLeavesAllEmpty) {
  char directory[8] = "old", name[5] = "old";
  const auto split = [&](const char* path, size_t nameSize) {
    return _splitpath_s(path, nullptr, 0, directory, sizeof directory, name, nameSize, nullptr, 0);
  };
  EXPECT_EQ(split("/dir/wxyz.wav", sizeof name), 0);  // parts that aren't wanted can't be too long
  EXPECT_STREQ(name, "wxyz");
  EXPECT_EQ(split("/dir/vwxyz.wav", sizeof name), ERANGE);
  EXPECT_STREQ(directory, "");
  EXPECT_STREQ(name, "");
  EXPECT_EQ(split(nullptr, sizeof name), EINVAL);
  EXPECT_EQ(split("/dir/x", 0), EINVAL);
}

// Relative to the scratch directory, in which Data/Calls.TXT, Same/{ABC,Abc,aBC}, lower/x and
// LOWER/y exist, and the link Dangling leads nowhere.
class FindFile : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* file :
         {"Data/Calls.TXT", "Same/aBC", "Same/ABC", "Same/Abc", "lower/x", "LOWER/y"}) {
      corvo_test::MakeDirectory(std::filesystem::path(ScratchPath(file)).parent_path());
      corvo_test::WriteFile(ScratchPath(file), "");
    }
    if (!corvo_test::Exists(ScratchPath("Dangling"))) {
      std::filesystem::create_symlink("nowhere", ScratchPath("Dangling"));
    }
    m_oldDirectory = std::filesystem::current_path();
    std::filesystem::current_path(corvo_test::ScratchDirectory());
  }
  void TearDown() override { std::filesystem::current_path(m_oldDirectory); }

 private:
  std::filesystem::path m_oldDirectory;
};

TEST_F(FindFile, SpellsWhatExistsAsTheDiskDoes) {
  const struct {
    const char* path;
    const char* found;
    bool result;
  } kCases[] = {{"Data/Calls.TXT", "Data/Calls.TXT", true},
                {"DATA\\calls.txt", "Data/Calls.TXT", true},
                {"data//CALLS.txt", "Data//Calls.TXT", true},
                {"data/", "Data/", true},
                {"./data/../DATA", "./Data/../Data", true},
                {"data/missing/Calls.TXT", "Data/missing/Calls.TXT", false},
                {"data/calls.txt/", "Data/Calls.TXT/", false},
                {"same/abc", "Same/ABC", true},  // the first in byte order
                {"same/Abc", "Same/Abc", true},  // the exact one
                {"lower/Y", "lower/Y", false},   // an exact directory is final
                {"LoweR/Y", "LOWER/y", true},
                {"dangling", "Dangling", false},
                {"", "", false}};
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.path);
    char found[MAX_PATH] = "old";
    EXPECT_EQ(FindFileIgnoreCase(found, test.path, true), test.result);
    EXPECT_STREQ(found, test.found);
    if (*test.path == '\0') continue;
    std::snprintf(found, sizeof found, "%s", ScratchPath(test.path).c_str());
    EXPECT_EQ(FindFileIgnoreCase(found, found, true), test.result);  // absolute, and in place
    EXPECT_EQ(found, ScratchPath(test.found));
  }
}

TEST_F(FindFile, APathThatDoesNotFitIsRefusedEmpty) {
  char found[MAX_PATH + 1] = {};
  found[MAX_PATH] = '#';
  const std::string fits = std::string(MAX_PATH - 5, '/') + "data";
  EXPECT_FALSE(FindFileIgnoreCase(found, fits.c_str(), true));
  EXPECT_EQ(found, fits);
  EXPECT_FALSE(FindFileIgnoreCase(found, (fits + "x").c_str(), true));
  EXPECT_STREQ(found, "");
  EXPECT_STREQ(DosToUnixFileName(found, (fits + "x").c_str()), "");
  EXPECT_FALSE(FindFileIgnoreCase(found, nullptr, true));
  EXPECT_EQ(found[MAX_PATH], '#');
}

TEST(ModuleName, IsWholeOrNothing) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe");
  const DWORD length = static_cast<DWORD>(program.size());
  char buffer[4096];
  EXPECT_EQ(GetModuleFileName(nullptr, buffer, length + 1), length);
  EXPECT_EQ(buffer, program);
  EXPECT_EQ(GetModuleFileName(nullptr, buffer, length), 0u);
  EXPECT_STREQ(buffer, "");
}

TEST(ModuleName, OfAProgramReplacedWhileItRunsIsItsOldName) {
  const std::string real = ScratchPath("real (deleted)");
  corvo_test::WriteFile(real, "");
  const struct {
    std::string link, name;
  } kCases[] = {{"/opt/server (deleted)", "/opt/server"}, {real, real}};
  for (const auto& test : kCases) {
    char buffer[MAX_PATH] = "";
    g_program = test.link.c_str();
    EXPECT_EQ(GetModuleFileName(nullptr, buffer, sizeof buffer), test.name.size());
    g_program = nullptr;
    EXPECT_EQ(buffer, test.name);
  }
}

TEST(ModuleName, OfAModuleIsTheModules) {
  void* module = dlopen("libdl.so.2", RTLD_NOW);
  ASSERT_NE(module, nullptr);
  char buffer[MAX_PATH];
  EXPECT_NE(GetModuleFileName(module, buffer, sizeof buffer), 0u);
  EXPECT_EQ(std::filesystem::path(buffer).filename(), "libdl.so.2");
  g_noModules = true;
  EXPECT_EQ(GetModuleFileName(module, buffer, sizeof buffer), 0u);
  EXPECT_STREQ(buffer, "");
  g_noModules = false;
  dlclose(module);
  void* self = dlopen(nullptr, RTLD_NOW);
  EXPECT_NE(GetModuleFileName(self, buffer, sizeof buffer), 0u);
  EXPECT_EQ(std::string(buffer), std::filesystem::read_symlink("/proc/self/exe"));
  dlclose(self);
}

}  // namespace
