// The locks. m_owner needs no ordering: a thread only asks whether it is the owner itself, and
// what it wrote last it reads back. The acquisition record belongs to the owner.

#include "LarkspurCommon/CritSect.h"

#include "LarkspurCommon/Contain.h"
#include "LarkspurCommon/XTTime.h"
#include "LarkspurCommon/debug.h"
#include "platform/HoldCancellation.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

constexpr char kSource[] = "CritSect";
constexpr char kUnlock[] =
    "bool CriticalSection::Unlock(const char*, int, const char**, int*, bool)";
constexpr DWORD kForeignRelease = 0x0002FFFF;
constexpr DWORD kLongHold = 0x0003FFFF;
constexpr DWORD kLongestHold = 99;  // milliseconds that go without a report
constexpr long long kFileTimePerMillisecond = 10000;
constexpr auto kRelaxed = std::memory_order_relaxed;

void InitRecursiveMutex(pthread_mutex_t* mutex) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

// Runs a call of the host's services: what one throws is reported, and the lock goes on.
template <class Body>
void Guarded(char const* function, int line, Body body) {
  Contain(body, [&] { DebugTraceException(kSource, function, line); });
}

DWORD Now() {
  return static_cast<DWORD>(os_clock());
}

SYSTEMTIME LocalTimeBefore(DWORD milliseconds) {
  SYSTEMTIME now{};
  SYSTEMTIME then{};
  long long fileTime = 0;
  GetLocalTime(&now);
  SystemTimeToFileTime(&now, &fileTime);
  fileTime -= milliseconds * kFileTimePerMillisecond;
  FileTimeToSystemTime(&fileTime, &then);
  return then;
}

}  // namespace

std::atomic<bool> CriticalSection::m_ignoreChecks{false};

CriticalSection::CriticalSection(bool firstFlag, char const* name, bool checkLockTime)
    : m_firstFlag(firstFlag),
      m_checkLockTime(checkLockTime),
      m_name(name != nullptr ? name : ""),
      m_owner(0),
      m_lockTime(0),
      m_lockLine(0),
      m_lockFile(nullptr) {
  InitRecursiveMutex(&m_mutex);
}

CriticalSection::~CriticalSection() {
  pthread_mutex_destroy(&m_mutex);
}

[[gnu::always_inline]] inline void CriticalSection::Release() {
  m_owner.store(0, kRelaxed);
  m_lockTime.store(0, kRelaxed);
  m_lockLine.store(0, kRelaxed);
  m_lockFile.store(nullptr, kRelaxed);
  pthread_mutex_unlock(&m_mutex);
}

bool CriticalSection::Lock(char const* file, int line, bool) {
  const pthread_t self = pthread_self();
  if (m_owner.load(kRelaxed) == self) return false;
  pthread_mutex_lock(&m_mutex);
  m_owner.store(self, kRelaxed);
  m_lockFile.store(file, kRelaxed);
  m_lockLine.store(line, kRelaxed);
  try {
    Guarded("bool CriticalSection::Lock(const char*, int, bool)", __LINE__,
            [this] { m_lockTime.store(Now(), kRelaxed); });
  } catch (...) {  // cancelled: nobody would give the lock back
    Release();
    throw;
  }
  return true;
}

bool CriticalSection::Unlock(char const* file, int line, char const** lockFile, int* lockLine,
                             bool check) {
  if (m_owner.load(kRelaxed) != pthread_self()) {
    if (check) Guarded(kUnlock, __LINE__, [&] { ReportForeignRelease(file, line); });
    return false;
  }
  if (check && m_checkLockTime) {
    const HoldCancellation hold;  // a thread cancelled here would never free the lock
    Guarded(kUnlock, __LINE__, [&] { CheckHoldTime(file, line); });
  }
  if (lockFile != nullptr) *lockFile = m_lockFile.load(kRelaxed);
  if (lockLine != nullptr) *lockLine = m_lockLine.load(kRelaxed);
  Release();
  return true;
}

bool CriticalSection::IsLockedByThread() {
  return m_owner.load(kRelaxed) == pthread_self();
}

unsigned long CriticalSection::TimeLocked() {
  DWORD held = 0;
  Guarded("unsigned long CriticalSection::TimeLocked()", __LINE__,
          [&] { held = Now() - m_lockTime.load(kRelaxed); });
  return held;
}

void CriticalSection::ReportForeignRelease(char const* file, int line) {
  DebugA(kForeignRelease,
         "CriticalSection::Unlock[%s(%d)](%s, %p, TID=%lx, owner=%lx, file=%s, line=%d), "
         "The thread does not own the Mutex.",
         file, line, m_name.c_str(), static_cast<void*>(this), pthread_self(),
         m_owner.load(kRelaxed), m_lockFile.load(kRelaxed), m_lockLine.load(kRelaxed));
  SendTrap();
}

void CriticalSection::CheckHoldTime(char const* file, int line) {
  const DWORD taken = m_lockTime.load(kRelaxed);
  if (taken == 0 || m_ignoreChecks.load(kRelaxed)) return;
  const DWORD held = Now() - taken;
  if (held <= kLongestHold) return;
  const SYSTEMTIME then = LocalTimeBefore(held);
  DebugA(kLongHold,
         "CriticalSection::Unlock[%s(%d)](%s, %p, TID=%lx, owner=%lx, file=%s, line=%d), "
         "The CriticalSection object was locked for %.3f secs (at ~%02hu:%02hu:%02hu.%03hu) "
         "which is too long.",
         file, line, m_name.c_str(), static_cast<void*>(this), pthread_self(),
         m_owner.load(kRelaxed), m_lockFile.load(kRelaxed), m_lockLine.load(kRelaxed),
         held / 1000.0, then.wHour, then.wMinute, then.wSecond, then.wMilliseconds);
}

LockCriticalSection::LockCriticalSection(CriticalSection* cs, bool lock, char const* file, int line)
    : m_lock(lock), m_done(false), m_line(line), m_file(file), m_pcs(cs) {
  if (m_pcs == nullptr) return;
  m_done =
      m_lock ? m_pcs->Lock(file, line, true) : m_pcs->Unlock(file, line, &m_file, &m_line, true);
}

LockCriticalSection::~LockCriticalSection() {
  if (!m_done) return;
  const HoldCancellation hold;
  Guarded("virtual LockCriticalSection::~LockCriticalSection()", __LINE__, [this] {
    if (m_lock) {
      m_pcs->Unlock(m_file, m_line, nullptr, nullptr, true);
    } else {
      m_pcs->Lock(m_file, m_line, true);
    }
  });
}

DebugLock::DebugLock() : m_owner(0) {
  InitRecursiveMutex(&m_mutex);
}

DebugLock::~DebugLock() {
  pthread_mutex_destroy(&m_mutex);
}

bool DebugLock::Lock() {
  const pthread_t self = pthread_self();
  if (m_owner.load(kRelaxed) == self) return false;
  pthread_mutex_lock(&m_mutex);
  m_owner.store(self, kRelaxed);
  return true;
}

bool DebugLock::TryLock() {
  const pthread_t self = pthread_self();
  if (m_owner.load(kRelaxed) == self || pthread_mutex_trylock(&m_mutex) != 0) return false;
  m_owner.store(self, kRelaxed);
  return true;
}

bool DebugLock::Unlock() {
  const pthread_t self = pthread_self();
  const pthread_t owner = m_owner.load(kRelaxed);
  if (owner != self) {
    _DebugA("DebugLock::Unlock(%p, TID=%lx, owner=%lx), The thread does not own the Mutex.",
            static_cast<void*>(this), self, owner);
    return false;
  }
  m_owner.store(0, kRelaxed);
  pthread_mutex_unlock(&m_mutex);
  return true;
}

DebugLockHelper::DebugLockHelper(DebugLock& lock) : m_locked(lock.Lock()), m_pLock(&lock) {
}

DebugLockHelper::~DebugLockHelper() {
  if (m_locked) m_pLock->Unlock();
}
