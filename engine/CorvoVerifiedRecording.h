#ifndef ENGINE_CORVOVERIFIEDRECORDING_H
#define ENGINE_CORVOVERIFIEDRECORDING_H

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/tstring.h"
#include "engine/Examination.h"
#include "engine/NaInfo.h"
#include "engine/RecordingSeal.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"

// The engine behind the four functions of RecordingSeal.h, for hosts in C++ that also create
// recordings or look into them. An object belongs to one thread and owns nothing but the text of
// its last failure. Files are handed in open, in binary mode; integers in files are little-endian.
class CORVO_API VerifyRecording {
 public:
  // The operations behind the exported functions of the same names; their contracts stand there.
  bool CreateSignature(const char* pszFileName, UWORD wCodec, LONGLONG* pStartTime,
                       LONGLONG* pEndTime);
  bool VerifySignature(const char* pszFileName);
  bool IsSignaturePresent(const char* pszFileName);
  bool GetRecordingProperty(const char* pszFileName, char* pszProperties);

  // Examines a recording by reading its audio once: no temporary file, no pause, nothing written.
  // The verdict is kOk exactly where VerifySignature says true of the same bytes. `descriptor` is
  // open for reading and stays the caller's; it need not be at the start, and isn't moved.
  void Examine(int descriptor, RecordingExamination& found);

  // The same for a path that the four functions would take.
  void Examine(const char* pszFileName, RecordingExamination& found);

  // The digest that sealing would store for this record (its seal is ignored), fact value and
  // audio. False: the file can't be read, or ends before.
  bool ComputeDigest(int descriptor, const NA_INFO& record, unsigned long factValue,
                     LONGLONG audioOffset, unsigned long audioBytes,
                     unsigned char digest[kDigestSize]);

  // Whether a record in memory is marked as sealed: it is long enough to hold a seal block, and
  // its flag is 1.
  bool IsSignaturePresent(NA_INFO& record);

  // Reads the "ALCH" record of a WAVE file. Bytes the file lacks are zero; ckSize is always 3090.
  // `riffSize` may be null; it receives the RIFF size also when no record follows. False: no RIFF,
  // no WAVE or no such chunk (m_lastError tells), or an empty one; the record is then untouched.
  // The file's position afterwards may be anywhere.
  bool GetNAInfo(NA_INFO* record, TFileHandler& file, unsigned long* riffSize);

  // Searches forward from the current position, which must be at a chunk header, for the first
  // chunk with this 4-character id. Returns its size and leaves the file at its payload. 0: an
  // empty chunk, or none (m_lastError tells). No pad byte is expected after a chunk of odd size.
  unsigned long LocateChunk(TFileHandler& file, const char* id);

  // Each walker checks the RIFF header, finds its chunks in order and leaves the file at the first
  // audio byte. Returns the declared audio length in bytes; 0: refused (m_lastError tells), or an
  // empty "data" chunk.
  unsigned long WalkToWAVData(TFileHandler& file, unsigned long& samplesPerSecond,
                              int& bitsPerSample);
  // Neither out-argument is written; the format block is not looked at.
  unsigned long WalkToWAVDataGSM(TFileHandler& file, unsigned long& samplesPerSecond,
                                 int& bitsPerSample);
  // Needs "eyre", "fmt ", "fact" and "data" in this order; others may stand between them.
  unsigned long WalkToG726WAVData(TFileHandler& file, unsigned long& factValue,
                                  long long& eyreValue);

  // Each writer sets the record's ckID, ckSize and maker name, then writes a whole header over the
  // start of the file, which keeps its length. `audioBytes` of audio belong behind it, written by
  // the caller. Failures show in the file alone (TFileHandler::FailedSinceOpen).
  void WriteWAVHeader(TFileHandler& file, unsigned long audioBytes, NA_INFO* record);
  void WriteWAVHeader(TFileHandler& file, unsigned long audioBytes, NA_INFO* record,
                      _gsm_wavehdrz format);
  void WriteG726WAVHeader(TFileHandler& file, unsigned long audioBytes, unsigned long factValue,
                          long long* eyreValue, NA_INFO* record);

  // Copies from the source's position to the destination's in steps of 1000 bytes, pausing as
  // GiveUpTimeSlice does. Bytes the source lacks become zeros; failures show in the files alone.
  void CopyData(unsigned long& yieldTimer, TFileHandler& destination, TFileHandler& source,
                unsigned long length);

  // Sleeps 50 ms and restarts the timer (a value of os_clock) once it is 10 ms old.
  void GiveUpTimeSlice(unsigned long& yieldTimer);

  tstring m_lastError;  // why a reading step refused a file; empty at first
};
CORVO_SIZE(24, 32, VerifyRecording);

#endif
