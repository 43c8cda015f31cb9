#define _TIME_BITS 64

#include "bench/BarePeers.h"

#include <sys/time.h>
#include <time.h>

#include <array>

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr unsigned kInterval = 3000;  // milliseconds

std::atomic<unsigned> s_level{5};
std::array<std::atomic<unsigned char>, 16> s_ids{{{0xFF}, {0xFF}, {0xFF}, {0xFF}, {0xFF}}};
std::atomic<unsigned> s_lastLook{0};
std::atomic<unsigned> s_looks{0};
std::atomic<unsigned> s_lines{0};

unsigned CoarseMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return static_cast<unsigned>(now.tv_sec) * 1000U + static_cast<unsigned>(now.tv_nsec) / 1000000U;
}

}  // namespace

bool BareIsEnabled(unsigned id) {
  const unsigned now = CoarseMilliseconds();
  if (now - s_lastLook.load(kRelaxed) > kInterval) {
    s_lastLook.store(now, kRelaxed);
    s_looks.fetch_add(1, kRelaxed);
  }
  if ((id & 0xFFFF) > s_level.load(kRelaxed)) return false;
  const unsigned number = id >> 16 & 127;
  return (s_ids[number / 8].load(kRelaxed) >> (number % 8) & 1) != 0;
}

void BareEmit(unsigned, const char*, va_list) {
  s_lines.fetch_add(1, kRelaxed);
}

void BareWrite(unsigned id, const char* format, va_list args) {
  if (BareIsEnabled(id)) BareEmit(id, format, args);
}

void BareTraceV(unsigned id, const char* format, va_list args) {
  BareWrite(id, format, args);
}

void BareTrace(unsigned id, const char* format, ...) {
  va_list args;
  va_start(args, format);
  BareTraceV(id, format, args);
  va_end(args);
}

unsigned long BareClock() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<unsigned>(now.tv_sec) * 1000U + static_cast<unsigned>(now.tv_usec) / 1000U;
}

StampedMutex::StampedMutex() {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&m_mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

StampedMutex::~StampedMutex() {
  pthread_mutex_destroy(&m_mutex);
}

bool StampedMutex::Lock() {
  const pthread_t self = pthread_self();
  if (m_owner.load(kRelaxed) == self) return false;
  pthread_mutex_lock(&m_mutex);
  m_owner.store(self, kRelaxed);
  m_since.store(static_cast<unsigned>(BareClock()), kRelaxed);
  return true;
}

bool StampedMutex::Unlock() {
  if (m_owner.load(kRelaxed) != pthread_self()) return false;
  m_owner.store(0, kRelaxed);
  m_since.store(0, kRelaxed);
  pthread_mutex_unlock(&m_mutex);
  return true;
}

bool StampedMutex::LockAt(const char* file, int line, bool) {
  const pthread_t self = pthread_self();
  if (m_owner.load(kRelaxed) == self) return false;
  pthread_mutex_lock(&m_mutex);
  m_owner.store(self, kRelaxed);
  m_file.store(file, kRelaxed);
  m_line.store(line, kRelaxed);
  m_since.store(static_cast<unsigned>(BareClock()), kRelaxed);
  return true;
}

bool StampedMutex::UnlockAt(const char*, int, const char** lockFile, int* lockLine, bool) {
  if (m_owner.load(kRelaxed) != pthread_self()) return false;
  if (lockFile != nullptr) *lockFile = m_file.load(kRelaxed);
  if (lockLine != nullptr) *lockLine = m_line.load(kRelaxed);
  m_owner.store(0, kRelaxed);
  m_since.store(0, kRelaxed);
  m_line.store(0, kRelaxed);
  m_file.store(nullptr, kRelaxed);
  pthread_mutex_unlock(&m_mutex);
  return true;
}
