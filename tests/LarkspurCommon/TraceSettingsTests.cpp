// The settings file: what is read from it, what is written back, when it is looked at again, and
// how the module starts with it and ends.

#define _TIME_BITS 64  // the exported clock below is then the one that the library calls

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

using corvo_test::ReadFile;
using corvo_test::WriteFile;

constexpr DWORD kId = 0x00270002;

std::atomic<long long> g_milliseconds{1'700'000'000'000};
std::function<bool()> g_open = [] { return true; };  // the host's part in reading
bool g_directoryThrows = false;
std::string g_lines;

std::string Path() {
  return CorvoSettingsDirectory() + std::string("/corvo_debug_settings.ini");
}

std::string Entries(const std::string& level, std::string bitmap = "",
                    const std::string& more = "") {
  bitmap.resize(32, 'f');
  return "Filter Level=" + level + "\nID Bitmap=" + bitmap + "\n" + more + "Module Name=a name t\n";
}

// An edit from outside, in a second of its own.
void Edit(const std::string& text) {
  static time_t s_writeTime = 5'000'000'000;  // past 2038
  WriteFile(Path(), text);
  const timespec times[2] = {{++s_writeTime, 0}, {s_writeTime, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Path().c_str(), times, 0), 0);
}

void TraceAfterInterval() {
  g_milliseconds += 3001;
  DebugA(kId, "text");
}

class TraceSettings : public testing::Test {
 protected:
  void SetUp() override {
    InitDebug(nullptr, nullptr, nullptr);
    Edit(Entries("5"));
    ReadDebugSettings();
  }
};

}  // namespace

extern "C" int clock_gettime(clockid_t, timespec* now) noexcept {
  *now = {static_cast<time_t>(g_milliseconds / 1000),
          static_cast<long>(g_milliseconds % 1000) * 1'000'000};
  return 0;
}

extern "C" const char* CorvoSettingsDirectory() {
  if (g_directoryThrows) throw 1;
  static const std::string directory = corvo_test::ScratchPath("etc");
  corvo_test::MakeDirectory(directory);
  return directory.c_str();
}

extern "C" int fopen_s(FILE** file, const char* path, const char* mode) {
  *file = *mode == 'w' || g_open() ? std::fopen(path, mode) : nullptr;
  return *file == nullptr ? EMFILE : 0;
}

extern "C" int _splitpath_s(const char*, char*, std::size_t, char*, std::size_t, char* name,
                            std::size_t size, char*, std::size_t) {
  DebugA(kId, "asked for the module's name");
  return std::snprintf(name, size, " a name too long") < 0;
}

// From the first call to the last. The host's fopen_s waits for a thread that traces.
void StartAndEnd() {
  alarm(60);
  SetDebugHooks(nullptr, [](char const* line, unsigned) { g_lines += line; });
  Edit("ID Bitmap=80\n");
  SetDebugFilterLevel(DFL_NOTICES);
  Edit(ReadFile(Path()));
  g_open = [] { return std::thread(TraceAfterInterval).join(), true; };
  InitDebug(nullptr, nullptr, nullptr);
  InitDebug(nullptr, "second", nullptr);
  EXPECT_NE(g_lines.find(" a name t (27,2) "), std::string::npos) << g_lines;
  EXPECT_EQ(ReadFile(Path()), Entries("3", "80"));
  IncreaseThreadIndentLevel();
  DeInitDebug();
  EXPECT_EQ(GetThreadIndentLevel(), 0U);
  Edit("Filter Level=9\n");
  InitDebug(nullptr, nullptr, nullptr);
  TraceAfterInterval();
  EXPECT_TRUE(IsDebugEnabled(0x00070003));
  EXPECT_FALSE(IsDebugEnabled(0x00070004));
  EXPECT_EQ(ReadFile(Path()), "Filter Level=9\n");
  std::exit(testing::Test::HasFailure());
}

// A process starts the module only once. Death tests run before the others start it in this one.
TEST(TraceStartDeathTest, StartAndEnd) {
  EXPECT_EXIT(StartAndEnd(), testing::ExitedWithCode(0), "");
}

TEST_F(TraceSettings, FileIsReadAndWrittenBack) {
  const std::string longest(509, 'v');  // the first 511 characters of a line are one
  const std::pair<std::string, std::string> kRows[] = {
      {"Filter Level=12\n", Entries("9")},
      {"Filter Level=high\n", Entries("0")},
      {"Filter Level=   3 \t\r\n", Entries("3")},
      {"Filter Level=   \n", Entries("5")},
      {"Filter Level = 7\n", Entries("5").insert(15, "Filter Level =7\n")},
      {"Filter Level=7\nFilter Level=8\n", Entries("7")},
      {"b= 1=2\n\nno\nB=\tx y\n=e", "=e\nB=\tx y\n" + Entries("5") + "b=1=2\n"},
      {"ID Bitmap=0f3\n", Entries("5", "0f03")},
      {"ID Bitmap=1gzz-11x\n", Entries("5", "01000001")},
      {"ID Bitmap=0123456789ABCDEF0123456789abcdefFF\n",
       Entries("5", "0123456789abcdef0123456789abcdef")},
      {"K=" + longest + "Filter Level=7\n", Entries("7", "", "K=" + longest + "\n")},
  };
  for (const auto& [file, writtenBack] : kRows) {
    SetUp();
    Edit(file);
    ReadDebugSettings();
    WriteDebugSettings();
    EXPECT_EQ(ReadFile(Path()), writtenBack) << file;
  }
  const char* names[] = {"Engine", nullptr};
  SetUp();
  SetDebugIdNames(0x7F, 2, names);
  EXPECT_EQ(ReadFile(Path()), Entries("5").insert(15, "ID 7f Name=Engine\nID 80 Name=\n"));
}

TEST_F(TraceSettings, FilterDecides) {
  const struct {
    const char *level, *bitmap;
    DWORD id;
    bool passes;
  } kRows[] = {
      {"5", "", 0x00280005, true},    {"5", "", 0x00270006, false},   {"1", "", 0x0002FFFF, true},
      {"0", "", 0x0002FFFF, false},   {"0", "", 0xFFFF0000, false},   {"5", "", 0x0027000A, false},
      {"5", "0f", 0x00030000, true},  {"5", "0f", 0x00040000, false}, {"5", "0f", 0x00080000, true},
      {"5", "fe", 0x00C80000, false}, {"5", "fe", 0x00800005, false}, {"5", "fe", 0xFFFF0005, true},
  };
  for (const auto& row : kRows) {
    Edit(Entries(row.level, row.bitmap));
    ReadDebugSettings();
    EXPECT_EQ(IsDebugEnabled(row.id), row.passes) << std::hex << row.id << " " << row.bitmap;
  }
}

TEST_F(TraceSettings, EditCountsAfterThreeSeconds) {
  TraceAfterInterval();
  Edit(Entries("8"));
  g_milliseconds += 3000;
  EXPECT_FALSE(IsDebugEnabled(0x00270008));
  g_milliseconds += 1;
  EXPECT_TRUE(IsDebugEnabled(0x00270008));
  std::remove(Path().c_str());
  errno = EBUSY;
  TraceAfterInterval();
  EXPECT_EQ(errno, EBUSY) << "callers trace before they look at it";
  EXPECT_EQ(GetDebugFilterLevel(), DFL_REQUESTS) << "no file changes nothing";
  WriteFile(CorvoReleaseMarker(), "");
  EXPECT_EQ(GetDebugFilterLevel(), DFL_ESSENTIAL) << "but for an installed release";
  std::remove(CorvoReleaseMarker());
}

// A new level meets an edited file. Where that can't be read it isn't written over, and is tried
// again; what traces meanwhile neither waits nor brings the old level back.
TEST_F(TraceSettings, LevelIsSetWhateverTheHostDoesInFopen) {
  const struct {
    const char* name;
    std::function<bool()> open;
    bool canBeRead;
  } kRows[] = {
      {"Fails", [] { return false; }, false},
      {"Throws", []() -> bool { throw 1; }, false},
#ifndef __SANITIZE_ADDRESS__  // it takes what a cancellation leaves on the stack for an overflow
      {"Cancelled", [] { return pthread_exit(nullptr), true; }, false},
#endif
      {"Traces", [] { return TraceAfterInterval(), true; }, true},
      {"WaitsForTrace", [] { return std::thread(TraceAfterInterval).join(), true; }, true},
  };
  const std::string edited = "Filter Level=9\nOther=1\n";
  for (const auto& row : kRows) {
    SetUp();
    Edit(edited);
    g_open = row.open;
    std::thread([] { SetDebugFilterLevel(DFL_NOTICES); }).join();
    g_open = [] { return true; };
    EXPECT_EQ(ReadFile(Path()), row.canBeRead ? Entries("3") + "Other=1\n" : edited) << row.name;
    EXPECT_EQ(GetDebugFilterLevel(), row.canBeRead ? DFL_NOTICES : DFL_EVERYTHING) << row.name;
  }
}

// Each ends in the call, told once to the handler; a trace call whose look at the file fails writes
// nothing.
TEST_F(TraceSettings, WhatAHostThrowsEndsInTheCall) {
  static int told;
  static const char* const name = "Engine";
  const struct {
    const char* name;
    void (*call)();
    bool opens;  // the edited file; else the edit has been noted, and the filter is as it was
  } kRows[] = {
      {"HasIniFileChanged", [] { HasIniFileChanged(); }, false},
      {"ReadIniFile", [] { ReadIniFile(); }, true},
      {"ReadDebugSettings", [] { ReadDebugSettings(); }, true},
      {"WriteDebugSettings", [] { WriteDebugSettings(); }, true},
      {"GetDebugFilterLevel", [] { GetDebugFilterLevel(); }, true},
      {"SetDebugFilterLevel", [] { SetDebugFilterLevel(DFL_NOTICES); }, true},
      {"SetDebugIdNames", [] { SetDebugIdNames(7, 1, &name); }, true},
  };
  for (const auto& row : kRows) {
    SetUp();
    Edit(Entries("8"));
    SetExceptionHandlerCallback([](const char*, const char*, int) { ++told; });
    told = 0;
    g_directoryThrows = true;
    EXPECT_NO_THROW(row.call()) << row.name;
    g_directoryThrows = false;
    g_open = []() -> bool { throw 1; };
    EXPECT_NO_THROW(row.call()) << row.name;
    EXPECT_EQ(told, row.opens ? 2 : 1) << row.name;
    g_milliseconds += 3001;
    EXPECT_EQ(IsDebugEnabled(0x00270001), !row.opens) << row.name;
    g_open = [] { return true; };
    SetExceptionHandlerCallback(nullptr);
    EXPECT_EQ(ReadFile(Path()), Entries("8")) << row.name;
  }
}
