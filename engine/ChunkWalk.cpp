// The way through a recording's chunks.

#include "engine/ChunkWalk.h"

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/LittleEndian.h"

namespace {

constexpr DWORD kIdSize = sizeof ChunkHeader::id;

bool Refuse(WalkRefusal& refusal, WalkRefusal::Kind kind, const char* chunk,
            unsigned long value = 0) {
  refusal = {kind, chunk, value};
  return false;
}

// Bytes that the source doesn't deliver are zero.
DWORD ReadNumber(ByteSource& source) {
  unsigned char bytes[4] = {};
  source.Read(bytes, sizeof bytes);
  return LoadLe32(bytes);
}

bool ReadId(ByteSource& source, const char* wanted) {
  char id[kIdSize] = {};
  source.Read(id, sizeof id);
  return std::memcmp(id, wanted, kIdSize) == 0;
}

// Finds a chunk of at least `needed` bytes.
bool LocateFilledChunk(ByteSource& source, const char* id, DWORD needed, DWORD& size,
                       WalkRefusal& refusal) {
  size = LocateChunk(source, id, refusal);
  if (refusal.kind != WalkRefusal::kNone) return false;
  if (size == 0) return Refuse(refusal, WalkRefusal::kEmptyChunk, id);
  return size >= needed || Refuse(refusal, WalkRefusal::kSmallChunk, id, size);
}

FormatBlock ReadFormatBlock(ByteSource& source) {
  unsigned char bytes[kFormatBlockSize] = {};
  source.Read(bytes, sizeof bytes);
  return {LoadLe16(bytes),     LoadLe16(bytes + 2),  LoadLe32(bytes + 4),
          LoadLe32(bytes + 8), LoadLe16(bytes + 12), LoadLe16(bytes + 14)};
}

}  // namespace

bool ReadRiffHeader(ByteSource& source, unsigned long* riffSize, WalkRefusal& refusal) {
  source.Rewind();
  if (!ReadId(source, "RIFF")) return Refuse(refusal, WalkRefusal::kNoRiff, "RIFF");
  const DWORD size = ReadNumber(source);
  if (riffSize != nullptr) *riffSize = size;
  return ReadId(source, "WAVE") || Refuse(refusal, WalkRefusal::kNoWave, "RIFF");
}

bool ReadChunkHeader(ByteSource& source, ChunkHeader& header) {
  unsigned char bytes[kIdSize + 4];
  if (source.Read(bytes, sizeof bytes) != sizeof bytes) return false;
  std::memcpy(header.id, bytes, kIdSize);
  header.size = LoadLe32(bytes + kIdSize);
  source.Meet(header);
  return true;
}

DWORD LocateChunk(ByteSource& source, const char* id, WalkRefusal& refusal) {
  ChunkHeader header;
  while (!source.AtEnd() && ReadChunkHeader(source, header)) {
    if (std::memcmp(header.id, id, kIdSize) == 0) return header.size;
    source.Skip(header.size);
  }
  Refuse(refusal, WalkRefusal::kNoChunk, id);
  return 0;
}

bool ReadRecord(ByteSource& source, NA_INFO& record, unsigned long* riffSize,
                WalkRefusal& refusal) {
  DWORD size = 0;
  if (!ReadRiffHeader(source, riffSize, refusal)) return false;
  if (!LocateFilledChunk(source, "ALCH", 1, size, refusal)) return false;
  std::memset(&record, 0, sizeof record);
  std::memcpy(record.ckID, "ALCH", sizeof record.ckID);
  record.ckSize = kNaInfoPayloadSize;
  auto* const payload = reinterpret_cast<unsigned char*>(&record) + offsetof(NA_INFO, szMaker);
  source.Read(payload, std::min(size, DWORD{kNaInfoPayloadSize}));
  return true;
}

bool WalkFormatBlock(ByteSource& source, WORD wantedTag, FormatBlock& format,
                     WalkRefusal& refusal) {
  DWORD size = 0;
  if (!LocateFilledChunk(source, "fmt ", kFormatBlockSize, size, refusal)) return false;
  format = ReadFormatBlock(source);
  if (format.channels != 1) return Refuse(refusal, WalkRefusal::kChannels, "fmt ", format.channels);
  if (format.tag != wantedTag) return Refuse(refusal, WalkRefusal::kFormat, "fmt ", format.tag);
  source.Skip(size - kFormatBlockSize);
  return true;
}

bool WalkToG726Audio(ByteSource& source, unsigned long& factValue, long long& eyreValue,
                     unsigned long& audioBytes, WalkRefusal& refusal) {
  DWORD size = 0;
  audioBytes = 0;
  if (!ReadRiffHeader(source, nullptr, refusal)) return false;
  if (!LocateFilledChunk(source, "eyre", kEyreSize, size, refusal)) return false;
  // Exactly these bytes: what a longer "eyre" or "fact" chunk holds behind them is read as chunks.
  unsigned char eyre[kEyreSize];
  if (source.Read(eyre, sizeof eyre) == sizeof eyre) {
    eyreValue = static_cast<long long>(LoadLe32(eyre + 4) * (1ULL << 32) | LoadLe32(eyre));
  }
  FormatBlock format{};
  if (!WalkFormatBlock(source, kTagG726, format, refusal)) return false;
  LocateChunk(source, "fact", refusal);  // missing: the search for "data" then fails, and names it
  unsigned char fact[kFactSize];
  if (source.Read(fact, sizeof fact) == sizeof fact) factValue = LoadLe32(fact);
  audioBytes = LocateChunk(source, "data", refusal);
  return refusal.kind == WalkRefusal::kNone;
}
