// CopyFile, which a host may replace.

// With 32-bit times, stat would fail for a file touched after 2038.
#define _TIME_BITS 64

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "platform/Attributes.h"
#include "platform/HoldCancellation.h"
#include "platform/PathLookup.h"
#include "platform/Rename.h"
#include "platform/Uninterrupted.h"
#include "platform/Win32Compat.h"

namespace {

constexpr size_t kBlockSize = 16384;  // on the stack, which host threads may keep small

// Owns a descriptor. Its destructor leaves errno to the failure that led to it.
class Descriptor {
 public:
  explicit Descriptor(int fd) : m_fd(fd) {}
  ~Descriptor() {
    const int reason = errno;
    const HoldCancellation hold;
    Close();
    errno = reason;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return m_fd; }
  bool IsOpen() const { return m_fd != -1; }

  // Whether everything written has been accepted. Interrupted, it is closed all the same.
  bool Close() {
    const int fd = m_fd;
    m_fd = -1;
    return fd == -1 || ::close(fd) == 0 || errno == EINTR;
  }

 private:
  int m_fd;
};

// A new file beside the target, which becomes the target or is removed.
class Sibling {
 public:
  explicit Sibling(const std::string& target)
      : m_path(target.substr(0, target.rfind('/') + 1) + ".copy-XXXXXX"),
        m_file(::mkostemp(m_path.data(), O_CLOEXEC)),
        m_exists(m_file.IsOpen()) {}
  ~Sibling() {
    const int reason = errno;
    if (m_exists) ::unlink(m_path.c_str());
    errno = reason;
  }
  Sibling(const Sibling&) = delete;
  Sibling& operator=(const Sibling&) = delete;

  Descriptor& File() { return m_file; }

  bool Become(const char* target, bool mayReplace) {
    const bool renamed = mayReplace ? ::rename(m_path.c_str(), target) == 0
                                    : platform::RenameWithoutReplacing(m_path.c_str(), target);
    m_exists = !renamed;
    return renamed;
  }

 private:
  std::string m_path;
  Descriptor m_file;
  bool m_exists;
};

bool WriteAll(int fd, const char* bytes, size_t count) {
  while (count > 0) {
    const ssize_t written = Uninterrupted([=] { return ::write(fd, bytes, count); });
    if (written < 0) return false;
    bytes += written;
    count -= static_cast<size_t>(written);
  }
  return true;
}

bool CopyBytes(int from, int to) {
  char block[kBlockSize];
  for (;;) {
    const ssize_t got = Uninterrupted([&] { return ::read(from, block, sizeof block); });
    if (got <= 0) return got == 0;
    if (!WriteAll(to, block, static_cast<size_t>(got))) return false;
  }
}

bool CopyBySibling(int from, Sibling& sibling, const char* target, const struct stat& like,
                   bool mayReplace) {
  Descriptor& file = sibling.File();
  return CopyBytes(from, file.Get()) &&
         platform::GiveAttributes(file.Get(), {like.st_uid, like.st_gid, like.st_mode}) &&
         file.Close() && sibling.Become(target, mayReplace);
}

bool OverwriteInPlace(int from, const char* target) {
  Descriptor file(Uninterrupted([=] { return ::open(target, O_WRONLY | O_TRUNC | O_CLOEXEC); }));
  return file.IsOpen() && CopyBytes(from, file.Get()) && file.Close();
}

// Where a chain of symbolic links ends: replacing a target must leave links to it in place.
std::string WithoutLinks(const char* path) {
  struct Free {
    void operator()(char* text) const { ::free(text); }
  };
  const std::unique_ptr<char, Free> real(::realpath(path, nullptr));
  return real == nullptr ? path : real.get();
}

bool ReplaceTarget(int from, const char* target, const struct stat& existing) {
  // A rename wouldn't ask.
  if (::faccessat(AT_FDCWD, target, W_OK, AT_EACCESS) != 0) return false;
  const std::string real = WithoutLinks(target);
  Sibling sibling(real);
  if (sibling.File().IsOpen()) return CopyBySibling(from, sibling, real.c_str(), existing, true);
  const bool closedDirectory = errno == EACCES || errno == EPERM || errno == EROFS;
  return closedDirectory && OverwriteInPlace(from, real.c_str());
}

bool CreateTarget(int from, const char* target, const struct stat& source, bool mayReplace) {
  Sibling sibling(target);
  return sibling.File().IsOpen() && CopyBySibling(from, sibling, target, source, mayReplace);
}

bool Refuse(int reason) {
  errno = reason;
  return false;
}

bool RequireRegular(const struct stat& status) {
  return S_ISREG(status.st_mode) || Refuse(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
}

bool MayReplace(const struct stat& target, const struct stat& source, bool failIfExists) {
  if (failIfExists) return Refuse(EEXIST);
  const bool same = target.st_dev == source.st_dev && target.st_ino == source.st_ino;
  return same ? Refuse(EINVAL) : RequireRegular(target);
}

bool Copy(int from, const char* target, bool failIfExists) {
  struct stat source;
  struct stat existing;
  if (::fstat(from, &source) != 0 || !RequireRegular(source)) return false;
  if (::stat(target, &existing) == 0) {
    return MayReplace(existing, source, failIfExists) && ReplaceTarget(from, target, existing);
  }
  return errno == ENOENT && CreateTarget(from, target, source, !failIfExists);
}

}  // namespace

int CopyFile(const char* from, const char* to, int failIfExists) {
  char source[MAX_PATH];
  char target[MAX_PATH];
  if (!platform::LookUpPath(source, from) || !platform::LookUpTarget(target, to)) return 0;
  // Opening a pipe would wait for its writer.
  const Descriptor file(
      Uninterrupted([&] { return ::open(source, O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
  return file.IsOpen() && Copy(file.Get(), target, failIfExists != 0);
}
