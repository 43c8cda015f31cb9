// Trace lines: their text to the last character, where they are cut, who gets them, and what
// function tracing and dumps write.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
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
bool g_filterThrows;
Lines g_lines;  // from hooks, console and exception handler

template <class Char>
void Record(Char const* line, unsigned length) {
  g_lines.emplace_back(line, line + length);
}

void RecordCaught(char const* file, char const* function, int) {
  g_lines.push_back(std::string(file) + ": " + function);
}

Lines Take() {
  return std::exchange(g_lines, {});
}

// Indentation and message alone.
Lines TakeTexts() {
  Lines texts = Take();
  for (std::string& text : texts) text.erase(0, text.find(": ") + 2).pop_back();
  return texts;
}

// The thread's fields by printf itself.
std::string Prefix(const std::string& start = "16/11 17:58:18.123 Recorder (27,2) ") {
  char ids[64];
  std::snprintf(ids, sizeof ids, "%04x,%08lx,%05ld: ", static_cast<unsigned>(getpid()),
                pthread_self(), static_cast<long>(syscall(SYS_gettid)));
  return start + ids;
}

class Trace : public testing::Test {
 protected:
  void SetUp() override {
    InitDebug(nullptr, " Recorder ", nullptr);
    SetDebugFilterLevel(DFL_EVERYTHING);
    SetDebugHooks(Record, Record);
    SetExceptionHandlerCallback(RecordCaught);
    g_now = kEvening;
    g_lines.clear();
  }
};

}  // namespace

// A host's own filter, which leans on the library's.
bool IsDebugEnabled(DWORD id) {
  static const auto own =
      reinterpret_cast<bool (*)(DWORD)>(::dlsym(RTLD_NEXT, "_Z14IsDebugEnabledj"));
  errno = EIO;
  if (g_filterThrows) throw 1;
  return own(id);
}

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  errno = EINTR;
  if (g_traceInGetLocalTime) DebugA(kId, "asked");
  *local = g_now;
}

void ConsolePrint(unsigned long mask, const char* format, ...) {
  EXPECT_EQ(mask, 0xFFFFFFFFUL);
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
    DebugW(row.id, L"%d%% of %s\n", 7, "it");
    const std::string line = Prefix(row.start) + "7% of it\n";
    EXPECT_EQ(Take(), (Lines{line, line}));
  }
  g_traceInGetLocalTime = true;
  DebugA(kId, "outer");
  g_traceInGetLocalTime = false;
  EXPECT_EQ(Take(), (Lines{Prefix("00/00 00:00:00.000 Recorder (27,2) ") + "asked\n",
                           Prefix() + "outer\n"}));
  if (fork() == 0) {
    DebugA(kId, "child");
    _exit(Take() == Lines{Prefix() + "child\n"} ? 0 : 1);
  }
  int status = -1;
  wait(&status);
  EXPECT_EQ(status, 0) << "a new process shows its own ids";
}

TEST_F(Trace, HostsCallsLeaveErrnoAlone) {
  static char const* s_error = "%m";  // the compiler calls it no standard
  errno = ENOENT;
  DebugA(kId, s_error, 0);
  DebugW(kId, L"%m");
  Dump(kId, "a", 1);
  { const CDebugTraceFn trace(kId, "Open"); }
  SetDebugFilterLevel(DFL_OFF);
  DebugA(kId, s_error, 0);
  Dump(kId, "a", 1);
  { const CDebugTraceFn trace(kId, "Open"); }
  EXPECT_EQ(errno, ENOENT);
  const Lines texts = TakeTexts();
  ASSERT_EQ(texts.size(), 5U);
  for (const std::size_t i : {0U, 1U}) EXPECT_EQ(texts[i], "No such file or directory");
}

// In a process of its own, since a module is named once.
TEST(TraceDeathTest, WideLinesNameTheModuleAsNarrowOnesDo) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto writesTheSame = [] {
    static std::string s_narrow;
    static std::wstring s_wide;
    std::setlocale(LC_CTYPE, "C.UTF-8");
    InitDebug(nullptr, "Stra\xC3\x9F\x65", nullptr);
    SetDebugHooks([](wchar_t const* line, unsigned length) { s_wide.assign(line, length); },
                  [](char const* line, unsigned length) { s_narrow.assign(line, length); });
    DebugA(0x0000FFFF, "text");
    DebugW(0x0000FFFF, L"text");
    wchar_t expected[200];
    const std::size_t length = std::mbstowcs(expected, s_narrow.c_str(), 200);
    return s_narrow.find(" Stra\xC3\x9F\x65  (00,?) ") != s_narrow.npos &&
           s_wide == std::wstring(expected, length);
  };
  EXPECT_EXIT(std::_Exit(writesTheSame() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(Trace, LineIsCutToEndInALineFeed) {
  const std::string prefix = Prefix();
  const std::size_t kRows[][2] = {{1021, 1021}, {1022, 1021}, {1023, 1022}, {3000, 1022}};
  for (const auto& [whole, kept] : kRows) {  // without the line feed
    const std::string line = prefix + std::string(whole - prefix.size(), 'x');
    DebugA(kId, "%s", line.c_str() + prefix.size());
    DebugW(kId, L"%s", line.c_str() + prefix.size());
    EXPECT_EQ(Take(), (Lines(2, line.substr(0, kept) + "\n"))) << whole;
  }
  DebugA(kId, "%ls", L"\x20AC");  // not in the C locale
  DebugW(kId, L"%s", "\xFF");
  DebugA(kId, "so far%ls", L"\x20AC");
  for (int i = 0; i < 600; ++i) IncreaseThreadIndentLevel();
  DebugW(kId, L"no room");
  for (int i = 0; i < 600; ++i) DecreaseThreadIndentLevel();
  const std::string blanks(1022 - prefix.size(), ' ');
  EXPECT_EQ(Take(), (Lines{prefix + "so far" + blanks.substr(6) + "\n", prefix + blanks + "\n"}));
}

TEST_F(Trace, ConsoleWithoutHooks) {
  SetDebugHooks(nullptr, nullptr);
  DebugA(kId, "%s", "narrow %d");
  DebugW(kId, L"wide \x20AC%%d");
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  DebugW(kId, L"%ls", std::wstring(600, L'\xE9').c_str());
  std::setlocale(LC_CTYPE, "C");
  std::string cut = "console: " + Prefix();  // between characters
  while (cut.size() + 2 <= 9 + 1022) cut += "\xC3\xA9";
  EXPECT_EQ(Take(), (Lines{"console: " + Prefix() + "narrow %d\n",
                           "console: " + Prefix() + "wide ?%d\n", cut + "\n"}));
}

TEST_F(Trace, ExceptionsAreReportedAndGoNoFurther) {
  TraceException("FileHandler", "100%s", 12);
  EXPECT_EQ(TakeTexts(), Lines{"Exception has occurred in 100%s (FileHandler[12])"});
  g_filterThrows = true;
  { const CDebugTraceFn trace(kId, "Open"); }
  g_filterThrows = false;
  EXPECT_EQ(Take(), Lines{"debug: CDebugTraceFn::CDebugTraceFn(DWORD, const char*)"});
  SetDebugHooks([](wchar_t const*, unsigned) { throw 1; }, [](char const*, unsigned) { throw 1; });
  { const CDebugTraceFn trace(kId, "Open", L"%d", 1); }
  DebugTraceException("CritSect", "Lock", 7);
  EXPECT_EQ(Take(), (Lines{"debug: void __DebugW(DWORD, const wchar_t*, va_list)",
                           "debug: void __DebugA(DWORD, const char*, va_list)", "CritSect: Lock"}));
  SetExceptionHandlerCallback([](char const*, char const*, int) { throw 2; });
  DebugA(kId, "text");
  SetExceptionHandlerCallback(nullptr);
  SetDebugHooks(nullptr, Record);
  DebugTraceException("CritSect", "Lock", 7);
  EXPECT_EQ(TakeTexts(), Lines{"Exception has occurred in Lock (CritSect[7])"});
}

TEST_F(Trace, FunctionsNest) {
  {
    const CDebugTraceFn open(kId, "Open", "name=%s", "a.wav");
    {
      const CDebugTraceFn wide(kId, "Read\xC3", L"%d, %ls", 1, L"x");
      const CDebugIndentOutput deeper;
      std::thread([] { DebugA(kId, "another thread"); }).join();
      DebugA(kId, "deep");
    }
    SetDebugFilterLevel(DFL_ESSENTIAL);
    const CDebugTraceFn unwanted(kId, "Unwanted", "%d", 1);
    DebugA(0x00270001, "inside");
    SetDebugFilterLevel(DFL_EVERYTHING);
  }
  const CDebugTraceFn percent(kId, "mod%d", "%d", 12);
  std::thread(DecreaseThreadIndentLevel).join();
  DebugA(kId, "all threads restart");
  EXPECT_EQ(TakeTexts(), (Lines{"> Open(name=a.wav)", "  > Read\xC3(1, x)", "another thread",
                                "      deep", "  < Read\xC3()", "  inside", "< Open()",
                                "> mod%d(12)", "all threads restart"}));
}

TEST_F(Trace, EnterTemplateIsCutAt255BetweenConversions) {
  const std::pair<std::size_t, std::string> kRows[] = {
      {242, "  +12|)"}, {243, "  +12|"}, {244, "  +12"}, {245, ""}, {251, ""}};
  for (const auto& [length, arguments] : kRows) {
    const std::string name(length, 'n');
    { const CDebugTraceFn trace(kId, name.c_str(), "%+*.2lld|", 5, 12LL); }
    EXPECT_EQ(TakeTexts(), (Lines{"> " + name + "(" + arguments, "< " + name + "()"}));
  }
}

TEST_F(Trace, DumpShapes) {
  Dump(kId, nullptr, 16);
  Dump(kId, "", 0);
  Dump(kId, "RIFF$\x08\0\0WAVE~\x7F \x1F\xE9", 17);
  EXPECT_EQ(TakeTexts(),
            (Lines{" 00000000: 52 49 46 46 24 08 00 00  57 41 56 45 7E 7F 20 1F  RIFF$...WAVE~. .",
                   " 00000010: E9" + std::string(48, ' ') + "."}));
}
