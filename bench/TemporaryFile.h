#ifndef BENCH_TEMPORARYFILE_H
#define BENCH_TEMPORARYFILE_H

#include <unistd.h>

#include <cstdlib>
#include <string>

// A file with a text, removed at the end.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text) {
    const int file = ::mkstemp(m_path.data());
    if (file == -1 || ::write(file, text.data(), text.size()) != static_cast<long>(text.size())) {
      std::abort();
    }
    ::close(file);
  }
  ~TemporaryFile() { ::unlink(m_path.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const char* Path() const { return m_path.c_str(); }

 private:
  std::string m_path = "/tmp/corvo-bench-XXXXXX";
};

#endif
