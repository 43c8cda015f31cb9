#ifndef BENCH_BAREPEERS_H
#define BENCH_BAREPEERS_H

#include <pthread.h>

#include <atomic>
#include <cstdarg>

// The least that does what the library does, in a library of its own and compiled as that is: a
// host reaches both in the same way. The disabled trace call makes every call that a host may
// replace, though the library leaves one out that the host hasn't.

// A disabled trace call: the chain of calls that a host may replace, a look at the coarse clock,
// and the filter.
extern "C" {
void BareTrace(unsigned id, const char* format, ...);
void BareTraceV(unsigned id, const char* format, va_list args);
void BareWrite(unsigned id, const char* format, va_list args);
bool BareIsEnabled(unsigned id);
void BareEmit(unsigned id, const char* format, va_list args);
}

// A recursive mutex whose owner is tested before it is asked, and which knows since when it is
// held.
class StampedMutex {
 public:
  StampedMutex();
  ~StampedMutex();
  StampedMutex(const StampedMutex&) = delete;
  StampedMutex& operator=(const StampedMutex&) = delete;

  bool Lock();
  bool Unlock();

  // As our lock is called, with the place of the acquisition kept.
  bool LockAt(const char* file, int line, bool check);
  bool UnlockAt(const char* file, int line, const char** lockFile, int* lockLine, bool check);

 private:
  pthread_mutex_t m_mutex;
  std::atomic<pthread_t> m_owner{0};
  std::atomic<unsigned> m_since{0};
  std::atomic<int> m_line{0};
  std::atomic<const char*> m_file{nullptr};
};

#endif
