// MoveFile, which a host may replace, and the rename under it.

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include "platform/PathLookup.h"
#include "platform/Rename.h"
#include "platform/Win32Compat.h"

namespace {

// A failed unlink must not leave the file under two names.
bool LinkAndUnlink(const char* from, const char* to) {
  if (::link(from, to) != 0) return false;
  if (::unlink(from) == 0) return true;
  const int reason = errno;
  ::unlink(to);
  errno = reason;
  return false;
}

}  // namespace

bool platform::RenameWithoutReplacing(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  const bool unsupported = errno == ENOSYS || errno == EINVAL;  // by the kernel, the file system
  return unsupported && LinkAndUnlink(from, to);
}

int MoveFile(const char* from, const char* to) {
  char source[MAX_PATH];
  char target[MAX_PATH];
  return platform::LookUpPath(source, from) && platform::LookUpTarget(target, to) &&
         platform::RenameWithoutReplacing(source, target);
}
