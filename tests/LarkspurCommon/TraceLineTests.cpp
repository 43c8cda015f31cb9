// One trace line: its text to the last character, where it is cut, and who gets it.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

constexpr SYSTEMTIME kEvening{2023, 11, 4, 16, 17, 58, 18, 123};
SYSTEMTIME g_now;
bool g_traceInGetLocalTime;
std::vector<std::string> g_narrow;
std::vector<std::wstring> g_wide;
std::vector<std::string> g_console;
std::vector<std::string> g_reports;

void Narrow(char const* line, unsigned length) {
  EXPECT_EQ(line[length], '\0');
  g_narrow.emplace_back(line, length);
}

void Wide(wchar_t const* line, unsigned length) {
  EXPECT_EQ(line[length], L'\0');
  g_wide.emplace_back(line, length);
}

void Handle(char const* file, char const* function, int) {
  g_reports.push_back(std::string(file) + ": " + function);
}

// "process,thread handle,kernel thread: ", by printf itself.
std::string Ids() {
  char text[64];
  std::snprintf(text, sizeof text, "%04x,%08lx,%05ld: ", static_cast<unsigned>(getpid()),
                pthread_self(), static_cast<long>(syscall(SYS_gettid)));
  return text;
}

std::string Prefix() {
  return "16/11 17:58:18.123 Recorder (27,2) " + Ids();
}

std::wstring Widen(const std::string& text) {
  return {text.begin(), text.end()};
}

class TraceLine : public testing::Test {
 protected:
  static void SetUpTestSuite() { InitDebug(nullptr, " Recorder ", nullptr); }
  void SetUp() override {
    g_now = kEvening;
    SetDebugHooks(Wide, Narrow);
    SetExceptionHandlerCallback(Handle);
  }
  void TearDown() override {
    SetDebugHooks(nullptr, nullptr);
    SetExceptionHandlerCallback(nullptr);
    for (auto* texts : {&g_narrow, &g_console, &g_reports}) texts->clear();
    g_wide.clear();
  }
};

}  // namespace

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  if (g_traceInGetLocalTime) DebugA(0x00270002, "asked");
  *local = g_now;
}

void ConsolePrint(unsigned long mask, const char* format, ...) {
  char text[4096];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  EXPECT_EQ(mask, 0xFFFFFFFFUL);
  EXPECT_STREQ(format, "%s");
  g_console.push_back(text);
}

TEST_F(TraceLine, IsLiteral) {
  const struct {
    SYSTEMTIME time;
    DWORD id;
    std::string expected;
  } kRows[] = {
      {kEvening, 0x00270002, "16/11 17:58:18.123 Recorder (27,2) "},
      {{2023, 1, 0, 2, 3, 4, 5, 6}, 0xFFFF0009, "02/01 03:04:05.006 Recorder (ffff,9) "},
      {{0, 65535, 0, 100, 0, 0, 0, 1000}, 0x0002FFFF, "100/65535 00:00:00.1000 Recorder (02,?) "},
      {kEvening, 0x0000FFFF, "16/11 17:58:18.123 Recorder (00,?) "},
      {kEvening, 0x0027000A, ""},  // level 10 is past every filter
  };
  SetDebugFilterLevel(DFL_EVERYTHING);
  for (const auto& row : kRows) {
    g_now = row.time;
    g_narrow.clear();
    g_wide.clear();
    DebugA(row.id, "%d%% of %s", 7, "it");
    DebugW(row.id, L"%d%% of %s", 7, "it");
    if (row.expected.empty()) {
      EXPECT_TRUE(g_narrow.empty() && g_wide.empty());
      continue;
    }
    const std::string line = row.expected + Ids() + "7% of it\n";
    EXPECT_EQ(g_narrow, std::vector{line});
    EXPECT_EQ(g_wide, std::vector{Widen(line)});
  }
}

TEST_F(TraceLine, IsCutToEndInALineFeed) {
  const struct {
    std::size_t total;  // of prefix and message, which is all x but for `end`
    std::string end;
    std::size_t length;
    std::string tail;
  } kRows[] = {
      {1020, "", 1021, "xx\n"},     {1021, "", 1022, "xx\n"},   {1022, "", 1022, "xx\n"},
      {1023, "", 1023, "xx\n"},     {3000, "", 1023, "xx\n"},   {1021, "\n", 1021, "xx\n"},
      {1022, "\n", 1022, "xx\n"},   {1023, "\n", 1023, "xx\n"}, {1022, "y", 1022, "xx\n"},
      {1022, "\ny", 1022, "x\n\n"},
  };
  const std::string prefix = Prefix();
  for (const auto& row : kRows) {
    const std::string message =
        std::string(row.total - prefix.size() - row.end.size(), 'x') + row.end;
    _DebugA("%s", message.c_str());
    _DebugW(L"%s", message.c_str());
    const std::string line = g_narrow.back();
    EXPECT_EQ(line.size(), row.length) << row.total;
    EXPECT_EQ(line.substr(line.size() - 3), row.tail) << row.total;
    EXPECT_EQ(g_wide.back(), Widen(line)) << row.total;
  }
}

TEST_F(TraceLine, GivesWayToIndentation) {
  for (int i = 0; i < 600; ++i) IncreaseThreadIndentLevel();
  DebugA(0x00270002, "no room");
  DebugW(0x00270002, L"no room");
  for (int i = 0; i < 600; ++i) DecreaseThreadIndentLevel();
  const std::string line = Prefix() + std::string(1022 - Prefix().size(), ' ') + "\n";
  EXPECT_EQ(g_narrow, std::vector{line});
  EXPECT_EQ(g_wide, std::vector{Widen(line)});
}

TEST_F(TraceLine, RefusedFormatIsDroppedUnlessTextCameBefore) {
  DebugA(0x00270002, "%ls", L"\x20AC");  // not in the C locale
  DebugW(0x00270002, L"%s", "\xFF");
  EXPECT_TRUE(g_narrow.empty() && g_wide.empty());
  DebugA(0x00270002, "so far%ls", L"\x20AC");
  const std::string line = Prefix() + "so far";
  EXPECT_EQ(g_narrow, std::vector{line + std::string(1022 - line.size(), ' ') + "\n"});
}

TEST_F(TraceLine, GoesToTheConsoleWithoutHooks) {
  SetDebugHooks(nullptr, nullptr);
  DebugA(0x00270002, "%s", "narrow %d");
  DebugW(0x00270002, L"wide \x20AC%%d");
  EXPECT_EQ(g_console, (std::vector{Prefix() + "narrow %d\n", Prefix() + "wide ?%d\n"}));
}

TEST_F(TraceLine, MultibyteConsoleTextIsCutBetweenCharacters) {
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  SetDebugHooks(nullptr, nullptr);
  DebugW(0x00270002, L"%ls", std::wstring(600, L'\xE9').c_str());
  std::setlocale(LC_CTYPE, "C");
  std::string expected = Prefix();
  while (expected.size() + 2 <= 1022) expected += "\xC3\xA9";
  EXPECT_EQ(g_console, std::vector{expected + "\n"});
}

TEST_F(TraceLine, ExceptionsGoToTheHandlerOnly) {
  SetDebugHooks([](wchar_t const*, unsigned) { throw 1; },
                [](char const*, unsigned) { throw std::runtime_error("hook"); });
  DebugA(0x00270002, "text");
  DebugW(0x00270002, L"text");
  Dump(0x00270002, "x", 1);
  { const CDebugTraceFn trace(0x00270002, "Open", L"%d", 1); }
  const std::string narrow = "debug: void __DebugA(DWORD, const char*, va_list)";
  const std::string wide = "debug: void __DebugW(DWORD, const wchar_t*, va_list)";
  EXPECT_EQ(g_reports, (std::vector{narrow, wide, narrow, wide, narrow}));
  SetExceptionHandlerCallback([](char const*, char const*, int) { throw 2; });
  DebugA(0x00270002, "text");
  DebugTraceException("file", "function", 3);
  SetExceptionHandlerCallback(nullptr);
  DebugA(0x00270002, "text");
}

TEST_F(TraceLine, ExceptionReports) {
  TraceException("FileHandler", "100%s", 12);
  TraceException(nullptr, nullptr, 0);
  DebugTraceException("CritSect", "Lock", 7);
  SetExceptionHandlerCallback(nullptr);
  DebugTraceException("CritSect", "Lock", 7);
  const std::string time = "16/11 17:58:18.123 Recorder ";
  EXPECT_EQ(
      g_narrow,
      (std::vector{time + "(25,2) " + Ids() + "Exception has occurred in 100%s (FileHandler[12])\n",
                   time + "(25,2) " + Ids() + "Exception has occurred in (null) ((null)[0])\n",
                   time + "(00,?) " + Ids() + "Exception has occurred in Lock (CritSect[7])\n"}));
  EXPECT_EQ(g_reports, std::vector<std::string>{"CritSect: Lock"});
}

TEST_F(TraceLine, HostMayTraceFromGetLocalTimeAndHooks) {
  g_traceInGetLocalTime = true;
  DebugA(0x00270002, "outer");
  g_traceInGetLocalTime = false;
  EXPECT_EQ(g_narrow, (std::vector{"00/00 00:00:00.000 Recorder (27,2) " + Ids() + "asked\n",
                                   Prefix() + "outer\n"}));
  SetDebugHooks(nullptr, [](char const*, unsigned) {
    SetDebugHooks(nullptr, Narrow);
    SetDebugFilterLevel(DFL_REQUESTS);
    DebugA(0x00270005, "from the hook");
  });
  DebugA(0x00270002, "text");
  EXPECT_NE(g_narrow.back().find("(27,5)"), std::string::npos);
}

TEST_F(TraceLine, CancelledThreadUnwindsThroughTheCall) {
  SetDebugHooks(nullptr, [](char const*, unsigned) {
    pthread_cancel(pthread_self());
    pthread_testcancel();
  });
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, nullptr,
                [](void*) -> void* {
                  DebugA(0x00270002, "text");
                  return nullptr;
                },
                nullptr),
            0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_TRUE(g_reports.empty());
}

TEST_F(TraceLine, ChildProcessAndOtherThreadsShowTheirOwnIds) {
  DebugA(0x00270002, "parent");
  const pid_t child = fork();
  if (child == 0) {
    DebugA(0x00270002, "child");
    _exit(g_narrow.back() == Prefix() + "child\n" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  std::thread([] {
    DebugA(0x00270002, "thread");
    EXPECT_EQ(g_narrow.back(), Prefix() + "thread\n");
  }).join();
}
