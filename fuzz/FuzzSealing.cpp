// Well-formed recordings of any content, sealed: the sealed file is what its layout says, it
// verifies, sealing it again changes nothing, and a changed byte breaks the seal exactly where it
// is covered.

#include <cstring>

#include "LarkspurCommon/sha1.h"
#include "Recordings.h"
#include "Target.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Bytes.h"
#include "support/Scratch.h"

namespace {

using corvo_test::Le32;
using corvo_test::ReadFile;
using corvo_test::Wave;
using corvo_test::With;
using corvo_test::WriteFile;

constexpr std::size_t kHeader = 3170;
constexpr unsigned short kGsm = 16;

struct Plan {
  unsigned short codec;
  unsigned fact;
  std::string eyre;
  std::string audio;
  std::string bytes;
};

void AddNoise(Wave& wave, unsigned count) {
  if (count % 4 == 3) wave.Chunk("LIST", std::string(count, 'n'));
}

std::string RecordPayload(Input& input) {
  NA_INFO record = corvo_test::SampleRecord();
  std::string payload = corvo_test::Payload(record);
  const unsigned count = input.Byte();
  for (unsigned i = 0; i < count; ++i) {
    payload[input.UpTo(static_cast<unsigned>(payload.size() - 1))] =
        static_cast<char>(input.Byte());
  }
  // Not sealed yet: that is what is to be done.
  return With(payload, offsetof(NA_INFO, dwSigned) - 8, Le32(input.Byte() == 1 ? 2 : 0));
}

// The chunks in the order that the walk needs, with others between them. GSM needs its audio alone.
Plan MakePlan(Input input) {
  Plan plan{static_cast<unsigned short>(input.Byte() % 3 == 0 ? kGsm : 0), 0, {}, {}, {}};
  plan.eyre = Le32(input.Number()) + Le32(input.Number());
  plan.fact = input.Number();
  const unsigned noise = input.Byte();
  const bool recordFirst = input.Byte() % 2 == 0;
  const std::string payload = RecordPayload(input);
  plan.audio = input.RestWithRun();
  if (plan.audio.empty()) plan.audio = "x";

  Wave wave;
  if (recordFirst) wave.Chunk("ALCH", payload);
  AddNoise(wave, noise);
  wave.Chunk("eyre", plan.eyre).Chunk("fmt ", corvo_test::Format(100, 1, 2));
  AddNoise(wave, noise / 4);
  wave.Chunk("fact", Le32(plan.fact)).Chunk("data", plan.audio);
  if (!recordFirst) wave.Chunk("ALCH", payload);
  plan.bytes = wave.Bytes();
  return plan;
}

std::string Digest(const std::string& bytes) {
  unsigned char digest[20];
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, reinterpret_cast<const unsigned char*>(bytes.data()),
             static_cast<unsigned>(bytes.size()));
  SHA1Final(digest, &context);
  return {reinterpret_cast<const char*>(digest), sizeof digest};
}

void CheckLayout(const std::string& sealed, const Plan& plan, long long start) {
  Require(sealed.size() == kHeader + plan.audio.size(), "the length");
  Require(sealed.substr(kHeader) == plan.audio, "the audio");
  Require(std::memcmp(sealed.data() + 20, &start, sizeof start) == 0, "the start time");
  Require(sealed.substr(3158, 4) == Le32(plan.codec == kGsm ? 0 : plan.fact), "the fact value");
  std::string input = With(sealed, 20, std::string(8, '\0'));
  input = With(input, 298, std::string(84, '\0'));
  Require(sealed.substr(302, 20) == Digest(input), "the digest over the layout");
}

// The bytes of a sealed file that are looked at, though not digested: what they say leads to the
// digested ones, or stands for a constant.
bool IsCovered(std::size_t at) {
  return (at >= 66 && at < 298) || (at >= 302 && at < 322) || (at >= 382 && at < 3150) ||
         (at >= 3158 && at < 3162) || at >= kHeader;
}

bool IsFree(std::size_t at) {
  return (at >= 4 && at < 8) || (at >= 20 && at < 28) || (at >= 40 && at < 52) ||
         (at >= 60 && at < 66) || (at >= 322 && at < 382) || (at >= 3154 && at < 3158);
}

void ChangeByte(const std::string& path, const std::string& sealed, std::size_t at) {
  std::string changed = sealed;
  changed[at] = static_cast<char>(changed[at] ^ 1);
  WriteFile(path, changed);
  const bool verifies = VerifySignature(path.c_str());
  if (IsCovered(at)) Require(!verifies, "a covered byte breaks the seal");
  if (IsFree(at)) Require(verifies, "a free byte leaves it");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = corvo_test::ScratchPath("sealed.wav");
  Input input(data, size);
  const long long start = static_cast<long long>(input.Long() >> 2);
  const unsigned changed = input.Number();
  const Plan plan = MakePlan(input);
  WriteFile(path, plan.bytes);
  long long startTime = start;
  long long endTime = start + 10'000'000;
  Require(CreateSignature(path.c_str(), plan.codec, &startTime, &endTime), "it is sealed");
  const std::string sealed = ReadFile(path);
  CheckLayout(sealed, plan, start);
  if (plan.codec != kGsm) {
    Require(std::memcmp(plan.eyre.data(), &endTime, sizeof endTime) == 0, "the old eyre value");
  }
  Require(IsSignaturePresent(path.c_str()) && VerifySignature(path.c_str()), "it verifies");
  Require(CreateSignature(path.c_str(), plan.codec, &startTime, &endTime), "it stays sealed");
  Require(ReadFile(path) == sealed, "sealing again changes nothing");
  ChangeByte(path, sealed, changed % sealed.size());
  return 0;
}
