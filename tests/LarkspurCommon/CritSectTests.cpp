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

// Gives the lock back; where it was taken.
std::string Release(CriticalSection& cs) {
  char const* file = nullptr;
  int line = 0;
  EXPECT_TRUE(cs.Unlock("release.cpp", 2, &file, &line, true));
  return file + ("(" + std::to_string(line) + ")");
}

std::string Report(const void* lock, const char* format, pthread_t owner) {
  char text[300];
  std::snprintf(text, sizeof text, format, lock, pthread_self(), owner);
  return text;
}

constexpr char kUnlock[] =
    "CriticalSection::Unlock[release.cpp(2)](m_cs, %p, TID=%lx, owner=%lx, file=taken.cpp, "
    "line=1), ";
constexpr char kDebugUnlock[] = "DebugLock::Unlock(%p, TID=%lx, owner=%lx), ";

}  // namespace

extern "C" unsigned long os_clock() {
  return g_clock;
}

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  if (g_servicesThrow) throw std::runtime_error("no time");
  *local = {2024, 3, 5, 1, 0, 0, 0, 50};  // just after midnight
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
  EXPECT_EQ(cs.TimeLocked(), 5U);
  EXPECT_EQ(Release(cs), "taken.cpp(1)");
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
    const std::string text = Report(&cs, kUnlock, pthread_self()) +
                             "The CriticalSection object was locked for " + row.report +
                             " which is too long.";
    EXPECT_EQ(log.Texts(3, '?'), row.report.empty() ? Texts{} : Texts{text});
  }
}

TEST(CriticalSection, ForeignReleaseChangesNothing) {
  const TraceLog log;
  CriticalSection cs(false, "m_cs", true);
  cs.Lock("taken.cpp", 1, true);
  CriticalSection::m_ignoreChecks = true;  // of other checks
  std::string expected;
  std::thread([&, owner = pthread_self()] {
    EXPECT_FALSE(cs.Unlock("silent.cpp", 2, nullptr, nullptr, false));
    EXPECT_FALSE(cs.Unlock("release.cpp", 2, nullptr, nullptr, true));
    expected = Report(&cs, kUnlock, owner) + "The thread does not own the Mutex.";
  }).join();
  CriticalSection::m_ignoreChecks = false;
  EXPECT_EQ(log.Texts(2, '?'), Texts{expected});
  EXPECT_EQ(g_traps, 1);
  EXPECT_EQ(Release(cs), "taken.cpp(1)");
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
    EXPECT_EQ(Release(cs), "outer.cpp(1)");
    cs.Lock("again.cpp", 5, true);
  }
  EXPECT_TRUE(IsFree(cs));
}

TEST(LockCriticalSection, FailingHostServiceIsReportedAndTheLockFreed) {
  CriticalSection cs(false, "m_cs", true);
  SetExceptionHandlerCallback(
      [](char const* file, char const*, int) { g_reports.push_back(file); });
  {
    const LockCriticalSection guard(&cs, true, "taken.cpp", 1);
    g_clock += 100;
    g_servicesThrow = true;
  }
  { const LockCriticalSection notHeld(&cs, false, "free.cpp", 2); }
  g_servicesThrow = false;
  SetExceptionHandlerCallback(nullptr);
  EXPECT_TRUE(IsFree(cs));
  // No time for the hold's report; no time for the line about the foreign release, and no alarm.
  EXPECT_EQ(g_reports, (Texts{"CritSect", "debug", "CritSect"}));
}

TEST(DebugLock, OutermostHelperReleasesAndForeignReleaseIsTraced) {
  const TraceLog log;
  DebugLock lock;
  std::string expected;
  {
    const DebugLockHelper outer(lock);
    { const DebugLockHelper inner(lock); }
    EXPECT_FALSE(lock.Lock());
    std::thread([&, owner = pthread_self()] {
      EXPECT_FALSE(lock.Unlock());
      expected = Report(&lock, kDebugUnlock, owner) + "The thread does not own the Mutex.";
    }).join();
  }
  EXPECT_EQ(log.Texts(0, '?'), Texts{expected});
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(lock.Unlock());
}

TEST(LockCriticalSection, ExcludesOtherThreads) {
  CriticalSection cs(false, "m_cs", true);
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 500; ++call) {
        const LockCriticalSection guard(&cs, true, "thread.cpp", call);
        ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 2000);
}
