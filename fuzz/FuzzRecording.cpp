// Any bytes as a recording, through all four functions and an examination: every call ends with an
// answer, a recording is left as it was or sealed, what was just sealed verifies, and verification
// and examination agree.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/CorvoVerifiedRecording.h"
#include "platform/Win32Types.h"
#include "support/Scratch.h"

// The pauses and the disk are not what is looked for here.
extern "C" void Sleep(DWORD) {
}

extern "C" int fsync(int) {
  return 0;
}

// Both look at the same bytes; neither changes them.
static bool Verifies(const std::string& path) {
  RecordingExamination found;
  VerifyRecording().Examine(path.c_str(), found);
  const bool verifies = VerifySignature(path.c_str());
  if ((found.verdict == RecordingVerdict::kOk) != verifies) std::abort();
  return verifies;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvo_test;
  static const std::string path = ScratchPath("fuzzed.wav");
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const unsigned short codec = size % 2 == 0 ? 16 : 0;

  WriteFile(path, bytes);
  char properties[2048];
  GetRecordingProperty(path.c_str(), properties);
  if (std::memchr(properties, 0, sizeof properties) == nullptr) std::abort();
  if (Verifies(path) && !IsSignaturePresent(path.c_str())) std::abort();

  long long start = 0;
  long long end = 10'000'000;
  const bool sealed = CreateSignature(path.c_str(), codec, &start, &end);
  const bool changed = ReadFile(path) != bytes;
  if (changed && !(sealed && Verifies(path))) std::abort();
  return 0;
}
