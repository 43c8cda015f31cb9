#ifndef PLATFORM_RENAME_H
#define PLATFORM_RENAME_H

namespace platform {

// Renames within one file system, in one step; an existing target is refused with EEXIST.
bool RenameWithoutReplacing(const char* from, const char* to);

}  // namespace platform

#endif
