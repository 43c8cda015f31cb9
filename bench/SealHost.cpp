// A host that seals or verifies recordings: see SealTimes.h.

#include <time.h>

#include <string>

#include "LarkspurCommon/Aregistry.h"
#include "bench/SealTimes.h"
#include "engine/CorvoVerifiedRecording.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

constexpr unsigned short kG726 = 0;

std::string s_directory;
unsigned s_pauses = 0;

bool Seal(const char* path) {
  long long start = kStart;
  long long end = kEnd;
  return CreateSignature(path, kG726, &start, &end);
}

}  // namespace

extern "C" const char* CorvoSettingsDirectory() {
  return s_directory.c_str();
}

extern "C" void Sleep(DWORD milliseconds) {
  ++s_pauses;
  const timespec pause{0, static_cast<long>(milliseconds) * 1000000};
  nanosleep(&pause, nullptr);
}

int main(int count, char** arguments) {
  if (count < 3) return 2;
  s_directory = arguments[2];
  VMRegistry::global()->TempDirectory();
  return PrintSealTimes({Seal, VerifySignature, &s_pauses}, count, arguments);
}
