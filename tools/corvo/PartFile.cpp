// Files that appear complete or not at all.

#include "tools/corvo/PartFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/Win32Compat.h"
#include "tools/corvo/InputError.h"

namespace corvo {

// Made here rather than by TFileHandler, which would set the process's umask first.
PartFile::PartFile(const std::string& target)
    : m_target(target), m_path(target + "." + std::to_string(::getpid()) + ".part") {
  const int descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor == -1) throw InputError(m_path, std::strerror(errno));
  ::close(descriptor);
}

PartFile::~PartFile() {
  if (!m_path.empty()) ::unlink(m_path.c_str());
}

// MoveFile never replaces a file, not even one that has just appeared.
void PartFile::Publish(bool replace) {
  const bool done = replace ? std::rename(m_path.c_str(), m_target.c_str()) == 0
                            : MoveFile(m_path.c_str(), m_target.c_str()) != 0;
  if (!done) throw InputError(m_target, std::strerror(errno));
  m_path.clear();
}

}  // namespace corvo
