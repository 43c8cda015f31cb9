// Opens and looks at files without changing anything about them.

#include "tools/corvo/archive/ReadOnly.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstdio>
#include <system_error>

#include "tools/corvo/UtcTime.h"

namespace corvo {
namespace {

FileTime Time(const statx_timestamp& time) {
  return {time.tv_sec, time.tv_nsec};
}

FileState State(const struct statx& status) {
  return {::makedev(status.stx_dev_major, status.stx_dev_minor),
          status.stx_ino,
          status.stx_mode,
          static_cast<long long>(status.stx_size),
          Time(status.stx_mtime),
          Time(status.stx_ctime)};
}

std::optional<FileState> StateAt(int directory, const char* path, int flags) {
  struct statx status;
  if (::statx(directory, path, flags, STATX_BASIC_STATS, &status) != 0) return std::nullopt;
  return State(status);
}

// A path in pieces that system calls take: all but the last are directories, opened one from
// another.
class Pieces {
 public:
  explicit Pieces(const std::string& path) : m_path(path) {
    while (m_path.size() - m_at >= PATH_MAX && Descend()) continue;
  }

  bool Failed() const { return m_failed; }
  int Directory() const { return m_directory.IsOpen() ? m_directory.Number() : AT_FDCWD; }
  // The directory itself, where only slashes were left.
  const char* Last() const {
    return m_at != 0 && m_at == m_path.size() ? "." : m_path.c_str() + m_at;
  }

 private:
  bool Descend() {
    const std::size_t slash = m_path.rfind('/', m_at + PATH_MAX - 1);
    if (slash == std::string::npos || slash <= m_at) {
      errno = ENAMETOOLONG;
      return !(m_failed = true);
    }
    const std::string piece = m_path.substr(m_at, slash - m_at);
    Descriptor next(::openat(Directory(), piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!next.IsOpen()) return !(m_failed = true);
    m_directory = std::move(next);
    // What is left must not begin with a slash, or it would be taken as absolute.
    m_at = std::min(m_path.find_first_not_of('/', slash), m_path.size());
    return true;
  }

  const std::string& m_path;
  std::size_t m_at = 0;
  Descriptor m_directory;
  bool m_failed = false;
};

std::optional<FileState> StateOf(const std::string& path, int flags) {
  const Pieces pieces(path);
  if (pieces.Failed()) return std::nullopt;
  return StateAt(pieces.Directory(), pieces.Last(), flags);
}

}  // namespace

bool FileState::operator==(const FileState& other) const {
  return device == other.device && inode == other.inode && mode == other.mode &&
         size == other.size && modified == other.modified && statusChanged == other.statusChanged;
}

std::string UtcText(const FileTime& time) {
  char decimals[16];
  std::snprintf(decimals, sizeof decimals, ".%09uZ", time.nanoseconds);
  return UtcCalendar(time.seconds) + decimals;
}

std::optional<FileState> StateOf(const std::string& path) {
  return StateOf(path, 0);
}

std::optional<FileState> StateOf(const Descriptor& file) {
  return StateAt(file.Number(), "", AT_EMPTY_PATH);
}

std::optional<FileState> StateOfLinkItself(const std::string& path) {
  return StateOf(path, AT_SYMLINK_NOFOLLOW);
}

Descriptor OpenReadOnly(const std::string& path, int flags) {
  const Pieces pieces(path);
  if (pieces.Failed()) return {};
  const int all = flags | O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  Descriptor file(::openat(pieces.Directory(), pieces.Last(), all | O_NOATIME));
  if (file.IsOpen() || errno != EPERM) return file;
  return Descriptor(::openat(pieces.Directory(), pieces.Last(), all));
}

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

}  // namespace corvo
