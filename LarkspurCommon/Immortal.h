#ifndef LARKSPURCOMMON_IMMORTAL_H
#define LARKSPURCOMMON_IMMORTAL_H

#include <new>
#include <utility>

// A global that is constructed by its static initialiser and never destroyed: the host's own
// destructors may still trace, lock and log after the library's would have run.
template <class T>
class Immortal {
 public:
  template <class... Args>
  explicit Immortal(Args&&... args) {
    new (m_storage) T(std::forward<Args>(args)...);
  }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;

  T& operator*() { return *std::launder(reinterpret_cast<T*>(m_storage)); }
  T* operator->() { return &**this; }

 private:
  alignas(T) unsigned char m_storage[sizeof(T)];
};

#endif
