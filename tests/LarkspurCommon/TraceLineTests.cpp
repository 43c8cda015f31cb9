// Trace lines: their text to the last character, where they are cut, who gets them, and what
// function tracing and dumps write.

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
#include <utility>
#include <vector>

#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

using Lines = std::vector<std::string>;

constexpr SYSTEMTIME kEvening{2023, 11, 4, 16, 17, 58, 18, 123};
constexpr DWORD kId = 0x00270002;
SYSTEMTIME g_now;
bool g_traceInGetLocalTime;
Lines g_lines;  // from hooks, console and exception handler

void Narrow(char const* line, unsigned length) {
  EXPECT_EQ(line[length], '\0');
  g_lines.emplace_back(line, length);
}

void Wide(wchar_t const* line, unsigned length) {
  EXPECT_EQ(line[length], L'\0');
  g_lines.emplace_back(line, line + length);
}

void Handle(char const* file, char const* function, int) {
  g_lines.push_back(std::string(file) + ": " + function);
}

Lines Take() {
  return std::exchange(g_lines, {});
}

// Indentation and message alone.
Lines TakeTexts() {
  Lines texts = Take();
  for (std::string& text : texts)
    text = text.substr(text.find(": ") + 2, text.find('\n') - text.find(": ") - 2);
  return texts;
}

// The thread's fields by printf itself.
std::string Prefix(const std::string& start = "16/11 17:58:18.123 Recorder (27,2) ") {
  char ids[64];
  std::snprintf(ids, sizeof ids, "%04x,%08lx,%05ld: ", static_cast<unsigned>(getpid()),
                pthread_self(), static_cast<long>(syscall(SYS_gettid)));
  return start + ids;
}

std::string Filled(std::string text) {
  text.resize(1022, ' ');
  return text + "\n";
}

class Trace : public testing::Test {
 protected:
  void SetUp() override {
    InitDebug(nullptr, " Recorder ", nullptr);
    SetDebugFilterLevel(DFL_EVERYTHING);
    SetDebugHooks(Wide, Narrow);
    SetExceptionHandlerCallback(Handle);
    g_now = kEvening;
    g_lines.clear();
  }
  void TearDown() override {
    SetDebugHooks(nullptr, nullptr);
    SetExceptionHandlerCallback(nullptr);
  }
};

}  // namespace

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  if (g_traceInGetLocalTime) DebugA(kId, "asked");
  *local = g_now;
}

void ConsolePrint(unsigned long mask, const char* format, ...) {
  EXPECT_EQ(mask, 0xFFFFFFFFUL);
  EXPECT_STREQ(format, "%s");
  va_list args;
  va_start(args, format);
  g_lines.push_back(std::string("console: ") + va_arg(args, char const*));
  va_end(args);
}

TEST_F(Trace, LineIsLiteral) {
  const struct {
    SYSTEMTIME time;
    DWORD id;
    std::string start;
  } kRows[] = {
      {kEvening, 0x00270002, "16/11 17:58:18.123 Recorder (27,2) "},
      {{2023, 1, 0, 2, 3, 4, 5, 6}, 0xFFFF0009, "02/01 03:04:05.006 Recorder (ffff,9) "},
      {{0, 65535, 0, 100, 0, 0, 0, 1000}, 0x0002FFFF, "100/65535 00:00:00.1000 Recorder (02,?) "},
      {kEvening, 0x0000FFFF, "16/11 17:58:18.123 Recorder (00,?) "},
  };
  for (const auto& row : kRows) {
    g_now = row.time;
    DebugA(row.id, "%d%% of %s", 7, "it");
    DebugW(row.id, L"%d%% of %s", 7, "it");
    const std::string line = Prefix(row.start) + "7% of it\n";
    EXPECT_EQ(Take(), (Lines{line, line}));
  }
}

TEST_F(Trace, LineIsCutToEndInALineFeed) {
  const struct {
    std::size_t total;  // of prefix and message, which is all x but for `end`
    std::string end;
    std::size_t length;
    std::string tail;
  } kRows[] = {
      {1020, "", 1021, "xx\n"},   {1021, "", 1022, "xx\n"},   {1022, "", 1022, "xx\n"},
      {1023, "", 1023, "xx\n"},   {3000, "", 1023, "xx\n"},   {1021, "\n", 1021, "xx\n"},
      {1022, "\n", 1022, "xx\n"}, {1023, "\n", 1023, "xx\n"}, {1022, "\ny", 1022, "x\n\n"},
  };
  for (const auto& row : kRows) {
    const std::string message =
        std::string(row.total - Prefix().size() - row.end.size(), 'x') + row.end;
    DebugA(kId, "%s", message.c_str());
    DebugW(kId, L"%s", message.c_str());
    const Lines lines = Take();
    EXPECT_EQ(lines[0].size(), row.length) << row.total;
    EXPECT_EQ(lines[0].substr(lines[0].size() - 3), row.tail) << row.total;
    EXPECT_EQ(lines[1], lines[0]) << row.total;
  }
}

TEST_F(Trace, MessageThatCannotBeWritten) {
  DebugA(kId, "%ls", L"\x20AC");  // not in the C locale
  DebugW(kId, L"%s", "\xFF");
  EXPECT_EQ(Take(), Lines{});
  DebugA(kId, "so far%ls", L"\x20AC");
  for (int i = 0; i < 600; ++i) IncreaseThreadIndentLevel();
  DebugA(kId, "no room");
  DebugW(kId, L"no room");
  for (int i = 0; i < 600; ++i) DecreaseThreadIndentLevel();
  EXPECT_EQ(Take(), (Lines{Filled(Prefix() + "so far"), Filled(Prefix()), Filled(Prefix())}));
}

TEST_F(Trace, ConsoleWithoutHooks) {
  SetDebugHooks(nullptr, nullptr);
  DebugA(kId, "%s", "narrow %d");
  DebugW(kId, L"wide \x20AC%%d");
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  DebugW(kId, L"%ls", std::wstring(600, L'\xE9').c_str());
  std::setlocale(LC_CTYPE, "C");
  std::string cut = Prefix();  // between characters
  while (cut.size() + 2 <= 1022) cut += "\xC3\xA9";
  EXPECT_EQ(Take(), (Lines{"console: " + Prefix() + "narrow %d\n",
                           "console: " + Prefix() + "wide ?%d\n", "console: " + cut + "\n"}));
}

TEST_F(Trace, ExceptionsAreReportedAndGoNoFurther) {
  TraceException("FileHandler", "100%s", 12);
  TraceException(nullptr, nullptr, 0);
  const std::string report =
      Prefix("16/11 17:58:18.123 Recorder (25,2) ") + "Exception has occurred ";
  EXPECT_EQ(Take(),
            (Lines{report + "in 100%s (FileHandler[12])\n", report + "in (null) ((null)[0])\n"}));
  SetDebugHooks([](wchar_t const*, unsigned) { throw 1; },
                [](char const*, unsigned) { throw std::runtime_error("hook"); });
  Dump(kId, "x", 1);
  { const CDebugTraceFn trace(kId, "Open", L"%d", 1); }
  DebugTraceException("CritSect", "Lock", 7);
  EXPECT_EQ(Take(), (Lines{"debug: void __DebugA(DWORD, const char*, va_list)",
                           "debug: void __DebugW(DWORD, const wchar_t*, va_list)",
                           "debug: void __DebugA(DWORD, const char*, va_list)", "CritSect: Lock"}));
  SetExceptionHandlerCallback([](char const*, char const*, int) { throw 2; });
  DebugA(kId, "text");
  SetExceptionHandlerCallback(nullptr);
  SetDebugHooks(Wide, Narrow);
  DebugTraceException("CritSect", "Lock", 7);
  EXPECT_EQ(TakeTexts(), Lines{"Exception has occurred in Lock (CritSect[7])"});
}

TEST_F(Trace, HostMayTraceFromGetLocalTimeAndHooks) {
  g_traceInGetLocalTime = true;
  DebugA(kId, "outer");
  g_traceInGetLocalTime = false;
  EXPECT_EQ(Take(), (Lines{Prefix("00/00 00:00:00.000 Recorder (27,2) ") + "asked\n",
                           Prefix() + "outer\n"}));
  SetDebugHooks(nullptr, [](char const*, unsigned) {
    SetDebugHooks(nullptr, Narrow);
    SetDebugFilterLevel(DFL_REQUESTS);
    DebugA(kId, "from the hook");
  });
  DebugA(kId, "text");
  EXPECT_EQ(Take(), Lines{Prefix() + "from the hook\n"});
}

#ifdef __SANITIZE_ADDRESS__  // it takes what a cancellation leaves on the stack for an overflow
#define CancelledThreadUnwinds DISABLED_CancelledThreadUnwinds
#endif
TEST_F(Trace, CancelledThreadUnwinds) {
  SetDebugHooks(nullptr, [](char const*, unsigned) {
    pthread_cancel(pthread_self());
    pthread_testcancel();
  });
  const auto run = [](void*) -> void* {
    DebugA(kId, "text");
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, run, nullptr), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_EQ(Take(), Lines{});
}

TEST_F(Trace, ChildProcessShowsItsOwnIds) {
  DebugA(kId, "parent");
  const pid_t child = fork();
  if (child == 0) {
    DebugA(kId, "child");
    _exit(g_lines.back() == Prefix() + "child\n" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(Trace, FunctionsNest) {
  {
    const CDebugTraceFn open(kId, "Open", "name=%s", "a.wav");
    DebugA(kId, "inside");
    {
      const CDebugTraceFn wide(kId, "Read\xC3", L"%d, %ls", 1, L"x");
      const CDebugIndentOutput deeper;
      std::thread([] { DebugA(kId, "another thread"); }).join();
      DebugA(kId, "deep");
    }
    SetDebugFilterLevel(DFL_ESSENTIAL);
    const CDebugTraceFn unwanted(kId, "Unwanted", "%d", 1);
    DebugA(0x00270001, "still inside");
    SetDebugFilterLevel(DFL_EVERYTHING);
  }
  { const CDebugTraceFn percent(kId, "mod%d", "%d", 12); }
  EXPECT_EQ(TakeTexts(), (Lines{"> Open(name=a.wav)", "  inside", "  > Read\xC3(1, x)",
                                "another thread", "      deep", "  < Read\xC3()", "  still inside",
                                "< Open()", "> mod%d(12)", "< mod%d()"}));
}

TEST_F(Trace, EnterTemplateIsCutAt255BetweenConversions) {
  const struct {
    std::size_t nameLength;
    std::string narrow, wide;  // what is left of "%+*.2lld|)" and "%d)"
  } kRows[] = {{242, "  +12|)", "12)"}, {243, "  +12|", "12)"}, {244, "  +12", "12)"},
               {245, "", "12)"},        {250, "", "12"},        {251, "", ""}};
  for (const auto& row : kRows) {
    const std::string name(row.nameLength, 'n');
    { const CDebugTraceFn trace(kId, name.c_str(), "%+*.2lld|", 5, 12LL); }
    { const CDebugTraceFn trace(kId, name.c_str(), L"%d", 12); }
    const std::string enter = "> " + name + "(";
    const std::string leave = "< " + name + "()";
    EXPECT_EQ(TakeTexts(), (Lines{enter + row.narrow, leave, enter + row.wide, leave}));
  }
}

TEST_F(Trace, UnbalancedDecreaseRestartsEveryThread) {
  IncreaseThreadIndentLevel();
  IncreaseThreadIndentLevel();
  EXPECT_EQ(GetThreadIndentLevel(), 4U);
  std::thread(DecreaseThreadIndentLevel).join();
  EXPECT_EQ(GetThreadIndentLevel(), 0U);
}

TEST_F(Trace, DumpShapes) {
  Dump(kId, nullptr, 16);
  Dump(kId, "", 0);
  Dump(kId, "RIFF$\x08\0\0WAVEfmt \xE9", 17);
  Dump(kId, "~\x7F \x1F", 4);
  EXPECT_EQ(TakeTexts(),
            (Lines{" 00000000: 52 49 46 46 24 08 00 00  57 41 56 45 66 6D 74 20  RIFF$...WAVEfmt ",
                   " 00000010: E9" + std::string(48, ' ') + ".",
                   " 00000000: 7E 7F 20 1F" + std::string(39, ' ') + "~. ."}));
}
