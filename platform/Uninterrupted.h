#ifndef PLATFORM_UNINTERRUPTED_H
#define PLATFORM_UNINTERRUPTED_H

#include <errno.h>

// Makes a system call that gives -1 when it fails, again for as long as signals interrupt it. Not
// for close: an interrupted one has closed. Inline: processors guess returns behind a system call
// wrong.
template <class Call>
[[gnu::always_inline]] inline auto Uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

#endif
