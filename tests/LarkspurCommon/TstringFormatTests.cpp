// tstring's formatting, error texts, trace lines and debugger trap.

#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <new>
#include <thread>
#include <utility>

#include "LarkspurCommon/TstringTest.h"

namespace {

std::atomic<int> g_raised{0};
std::atomic<int> g_raising{0};
std::atomic<bool> g_overlapped{false};
std::atomic<int> g_passes{0};
bool g_failOnce = false;
bool g_trapAgain = false;

}  // namespace

// The library's calls come here.
extern "C" int raise(int number) noexcept {
  ++g_raised;
  if (++g_raising > 1) g_overlapped = true;
  std::this_thread::yield();
  if (std::exchange(g_trapAgain, false)) tstring::TraceAndBreak("again");
  const int result = pthread_kill(pthread_self(), number);
  --g_raising;
  return result;
}

extern "C" int vsnprintf(char* out, size_t size, char const* format, va_list args) noexcept {
  static const auto real = reinterpret_cast<decltype(&vsnprintf)>(dlsym(RTLD_NEXT, "vsnprintf"));
  ++g_passes;
  return real(out, size, format, args);
}

void* operator new(std::size_t size) {
  void* memory = std::exchange(g_failOnce, false) ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

using corvo_test::TraceLog;
using Texts = std::vector<std::string>;

TEST(TstringFormat, EveryLengthTakesAtMostTwoPasses) {
  for (const int length : {0, 1, 511, 512, 513, 767, 768, 5000}) {
    const std::string text(static_cast<std::size_t>(length), 'x');
    tstring s("before");
    g_passes = 0;
    EXPECT_EQ(s.Format("%s", text.c_str()), text) << length;
    EXPECT_LE(g_passes, 2) << length;
    EXPECT_EQ(s.AppendFormat("%s%d", text.c_str(), 7), text + text + "7") << length;
    EXPECT_EQ(tstring::FromFormat("%s", text.c_str()), text) << length;
  }
  EXPECT_EQ(tstring().Format("a%cb", 0), std::string("a\0b", 3));
}

TEST(TstringFormat, RefusedFormatIsTracedAndEmpty) {
  TraceLog log;
  tstring s("before");
  EXPECT_EQ(s.Format("%ls", L"\u20ac"), "");
  const Texts expected = {
      "tstring::FormatV: The following error -1 was returned from _vsntprintf (errno=84) for "
      "[%ls]"};
  EXPECT_EQ(TakeReports(log), expected);
}

TEST(TstringFormat, ExceptionsAreReportedNotThrown) {
  TraceLog log;
  tstring s("before");
  g_failOnce = true;
  s.Format("%600d", 1);
  g_failOnce = true;
  s.AppendFormat("%100d", 1);
  EXPECT_EQ(s, std::string(511, ' '));
  const Texts expected = {"tstring::FormatV: STL Exception std::bad_alloc processing [%600d]",
                          "tstring::FormatV: STL Exception std::bad_alloc processing [%100d]"};
  EXPECT_EQ(TakeReports(log), expected);
}

TEST(TstringFormat, ErrorTexts) {
  EXPECT_EQ(tstring("x").GetErrorText(2), "No such file or directory");
  EXPECT_EQ(tstring("x").GetErrorText(99999), "Unknown error 99999");
}

TEST(TstringTrace, EachCallHasItsIdentifier) {
  TraceLog log;
  tstring::OutputDebugString("always %d", 1);
  tstring::Trace("detail %d", 2);
  tstring::TraceFn("function %d", 3);
  tstring::TraceAndBreak("break %d", 4);
  tstring::Assert("file.cpp", 12, "message");
  EXPECT_EQ(log.Texts(0, '?'), Texts{"always 1"});
  const Texts detail = {"detail 2", "break 4", "Assertion failed: message, file file.cpp, line 12"};
  EXPECT_EQ(log.Texts(0x0F, '8'), detail);
  EXPECT_EQ(log.Texts(0x0F, '9'), Texts{"function 3"});
}

std::atomic<int> g_delivered{0};

// SIGTRAP is the host's again after each trap, also when threads trap at the same time.
TEST(TstringTrap, LeavesTheActionAndReachesNoHandler) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++g_delivered; };
  ASSERT_EQ(sigaction(SIGTRAP, &action, &before), 0);
  std::atomic<int> waiting{4};
  std::thread threads[4];
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      for (--waiting; waiting > 0;) std::this_thread::yield();
      for (int n = 0; n < 100; ++n) tstring::TraceAndBreak("%d", n);
    });
  }
  for (std::thread& thread : threads) thread.join();
  struct sigaction after {};
  ASSERT_EQ(sigaction(SIGTRAP, &before, &after), 0);
  EXPECT_EQ(after.sa_handler, action.sa_handler);
  EXPECT_EQ(g_delivered, 0);
  EXPECT_FALSE(g_overlapped);
}

// A pending one would end the process as soon as the host unblocks it.
TEST(TstringTrap, BlockedSignalIsNotLeftPending) {
  sigset_t trap, before, after, pending;
  sigemptyset(&trap);
  sigaddset(&trap, SIGTRAP);
  pthread_sigmask(SIG_BLOCK, &trap, &before);
  tstring::TraceAndBreak("blocked");
  sigpending(&pending);
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&pending, SIGTRAP), 0);
  EXPECT_EQ(sigismember(&after, SIGTRAP), 1);
}

TEST(TstringTrap, TheHostMaySwitchItOff) {
  g_raised = 0;
  tstring::m_bTrapInDebugger = false;
  tstring::TraceAndBreak("off");
  EXPECT_EQ(g_raised, 0);
  tstring::m_bTrapInDebugger = true;
  g_trapAgain = true;
  tstring::TraceAndBreak("on");
  EXPECT_EQ(g_raised, 1);
}

}  // namespace
