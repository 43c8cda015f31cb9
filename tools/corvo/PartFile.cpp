// Files that appear complete or not at all.

#include "tools/corvo/PartFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>

#include "platform/Win32Compat.h"
#include "tools/corvo/Flush.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Descriptor.h"

namespace corvo {

namespace {

constexpr int kMostNames = 100;  // that are tried, since some may be taken

}  // namespace

PartFile::PartFile(const std::string& target) : m_target(target) {
  MakeEmpty();
}

// Made here rather than by TFileHandler, which would set the process's umask first.
void PartFile::MakeEmpty() {
  std::random_device random;
  for (int left = kMostNames; left > 0; --left) {
    const std::string path = m_target + "." + std::to_string(random()) + ".part";
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.IsOpen()) {
      m_path = path;
      return;
    }
    if (errno != EEXIST) break;
  }
  throw InputError(m_target, std::strerror(errno));
}

PartFile::~PartFile() {
  if (!m_path.empty()) ::unlink(m_path.c_str());
}

// MoveFile never replaces a file, not even one that has just appeared.
void PartFile::Publish(bool replace) {
  if (const int error = FlushFile(m_path); error != 0) {
    throw InputError(m_target, std::strerror(error));
  }
  const bool done = replace ? std::rename(m_path.c_str(), m_target.c_str()) == 0
                            : MoveFile(m_path.c_str(), m_target.c_str()) != 0;
  if (!done) throw InputError(m_target, std::strerror(errno));
  m_path.clear();
  if (const int error = FlushDirectoryOf(m_target); error != 0) {
    throw InputError(m_target, std::strerror(error));
  }
}

}  // namespace corvo
