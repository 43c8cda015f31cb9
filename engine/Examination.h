#ifndef ENGINE_EXAMINATION_H
#define ENGINE_EXAMINATION_H

#include "LarkspurCommon/tstring.h"
#include "engine/NaInfo.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

// What VerifyRecording::Examine finds out about a recording. Plain values of fixed size, whatever
// the file declares; offsets count bytes from the start of the file.

enum class RecordingVerdict : int {
  kOk,          // sealed, and what the seal covers is unchanged: VerifySignature says true
  kBroken,      // sealed, and the digest over what the file holds is another
  kUnsealed,    // a recording whose record isn't marked as sealed
  kMalformed,   // no recording, or marked as sealed and not built so that a digest can be computed
  kUnreadable,  // the system refused to read it
  kChanged,     // changed while it was read: what was found belongs to no single state of the file
};

// What the digest takes from a chunk.
enum class DigestInput : int {
  kNothing,    // may change without breaking the seal
  kRebuilt,    // it is looked for, and enters as constants
  kRecord,     // the payload, but for the maker's name, the flag and the digest, which are rebuilt
  kFactValue,  // its first four bytes
  kAudio,      // the payload, and its size
};

struct RecordingChunk {
  char id[4];
  DWORD declaredSize;    // of the payload
  LONGLONG offset;       // of the chunk's header; its payload begins 8 bytes later
  LONGLONG presentSize;  // payload bytes that the file really holds
  DigestInput taken;
};

// A field of the sealed layout in which a file differs from what sealing writes.
struct LayoutDeparture {
  LONGLONG offset;
  LONGLONG size;
  const char* field;  // such as "format block"; lives as long as the library
};

struct RecordingExamination {
  static constexpr int kMostChunks = 64;
  static constexpr int kMostDepartures = 16;

  RecordingVerdict verdict = RecordingVerdict::kUnreadable;
  tstring reason;  // why it is not ok, without the file's name; empty when it is

  LONGLONG fileSize = 0;
  bool hasRecord = false;
  NA_INFO record{};           // as it stands in the file, the seal included
  LONGLONG recordOffset = 0;  // of its chunk's header
  DWORD recordSize = 0;       // of its payload, as declared

  // Where the audio is; known when the walk through the chunks got there.
  bool hasAudio = false;
  LONGLONG audioOffset = 0;
  DWORD audioSize = 0;     // as declared
  DWORD missingAudio = 0;  // how many of these bytes the file lacks
  DWORD factValue = 0;
  LONGLONG factOffset = 0;  // of the value
  LONGLONG startTime = 0;   // the "eyre" value, 100 ns units; not covered by the digest

  // The digest is recomputed where all audio is there and the record holds a digest, marked as
  // sealed or not.
  bool hasDigest = false;
  unsigned char storedDigest[kDigestSize] = {};
  unsigned char computedDigest[kDigestSize] = {};

  // In the order of the file. The first is the RIFF header, as a chunk whose payload is the form
  // type alone. Size 0 chunks, and what a longer "eyre" or "fact" chunk holds behind its value,
  // appear as the library reads them.
  int chunkCount = 0;
  bool moreChunks = false;  // there are more than fit
  RecordingChunk chunks[kMostChunks] = {};

  // Every field of the sealed layout that differs, and what stands behind the audio; the seal
  // doesn't cover all of them. Only for recordings marked as sealed.
  int departureCount = 0;
  LayoutDeparture departures[kMostDepartures] = {};
};

CORVO_SIZE(28, 32, RecordingChunk);
CORVO_SIZE(20, 24, LayoutDeparture);
CORVO_SIZE(5356, 5704, RecordingExamination);
CORVO_OFFSET(37, 49, RecordingExamination, record);
CORVO_OFFSET(3152, 3168, RecordingExamination, audioOffset);
CORVO_OFFSET(3240, 3264, RecordingExamination, chunks);
CORVO_OFFSET(5036, 5320, RecordingExamination, departures);

#endif
