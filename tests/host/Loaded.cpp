// The library as a running program loads it, keeping its symbols to itself.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "Library.h"

namespace {

template <class Function>
void Find(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(::dlsym(library, name));
  if (function != nullptr) return;
  std::fprintf(stderr, "%s\n", ::dlerror());
  std::exit(2);
}

}  // namespace

Library OpenLibrary(const char* path) {
  void* const handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    std::exit(2);
  }
  Library library{};
  Find(handle, "_Z6DebugAjPKcz", library.debug);
  Find(handle, "_Z6DebugWjPKwz", library.debugWide);
  Find(handle, "_ZN12TFileHandler6DeleteEPKcb", library.deletePath);
  Find(handle, "CreateSignature", library.createSignature);
  Find(handle, "VerifySignature", library.verifySignature);
  Find(handle, "IsSignaturePresent", library.isSignaturePresent);
  Find(handle, "CorvoSettingsDirectory", library.settingsDirectory);
  Find(handle, "CorvoReleaseMarker", library.releaseMarker);
  return library;
}
