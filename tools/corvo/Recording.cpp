// Looks into a recording before the library is asked to do something with it.

#include "tools/corvo/Recording.h"

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/LittleEndian.h"
#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/AudioInput.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/Times.h"

namespace corvo {
namespace {

constexpr LONG kFirstChunk = 12;

struct Format {
  WORD tag = 0;
  DWORD bytesPerSecond = 0;
};

void OpenForReading(const Recording& recording, TFileHandler& file) {
  if (file.Open(recording.path.c_str(), OFM_READ, NLM_BINARY, false, false)) return;
  throw InputError(recording.name, InUsersWords(recording, TakeReason()));
}

// All zero without a complete format chunk: the walks then find their own fault.
Format ReadFormat(VerifyRecording& engine, TFileHandler& file) {
  unsigned char block[16];
  DWORD got = 0;
  file.MoveToPosition(0, kFirstChunk);
  if (engine.LocateChunk(file, "fmt ") < sizeof block) return {};
  if (!file.Read(block, sizeof block, &got) || got != sizeof block) return {};
  return {LoadLe16(&block[0]), LoadLe32(&block[8])};
}

}  // namespace

std::string InUsersWords(const Recording& recording, std::string text) {
  std::size_t at = 0;
  while ((at = text.find(recording.path, at)) != std::string::npos) {
    text.replace(at, recording.path.size(), recording.name);
    at += recording.name.size();
  }
  return text;
}

Recording FindRecording(const std::string& name) {
  Recording recording{name, ExistingFile(name), {}};
  TFileHandler file;
  OpenForReading(recording, file);
  VerifyRecording engine;
  if (!engine.GetNAInfo(&recording.record, file, nullptr)) {
    throw InputError(name, "is not a recording with a metadata record");
  }
  return recording;
}

SealableAudio FindAudio(const Recording& recording, std::optional<UWORD> codec) {
  TFileHandler file;
  OpenForReading(recording, file);
  VerifyRecording engine;
  const Format format = ReadFormat(engine, file);
  SealableAudio audio{codec.value_or(format.tag == kTagGsm ? kSealGsm : kSealG726), {}, 0};

  unsigned long unused = 0;
  int unusedBits = 0;
  long long start = 0;
  const unsigned long bytes = audio.codec == kSealGsm
                                  ? engine.WalkToWAVDataGSM(file, unused, unusedBits)
                                  : engine.WalkToG726WAVData(file, unused, start);
  if (bytes == 0) {
    const std::string& error = engine.m_lastError;
    throw InputError(recording.name,
                     error.empty() ? "holds no audio" : InUsersWords(recording, error));
  }
  if (start > 0) audio.start = start;
  if (format.bytesPerSecond != 0) {
    audio.duration = static_cast<long long>(bytes) * kTicksPerSecond / format.bytesPerSecond;
  }
  return audio;
}

}  // namespace corvo
