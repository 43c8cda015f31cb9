#ifndef TOOLS_CORVO_ARCHIVE_DESCRIPTOR_H
#define TOOLS_CORVO_ARCHIVE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace corvo {

// Owns a file descriptor, or none (-1).
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  Descriptor(Descriptor&& other) noexcept : m_number(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  ~Descriptor() {
    if (IsOpen()) ::close(m_number);
  }

  bool IsOpen() const { return m_number != -1; }
  int Number() const { return m_number; }
  int Release() { return std::exchange(m_number, -1); }

 private:
  int m_number = -1;
};

}  // namespace corvo

#endif
