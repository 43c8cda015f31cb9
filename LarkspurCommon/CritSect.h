#ifndef LARKSPURCOMMON_CRITSECT_H
#define LARKSPURCOMMON_CRITSECT_H

#include <pthread.h>

#include <atomic>

#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

// A lock that knows its owner and where and since when it is held. The owner may take it again:
// that changes nothing, and the first release frees the lock. Reports through the trace a release
// by a thread that doesn't own it (and raises the host's alarm) and, where asked, a hold of 100 ms
// or longer. Any thread may call any member; source file names are kept by pointer, not copied.
class CORVO_API CriticalSection {
 public:
  // `firstFlag` has no effect; `checkLockTime` asks for hold-time reports. A null name is empty.
  CriticalSection(bool firstFlag, char const* name, bool checkLockTime);
  virtual ~CriticalSection();  // not while held
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  // Waits for the lock. False: the caller owned it already and must not release it for this call.
  bool Lock(char const* file, int line, bool check);

  // False: the caller doesn't own the lock, which is untouched. `lockFile` and `lockLine` may be
  // null; otherwise they get where the lock was taken. `check` asks for the reports.
  bool Unlock(char const* file, int line, char const** lockFile, int* lockLine, bool check);

  bool IsLockedByThread();
  unsigned long TimeLocked();  // milliseconds, 32 bits; meaningless while the lock is free

  static std::atomic<bool> m_ignoreChecks;  // true: no lock makes a hold-time report

 private:
  CORVO_LOCAL void Release();
  void ReportForeignRelease(char const* file, int line);
  void CheckHoldTime(char const* file, int line);

  [[maybe_unused]] bool m_firstFlag;
  bool m_checkLockTime;
  tstring m_name;
  std::atomic<pthread_t> m_owner;  // 0: free
  pthread_mutex_t m_mutex;
  std::atomic<DWORD> m_lockTime;  // os_clock() when taken; 0: free
  std::atomic<int> m_lockLine;
  std::atomic<char const*> m_lockFile;
};

// Holds a lock for a scope or, with `lock` false, gives a held one up for a scope and takes it back
// at its end with the file and line of the acquisition that it gave up. A null lock: does nothing.
class CORVO_API LockCriticalSection {
 public:
  LockCriticalSection(CriticalSection* cs, bool lock, char const* file, int line);
  virtual ~LockCriticalSection();
  LockCriticalSection(const LockCriticalSection&) = delete;
  LockCriticalSection& operator=(const LockCriticalSection&) = delete;

 private:
  bool m_lock;
  bool m_done;  // the constructor took or gave up the lock
  int m_line;
  char const* m_file;
  CriticalSection* m_pcs;
};

// The trace module's own lock: re-entered like CriticalSection, without its diagnostics.
class CORVO_API DebugLock {
 public:
  DebugLock();
  virtual ~DebugLock();
  DebugLock(const DebugLock&) = delete;
  DebugLock& operator=(const DebugLock&) = delete;

  bool Lock();     // false: the caller owned it already
  bool TryLock();  // false: a thread owns it, be it the caller
  bool Unlock();   // false, with an unconditional trace line: the caller doesn't own it

 private:
  std::atomic<pthread_t> m_owner;  // 0: free
  pthread_mutex_t m_mutex;
};

class CORVO_API DebugLockHelper {
 public:
  explicit DebugLockHelper(DebugLock& lock);
  virtual ~DebugLockHelper();
  DebugLockHelper(const DebugLockHelper&) = delete;
  DebugLockHelper& operator=(const DebugLockHelper&) = delete;

 private:
  bool m_locked;  // this guard took the lock
  DebugLock* m_pLock;
};

CORVO_SIZE(72, 112, CriticalSection);
CORVO_SIZE(20, 32, LockCriticalSection);
CORVO_SIZE(32, 56, DebugLock);
CORVO_SIZE(12, 24, DebugLockHelper);

#endif
