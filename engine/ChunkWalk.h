#ifndef ENGINE_CHUNKWALK_H
#define ENGINE_CHUNKWALK_H

#include "LarkspurCommon/tstring.h"
#include "engine/NaInfo.h"
#include "engine/WaveFormat.h"
#include "platform/Win32Types.h"

// The way through a recording's chunks, the same for every operation and whatever the recording is
// read from. Every byte may be hostile: sizes are only ever counted down against what is really
// delivered. No pad byte is expected after a chunk of odd size.

struct ChunkHeader {
  char id[4];
  DWORD size;  // of the payload, as declared
};

// What a recording is read from, from front to back.
class ByteSource {
 public:
  virtual DWORD Read(void* buffer, DWORD length) = 0;  // fewer bytes only where there are no more
  virtual void Skip(DWORD length) = 0;                 // may end behind the last byte
  virtual bool AtEnd() = 0;                            // the end, or a failure, has been met
  virtual void Rewind() = 0;
  virtual void Meet(const ChunkHeader&) {}  // a header that was just read

 protected:
  ~ByteSource() = default;
};

// Why a walk was refused.
struct WalkRefusal {
  enum Kind { kNone, kNoRiff, kNoWave, kNoChunk, kEmptyChunk, kSmallChunk, kChannels, kFormat };
  Kind kind = kNone;
  const char* chunk = "";   // the chunk that is meant
  unsigned long value = 0;  // its size, or the channel count or format tag that it holds
};

// The start of every WAVE file, wherever the source stands. `riffSize` may be null.
bool ReadRiffHeader(ByteSource& source, unsigned long* riffSize, WalkRefusal& refusal);

// False: the source ends before, or within the header.
bool ReadChunkHeader(ByteSource& source, ChunkHeader& header);

// Searches from the next chunk header on and ends at the payload. Returns its size, 0 with a
// refusal where there is no such chunk.
DWORD LocateChunk(ByteSource& source, const char* id, WalkRefusal& refusal);

// The "ALCH" record, from the file's start. False: none, or an empty one; `record` is untouched.
bool ReadRecord(ByteSource& source, NA_INFO& record, unsigned long* riffSize, WalkRefusal& refusal);

// A mono format block with the wanted tag, and the rest of its chunk.
bool WalkFormatBlock(ByteSource& source, WORD wantedTag, FormatBlock& format, WalkRefusal& refusal);

// From the file's start to the audio of a G.726 recording. True: "data" is found, of `audioBytes`,
// which may be 0. What was read before a refusal is stored.
bool WalkToG726Audio(ByteSource& source, unsigned long& factValue, long long& eyreValue,
                     unsigned long& audioBytes, WalkRefusal& refusal);

#endif
