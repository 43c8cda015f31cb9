// Finds things in a recording: the chunk search, the three walkers and the metadata record. Every
// byte may be hostile: sizes are only ever counted down against what the file really delivers.

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/LittleEndian.h"
#include "engine/CorvoVerifiedRecording.h"
#include "engine/FileBytes.h"
#include "engine/WaveFormat.h"

namespace {

constexpr DWORD kIdSize = 4;
constexpr DWORD kSkipStep = 100;
constexpr DWORD kFormatSkipStep = 32;

struct ChunkHeader {
  unsigned char id[kIdSize];
  DWORD size;
  bool complete;  // false: the file ended inside it
};

bool SameId(const unsigned char* id, const char* wanted) {
  return std::memcmp(id, wanted, kIdSize) == 0;
}

// Bytes that the file doesn't deliver are zero.
DWORD ReadNumber(TFileHandler& file) {
  unsigned char bytes[4] = {};
  ReadFully(file, bytes, sizeof bytes);
  return LoadLe32(bytes);
}

bool ReadId(TFileHandler& file, const char* wanted) {
  unsigned char id[kIdSize] = {};
  ReadFully(file, id, sizeof id);
  return SameId(id, wanted);
}

ChunkHeader ReadChunkHeader(TFileHandler& file) {
  unsigned char bytes[kIdSize + 4] = {};
  ChunkHeader header{};
  header.complete = ReadFully(file, bytes, sizeof bytes) == sizeof bytes;
  std::memcpy(header.id, bytes, kIdSize);
  header.size = LoadLe32(bytes + kIdSize);
  return header;
}

// Passes over a payload by reading it, `step` bytes (at most kSkipStep) at a time.
void Skip(TFileHandler& file, DWORD length, DWORD step) {
  unsigned char scratch[kSkipStep];
  while (length != 0 && !file.EndOfFile()) {
    const DWORD count = std::min(length, step);
    ReadFully(file, scratch, count);
    length -= count;
  }
}

// The start of every WAVE file. The position may be anywhere before; it is behind the form type
// afterwards. `riffSize` may be null.
bool ReadRiffHeader(TFileHandler& file, unsigned long* riffSize, tstring& error) {
  file.MoveToPosition(0, 0);
  if (!ReadId(file, "RIFF")) {
    error.Format("Invalid WAVE file (no RIFF found) in WAVE file \"%s\"", file.GetPathname());
    return false;
  }
  const DWORD size = ReadNumber(file);
  if (riffSize != nullptr) *riffSize = size;
  if (!ReadId(file, "WAVE")) {
    error.Format("Invalid WAVE file (no WAVE chunk found) in WAVE file \"%s\"", file.GetPathname());
    return false;
  }
  return true;
}

// Whether a chunk found by LocateChunk holds at least `needed` bytes. 0 is a missing or an empty
// chunk, which leaves the text of the search standing. The text speaks of "fmt" and its 16 bytes
// whichever chunk is meant: those who search the trace know it so.
bool HoldsEnough(unsigned long size, DWORD needed, TFileHandler& file, tstring& error) {
  if (size >= needed) return true;
  if (size != 0) {
    error.Format("Invalid WAVE file (fmt chunk is too small (%lu < %u)) in WAVE file \"%s\"", size,
                 kFormatBlockSize, file.GetPathname());
  }
  return false;
}

FormatBlock ReadFormatBlock(TFileHandler& file) {
  unsigned char bytes[kFormatBlockSize] = {};
  ReadFully(file, bytes, sizeof bytes);
  return {LoadLe16(bytes),     LoadLe16(bytes + 2),  LoadLe32(bytes + 4),
          LoadLe32(bytes + 8), LoadLe16(bytes + 12), LoadLe16(bytes + 14)};
}

// Finds the format block, takes it only if it is mono and has the wanted tag, and passes over the
// rest of its chunk.
bool WalkFormatBlock(VerifyRecording& engine, TFileHandler& file, WORD wantedTag,
                     FormatBlock& format) {
  const unsigned long size = engine.LocateChunk(file, "fmt ");
  if (!HoldsEnough(size, kFormatBlockSize, file, engine.m_lastError)) return false;
  format = ReadFormatBlock(file);
  if (format.channels != 1) {
    engine.m_lastError.Format("WAVE file \"%s\" is stereo which is not supported",
                              file.GetPathname());
    return false;
  }
  if (format.tag != wantedTag) {
    engine.m_lastError.Format("WAVE file \"%s\" has format %u which is not supported",
                              file.GetPathname(), unsigned{format.tag});
    return false;
  }
  Skip(file, static_cast<DWORD>(size) - kFormatBlockSize, kFormatSkipStep);
  return true;
}

}  // namespace

bool VerifyRecording::IsSignaturePresent(NA_INFO& record) {
  constexpr DWORD kSealBlockEnd = offsetof(NA_INFO, szItem10) - offsetof(NA_INFO, szMaker);
  return record.ckSize >= kSealBlockEnd && record.dwSigned == 1;
}

bool VerifyRecording::GetNAInfo(NA_INFO* record, TFileHandler& file, unsigned long* riffSize) {
  if (!ReadRiffHeader(file, riffSize, m_lastError)) return false;
  const unsigned long size = LocateChunk(file, "ALCH");
  if (size == 0) return false;
  std::memset(record, 0, sizeof *record);
  std::memcpy(record->ckID, "ALCH", sizeof record->ckID);
  record->ckSize = kNaInfoPayloadSize;
  auto* const payload = reinterpret_cast<unsigned char*>(record) + offsetof(NA_INFO, szMaker);
  ReadFully(file, payload, static_cast<DWORD>(std::min<unsigned long>(size, kNaInfoPayloadSize)));
  return true;
}

unsigned long VerifyRecording::LocateChunk(TFileHandler& file, const char* id) {
  while (!file.EndOfFile()) {
    const ChunkHeader header = ReadChunkHeader(file);
    if (!header.complete) break;
    if (SameId(header.id, id)) return header.size;
    Skip(file, header.size, kSkipStep);
  }
  m_lastError.Format("Failed to locate CHUNK \"%s\" in WAVE file \"%s\"", id, file.GetPathname());
  return 0;
}

unsigned long VerifyRecording::WalkToWAVData(TFileHandler& file, unsigned long& samplesPerSecond,
                                             int& bitsPerSample) {
  FormatBlock format{};
  if (!ReadRiffHeader(file, nullptr, m_lastError)) return 0;
  if (!WalkFormatBlock(*this, file, kTagPcm, format)) return 0;
  samplesPerSecond = format.samplesPerSecond;
  bitsPerSample = format.bitsPerSample;
  return LocateChunk(file, "data");
}

unsigned long VerifyRecording::WalkToWAVDataGSM(TFileHandler& file, unsigned long&, int&) {
  if (!ReadRiffHeader(file, nullptr, m_lastError)) return 0;
  return LocateChunk(file, "data");
}

unsigned long VerifyRecording::WalkToG726WAVData(TFileHandler& file, unsigned long& factValue,
                                                 long long& eyreValue) {
  if (!ReadRiffHeader(file, nullptr, m_lastError)) return 0;
  if (!HoldsEnough(LocateChunk(file, "eyre"), kEyreSize, file, m_lastError)) return 0;
  // Exactly these bytes: what a longer "eyre" or "fact" chunk holds behind them is read as chunks.
  unsigned char eyre[kEyreSize];
  if (ReadFully(file, eyre, sizeof eyre) == sizeof eyre) {
    eyreValue = static_cast<long long>(LoadLe32(eyre + 4) * (1ULL << 32) | LoadLe32(eyre));
  }
  FormatBlock format{};
  if (!WalkFormatBlock(*this, file, kTagG726, format)) return 0;
  LocateChunk(file, "fact");  // missing: the search for "data" then fails, and names it
  unsigned char fact[kFactSize];
  if (ReadFully(file, fact, sizeof fact) == sizeof fact) factValue = LoadLe32(fact);
  return LocateChunk(file, "data");
}
