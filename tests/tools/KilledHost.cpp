// A host that dies without warning at a chosen instant of a call, as in a power cut.
//
//   killed_host copying|moving RECORDING DIRECTORY
//
// It keeps its settings in DIRECTORY, which holds corvo_settings.ini, and all else below that.

#include <signal.h>

#include <cstring>
#include <string>

#include "LarkspurCommon/XTTime.h"
#include "engine/RecordingSeal.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

const char* g_instant = "";
std::string g_directory;
std::string g_program;

void DieAt(const char* instant) {
  if (std::strcmp(g_instant, instant) == 0) ::raise(SIGKILL);
}

}  // namespace

const char* CorvoSettingsDirectory() {
  return g_directory.c_str();
}

extern "C" DWORD GetModuleFileName(void*, char* buffer, DWORD size) {
  return static_cast<DWORD>(g_program.copy(buffer, size - 1));
}

// So fast that each step of copying is followed by a pause.
extern "C" unsigned long os_clock() {
  static unsigned long now = 0;
  return (now += 10) & 0xFFFFFFFF;
}

// The pauses: most of the audio is still to be copied.
extern "C" void Sleep(DWORD) {
  DieAt("copying");
}

// The recording is deleted.
extern "C" int MoveFile(const char*, const char*) {
  DieAt("moving");
  return 0;
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  g_instant = argv[1];
  g_directory = argv[3];
  g_program = g_directory + "/host";
  long long start = 133604118000000000;  // 2024-05-17T09:30:00Z
  long long end = start + 659000000;
  return CreateSignature(argv[2], 0, &start, &end) ? 0 : 1;
}
