// tstring's formatting, error texts, trace lines and debugger trap.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#include "LarkspurCommon/tstring.h"
#include "support/TraceLog.h"

static int g_raised = 0;
static bool g_trapAgain = false;
static bool g_failOnce = false;
static std::size_t g_mostMemory = SIZE_MAX;

// The library's calls come here; a signal handler may trap meanwhile.
extern "C" int raise(int number) noexcept {
  ++g_raised;
  if (std::exchange(g_trapAgain, false)) tstring::TraceAndBreak("again");
  return pthread_kill(pthread_self(), number);
}

void* operator new(std::size_t size) {
  if (std::exchange(g_failOnce, false) || size > g_mostMemory) throw std::bad_alloc();
  return std::malloc(size);
}
// Inline, this alone would show compilers a free of what isn't from malloc.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

using Texts = std::vector<std::string>;

TEST(TstringFormat, EveryLength) {
  for (const std::size_t length : {0u, 4094u, 4095u, 4096u, 9000u}) {
    const std::string text(length, 'x');
    EXPECT_EQ(tstring("ab").AppendFormat("%s%d", text.c_str(), 7), "ab" + text + "7") << length;
  }
  EXPECT_EQ(tstring::FromFormat("a%cb", 0), std::string("a\0b", 3));
  EXPECT_EQ(tstring("x").GetErrorText(2), "No such file or directory");
}

TEST(TstringFormat, FailuresAreReportedNotThrown) {
  const corvo_test::TraceLog log;
  tstring s("before");
  EXPECT_EQ(s.Format("%ls", L"\xD800"), "");
  g_failOnce = true;
  s = "%5000d";
  s.Format(s.c_str(), 1);
  g_failOnce = true;
  s.AppendFormat("%100d", 1);
  EXPECT_EQ(s, std::string(4095, ' '));  // what the pass that needs no memory made
  tstring kept("before");
  g_mostMemory = 2000;  // neither for all nor for the first part
  kept.Format("%6000d", 1);
  g_mostMemory = SIZE_MAX;
  EXPECT_EQ(kept, "before");
  const Texts expected = {
      "tstring::FormatV: The following error -1 was returned from _vsntprintf (errno=84) for "
      "[%ls]",
      "tstring::FormatV: STL Exception std::bad_alloc processing [%5000d]",
      "tstring::FormatV: STL Exception std::bad_alloc processing [%100d]",
      "tstring::FormatV: STL Exception std::bad_alloc processing [%6000d]"};
  EXPECT_EQ(log.Texts(0x0F, '8'), expected);
}

TEST(TstringTrace, EachCallHasItsIdentifier) {
  const corvo_test::TraceLog log;
  tstring::OutputDebugString("always %d", 1);
  tstring::TraceFn("function %d", 2);
  EXPECT_EQ(log.Texts(0, '?'), Texts{"always 1"});
  EXPECT_EQ(log.Texts(0x0F, '9'), Texts{"function 2"});
}

// One left pending would reach the host's handler when the host unblocks it.
TEST(TstringTrap, LeavesTheHostsSignalAlone) {
  static int s_delivered = 0;
  void (*const handler)(int) = [](int) { ++s_delivered; };
  sigset_t trap, mask;
  sigemptyset(&trap);
  sigaddset(&trap, SIGTRAP);
  const auto before = signal(SIGTRAP, handler);
  pthread_sigmask(SIG_BLOCK, &trap, nullptr);
  g_raised = 0;
  g_trapAgain = true;
  for (const bool on : {true, true, false, true}) {
    tstring::m_bTrapInDebugger = on;
    tstring::TraceAndBreak("trap");
  }
  pthread_sigmask(SIG_UNBLOCK, &trap, &mask);
  EXPECT_EQ(g_raised, 3);
  EXPECT_EQ(s_delivered, 0);
  EXPECT_EQ(sigismember(&mask, SIGTRAP), 1);
  EXPECT_EQ(signal(SIGTRAP, before), handler);
}

}  // namespace
