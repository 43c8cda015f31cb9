// CreateDirectory, which a host may replace.

// With 32-bit times, stat would fail for a directory touched after 2038.
#define _TIME_BITS 64

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include "platform/PathLookup.h"
#include "platform/Win32Compat.h"

namespace {

bool IsDirectory(const char* path) {
  struct stat status;
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool MakeWithParents(char* path);

// Makes what stands before the last separator of a path without trailing ones.
bool MakeParent(char* path) {
  char* const separator = ::strrchr(path, '/');
  if (separator == nullptr || separator == path) return false;
  *separator = '\0';
  const bool made = MakeWithParents(path);
  *separator = '/';
  return made;
}

bool MakeWithParents(char* path) {
  if (::mkdir(path, 0777) == 0) return true;
  if (errno == ENOENT && MakeParent(path) && ::mkdir(path, 0777) == 0) return true;
  if (errno != EEXIST) return false;
  if (IsDirectory(path)) return true;
  errno = EEXIST;
  return false;
}

void DropTrailingSeparators(char* path) {
  for (size_t length = ::strlen(path); length > 1 && path[length - 1] == '/'; --length) {
    path[length - 1] = '\0';
  }
}

}  // namespace

int CreateDirectory(const char* path, void*) {
  char directory[MAX_PATH];
  if (!platform::LookUpPath(directory, path)) return 0;
  DropTrailingSeparators(directory);
  return MakeWithParents(directory);
}
