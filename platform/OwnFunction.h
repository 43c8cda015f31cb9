#ifndef PLATFORM_OWNFUNCTION_H
#define PLATFORM_OWNFUNCTION_H

// Whether a replaceable function, as calls find it, is the library's own and not a host's. `own` is
// a hidden alias of it: a name that a host can't give to its own.
template <class Function>
[[gnu::always_inline]] inline bool IsOwn(Function* found, Function* own) {
  asm("" : "+r"(own));  // to compilers, two names have two addresses
  return found == own;
}

#endif
