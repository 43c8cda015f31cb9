// The locks: who holds them, what their reports say and when there is one.

#include "LarkspurCommon/CritSect.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LarkspurCommon/XTTime.h"
#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/TraceLog.h"

namespace {

using corvo_test::TraceLog;
using Texts = std::vector<std::string>;

unsigned long g_clock = 1000;
int g_traps;
bool g_servicesThrow;
Texts g_reports;

// Another thread takes the lock and gives it back. Never returns while the lock is held.
bool IsFree(CriticalSection& cs) {
  bool taken = false;
  std::thread([&] {
    taken = cs.Lock("other.cpp", 9, true);
    cs.Unlock("other.cpp", 9, nullptr, nullptr, true);
  }).join();
  return taken;
}

// "CriticalSection::Unlock[release.cpp(2)](m_cs, ..., file=taken.cpp, line=1), "
std::string Report(CriticalSection& cs, const std::string& release, pthread_t owner,
                   const std::string& taken) {
  char text[300];
  std::snprintf(text, sizeof text,
                "CriticalSection::Unlock[%s](m_cs, %p, TID=%lx, owner=%lx, %s), ", release.c_str(),
                static_cast<void*>(&cs), pthread_self(), owner, taken.c_str());
  return text;
}

void Handle(char const* file, char const* function, int) {
  g_reports.push_back(std::string(file) + ": " + function);
}

}  // namespace

extern "C" unsigned long os_clock() {
  return g_clock;
}

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  if (g_servicesThrow) throw std::runtime_error("no time");
  *local = {2024, 3, 5, 1, 0, 0, 0, 50};  // 1 March, just after midnight
}

void SendTrap() {
  ++g_traps;
  if (g_servicesThrow) throw std::runtime_error("no alarm");
}

TEST(CriticalSection, OwnerTakesItAgainForNothing) {
  CriticalSection cs(false, "m_cs", false);
  EXPECT_TRUE(cs.Lock("taken.cpp", 1, true));
  g_clock += 5;
  EXPECT_FALSE(cs.Lock("again.cpp", 2, true));
  EXPECT_TRUE(cs.IsLockedByThread());
  EXPECT_EQ(cs.TimeLocked(), 5U);
  char const* file = nullptr;
  int line = 0;
  EXPECT_TRUE(cs.Unlock("release.cpp", 2, &file, &line, true));
  EXPECT_STREQ(file, "taken.cpp");
  EXPECT_EQ(line, 1);
  EXPECT_FALSE(cs.IsLockedByThread());
  EXPECT_EQ(cs.TimeLocked(), g_clock);
  EXPECT_TRUE(IsFree(cs));
}

TEST(CriticalSection, LongHoldsAreReported) {
  const struct {
    unsigned long taken, released;
    bool checkLockTime, ignoreChecks, check;
    std::string report;
  } kRows[] = {
      {1000, 1099, true, false, true, ""},
      {1000, 1100, true, false, true, "0.100 secs (at ~23:59:59.950)"},
      {0xFFFFFFF0, 0xCD8, true, false, true, "3.304 secs (at ~23:59:56.746)"},  // clock wraps
      {0, 5000, true, false, true, ""},
      {1000, 2000, false, false, true, ""},
      {1000, 2000, true, true, true, ""},
      {1000, 2000, true, false, false, ""},
  };
  for (const auto& row : kRows) {
    const TraceLog log;
    CriticalSection cs(false, "m_cs", row.checkLockTime);
    CriticalSection::m_ignoreChecks = row.ignoreChecks;
    g_clock = row.taken;
    cs.Lock("taken.cpp", 1, true);
    g_clock = row.released;
    EXPECT_TRUE(cs.Unlock("release.cpp", 2, nullptr, nullptr, row.check));
    CriticalSection::m_ignoreChecks = false;
    Texts expected;
    if (!row.report.empty()) {
      expected.push_back(Report(cs, "release.cpp(2)", pthread_self(), "file=taken.cpp, line=1") +
                         "The CriticalSection object was locked for " + row.report +
                         " which is too long.");
    }
    EXPECT_EQ(log.Texts(3, '?'), expected);
  }
}

TEST(CriticalSection, ForeignReleaseChangesNothing) {
  const TraceLog log;
  CriticalSection cs(false, "m_cs", true);
  cs.Lock("taken.cpp", 1, true);
  const pthread_t owner = pthread_self();
  std::string expected;
  g_traps = 0;
  std::thread([&] {
    EXPECT_FALSE(cs.Unlock("silent.cpp", 2, nullptr, nullptr, false));
    EXPECT_FALSE(cs.Unlock("release.cpp", 3, nullptr, nullptr, true));
    expected = Report(cs, "release.cpp(3)", owner, "file=taken.cpp, line=1");
  }).join();
  EXPECT_EQ(log.Texts(2, '?'), Texts{expected + "The thread does not own the Mutex."});
  EXPECT_EQ(g_traps, 1);
  EXPECT_TRUE(cs.IsLockedByThread());
  EXPECT_TRUE(cs.Unlock("release.cpp", 4, nullptr, nullptr, true));
  CriticalSection::m_ignoreChecks = true;
  EXPECT_FALSE(cs.Unlock(nullptr, 5, nullptr, nullptr, true));
  CriticalSection::m_ignoreChecks = false;
  EXPECT_EQ(g_traps, 2);
  EXPECT_EQ(log.Texts(2, '?').size(), 2U);
}

TEST(LockCriticalSection, OutermostGuardReleases) {
  CriticalSection cs(false, "m_cs", false);
  const LockCriticalSection none(nullptr, true, "none.cpp", 1);
  {
    const LockCriticalSection outer(&cs, true, "outer.cpp", 1);
    { const LockCriticalSection inner(&cs, true, "inner.cpp", 2); }
    EXPECT_TRUE(cs.IsLockedByThread());
    {
      const LockCriticalSection released(&cs, false, "released.cpp", 3);
      EXPECT_TRUE(IsFree(cs));
      g_clock += 7;
    }
    EXPECT_EQ(cs.TimeLocked(), 0U) << "the hold starts again";
    char const* file = nullptr;
    int line = 0;
    EXPECT_TRUE(cs.Unlock("release.cpp", 4, &file, &line, true));
    EXPECT_STREQ(file, "outer.cpp");
    EXPECT_EQ(line, 1);
    cs.Lock("again.cpp", 5, true);
  }
  EXPECT_TRUE(IsFree(cs));
  { const LockCriticalSection notHeld(&cs, false, "free.cpp", 6); }
  EXPECT_FALSE(cs.IsLockedByThread());
}

TEST(LockCriticalSection, FailingHostServiceIsReportedAndTheLockFreed) {
  const TraceLog log;
  CriticalSection cs(false, "m_cs", true);
  SetExceptionHandlerCallback(Handle);
  {
    const LockCriticalSection guard(&cs, true, "taken.cpp", 1);
    g_clock += 100;
    g_servicesThrow = true;
  }
  EXPECT_FALSE(cs.Unlock("free.cpp", 2, nullptr, nullptr, true));
  g_servicesThrow = false;
  SetExceptionHandlerCallback(nullptr);
  EXPECT_TRUE(IsFree(cs));
  const std::string unlock =
      "bool CriticalSection::Unlock(const char*, int, const char**, int*, bool)";
  ASSERT_GE(g_reports.size(), 2U);
  EXPECT_EQ(g_reports.front(), "CritSect: " + unlock);
  EXPECT_EQ(g_reports.back(), "CritSect: " + unlock);
}

TEST(DebugLock, OutermostHelperReleasesAndForeignReleaseIsTraced) {
  const TraceLog log;
  DebugLock lock;
  const pthread_t owner = pthread_self();
  std::string expected;
  {
    const DebugLockHelper outer(lock);
    { const DebugLockHelper inner(lock); }
    EXPECT_FALSE(lock.Lock());
    std::thread([&] {
      EXPECT_FALSE(lock.Unlock());
      char text[120];
      std::snprintf(text, sizeof text, "DebugLock::Unlock(%p, TID=%lx, owner=%lx), ",
                    static_cast<void*>(&lock), pthread_self(), owner);
      expected = text;
    }).join();
  }
  EXPECT_EQ(log.Texts(0, '?'), Texts{expected + "The thread does not own the Mutex."});
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(lock.Unlock());
}

TEST(Locks, ExcludeOtherThreads) {
  CriticalSection cs(false, "m_cs", true);
  DebugLock debugLock;
  int both[2] = {0, 0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 500; ++call) {
        const LockCriticalSection guard(&cs, true, "thread.cpp", call);
        ++both[0];
        const LockCriticalSection released(&cs, false, "thread.cpp", call);
        const DebugLockHelper helper(debugLock);
        ++both[1];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(both[0], 2000);
  EXPECT_EQ(both[1], 2000);
}
