// The file-error log, and where the program's own files are.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/FileHandler.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"
#include "support/TraceLog.h"

using namespace corvo_test;
using testing::ElementsAre;

namespace {

std::string g_program;  // empty: the host can't tell
bool g_unbuffered;
bool (*g_logsToFile)();  // the host's answer
const TraceLog* g_trace;
thread_local std::size_t t_linesInScope;           // traced until the host scope object went
thread_local std::vector<std::string> t_logSizes;  // as host scope objects saw it, coming and going

std::string LogPath() {
  return ScratchPath("bin/logs/FileErrors.txt");
}

std::string LogSize() {
  std::error_code none;
  const auto size = std::filesystem::file_size(LogPath(), none);
  return none ? "none" : std::to_string(size);
}

class FileErrorLogTest : public testing::Test {
 protected:
  FileErrorLogTest() {
    MakeDirectory(ScratchPath("bin/logs"));
    std::filesystem::remove(LogPath());
    g_program = ScratchPath("bin/testhost");
    g_logsToFile = [] { return true; };
    g_unbuffered = false;
    t_logSizes.clear();
    g_trace = &trace;
  }

  TraceLog trace;
};

}  // namespace

// This test program as a host.

bool VMRegistry::LogFileErrorsToFile() const {
  return g_logsToFile();
}

ReleaseGCSHelper::ReleaseGCSHelper(const char* file, int line, bool first, bool second) {
  t_logSizes.push_back(line > 0 && first && second ? file + LogSize() : "?");
}

ReleaseGCSHelper::~ReleaseGCSHelper() {
  t_logSizes.push_back(LogSize());
  t_linesInScope = g_trace->Lines().size();
}

extern "C" {

void GetLocalTime(SYSTEMTIME* local) {
  *local = {2026, 11, 1, 6, 7, 5, 8, 123};
}

DWORD GetModuleFileName(void*, char* buffer, DWORD size) {
  if (g_program.size() >= size) return 0;
  std::memcpy(buffer, g_program.c_str(), g_program.size() + 1);
  return static_cast<DWORD>(g_program.size());
}

int fopen_s(FILE** file, const char* path, const char* mode) {
  *file = std::fopen(path, mode);
  if (*file == nullptr) return errno;
  if (g_unbuffered) std::setvbuf(*file, nullptr, _IONBF, 0);
  return 0;
}

const char* CorvoSettingsDirectory() {
  return ScratchDirectory().c_str();
}

const char* CorvoReleaseMarker() {
  return "/dev/null/none";
}

}  // extern "C"

TEST_F(FileErrorLogTest, EntriesAreAppendedInsideTheHostsScope) {
  LogFileError(2, "%s - Error %d.", "label", 7);
  LogFileError(5, "100%% of %s\n", "text");
  g_logsToFile = [] { return false; };
  LogFileError(3, "traced only");
  EXPECT_EQ(
      "06/11/2026 07:05 - label - Error 7.\n"
      "06/11/2026 07:05 - 100% of text\n\n",
      ReadFile(LogPath()));
  EXPECT_THAT(t_logSizes, ElementsAre("FileHandlernone", "36", "FileHandler36", "69"));
  EXPECT_THAT(trace.Texts(0x28, '2'), ElementsAre("label - Error 7."));
  EXPECT_THAT(trace.Texts(0x28, '5'), ElementsAre("100% of text"));
  EXPECT_THAT(trace.Texts(0x28, '3'), ElementsAre("traced only"));
}

TEST_F(FileErrorLogTest, AFailedWriteIsTracedAndALogThatDoesNotOpenIsSkipped) {
  ASSERT_EQ(0, ::symlink("/dev/full", LogPath().c_str()));
  LogFileError(5, "text");
  EXPECT_EQ(2u, t_linesInScope);
  EXPECT_THAT(trace.Texts(0x28, '2'),
              ElementsAre("void LogFileError(WORD, const TCHAR*, ...) - Error 28 (No space left on "
                          "device) writing data to \"" +
                          ScratchPath("bin/logs\\FileErrors.txt") + "\"."));
  trace.Clear();
  std::filesystem::remove(LogPath());
  MakeDirectory(LogPath());
  LogFileError(5, "text");
  EXPECT_THAT(trace.Texts(), ElementsAre("text"));
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
  EXPECT_EQ("06/11/2026 07:05 - outer\n06/11/2026 07:05 - last\n", ReadFile(LogPath()));
  EXPECT_THAT(trace.Texts(0x28, '2'), ElementsAre("outer", "inner", "lost", "last"));
  EXPECT_THAT(trace.Texts(0x25, '2'),
              ElementsAre(testing::StartsWith("Exception has occurred in void LogFileError(WORD, "
                                              "const TCHAR*, ...) (FileHandler[")));
}

TEST_F(FileErrorLogTest, EntriesOfTwoThreadsStayWhole) {
  constexpr int kEach = 100;
  g_unbuffered = true;  // each part of an entry by a system call of its own
  const std::string texts[] = {std::string(100, 'a'), std::string(100, 'b')};
  std::atomic<int> waiting{2};
  const auto log = [&](const std::string& text) {
    for (--waiting; waiting > 0;) std::this_thread::yield();
    for (int i = 0; i < kEach; ++i) LogFileError(5, "%s", text.c_str());
  };
  std::thread other(log, texts[1]);
  log(texts[0]);
  other.join();
  const std::string written = ReadFile(LogPath());
  const std::size_t size = std::strlen("06/11/2026 07:05 - \n") + texts[0].size();
  ASSERT_EQ(2 * kEach * size, written.size());
  for (std::size_t at = 0; at < written.size(); at += size) {
    const std::string& text = texts[written[at + size - 2] == 'b'];
    ASSERT_EQ("06/11/2026 07:05 - " + text + "\n", written.substr(at, size));
  }
}

TEST_F(FileErrorLogTest, ProgramFilesAreBesideTheProgram) {
  const struct {
    const char *program, *name, *extension, *path;
  } rows[] = {
      {"/opt/app/bin/server", "x.ini", nullptr, "/opt/app/bin/x.ini"},
      {"/opt/app/bin/server", "/x", "ini", "/opt/app/bin/x.ini"},
      {"/opt/app/bin/server", "\\x", ".ini", "/opt/app/bin/x.ini"},
      {"/opt/app/bin/server", "//x", "", "/opt/app/bin//x."},
      {"/opt/app/bin/server", "/", "e", "/opt/app/bin/.e"},
      {"/opt/app/bin/server", "", "ini", "/opt/app/bin/"},
      {"/opt/app/bin/server", nullptr, "ini", "/opt/app/bin/"},
      {"C:\\app\\server.exe", "x.ini", nullptr, "C:\\app\\x.ini"},
      {"C:server.exe", "x.ini", nullptr, "C:\\x.ini"},
      {"server", "etc", nullptr,
       "/program directory unknown/etc"},  // no directory is not the root directory
      {"", "x.ini", nullptr, "/program directory unknown/x.ini"},
  };
  for (const auto& row : rows) {
    g_program = row.program;
    EXPECT_EQ(row.path, GetFullPathRelativeToCorvoPath(row.name, row.extension));
  }
  TFileHandler file;
  EXPECT_FALSE(file.Open("x.ini", OFM_WRITE, NLM_BINARY, false, true)) << "made in no directory";
  EXPECT_THAT(trace.Texts(0x28, '2'), testing::IsEmpty()) << "as a missing file, no failure";
  EXPECT_FALSE(Exists("/program directory unknown"));
}
