// Directory entry buffers: AllocateDirEntry and FreeDirEntry, which a host may replace (both).

#include <dirent.h>
#include <stdlib.h>

#include "platform/Win32Compat.h"

namespace {

// The large-file layout, with the longest name, as 64-bit programs have it: never smaller than what
// the caller's own readdir_r fills in.
constexpr size_t kLargestEntry = 280;
static_assert(sizeof(dirent) <= kLargestEntry, "whatever the caller was compiled with");

}  // namespace

dirent* AllocateDirEntry(const char*) {
  return static_cast<dirent*>(::calloc(1, kLargestEntry));
}

void FreeDirEntry(dirent* entry) {
  ::free(entry);
}
