/* A host process in C that supplies its own versions of what has a plain name, and sees that the
   library calls them.

     RECORDING LIBRARY DIRECTORY     an unsealed recording; the library to load; where it works */

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "engine/RecordingSeal.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

static const char* directory;

static struct {
  int settings_directory, release_marker, local_time, module_file_name, sleep, move_file;
} calls;

const char* CorvoSettingsDirectory(void) {
  ++calls.settings_directory;
  return directory;
}

const char* CorvoReleaseMarker(void) {
  ++calls.release_marker;
  return "";
}

void GetLocalTime(SYSTEMTIME* local) {
  ++calls.local_time;
  memset(local, 0, sizeof *local);
}

DWORD GetModuleFileName(void* module, char* buffer, DWORD size) {
  (void)module;
  ++calls.module_file_name;
  return (DWORD)snprintf(buffer, size, "%s/server", directory);
}

/* Each look at this clock takes 10 ms, so that the library pauses after each step. */
unsigned long os_clock(void);
unsigned long os_clock(void) {
  static DWORD now;
  return now += 10;
}

void Sleep(DWORD milliseconds) {
  if (milliseconds == 50) ++calls.sleep;
}

int MoveFile(const char* from, const char* to) {
  ++calls.move_file;
  return rename(from, to) == 0;
}

/* The largest sample has 15 kB. */
static bool copy(const char* from, const char* to) {
  char bytes[32768];
  FILE* in = fopen(from, "rb");
  FILE* out = fopen(to, "wb");
  const size_t size = in == NULL ? 0 : fread(bytes, 1, sizeof bytes, in);
  const bool copied = out != NULL && size != 0 && fwrite(bytes, 1, size, out) == size;
  if (in != NULL) fclose(in);
  return out != NULL && fclose(out) == 0 && copied;
}

static bool seal(void* library, const char* recording) {
  bool (*create_signature)(const char*, unsigned short, long long*, long long*);
  long long start = 0;
  long long end = 0;
  *(void**)&create_signature = dlsym(library, "CreateSignature");
  return create_signature != NULL && create_signature(recording, 0, &start, &end);
}

static int failures;

static void expect(const char* what, bool holds) {
  if (holds) return;
  ++failures;
  fprintf(stderr, "FAILED: %s\n", what);
}

int main(int argc, char** argv) {
  char recording[MAX_PATH];
  char settings[MAX_PATH];
  if (argc != 4) return 2;
  directory = argv[3];
  snprintf(recording, sizeof recording, "%s/a.wav", directory);
  snprintf(settings, sizeof settings, "%s/corvo_debug_settings.ini", directory);
  remove(settings); /* with them, nobody asks for the release marker */
  if (!copy(argv[1], recording)) return 2;
  void* library = dlopen(argv[2], RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  expect("no recording", !seal(library, directory)); /* which is traced */
  expect("sealing", seal(library, recording));
  expect("CorvoSettingsDirectory", calls.settings_directory > 0);
  expect("CorvoReleaseMarker", calls.release_marker > 0);
  expect("GetLocalTime", calls.local_time > 0);
  expect("GetModuleFileName", calls.module_file_name > 0);
  expect("Sleep, os_clock", calls.sleep > 0);
  expect("MoveFile", calls.move_file == 1);
  return failures;
}
