#ifndef TESTS_HOST_CHECKS_H
#define TESTS_HOST_CHECKS_H

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

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

// A new directory, gone with the object.
class Directory {
 public:
  Directory() : m_path((std::filesystem::temp_directory_path() / "corvo-host-XXXXXX").string()) {
    if (::mkdtemp(m_path.data()) == nullptr)
      throw std::system_error(errno, std::generic_category());
  }
  ~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace host_test

#endif
