// The locks: who holds them, what their reports say and when there is one.

#include "LarkspurCommon/CritSect.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
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
bool g_clockThrows;
std::atomic<bool> g_clockEndsThread;
Texts g_caught;

// Never returns while the lock is held.
void ExpectFree(CriticalSection& cs) {
  std::thread([&cs] { const LockCriticalSection guard(&cs, true, "other.cpp", 9); }).join();
}

constexpr char kUnlock[] =
    "CriticalSection::Unlock[release.cpp(2)](m_cs, %p, TID=%lx, owner=%lx, file=taken.cpp, "
    "line=1), The ";
constexpr char kDebugUnlock[] =
    "DebugLock::Unlock(%p, TID=%lx, owner=%lx), The thread does not own the Mutex.";

}  // namespace

extern "C" unsigned long os_clock() {
  if (g_clockThrows) throw 1;
  // Unwinds as a cancelled thread does.
  if (g_clockEndsThread.exchange(false)) pthread_exit(nullptr);
  return g_clock;
}

extern "C" void GetLocalTime(SYSTEMTIME* local) {
  if (g_servicesThrow) throw 1;
  *local = {2024, 3, 5, 1, 0, 0, 0, 50};  // just after midnight
}

void SendTrap() {
  ++g_traps;
  if (g_servicesThrow) throw 1;
}

TEST(Locks, OutermostGuardReleases) {
  CriticalSection cs(false, "m_cs", false);
  const LockCriticalSection none(nullptr, true, "none.cpp", 1);
  {
    const LockCriticalSection outer(&cs, true, "outer.cpp", 1);
    g_clock += 5;
    { const LockCriticalSection inner(&cs, true, "inner.cpp", 2); }
    EXPECT_TRUE(cs.IsLockedByThread());
    EXPECT_EQ(cs.TimeLocked(), 5U);
    {
      const LockCriticalSection released(&cs, false, "released.cpp", 3);
      ExpectFree(cs);
    }
    EXPECT_EQ(cs.TimeLocked(), 0U) << "the hold starts again";
    char const* file = nullptr;
    int line = 0;
    EXPECT_TRUE(cs.Unlock("release.cpp", 4, &file, &line, true));
    EXPECT_EQ(file + std::to_string(line), "outer.cpp1");
    EXPECT_TRUE(cs.Lock("again.cpp", 5, true));
  }
  ExpectFree(cs);
}

TEST(Locks, LongHoldsAreReported) {
  const struct {
    unsigned long taken, released;
    bool checkLockTime, ignoreChecks, check;
    std::string report;
  } kRows[] = {
      {1000, 1099, true, false, true, ""},
      {1000, 1100, true, false, true, "0.100 secs (at ~23:59:59.950)"},
      {0xFFFFFFF0, 0xCD8, true, false, true, "3.304 secs (at ~23:59:56.746)"},  // clock wraps
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
    const std::string text =
        tstring::FromFormat(kUnlock, static_cast<void*>(&cs), pthread_self(), pthread_self()) +
        "CriticalSection object was locked for " + row.report + " which is too long.";
    EXPECT_EQ(log.Texts(3, '?'), row.report.empty() ? Texts{} : Texts{text});
  }
}

TEST(Locks, ForeignReleaseChangesNothing) {
  const TraceLog log;
  CriticalSection cs(false, "m_cs", true);
  DebugLock debugLock;
  const LockCriticalSection guard(&cs, true, "taken.cpp", 1);
  const DebugLockHelper helper(debugLock);
  CriticalSection::m_ignoreChecks = true;  // of other checks
  Texts reports;
  std::thread([&, owner = pthread_self()] {
    EXPECT_FALSE(cs.Unlock("silent.cpp", 2, nullptr, nullptr, false));
    EXPECT_FALSE(cs.Unlock("release.cpp", 2, nullptr, nullptr, true));
    EXPECT_FALSE(debugLock.Unlock() || debugLock.TryLock());
    const pthread_t self = pthread_self();
    reports = {tstring::FromFormat(kUnlock, static_cast<void*>(&cs), self, owner) +
                   "thread does not own the Mutex.",
               tstring::FromFormat(kDebugUnlock, static_cast<void*>(&debugLock), self, owner)};
  }).join();
  CriticalSection::m_ignoreChecks = false;
  EXPECT_EQ(log.Texts(2, '?'), Texts{reports[0]});
  EXPECT_EQ(log.Texts(0, '?'), Texts{reports[1]});
  EXPECT_EQ(g_traps, 1);
  EXPECT_TRUE(cs.IsLockedByThread());
}

TEST(Locks, FailingHostServiceIsReportedAndTheLockFreed) {
  CriticalSection cs(false, "m_cs", true);
  SetExceptionHandlerCallback([](char const* file, char const*, int) { g_caught.push_back(file); });
  {
    const LockCriticalSection guard(&cs, true, "taken.cpp", 1);
    g_clock += 100;
    g_servicesThrow = true;
  }
  { const LockCriticalSection notHeld(&cs, false, "free.cpp", 2); }
  g_servicesThrow = false;
  g_clockThrows = true;
  EXPECT_TRUE(cs.Lock("taken.cpp", 1, true));
  EXPECT_EQ(cs.TimeLocked(), 0U);
  EXPECT_TRUE(cs.Unlock("release.cpp", 2, nullptr, nullptr, true));
  g_clockThrows = false;
  SetExceptionHandlerCallback(nullptr);
  ExpectFree(cs);
  // No time for the hold's report; no time for the line about the foreign release, and no alarm; no
  // clock for the hold's start, nor for how long it is.
  EXPECT_EQ(g_caught, (Texts{"CritSect", "debug", "CritSect", "CritSect", "CritSect"}));
}

TEST(Locks, ThreadThatEndsInTheClockGivesTheLockBack) {
  CriticalSection cs(false, "m_cs", false);
  g_clockEndsThread = true;
  std::thread ending([&cs] { const LockCriticalSection guard(&cs, true, "taken.cpp", 1); });
  while (g_clockEndsThread) std::this_thread::yield();
  ExpectFree(cs);  // before a thread can have the same handle, and so be taken for the owner
  ending.join();
}
