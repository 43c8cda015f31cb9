// The smallest host in C++: linked to the library, it seals a recording, asks what it is and
// verifies it.
//
//   host_cpp RECORDING SETTINGS_DIRECTORY
//
// The library keeps its directories (temporary files, logs) beside this program. Linked with
// -rdynamic, so that the library finds this program's versions of the host services.
//
// Exit code: 0 sealed and verified, 1 not, 2 wrong usage.

#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <string>

#include "engine/RecordingSeal.h"
#include "platform/HostServices.h"

namespace {

std::string g_settingsDirectory;

constexpr unsigned short kG726 = 0;                   // 16 would be GSM
constexpr long long kCallStart = 133604118000000000;  // 2024-05-17T09:30:00Z, in 100 ns since 1601
constexpr long long kCallDuration = 659000000;        // 65.9 seconds
constexpr std::size_t kPropertyTextSize = 2048;

}  // namespace

// Host services: called by the library in place of its own.

// By default /etc.
const char* CorvoSettingsDirectory() {
  return g_settingsDirectory.c_str();
}

// Receives the trace.
void ConsolePrint(unsigned long, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: host_cpp RECORDING SETTINGS_DIRECTORY\n";
    return 2;
  }
  const char* const recording = argv[1];
  g_settingsDirectory = argv[2];

  long long start = kCallStart;
  long long end = kCallStart + kCallDuration;
  if (!CreateSignature(recording, kG726, &start, &end)) return 1;
  std::cout << "sealed: " << (IsSignaturePresent(recording) ? "yes" : "no") << '\n';

  char properties[kPropertyTextSize];
  GetRecordingProperty(recording, properties);
  std::cout << "properties: " << properties << '\n';

  const bool verified = VerifySignature(recording);
  std::cout << "verified: " << (verified ? "yes" : "no") << '\n';
  return verified ? 0 : 1;
}
