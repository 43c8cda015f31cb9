// The host services every test program supplies: nothing of the machine's own is read or written. A
// test program that knows better has its own version of a weak one.

#include <sys/types.h>

#include <cstring>

#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"

extern "C" [[gnu::weak]] const char* CorvoSettingsDirectory() {
  static const std::string directory = [] {
    std::string path = corvo_test::ScratchPath("etc");
    corvo_test::MakeDirectory(path);
    corvo_test::WriteFile(
        path + "/corvo_settings.ini",
        "LogFileErrorsToFile=N\nLoggingDir=" + corvo_test::ScratchPath("bin/logs") +
            "\nTempFilesDir=" + corvo_test::ScratchPath("bin/tempfiles") + "\n");
    return path;
  }();
  return directory.c_str();
}

extern "C" const char* CorvoReleaseMarker() {
  static const std::string marker = corvo_test::ScratchPath("KMR_release");
  return marker.c_str();
}

// The program that the library believes it runs in: <scratch>/bin/testhost.
extern "C" [[gnu::weak]] DWORD GetModuleFileName(void*, char* buffer, DWORD size) {
  static const std::string program = [] {
    corvo_test::MakeDirectory(corvo_test::ScratchPath("bin"));
    return corvo_test::ScratchPath("bin/testhost");
  }();
  if (size <= program.size()) return 0;
  std::memcpy(buffer, program.c_str(), program.size() + 1);
  return static_cast<DWORD>(program.size());
}
