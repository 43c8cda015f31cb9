#ifndef PLATFORM_HOLDCANCELLATION_H
#define PLATFORM_HOLDCANCELLATION_H

#include <pthread.h>

// Keeps the calling thread from being cancelled while it lives. For destructors, which a
// cancellation must not unwind through, and for steps that must not stop half way.
class HoldCancellation {
 public:
  HoldCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_previous); }
  ~HoldCancellation() { pthread_setcancelstate(m_previous, nullptr); }
  HoldCancellation(const HoldCancellation&) = delete;
  HoldCancellation& operator=(const HoldCancellation&) = delete;

 private:
  int m_previous;
};

#endif
