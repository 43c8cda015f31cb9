// The settings file: what is read from it, what is written back, and when it is looked at again.

#define _TIME_BITS 64  // the exported clock below is then the one that the library calls

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

using namespace std::string_literals;
using corvo_test::ReadFile;
using corvo_test::WriteFile;

#ifdef SYS_clock_gettime64
constexpr long kClockCall = SYS_clock_gettime64;
#else
constexpr long kClockCall = SYS_clock_gettime;
#endif

long long g_milliseconds = 1'700'000'000'000;
bool g_readFails;

std::string Path() {
  return corvo_test::ScratchPath("etc/corvo_debug_settings.ini");
}

std::string Entries(const std::string& level, std::string bitmap = "",
                    const std::string& more = "") {
  bitmap.resize(32, 'f');
  return "Filter Level=" + level + "\nID Bitmap=" + bitmap + "\n" + more + "Module Name=testhost\n";
}

// An edit from outside, in a second of its own.
void Edit(const std::string& text) {
  static time_t s_writeTime = 5'000'000'000;  // past 2038
  WriteFile(Path(), text);
  const timespec times[2] = {{++s_writeTime, 0}, {s_writeTime, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Path().c_str(), times, 0), 0);
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

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  if (clock != CLOCK_REALTIME_COARSE) return static_cast<int>(syscall(kClockCall, clock, now));
  *now = {static_cast<time_t>(g_milliseconds / 1000),
          static_cast<long>(g_milliseconds % 1000) * 1'000'000};
  return 0;
}

extern "C" int fopen_s(FILE** file, const char* path, const char* mode) {
  *file = g_readFails && *mode == 'r' ? nullptr : std::fopen(path, mode);
  return *file == nullptr ? EMFILE : 0;
}

TEST_F(TraceSettings, FileIsReadAndWrittenBack) {
  const std::string longest(509, 'v');  // the first 511 characters of a line are one
  const struct {
    const char* name;
    std::string file, writtenBack;
  } kRows[] = {
      {"LevelAboveNine", "Filter Level=12\n", Entries("9")},
      {"LevelBeyond16Bits", "Filter Level=65539", Entries("3")},
      {"LevelNotANumber", "Filter Level=high\n", Entries("0")},
      {"ValueTrimmed", "Filter Level=   3 \t\r\n", Entries("3")},
      {"ValueOfBlanksSkipsLine", "Filter Level=   \n", Entries("5")},
      {"ValueOfCarriageReturn", "Filter Level=\r\n", Entries("0")},
      {"KeyEndsInBlank", "Filter Level = 7\n", Entries("5").insert(15, "Filter Level =7\n")},
      {"FirstCounts", "Filter Level=7\nFilter Level=8\n", Entries("7")},
      {"OthersStay", "b= 1=2\n\nno\nB=x y\n=e\n", "=e\nB=x y\n" + Entries("5") + "b=1=2\n"},
      {"Bitmap", "ID Bitmap=0123456789ABCDEF0123456789abcdefFF\n",
       Entries("5", "0123456789abcdef0123456789abcdef")},
      {"ShortBitmap", "ID Bitmap=0f\n", Entries("5", "0f")},
      {"OddBitmap", "ID Bitmap=0f3\n", Entries("5", "0f03")},
      {"BitmapNotHex", "ID Bitmap=1gzz-11x\n", Entries("5", "01000001")},
      {"NulEndsLine", "A=1\0B=2\nFilter Level=4\n\0=x\n"s, "A=1\n" + Entries("4")},
      {"LongLine", "K=" + longest + "Filter Level=7\n", Entries("7", "", "K=" + longest + "\n")},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    SetUp();
    Edit(row.file);
    ReadDebugSettings();
    WriteDebugSettings();
    EXPECT_EQ(ReadFile(Path()), row.writtenBack);
  }
}

TEST_F(TraceSettings, FilterDecides) {
  const struct {
    std::string level, bitmap;
    DWORD id;
    bool passes;
  } kRows[] = {
      {"5", "", 0x00280005, true},    {"5", "", 0x00270006, false},   {"1", "", 0x0002FFFF, true},
      {"0", "", 0x0002FFFF, false},   {"0", "", 0xFFFF0000, false},   {"5", "", 0x0027000A, false},
      {"5", "0f", 0x00030000, true},  {"5", "0f", 0x00040000, false}, {"5", "0f", 0x00080000, true},
      {"5", "fe", 0x00C80000, false}, {"5", "fe", 0x00800005, false}, {"5", "fe", 0xFFFF0005, true},
  };
  for (const auto& row : kRows) {
    SetUp();
    Edit(Entries(row.level, row.bitmap));
    ReadDebugSettings();
    EXPECT_EQ(IsDebugEnabled(row.id), row.passes) << std::hex << row.id << " " << row.bitmap;
  }
}

TEST_F(TraceSettings, EditCountsAfterThreeSeconds) {
  g_milliseconds += 3001;
  EXPECT_FALSE(IsDebugEnabled(0x00270008));
  Edit(Entries("8"));
  g_milliseconds += 3000;
  EXPECT_FALSE(IsDebugEnabled(0x00270008));
  g_milliseconds += 1;
  EXPECT_TRUE(IsDebugEnabled(0x00270008));
  std::remove(Path().c_str());
  g_milliseconds += 3001;
  errno = EBUSY;
  EXPECT_TRUE(IsDebugEnabled(0x00270008)) << "no file changes nothing";
  EXPECT_EQ(errno, EBUSY) << "callers trace before they look at it";
}

TEST_F(TraceSettings, LevelsOfferedToCallers) {
  unsigned level = 0;
  for (const unsigned offered : {0U, 1U, 2U, 3U, 3U, 5U, 5U, 5U, 5U, 9U}) {
    SetDebugFilterLevel(static_cast<DebugFilterLevel>(level++));
    EXPECT_EQ(GetDebugFilterLevel(), offered);
  }
  WriteFile(CorvoReleaseMarker(), "");
  Edit("Other=1\n");
  EXPECT_EQ(GetDebugFilterLevel(), 1U);
  Edit(Entries("7"));
  EXPECT_EQ(GetDebugFilterLevel(), 5U);
  std::remove(CorvoReleaseMarker());
}

TEST_F(TraceSettings, IdNames) {
  const char* names[] = {"Engine", nullptr};
  SetDebugIdNames(0x7F, 2, names);
  SetDebugIdNames(0x7F, 1, nullptr);
  EXPECT_EQ(ReadFile(Path()), Entries("5").insert(15, "ID 7f Name=Engine\nID 80 Name=\n"));
}

TEST_F(TraceSettings, FileThatCannotBeReadIsNotOverwritten) {
  Edit("Filter Level=7\nOther=1\n");
  g_readFails = true;
  SetDebugFilterLevel(DFL_NOTICES);
  g_readFails = false;
  EXPECT_EQ(ReadFile(Path()), "Filter Level=7\nOther=1\n");
  EXPECT_EQ(GetDebugFilterLevel(), 5U);
}

TEST_F(TraceSettings, FailedWriteIsTriedAgain) {
  tstring key = "Other";
  tstring value = "1";
  UpdateIniFileEntry(key, value);
  std::remove(Path().c_str());
  ASSERT_EQ(symlink("/dev/full", Path().c_str()), 0);
  WriteIniFile();
  std::remove(Path().c_str());
  WriteIniFile();
  EXPECT_EQ(ReadFile(Path()), Entries("5") + "Other=1\n");
}

TEST_F(TraceSettings, NoSettingsDirectoryIsHarmless) {
  const std::string directory = CorvoSettingsDirectory();
  ASSERT_EQ(std::rename(directory.c_str(), (directory + "-away").c_str()), 0);
  SetDebugFilterLevel(DFL_EVERYTHING);
  EXPECT_EQ(GetDebugFilterLevel(), 9U);
  ASSERT_EQ(std::rename((directory + "-away").c_str(), directory.c_str()), 0);
}
