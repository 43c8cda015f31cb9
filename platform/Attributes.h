#ifndef PLATFORM_ATTRIBUTES_H
#define PLATFORM_ATTRIBUTES_H

#include <sys/types.h>

namespace platform {

struct Attributes {
  uid_t owner;
  gid_t group;
  mode_t permissions;  // further bits are ignored
};

// Gives an open file the permission bits, as far as its file system has them, and the owner and
// group, as far as this process may and the file system can. False, with errno set, when something
// else keeps it from that, such as a file of another user's whose bits aren't ours to change.
bool GiveAttributes(int descriptor, const Attributes& attributes);

}  // namespace platform

#endif
