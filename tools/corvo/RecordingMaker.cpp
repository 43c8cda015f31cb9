// Makes recordings, as a host that has answered a call does: the engine's header, then the audio.

#include "tools/corvo/RecordingMaker.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "LarkspurCommon/FileHandler.h"
#include "engine/CorvoVerifiedRecording.h"
#include "platform/Win32Compat.h"
#include "tools/corvo/GsmBlocks.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Paths.h"

namespace corvo {
namespace {

constexpr DWORD kSamplesPerG726Byte = 4;
constexpr std::size_t kMostAudio = 0x7FFFFFFF - 4096;  // with its header a file stays below 2 GiB

// A file under a name of its own beside its target, until it is complete.
class PartFile {
 public:
  // Made here rather than by TFileHandler, which would set the process's umask first.
  explicit PartFile(const std::string& target)
      : m_target(target), m_path(target + "." + std::to_string(::getpid()) + ".part") {
    const int descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor == -1) throw InputError(m_path, std::strerror(errno));
    ::close(descriptor);
  }
  ~PartFile() {
    if (!m_path.empty()) ::unlink(m_path.c_str());
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  const std::string& Path() const { return m_path; }

  // MoveFile never replaces a file, not even one that has just appeared.
  void Publish(bool replace) {
    const bool done = replace ? std::rename(m_path.c_str(), m_target.c_str()) == 0
                              : MoveFile(m_path.c_str(), m_target.c_str()) != 0;
    if (!done) throw InputError(m_target, std::strerror(errno));
    m_path.clear();
  }

 private:
  std::string m_target;
  std::string m_path;  // empty once it has become the target
};

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
  const std::string target = NewFile(plan.output);
  if (!plan.force && std::filesystem::exists(target)) {
    throw InputError(plan.output, "exists already; --force replaces it");
  }
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
