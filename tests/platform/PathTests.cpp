// The path lookup that ignores case, and where the program is.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <string_view>

#include "platform/Win32Compat.h"
#include "support/Scratch.h"

using namespace corvo_test;

static const char* g_program;  // what the kernel says the program is; null: the truth

extern "C" ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  if (g_program == nullptr) return ::syscall(SYS_readlink, path, buffer, size);
  return static_cast<ssize_t>(std::string_view(g_program).copy(buffer, size));
}

TEST(PathLookup, SpellsAsOnDisk) {
  for (const char* file :
       {"Data/Calls.TXT", "Same/aBC", "Same/ABC", "Same/Abc", "lower/x", "LOWER/y"}) {
    MakeDirectory(std::filesystem::path(ScratchPath(file)).parent_path());
    WriteFile(ScratchPath(file), "");
  }
  const std::string tooLong(MAX_PATH, 'x');
  const struct {
    const char *path, *found;
    bool result;
  } rows[] = {{"data//..\\DATA/calls.txt", "Data//../Data/Calls.TXT", true},
              {"data/missing/Calls.TXT", "Data/missing/Calls.TXT", false},
              {"data/calls.txt/", "Data/Calls.TXT/", false},
              {"same/abc", "Same/ABC", true},  // the first in byte order
              {"same/Abc", "Same/Abc", true},  // the exact one
              {"lower/Y", "lower/Y", false},   // an exact directory is final
              {"LoweR/Y", "LOWER/y", true},
              {tooLong.c_str(), "", false}};
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(ScratchDirectory());
  for (const auto& row : rows) {
    char found[MAX_PATH] = "old";
    EXPECT_EQ(FindFileIgnoreCase(found, row.path, true), row.result);
    EXPECT_STREQ(found, row.found);
  }
  std::filesystem::current_path(before);
}

TEST(ModuleName, IsWholeOrNothing) {
  const struct {
    std::string program, name;
    DWORD size;
  } rows[] = {{"/opt/server (deleted)", "/opt/server", 12},  // replaced while it runs
              {"/opt/server", "", 11}};
  char buffer[MAX_PATH];
  for (const auto& row : rows) {
    g_program = row.program.c_str();
    EXPECT_EQ(GetModuleFileName(nullptr, buffer, row.size), row.name.size());
    EXPECT_EQ(buffer, row.name);
    EXPECT_EQ(GetModuleFileName(::dlopen(nullptr, RTLD_NOW), buffer, row.size), row.name.size());
  }
  g_program = nullptr;
  EXPECT_TRUE(GetModuleFileName(::dlopen("libdl.so.2", RTLD_NOW), buffer, sizeof buffer));
  EXPECT_EQ(std::filesystem::path(buffer).filename(), "libdl.so.2");
}
