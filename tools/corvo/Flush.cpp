// Has files and their names on disk.

#include "tools/corvo/Flush.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tools/corvo/archive/Descriptor.h"

namespace corvo {
namespace {

int Flush(const std::string& path, int flags) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags));
  if (!file.IsOpen()) return errno;
  return ::fsync(file.Number()) == 0 || errno == EINVAL ? 0 : errno;
}

}  // namespace

int FlushFile(const std::string& path) {
  return Flush(path, 0);
}

int FlushDirectoryOf(const std::string& path) {
  return Flush(path.substr(0, path.rfind('/') + 1) + ".", O_DIRECTORY);
}

}  // namespace corvo
