#ifndef TESTS_HOST_LIBRARY_H
#define TESTS_HOST_LIBRARY_H

#include "platform/Win32Types.h"

// What the host programs call, however they come by the library: one source links it, one loads it.
struct Library {
  void (*debug)(DWORD id, const char* format, ...);
  void (*debugWide)(DWORD id, const wchar_t* format, ...);
  bool (*deletePath)(const char* path, bool recursive);
  bool (*createSignature)(const char* path, UWORD codec, LONGLONG* start, LONGLONG* end);
  bool (*verifySignature)(const char* path);
  bool (*isSignaturePresent)(const char* path);
  const char* (*settingsDirectory)();
  const char* (*releaseMarker)();
};

// `path` names the library for those that load it. Ends the program when that fails.
Library OpenLibrary(const char* path);

#endif
