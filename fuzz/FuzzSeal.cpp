// Any well-formed recording: it seals, into exactly the documented layout with the SHA-1 digest of
// what is covered; it verifies, stays as it is when sealed again, and no covered byte may change.

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/sha1.h"
#include "Target.h"
#include "engine/CorvoVerifiedRecording.h"
#include "platform/Win32Types.h"
#include "support/Bytes.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

// Offsets in a sealed file, and sizes.
constexpr std::size_t kEyreAt = 20;
constexpr std::size_t kPayloadAt = 60, kPayload = 3090;
constexpr std::size_t kSealAt = 298, kSealBytes = 84;
constexpr std::size_t kDigestBytes = 20;
constexpr std::size_t kAudioAt = 3170;

struct Range {
  std::size_t at, size;
};
// What no digest covers: RIFF size, eyre value, the format's numbers, the maker's name and what the
// seal block has behind the digest.
constexpr Range kUncovered[] = {{4, 4}, {kEyreAt, 8}, {40, 12}, {kPayloadAt, 6}, {322, 60}};
// What one covers, but for these and chunk headers: whoever changes one of those changes the way
// through the file.
constexpr Range kCovered[] = {{kPayloadAt, kPayload}, {3158, 4}, {3166, std::string::npos}};

// A recording, and what sealing takes from it.
struct Recording {
  bool isGsm;
  std::string payload;  // of the record's chunk
  std::string fact;
  std::string eyre;
  std::string audio;         // that the file holds
  std::size_t missingAudio;  // that it only declares
  std::string bytes;
};

std::string Chunk(const std::string& id, const std::string& payload) {
  return id + Le32(payload.size()) + payload;
}

// `size` bytes: those that the input has, then others that follow from the last.
std::string Filled(Input& input, std::size_t size) {
  std::string bytes = input.Bytes(std::min<std::size_t>(input.Byte(), size));
  unsigned state = bytes.empty() ? 1 : static_cast<unsigned char>(bytes.back());
  while (bytes.size() < size) {
    state = state * 1103515245 + 12345;
    bytes += static_cast<char>(state >> 16 & 0xFF);
  }
  return bytes;
}

// Chunks that nothing looks for, of any size.
std::string Others(Input& input) {
  std::string chunks;
  for (unsigned count = input.Byte() % 3; count > 0; --count) {
    std::string id = "x" + Le32(input.Number()).substr(0, 3);
    chunks += Chunk(id, Filled(input, input.UpTo(700)));
  }
  return chunks;
}

std::string Payload(Input& input) {
  constexpr std::size_t kFlagAt = kSealAt - kPayloadAt;
  std::string payload =
      Filled(input, 1 + (input.Byte() % 2 == 0 ? kPayload - 1 : input.UpTo(4999)));
  if (payload.size() > kFlagAt) payload[kFlagAt] = '\2';  // not sealed
  return payload;
}

std::string Format(Input& input) {
  return Le16(100) + Le16(1) + Filled(input, 12 + input.Byte() % 30);
}

// The chunks that sealing needs in their order, the record before, between or behind them.
Recording TakeRecording(Input& input) {
  Recording recording{};
  recording.isGsm = input.Byte() % 4 == 0;
  recording.payload = Payload(input);
  recording.eyre = Filled(input, 8);
  recording.fact = Filled(input, 4);
  recording.audio = Filled(input, 1 + input.UpTo(input.Byte() % 8 == 0 ? 40'000 : 1'500));
  recording.missingAudio = input.Byte() % 8 == 0 ? input.Number() : 0;

  const unsigned recordAt = input.Byte() % 4;
  const std::string record = Chunk("ALCH", recording.payload);
  const std::string chunks[] = {Chunk("eyre", recording.eyre), Chunk("fmt ", Format(input)),
                                Chunk("fact", recording.fact)};
  std::string body;
  for (unsigned i = 0; i < 4; ++i) {
    body += Others(input);
    if (i == recordAt) body += record;
    if (i < 3 && !recording.isGsm) body += chunks[i];
  }
  body += "data" + Le32(recording.audio.size() + recording.missingAudio) + recording.audio;
  if (recording.missingAudio == 0) body += Others(input);
  recording.bytes = "RIFF" + Le32(input.Number()) + "WAVE" + body;
  return recording;
}

// What a digest covers.
std::string Covered(const Recording& recording, const std::string& duration) {
  constexpr std::size_t kDurationAt = offsetof(NA_INFO, szDuration) - 8;
  std::string payload = recording.payload;
  payload.resize(kPayload);
  payload = With(payload, 0, std::string("Tolva\0", 6));
  payload = With(payload, kSealAt - kPayloadAt, std::string(kSealBytes, '\0'));
  payload = With(payload, kDurationAt, duration + '\0');
  std::string audio = recording.audio;
  audio.resize(audio.size() + recording.missingAudio);
  return "RIFF" + Le32(audio.size() + 3162) + "WAVE" + Chunk("eyre", std::string(8, '\0')) +
         Chunk("fmt ", Le16(100) + Le16(1) + Le32(8000) + Le32(2000) + Le16(1) + Le16(2)) +
         Chunk("ALCH", payload) +
         Chunk("fact", recording.isGsm ? std::string(4, '\0') : recording.fact) +
         Chunk("data", audio);
}

std::string Sha1(const std::string& bytes) {
  std::string digest(kDigestBytes, '\0');
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, reinterpret_cast<const unsigned char*>(bytes.data()),
             static_cast<unsigned>(bytes.size()));
  SHA1Final(reinterpret_cast<unsigned char*>(digest.data()), &context);
  return digest;
}

bool Verifies(const std::string& path) {
  RecordingExamination found;
  VerifyRecording().Examine(path.c_str(), found);
  const bool verifies = VerifySignature(path.c_str());
  Require((found.verdict == RecordingVerdict::kOk) == verifies, "both ways to verify agree");
  return verifies;
}

template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], std::size_t at) {
  return std::any_of(ranges, ranges + kCount, [&](const Range& range) {
    return at >= range.at && at - range.at < range.size;
  });
}

void ChangeByte(const std::string& path, std::string sealed, std::size_t at, unsigned mask) {
  sealed[at] = static_cast<char>(static_cast<unsigned char>(sealed[at]) ^ mask);
  WriteFile(path, sealed);
  const bool verifies = Verifies(path);
  const bool uncovered = IsIn(kUncovered, at);
  if (uncovered) Require(verifies, "a byte that isn't covered may change");
  if (!uncovered && IsIn(kCovered, at)) Require(!verifies, "a covered byte may not change");
}

void Damage(const std::string& path, const std::string& sealed, Input& input) {
  const std::size_t audio = sealed.size() - kAudioAt;
  ChangeByte(path, sealed, input.UpTo(kAudioAt - 1), 1 + input.Byte() % 255);
  ChangeByte(path, sealed, kAudioAt + input.Number() % audio, 1 + input.Byte() % 255);
  WriteFile(path, sealed + input.Text() + "x");
  Require(Verifies(path), "what stands behind the audio isn't covered");
  WriteFile(path, sealed.substr(0, sealed.size() - 1 - input.Number() % audio));
  Require(!Verifies(path), "no audio may be cut off");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = ScratchPath("sealed.wav");
  Input input(data, size);
  long long start = static_cast<long long>(input.Long());
  const unsigned seconds = input.Number();
  const std::string duration =
      std::to_string(seconds / 60) + "min:" + std::to_string(seconds % 60) + "sec";
  Input damages(data, size);
  const Recording recording = TakeRecording(input);
  const auto codec = static_cast<unsigned short>(recording.isGsm ? 16 : input.Byte() % 16);

  WriteFile(path, recording.bytes);
  const auto end =
      static_cast<long long>(static_cast<unsigned long long>(start) + seconds * 10'000'000ULL);
  long long endOrEyre = end;
  Require(CreateSignature(path.c_str(), codec, &start, &endOrEyre), "a good recording seals");
  if (!recording.isGsm) Require(!std::memcmp(&endOrEyre, recording.eyre.data(), 8), "the old eyre");
  if (recording.isGsm) Require(endOrEyre == end, "the end time of a GSM recording");

  const std::string covered = Covered(recording, duration);
  std::string expected = With(covered, kSealAt, Le32(1) + Sha1(covered));
  expected = With(expected, kEyreAt, std::string(reinterpret_cast<const char*>(&start), 8));
  Require(ReadFile(path) == expected, "the sealed file");
  Require(Verifies(path) && IsSignaturePresent(path.c_str()), "a sealed recording verifies");
  Require(CreateSignature(path.c_str(), codec, &start, &endOrEyre),
          "a sealed one counts as sealed");
  Require(ReadFile(path) == expected, "and isn't changed");

  Damage(path, expected, damages);
  Require(ListDirectory(ScratchPath("bin/tempfiles")).empty(), "no temporary file is left");
  return 0;
}
