#ifndef PLATFORM_UNINTERRUPTED_H
#define PLATFORM_UNINTERRUPTED_H

#include <errno.h>

// Makes a system call that gives -1 when it fails, again for as long as signals interrupt it. Not
// for close: an interrupted one has closed.
template <class Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

#endif
