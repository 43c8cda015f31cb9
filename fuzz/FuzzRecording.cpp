// Any bytes as a recording, through all four functions and an examination: every call ends with an
// answer, a recording is left as it was or sealed, what was just sealed verifies, and verification
// and examination agree.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "Target.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Scratch.h"

namespace {

RecordingExamination Examine(const std::string& path) {
  RecordingExamination found;
  VerifyRecording().Examine(path.c_str(), found);
  return found;
}

// Both look at the same bytes; neither changes them.
bool Verifies(const std::string& path) {
  const bool verifies = VerifySignature(path.c_str());
  const bool isOk = Examine(path).verdict == RecordingVerdict::kOk;
  Require(isOk == verifies, "verification and examination agree");
  return verifies;
}

// Stores the digest that was found, as sealing would: chance never does. False: the record has no
// room for a whole one.
bool StoreDigest(const RecordingExamination& found, std::string& bytes) {
  for (int i = 0; i < found.chunkCount; ++i) {
    const RecordingChunk& chunk = found.chunks[i];
    const LONGLONG end = offsetof(NA_INFO, bySignature) + kDigestSize;
    if (chunk.taken != DigestInput::kRecord || chunk.presentSize + 8 < end) continue;
    const auto record = static_cast<std::size_t>(chunk.offset);
    bytes.replace(record + offsetof(NA_INFO, dwSigned), 4, std::string("\1\0\0\0", 4));
    bytes.replace(record + offsetof(NA_INFO, bySignature), kDigestSize,
                  reinterpret_cast<const char*>(found.computedDigest), kDigestSize);
    return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvo_test;
  static const std::string path = ScratchPath("fuzzed.wav");
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const unsigned short codec = size % 2 == 0 ? 16 : 0;

  WriteFile(path, bytes);
  char properties[2048];
  GetRecordingProperty(path.c_str(), properties);
  Require(std::memchr(properties, 0, sizeof properties) != nullptr, "the properties end");
  Require(!Verifies(path) || IsSignaturePresent(path.c_str()), "what verifies is sealed");

  std::string resealed = bytes;
  const RecordingExamination found = Examine(path);
  if (found.hasDigest && StoreDigest(found, resealed)) {
    WriteFile(path, resealed);
    Require(Verifies(path), "the computed digest is the one that verifies");
    WriteFile(path, bytes);
  }

  long long start = 0;
  long long end = 10'000'000;
  const bool sealed = CreateSignature(path.c_str(), codec, &start, &end);
  const bool changed = ReadFile(path) != bytes;
  Require(!changed || (sealed && Verifies(path)), "a changed recording is sealed");
  return 0;
}
