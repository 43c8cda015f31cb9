/* The smallest host in C: loads the library when it runs, seals a recording, asks what it is and
   verifies it.

     host_c LIBRARY RECORDING SETTINGS_DIRECTORY

   The library keeps its directories (temporary files, logs) beside this program. Linked with
   -rdynamic, so that the library finds this program's versions of the host services.

   Exit code: 0 sealed and verified, 1 not, 2 the library can't be used. */

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>

#include "engine/RecordingSeal.h"
#include "platform/HostServices.h"

enum { kExitVerified = 0, kExitNotVerified = 1, kExitUnusable = 2, kPropertyTextSize = 2048 };

static const char* settings_directory;

/* Host services: called by the library in place of its own --------------------------------------
 */

/* By default /etc. */
const char* CorvoSettingsDirectory(void) {
  return settings_directory;
}

/* Receives the trace. The library knows it as a C++ function, under this linker name. */
void ConsolePrint(unsigned long mask, const char* format, ...) __asm__("_Z12ConsolePrintmPKcz");
void ConsolePrint(unsigned long mask, const char* format, ...) {
  va_list arguments;
  (void)mask;
  va_start(arguments, format);
  vfprintf(stderr, format, arguments);
  va_end(arguments);
}

/* The four functions ----------------------------------------------------------------------------
 */

static struct {
  bool (*create_signature)(const char*, unsigned short, long long*, long long*);
  bool (*verify_signature)(const char*);
  bool (*is_signature_present)(const char*);
  bool (*get_recording_property)(const char*, char*);
} library;

/* ISO C has no conversion from what dlsym returns to a function pointer, but POSIX promises that
   both are alike. */
static bool find(void* handle, const char* name, void* function) {
  *(void**)function = dlsym(handle, name);
  if (*(void**)function == NULL) fprintf(stderr, "%s\n", dlerror());
  return *(void**)function != NULL;
}

static bool load(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (handle == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return false;
  }
  return find(handle, "CreateSignature", &library.create_signature) &&
         find(handle, "VerifySignature", &library.verify_signature) &&
         find(handle, "IsSignaturePresent", &library.is_signature_present) &&
         find(handle, "GetRecordingProperty", &library.get_recording_property);
}

int main(int argc, char** argv) {
  const unsigned short g726 = 0;          /* 16 would be GSM */
  long long start = 133604118000000000LL; /* 2024-05-17T09:30:00Z, in 100 ns since 1601 */
  long long end = start + 659000000LL;    /* 65.9 seconds later */
  char properties[kPropertyTextSize];

  if (argc != 4) {
    fprintf(stderr, "usage: host_c LIBRARY RECORDING SETTINGS_DIRECTORY\n");
    return kExitUnusable;
  }
  settings_directory = argv[3];
  if (!load(argv[1])) return kExitUnusable;

  const char* recording = argv[2];
  if (!library.create_signature(recording, g726, &start, &end)) return kExitNotVerified;
  printf("sealed: %s\n", library.is_signature_present(recording) ? "yes" : "no");
  library.get_recording_property(recording, properties);
  printf("properties: %s\n", properties);

  const bool verified = library.verify_signature(recording);
  printf("verified: %s\n", verified ? "yes" : "no");
  return verified ? kExitVerified : kExitNotVerified;
}
