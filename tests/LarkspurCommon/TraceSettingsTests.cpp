// The settings file: what is read from it, what is written back, and when it is looked at again.

#define _TIME_BITS 64  // the exported clock below is then the one that the library calls

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

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

long long g_milliseconds = 1'700'000'000'000;
bool g_openFails;

const std::string kAllIds(32, 'f');

std::string Path() {
  return corvo_test::ScratchPath("etc/corvo_debug_settings.ini");
}

std::string Entries(const std::string& level, const std::string& bitmap = kAllIds) {
  return "Filter Level=" + level + "\nID Bitmap=" + bitmap + "\nModule Name=testhost\n";
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
  if (clock == CLOCK_REALTIME_COARSE) {
    now->tv_sec = static_cast<time_t>(g_milliseconds / 1000);
    now->tv_nsec = static_cast<long>(g_milliseconds % 1000) * 1'000'000;
    return 0;
  }
#ifdef SYS_clock_gettime64
  return static_cast<int>(syscall(SYS_clock_gettime64, clock, now));
#else
  return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
#endif
}

extern "C" int fopen_s(FILE** file, const char* path, const char* mode) {
  *file = g_openFails ? nullptr : std::fopen(path, mode);
  return *file == nullptr ? EMFILE : 0;
}

TEST_F(TraceSettings, FileIsReadAndWrittenBack) {
  const struct {
    const char* name;
    std::string file;
    std::string writtenBack;
  } kRows[] = {
      {"Empty", "", Entries("5")},
      {"Level", "Filter Level=7", Entries("7")},
      {"LevelAboveNine", "Filter Level=12\n", Entries("9")},
      {"LevelBeyond16Bits", "Filter Level=65539\n", Entries("3")},
      {"LevelBeyond32Bits", "Filter Level=4294967299\n", Entries("9")},
      {"LevelNotANumber", "Filter Level=high\n", Entries("0")},
      {"ValueTrimmed", "Filter Level=   3 \t\r\n", Entries("3")},
      {"ValueOfBlanksSkipsLine", "Filter Level=   \n", Entries("5")},
      {"ValueOfCarriageReturn", "Filter Level=\r\n", Entries("0")},
      {"KeyEndsInBlank", "Filter Level = 7\n", Entries("5").insert(15, "Filter Level =7\n")},
      {"KeyInOtherCase", "filter level=7\n", Entries("5") + "filter level=7\n"},
      {"FirstCounts", "Filter Level=7\nFilter Level=8\n", Entries("7")},
      {"OthersCarriedOverInKeyOrder", "b= 1=2\n\nno value\nB=x y\n=e\n",
       "=e\nB=x y\n" + Entries("5") + "b=1=2\n"},
      {"Bitmap", "ID Bitmap=0123456789ABCDEF0123456789abcdefFF\n",
       Entries("5", "0123456789abcdef0123456789abcdef")},
      {"ShortBitmap", "ID Bitmap=0f\n", Entries("5", "0f" + std::string(30, 'f'))},
      {"OddBitmap", "ID Bitmap=0f3\n", Entries("5", "0f03" + std::string(28, 'f'))},
      {"BitmapNotHex", "ID Bitmap=1gzz-11x\n", Entries("5", "01000001" + std::string(24, 'f'))},
      {"NulEndsLine", "A=1\0B=2\nFilter Level=4\n\0=x\n"s, "A=1\n" + Entries("4")},
      {"LongLineIsSeveral", "K=" + std::string(509, 'v') + "Filter Level=7\n",
       Entries("7").insert(Entries("7").find("Module"), "K=" + std::string(509, 'v') + "\n")},
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
    const char* level;
    const char* bitmap;
    DWORD id;
    bool passes;
  } kRows[] = {
      {"5", "ff", 0x00280005, true},
      {"5", "ff", 0x00270006, false},
      {"1", "ff", 0x0002FFFF, true},
      {"0", "ff", 0x0002FFFF, false},
      {"0", "ff", 0xFFFF0000, false},
      {"5", "0f", 0x00030000, true},
      {"5", "0f", 0x00040000, false},
      {"5", "0f", 0x00080000, true},
      {"5", "fe", 0x00C80000, false},
      {"5", "fe", 0x00800005, false},
      {"5", "ff", 0xFFFE0005, true},
      {"5", "00000000000000000000000000000000", 0xFFFF0005, true},
      {"5", "00000000000000000000000000000080", 0x007F0005, true},
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
  ASSERT_EQ(std::remove(Path().c_str()), 0);
  g_milliseconds += 3001;
  EXPECT_TRUE(IsDebugEnabled(0x00270008)) << "no file changes nothing";
}

TEST_F(TraceSettings, LevelsOfferedToCallers) {
  const unsigned kOffered[] = {0, 1, 2, 3, 3, 5, 5, 5, 5, 9};
  for (unsigned level = 0; level < 10; ++level) {
    SetDebugFilterLevel(static_cast<DebugFilterLevel>(level));
    EXPECT_EQ(GetDebugFilterLevel(), kOffered[level]);
  }
  SetDebugFilterLevel(static_cast<DebugFilterLevel>(300));
  EXPECT_EQ(ReadFile(Path()), Entries("300"));
}

TEST_F(TraceSettings, IdNames) {
  const char* names[] = {"Engine", nullptr, "Files"};
  SetDebugIdNames(0x27, 3, names);
  EXPECT_EQ(ReadFile(Path()),
            "Filter Level=5\nID 27 Name=Engine\nID 28 Name=\nID 29 Name=Files\n"
            "ID Bitmap=" +
                kAllIds + "\nModule Name=testhost\n");
  SetDebugIdNames(0x27, 1, nullptr);
  bool found = false;
  EXPECT_STREQ(GetData("ID 29 Name", found), "Files");
  EXPECT_TRUE(found);
  EXPECT_STREQ(GetData("ID 2a Name", found), "");
  EXPECT_FALSE(found);
}

TEST_F(TraceSettings, ReleaseMarkerCountsWithoutLevel) {
  WriteFile(CorvoReleaseMarker(), "");
  Edit("Other=1\n");
  ReadDebugSettings();
  EXPECT_EQ(GetDebugFilterLevel(), 1U);
  Edit(Entries("7"));
  EXPECT_EQ(GetDebugFilterLevel(), 5U);
  std::remove(CorvoReleaseMarker());
}

TEST_F(TraceSettings, FileThatCannotBeReadIsNeverOverwritten) {
  Edit("Filter Level=7\nOther=1\n");
  g_openFails = true;
  SetDebugFilterLevel(DFL_NOTICES);
  g_openFails = false;
  EXPECT_EQ(ReadFile(Path()), "Filter Level=7\nOther=1\n");
  ReadDebugSettings();
  EXPECT_TRUE(IsDebugEnabled(0x00270007));
}

TEST_F(TraceSettings, FailedWriteIsTriedAgain) {
  tstring key = "Other";
  tstring value = "1";
  UpdateIniFileEntry(key, value);
  ASSERT_EQ(std::remove(Path().c_str()), 0);
  ASSERT_EQ(symlink("/dev/full", Path().c_str()), 0);
  WriteIniFile();
  ASSERT_EQ(std::remove(Path().c_str()), 0);
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
