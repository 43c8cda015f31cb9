#ifndef PLATFORM_INTERFACECHECK_H
#define PLATFORM_INTERFACECHECK_H

/* Keeps a host from being compiled with a flag or macro (packed structures, other alignment,
   another std::string, narrow wide characters) that gives it other types than the library has.
   It would build, link, and then read and write beside the members it means. Usable from C. */

#include <stddef.h>

#ifdef __cplusplus
#define CORVO_STATIC_ASSERT static_assert
#else
#define CORVO_STATIC_ASSERT __extension__ _Static_assert /* in C99 too */
#endif

#if __SIZEOF_POINTER__ == 4
#define CORVO_BY_TARGET(onI386, onX86_64) (onI386)
#else
#define CORVO_BY_TARGET(onI386, onX86_64) (onX86_64)
#endif

#define CORVO_SAME(equal, what) \
  CORVO_STATIC_ASSERT(equal, what " differs from the library's: by a compiler flag or macro?")

/* The type, named last since it may contain commas, has this many bytes on each target. */
#define CORVO_SIZE(onI386, onX86_64, ...) \
  CORVO_SAME(sizeof(__VA_ARGS__) == CORVO_BY_TARGET(onI386, onX86_64), "Size of " #__VA_ARGS__)

/* The member is this many bytes from the start of the type. For members that hosts reach directly
   and that could move while the size stays. */
#define CORVO_OFFSET(onI386, onX86_64, type, member) \
  CORVO_SAME(offsetof(type, member) == CORVO_BY_TARGET(onI386, onX86_64), "Offset of " #member)

#endif
