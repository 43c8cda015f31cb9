// Finds things in an open recording: the chunk search, the three walkers and the metadata record,
// with the texts of their refusals.

#include <algorithm>

#include "engine/ChunkWalk.h"
#include "engine/CorvoVerifiedRecording.h"
#include "engine/FileBytes.h"
#include "engine/FileWalk.h"

namespace {

// An open file as the walkers read it.
class FileSource : public ByteSource {
 public:
  explicit FileSource(TFileHandler& file) : m_file(file) {}

  DWORD Read(void* buffer, DWORD length) override { return ReadFully(m_file, buffer, length); }
  void Skip(DWORD length) override {
    unsigned char scratch[kSkipStep];
    while (length != 0 && !m_file.EndOfFile()) {
      const DWORD count = std::min(length, DWORD{kSkipStep});
      ReadFully(m_file, scratch, count);
      length -= count;
    }
  }
  bool AtEnd() override { return m_file.EndOfFile(); }
  void Rewind() override { m_file.MoveToPosition(0, 0); }

 private:
  static constexpr DWORD kSkipStep = 100;

  TFileHandler& m_file;
};

// The text for a refusal; an empty chunk has none. A chunk that is too small is always told as
// "fmt" with its 16 bytes: those who search the trace know it so.
void Explain(const WalkRefusal& refusal, const char* path, tstring& text) {
  switch (refusal.kind) {
    case WalkRefusal::kNone:
    case WalkRefusal::kEmptyChunk:
      return;
    case WalkRefusal::kNoRiff:
      text.Format("Invalid WAVE file (no RIFF found) in WAVE file \"%s\"", path);
      return;
    case WalkRefusal::kNoWave:
      text.Format("Invalid WAVE file (no WAVE chunk found) in WAVE file \"%s\"", path);
      return;
    case WalkRefusal::kNoChunk:
      text.Format("Failed to locate CHUNK \"%s\" in WAVE file \"%s\"", refusal.chunk, path);
      return;
    case WalkRefusal::kSmallChunk:
      text.Format("Invalid WAVE file (fmt chunk is too small (%lu < %u)) in WAVE file \"%s\"",
                  refusal.value, kFormatBlockSize, path);
      return;
    case WalkRefusal::kChannels:
      text.Format("WAVE file \"%s\" is stereo which is not supported", path);
      return;
    case WalkRefusal::kFormat:
      text.Format("WAVE file \"%s\" has format %lu which is not supported", path, refusal.value);
      return;
  }
}

// One walk through an open file: `walk` gets the source and the refusal, whose text is kept.
template <class Walk>
auto WalkFile(TFileHandler& file, tstring& error, Walk walk) {
  FileSource source(file);
  WalkRefusal refusal;
  const auto result = walk(source, refusal);
  Explain(refusal, file.GetPathname(), error);
  return result;
}

}  // namespace

bool FindG726Audio(VerifyRecording& engine, TFileHandler& file, unsigned long& factValue,
                   long long& eyreValue, unsigned long& audioBytes) {
  return WalkFile(file, engine.m_lastError, [&](ByteSource& source, WalkRefusal& refusal) {
    return WalkToG726Audio(source, factValue, eyreValue, audioBytes, refusal);
  });
}

bool VerifyRecording::IsSignaturePresent(NA_INFO& record) {
  constexpr DWORD kSealBlockEnd = offsetof(NA_INFO, szItem10) - offsetof(NA_INFO, szMaker);
  return record.ckSize >= kSealBlockEnd && record.dwSigned == 1;
}

bool VerifyRecording::GetNAInfo(NA_INFO* record, TFileHandler& file, unsigned long* riffSize) {
  return WalkFile(file, m_lastError, [&](ByteSource& source, WalkRefusal& refusal) {
    return ReadRecord(source, *record, riffSize, refusal);
  });
}

unsigned long VerifyRecording::LocateChunk(TFileHandler& file, const char* id) {
  return WalkFile(file, m_lastError, [&](ByteSource& source, WalkRefusal& refusal) {
    return ::LocateChunk(source, id, refusal);
  });
}

unsigned long VerifyRecording::WalkToWAVData(TFileHandler& file, unsigned long& samplesPerSecond,
                                             int& bitsPerSample) {
  return WalkFile(file, m_lastError, [&](ByteSource& source, WalkRefusal& refusal) -> DWORD {
    FormatBlock format{};
    if (!ReadRiffHeader(source, nullptr, refusal)) return 0;
    if (!WalkFormatBlock(source, kTagPcm, format, refusal)) return 0;
    samplesPerSecond = format.samplesPerSecond;
    bitsPerSample = format.bitsPerSample;
    return ::LocateChunk(source, "data", refusal);
  });
}

unsigned long VerifyRecording::WalkToWAVDataGSM(TFileHandler& file, unsigned long&, int&) {
  return WalkFile(file, m_lastError, [](ByteSource& source, WalkRefusal& refusal) -> DWORD {
    if (!ReadRiffHeader(source, nullptr, refusal)) return 0;
    return ::LocateChunk(source, "data", refusal);
  });
}

unsigned long VerifyRecording::WalkToG726WAVData(TFileHandler& file, unsigned long& factValue,
                                                 long long& eyreValue) {
  unsigned long audioBytes = 0;
  FindG726Audio(*this, file, factValue, eyreValue, audioBytes);
  return audioBytes;
}
