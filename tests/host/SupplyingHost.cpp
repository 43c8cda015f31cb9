// A host process that supplies its own versions of what the library calls, and sees that they, not
// the library's, are what the library's own code calls.
//
//   RECORDING LIBRARY     an unsealed recording; the library to load, where it isn't linked

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <string>

#include "Checks.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/XTTime.h"
#include "LarkspurCommon/debug.h"
#include "Library.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"

using corvo_test::ScratchDirectory;
using corvo_test::ScratchPath;

namespace {

constexpr DWORD kFailure = 0x00270002;  // the trace starts, and writes it by default

struct Calls {
  int removeDirectoryTree, sleep, moveFile, settingsDirectory, releaseMarker, wideLines;
} g_calls;

std::string g_console;

}  // namespace

void ConsolePrint(unsigned long, const char* format, ...) {
  char line[1100];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  g_console += line;
}

// Above the filter: each line comes here.
void __InternalDebugW(DWORD, const wchar_t*, va_list) {
  ++g_calls.wideLines;
  throw 1;
}

bool RemoveDirectoryTree(unsigned long&, const char*) {
  ++g_calls.removeDirectoryTree;
  return false;
}

const char* CorvoSettingsDirectory() {
  ++g_calls.settingsDirectory;
  return ScratchDirectory().c_str();
}

const char* CorvoReleaseMarker() {
  ++g_calls.releaseMarker;
  return "";
}

void GetLocalTime(SYSTEMTIME* local) {
  *local = {2001, 2, 6, 3, 4, 5, 6, 7};
}

// The program, for the library, is in the test's directory, where it puts its files.
DWORD GetModuleFileName(void*, char* buffer, DWORD size) {
  return static_cast<DWORD>(std::snprintf(buffer, size, "%s/Server", ScratchDirectory().c_str()));
}

// Each look at this clock takes 10 ms, so that the library pauses after each step.
unsigned long os_clock() {
  static DWORD now = 0;
  return now += 10;
}

void Sleep(DWORD milliseconds) {
  if (milliseconds == 50) ++g_calls.sleep;
}

int MoveFile(const char* from, const char* to) {
  ++g_calls.moveFile;
  return std::rename(from, to) == 0;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string recording = ScratchPath("a.wav");
  const std::string tree = ScratchPath("tree");
  std::filesystem::copy_file(argv[1], recording);
  std::filesystem::create_directory(tree);
  LONGLONG start = 0;
  LONGLONG end = 0;

  host_test::Checks checks;
  const Library library = OpenLibrary(argv[2]);
  library.debug(kFailure, "%s", "Hello");
  library.debugWide(kFailure, L"%s", "Hello");
  checks.Expect("__InternalDebugW", g_calls.wideLines == 1);
  checks.Expect("ConsolePrint", g_console.find("Hello\n") != std::string::npos);
  checks.Expect("GetLocalTime", g_console.rfind("03/02 04:05:06.007 ", 0) == 0);
  checks.Expect("GetModuleFileName", g_console.find(" Server ") != std::string::npos);
  checks.Expect("CorvoSettingsDirectory", g_calls.settingsDirectory > 0);
  checks.Expect("CorvoReleaseMarker", g_calls.releaseMarker > 0);
  checks.Expect("RemoveDirectoryTree's result", !library.deletePath(tree.c_str(), true));
  checks.Expect("RemoveDirectoryTree", g_calls.removeDirectoryTree == 1);
  checks.Expect("sealing", library.createSignature(recording.c_str(), 0, &start, &end));
  checks.Expect("MoveFile", g_calls.moveFile == 1);
  checks.Expect("Sleep, os_clock", g_calls.sleep > 0);
  checks.Expect("verifying", library.verifySignature(recording.c_str()));
  return checks.Failures();
}
