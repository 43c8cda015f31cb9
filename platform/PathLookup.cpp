// The case-insensitive path lookup: FindFileIgnoreCase and DosToUnixFileName, which a host may
// replace, and what they share with the calls that copy, move and create.

#include "platform/PathLookup.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include <memory>

#include "platform/OwnFunction.h"
#include "platform/Win32Compat.h"

namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

// Not by stat, which can fail over a size or a time that is too large for it; and as the effective
// user, who is the one to open it.
bool Exists(const char* path) {
  return ::faccessat(AT_FDCWD, path, F_OK, AT_EACCESS) == 0;
}

// The directory that `name`, a component of `path`, is in.
Directory OpenParent(const char* path, char* name) {
  if (name == path) return Directory(::opendir("."));
  const char first = *name;
  *name = '\0';
  Directory parent(::opendir(path));
  *name = first;
  return parent;
}

// Overwrites `name`, the last component of `path`, with the spelling of an entry that equals it
// ignoring case, which is as long. The choice doesn't depend on the directory's order.
bool SpellFromDirectory(const char* path, char* name) {
  const Directory parent = OpenParent(path, name);
  if (parent == nullptr) return false;
  const size_t length = ::strlen(name);
  char best[sizeof(dirent::d_name)];
  bool found = false;
  while (const dirent* entry = ::readdir(parent.get())) {
    if (::strcasecmp(entry->d_name, name) != 0) continue;
    if (::memcmp(entry->d_name, name, length) == 0) return true;
    if (!found || ::memcmp(entry->d_name, best, length) < 0) ::memcpy(best, entry->d_name, length);
    found = true;
  }
  if (found) ::memcpy(name, best, length);
  errno = ENOENT;
  return found;
}

// The last component of a Unix path, without regard to separators after it.
char* LastComponent(char* path) {
  char* end = path + ::strlen(path);
  while (end != path && end[-1] == '/') --end;
  while (end != path && end[-1] != '/') --end;
  return end;
}

}  // namespace

bool platform::ToUnixPath(char* out, const char* path) {
  const size_t length = path == nullptr ? 0 : ::strnlen(path, MAX_PATH);
  if (length == 0 || length == MAX_PATH) {
    out[0] = '\0';
    errno = length == 0 ? ENOENT : ENAMETOOLONG;
    return false;
  }
  for (size_t i = 0; i <= length; ++i) out[i] = path[i] == '\\' ? '/' : path[i];
  return true;
}

bool platform::SpellAsOnDisk(char* path) {
  if (Exists(path)) return true;
  for (char* name = path + ::strspn(path, "/"); *name != '\0'; name += ::strspn(name, "/")) {
    char* const end = name + ::strcspn(name, "/");
    const char separator = *end;
    *end = '\0';
    const bool found = Exists(path) || SpellFromDirectory(path, name);
    *end = separator;
    if (!found) return false;
    name = end;
  }
  return Exists(path);
}

bool platform::LookUpPath(char* out, const char* path) {
  if (!ToUnixPath(out, path)) return false;
  SpellAsOnDisk(out);
  return true;
}

bool platform::LookUpTarget(char* out, const char* path) {
  if (!ToUnixPath(out, path)) return false;
  char* const name = LastComponent(out);
  const char first = *name;
  *name = '\0';
  SpellAsOnDisk(out);
  *name = first;
  return true;
}

bool FindFileIgnoreCase(char* found, const char* path, bool) {
  return platform::ToUnixPath(found, path) && platform::SpellAsOnDisk(found);
}

// For IsOwn.
extern "C" bool OwnFindFileIgnoreCase(char* found, const char* path, bool)
    __attribute__((alias("FindFileIgnoreCase"), visibility("hidden")));

bool platform::FindsFilesItself() {
  return IsOwn(&FindFileIgnoreCase, &OwnFindFileIgnoreCase);
}

char* DosToUnixFileName(char* out, const char* path) {
  platform::ToUnixPath(out, path);
  return out;
}
