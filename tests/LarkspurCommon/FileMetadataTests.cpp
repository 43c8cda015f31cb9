// Sizes, times, changes and hiding.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "FileHandlerTest.h"

using namespace corvo_test;
using testing::ElementsAre;

namespace {
std::string Text(const SYSTEMTIME& t) {
  return tstring::FromFormat("%d-%d-%d (%d) %d:%d:%d.%d", t.wYear, t.wMonth, t.wDay, t.wDayOfWeek,
                             t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
}
}  // namespace

TEST_F(FileHandlerTest, LocalTimesAreSetUtcIsToldAndEachChangeIsSeenOnce) {
  constexpr char kZurich[] = "CET-1CEST,M3.5.0,M10.5.0/3";
  const struct {
    const char* zone;
    SYSTEMTIME local;
    const char* utc;
    long long seconds;
  } rows[] = {
      {"UTC0", {2100, 3, 0, 1, 0, 0, 0, 0}, "2100-3-1 (1) 0:0:0.0", 4107542400},
      {"UTC0", {2100, 3, 0, 1, 0, 0, 1, 0}, "2100-3-1 (1) 0:0:1.0", 4107542401},
      {kZurich, {2024, 7, 0, 1, 0, 30, 0, 0}, "2024-6-30 (0) 22:30:0.0", 1719786600},
      {kZurich, {2024, 1, 0, 1, 0, 30, 0, 0}, "2023-12-31 (0) 23:30:0.0", 1704065400},
      {"UTC0", {2023, 14, 0, 30, 24, 0, 60, 9}, "2024-3-2 (6) 0:1:0.0", 1709337660},
  };
  const std::string path = Make("bin/Polled.ini", "");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false));
  struct stat before {};
  struct stat after {};
  ASSERT_EQ(0, ::stat(path.c_str(), &before));
  bool exists = false;
  time_t mark = -1, time;
  const auto changed = [&] { return TFileHandler::HasFileChanged("polled.ini", exists, mark); };
  for (auto row : rows) {
    SCOPED_TRACE(row.utc);
    ::setenv("TZ", row.zone, 1);
    EXPECT_TRUE(TFileHandler::SetLastWriteTime(path.c_str(), row.local));
    EXPECT_TRUE(changed() && exists && !changed());
    SYSTEMTIME byName{}, open{};
    EXPECT_TRUE(TFileHandler::GetLastWriteTime(path.c_str(), byName));
    EXPECT_TRUE(file.GetLastWriteTime(open));
    EXPECT_EQ(row.utc + Text(open), Text(byName) + row.utc);
    const bool fits = sizeof(time_t) > 4 || row.seconds <= 0x7FFFFFFF;
    EXPECT_EQ(fits, TFileHandler::GetLastWriteTime(path.c_str(), time));
    EXPECT_EQ(fits ? row.seconds : -1, time);
    EXPECT_TRUE(!fits || mark == time);
  }
  ASSERT_EQ(0, ::stat(path.c_str(), &after));
  EXPECT_EQ(before.st_atim.tv_nsec, after.st_atim.tv_nsec) << "the access time stays";
  EXPECT_FALSE(TFileHandler::HasFileChanged("", exists, mark));
  ::unlink(path.c_str());
  EXPECT_TRUE(changed() && !exists && !changed());
}

TEST_F(FileHandlerTest, TwoGigabytesAreTooLargeASize) {
  const std::string path = Make("a", "");
  std::filesystem::resize_file(path, 0x80000000U);
  EXPECT_EQ(0, TFileHandler::GetFileSize(path.c_str()));
  EXPECT_THAT(
      trace.Texts(),
      ElementsAre("static LONGLONG TFileHandler::GetFileSize(const TCHAR*) - Error 75 (Value "
                  "too large for defined data type) getting file size for \"" +
                  path + "\"."));
}

TEST_F(FileHandlerTest, HiddenNamesBeginWithADot) {
  const auto hide = TFileHandler::MakeHidden, show = TFileHandler::MakeVisible;
  const std::string directory = ScratchPath("h"), longest(258 - directory.size(), 'x');
  MakeDirectory(directory);
  for (const std::string& name :
       {std::string("a.b"), std::string(".c"), longest, std::string("d"), std::string(".d")}) {
    ::chmod(Make("h/" + name, "").c_str(), 0040);
  }
  const struct {
    bool (*operation)(const char*);
    std::string asked;
    bool result;
  } rows[] = {{hide, "A.B", true},    {hide, ".a.b", true}, {hide, "d", false},
              {hide, longest, false}, {hide, "none", true}, {hide, "", true},
              {show, ".C", true},     {show, "c", true},    {show, ".d", false}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.result, row.operation((directory + "\\" + row.asked).c_str())) << row.asked;
  }
  EXPECT_THAT(ListDirectory(directory), ElementsAre(".a.b", ".d", "c", "d", longest));
  const auto mode = [](const std::string& path) {
    return std::filesystem::status(path).permissions();
  };
  EXPECT_EQ(std::filesystem::perms{0640}, mode(directory + "/c"));
  EXPECT_EQ(std::filesystem::perms{0040}, mode(directory + "/d"));
}
