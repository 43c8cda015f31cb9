#ifndef TOOLS_CORVO_RECOVERY_RECOVER_H
#define TOOLS_CORVO_RECOVERY_RECOVER_H

#include <string>

namespace corvo {

// What may be done with a leftover. Each throws InputError where it isn't done, and then the
// leftover is still there. One that a server may still be at work on is left alone.

// Gives a complete one the name of a recording that doesn't exist, or a copy of it where that is on
// another file system, checked before the leftover goes. On disk when this returns.
void RestoreLeftover(const std::string& path, const std::string& recording);

// Removes an incomplete one.
void RemoveLeftover(const std::string& path);

// Removes one that is, byte for byte, an existing recording, which is on disk before it goes.
void RemoveDuplicate(const std::string& path, const std::string& recording);

}  // namespace corvo

#endif
