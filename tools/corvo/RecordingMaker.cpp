// Makes recordings, as a host that has answered a call does: the engine's header, then the audio.

#include "tools/corvo/RecordingMaker.h"

#include <filesystem>

#include "LarkspurCommon/FileHandler.h"
#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/GsmBlocks.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/PartFile.h"
#include "tools/corvo/Paths.h"

namespace corvo {
namespace {

constexpr DWORD kSamplesPerG726Byte = 4;
constexpr std::size_t kMostAudio = 0x7FFFFFFF - 4096;  // with its header a file stays below 2 GiB

NA_INFO MakeRecord(const RecordingPlan& plan) {
  NA_INFO record{};
  if (!plan.metadataFile.empty()) {
    for (const Item& item : ReadItems(plan.metadataFile)) SetItem(record, item);
  }
  for (const Item& item : plan.items) SetItem(record, item);
  return record;
}

_gsm_wavehdrz GsmFormat() {
  _gsm_wavehdrz format{};
  format.wFormatTag = kTagGsm;
  format.nChannels = 1;
  format.nSamplesPerSec = kSampleRate;
  format.nAvgBytesPerSec = kSampleRate * DWORD{kGsmBlockBytes} / kGsmBlockSamples;
  format.nBlockAlign = kGsmBlockBytes;
  format.cbSize = sizeof format.wSamplesPerBlock;
  format.wSamplesPerBlock = kGsmBlockSamples;
  return format;
}

void WriteHeader(TFileHandler& file, Codec codec, DWORD audioBytes, long long start,
                 NA_INFO& record) {
  VerifyRecording engine;
  switch (codec) {
    case Codec::kG726:
      engine.WriteG726WAVHeader(file, audioBytes, DWORD{audioBytes * kSamplesPerG726Byte}, &start,
                                &record);
      return;
    case Codec::kGsm:
      engine.WriteWAVHeader(file, audioBytes, &record, GsmFormat());
      return;
    case Codec::kPcm:
      engine.WriteWAVHeader(file, audioBytes, &record);
      return;
  }
}

}  // namespace

void MakeRecording(const RecordingPlan& plan) {
  const std::string target = NewFile(plan.output, plan.force);
  NA_INFO record = MakeRecord(plan);
  const Audio audio = ReadAudio(plan.input, plan.codec);
  if (audio.bytes.size() > kMostAudio) throw InputError(plan.input, "holds too much audio");

  PartFile part(target);
  const DWORD audioBytes = static_cast<DWORD>(audio.bytes.size());
  TFileHandler file;
  const bool opened = file.Open(part.Path().c_str(), OFM_WRITE, NLM_BINARY, false, false);
  if (opened) {
    WriteHeader(file, audio.codec, audioBytes, plan.start, record);
    file.Write(audio.bytes.data(), audioBytes);
  }
  if (!opened || !file.Flush() || file.FailedSinceOpen()) {
    throw InputError(plan.output, file.DisplayLastError());
  }
  file.Close();
  part.Publish(plan.force);
}

}  // namespace corvo
