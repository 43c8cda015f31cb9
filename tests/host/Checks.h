#ifndef TESTS_HOST_CHECKS_H
#define TESTS_HOST_CHECKS_H

#include <cstdio>

namespace host_test {

// Counts and names what fails. No test framework: its own symbols would stand beside the host's.
class Checks {
 public:
  void Expect(const char* what, bool holds) {
    if (holds) return;
    ++m_failures;
    std::fprintf(stderr, "FAILED: %s\n", what);
  }
  int Failures() const { return m_failures; }

 private:
  int m_failures = 0;
};

}  // namespace host_test

#endif
