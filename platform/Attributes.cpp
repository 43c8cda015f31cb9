// Making a file another's equal in owner and permissions.

// With 32-bit times, stat would fail for a file touched after 2038.
#define _TIME_BITS 64

#include "platform/Attributes.h"

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr uid_t kSameOwner = static_cast<uid_t>(-1);

// By the process's rights, or by a file system or user name space that doesn't know the owner.
bool IsOutOfReach(int error) {
  return error == EPERM || error == EINVAL || error == ENOSYS || error == ENOTSUP;
}

bool GiveOwner(int descriptor, uid_t owner, gid_t group) {
  if (::fchown(descriptor, owner, group) == 0) return true;
  if (!IsOutOfReach(errno)) return false;
  return ::fchown(descriptor, kSameOwner, group) == 0 || IsOutOfReach(errno);
}

// A file system without permission bits refuses those it can't express, to the file's owner too.
bool GivePermissions(int descriptor, mode_t permissions) {
  if (::fchmod(descriptor, permissions) == 0) return true;
  if (!IsOutOfReach(errno)) return false;
  const int reason = errno;
  struct stat status;
  if (::fstat(descriptor, &status) != 0) return false;
  errno = reason;
  return status.st_uid == ::geteuid() || (status.st_mode & kPermissionBits) == permissions;
}

}  // namespace

// The permissions first: a file given away may not be ours to change.
bool platform::GiveAttributes(int descriptor, const Attributes& attributes) {
  return GivePermissions(descriptor, attributes.permissions & kPermissionBits) &&
         GiveOwner(descriptor, attributes.owner, attributes.group);
}
