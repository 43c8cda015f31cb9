// The file-error log, and where the program's own files are.

#include <unistd.h>

#include <functional>

#include "FileHandlerTest.h"
#include "LarkspurCommon/Aregistry.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;
using testing::ElementsAre;

namespace {

std::string g_program = ScratchPath("bin/testhost");  // empty: the host can't tell
bool g_programThrows;
std::function<bool()> g_logsToFile;  // the host's answer; null: it doesn't
std::function<void()> g_scopeEnds;   // told when the host's scope object goes
const std::string kStamp = "06/11/2026 07:05 - ";

class FileErrorLogTest : public FileHandlerTest {
 protected:
  FileErrorLogTest() {
    g_logsToFile = [] { return true; };
    MakeDirectory(ScratchPath("bin/logs"));
  }
  ~FileErrorLogTest() override {
    g_logsToFile = nullptr;
    g_scopeEnds = nullptr;
    g_program = ScratchPath("bin/testhost");
    RemoveTree(ScratchPath("bin/logs"));
  }

  static std::string LogPath() { return ScratchPath("bin/logs/FileErrors.txt"); }
};

}  // namespace

// This test program as a host.

bool VMRegistry::LogFileErrorsToFile() const {
  return g_logsToFile && g_logsToFile();
}

ReleaseGCSHelper::~ReleaseGCSHelper() {
  if (g_scopeEnds) g_scopeEnds();
}

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  *local = {2026, 11, 1, 6, 7, 5, 8, 123};
}

extern "C" DWORD GetModuleFileName(void*, char* buffer, DWORD) {
  if (g_programThrows) throw 1;
  std::strcpy(buffer, g_program.c_str());
  return static_cast<DWORD>(g_program.size());
}

TEST_F(FileErrorLogTest, EntriesAreAppendedWhereTheyAreWanted) {
  LogFileError(2, "%s - Error %d.", "label", 7);
  LogFileError(5, "100%% of %s\n", "text");
  g_logsToFile = nullptr;
  LogFileError(3, "traced only");
  EXPECT_EQ(kStamp + "label - Error 7.\n" + kStamp + "100% of text\n\n", ReadFile(LogPath()));
  EXPECT_THAT(trace.Texts(0x28, '3'), ElementsAre("traced only"));
}

TEST_F(FileErrorLogTest, AFailedWriteIsTracedInTheHostsScope) {
  ASSERT_EQ(0, ::symlink("/dev/full", LogPath().c_str()));
  std::vector<std::string> seen;
  g_scopeEnds = [&] { seen = trace.Texts(); };
  LogFileError(5, "text");
  EXPECT_THAT(seen, ElementsAre("text",
                                "void LogFileError(WORD, const TCHAR*, ...) - Error 28 (No "
                                "space left on device) writing data to \"" +
                                    ScratchPath("bin/logs\\FileErrors.txt") + "\"."));
}

TEST_F(FileErrorLogTest, WhatTheConfigurationDoesMeanwhileIsHarmless) {
  g_logsToFile = [] {
    LogFileError(2, "inner");  // its own file work failed
    return true;
  };
  LogFileError(2, "outer");
  g_logsToFile = []() -> bool { throw 1; };
  LogFileError(2, "lost");
  g_logsToFile = [] { return true; };
  LogFileError(2, "last");
  EXPECT_EQ(kStamp + "outer\n" + kStamp + "last\n", ReadFile(LogPath()));
  EXPECT_THAT(trace.Texts(0x28, '2'), ElementsAre("outer", "inner", "lost", "last"));
  EXPECT_EQ(1u, trace.Texts(0x25, '2').size());
}

TEST_F(FileErrorLogTest, ProgramFilesAreBesideTheProgram) {
  const struct {
    const char *program, *name, *extension, *path;
  } rows[] = {{"/opt/app/bin/server", "x.ini", nullptr, "/opt/app/bin/x.ini"},
              {"/opt/app/bin/server", "\\x", "ini", "/opt/app/bin/x.ini"},
              {"C:server.exe", "x", ".ini", "C:\\x.ini"},
              {"server", "etc", nullptr, "/program directory unknown/etc"},
              {"", "x.ini", nullptr, "/program directory unknown/x.ini"}};
  for (const auto& row : rows) {
    g_program = row.program;
    EXPECT_EQ(row.path, GetFullPathRelativeToCorvoPath(row.name, row.extension));
  }
  EXPECT_FALSE(file.Open("x.ini", OFM_WRITE, NLM_BINARY, false, true)) << "made in no directory";
  EXPECT_FALSE(Exists("/program directory unknown"));
  EXPECT_THAT(trace.Texts(0x28, '2'), ElementsAre()) << "as a missing file, no failure";
}

TEST_F(FileErrorLogTest, AProgramThatIsThrownIsUnknown) {
  g_programThrows = true;
  EXPECT_EQ("/program directory unknown/x.ini", GetFullPathRelativeToCorvoPath("x", "ini"));
  EXPECT_FALSE(file.Open("x.ini", OFM_WRITE, NLM_BINARY, false, true));
  VMRegistry registry;
  registry.Init();
  g_programThrows = false;
  registry.Init();
  EXPECT_EQ(ScratchPath("bin"), registry.DBDirectory()) << "no default was stored without it";
  EXPECT_THAT(trace.Texts(0x25, '2'), testing::SizeIs(testing::Ge(3u)));
}
