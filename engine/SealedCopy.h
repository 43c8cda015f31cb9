#ifndef ENGINE_SEALEDCOPY_H
#define ENGINE_SEALEDCOPY_H

#include "engine/CorvoVerifiedRecording.h"
#include "engine/SealedHeader.h"

// What sealing and verification both do: a recording is copied into a temporary file in the layout
// that a seal's digest covers. One operation's working state; where a step returns false, `error`
// says why.
class SealedCopy {
 public:
  explicit SealedCopy(VerifyRecording& owner);

  // Opens the recording. A change from here on shows in IsUnchanged.
  bool OpenRecording(const char* path);

  // Whether the recording is still the file that was opened, under the same name and in the same
  // state: what came since would be lost with it.
  bool IsUnchanged();

  // A new file with a free name in the temporary directory.
  bool OpenTemporary();

  // Lets nobody read or change the temporary file who may not do so to the recording: gives it the
  // permission bits and, where the process may, the owner.
  bool ProtectTemporary();

  // How many bytes of the declared audio the recording lacks, from its present position on.
  unsigned long MissingAudio();

  // Writes the sealed header, with the seal cleared and no "eyre" value, and the audio that the
  // recording stands at; gives the SHA-1 digest over that whole file.
  bool Build(unsigned char digest[kDigestSize]);

  // Whether everything done to the temporary file has worked and it has exactly the right length.
  bool IsComplete();

  // Whether everything done to an open file has worked so far.
  bool IsSound(const TFileHandler& file);

  VerifyRecording& engine;
  TFileHandler recording;
  TFileHandler temporary;
  NA_INFO record{};
  unsigned long factValue = 0;
  unsigned long audioBytes = 0;
  tstring error;

 private:
  bool CopyAudio();
  bool Digest(unsigned char digest[kDigestSize]);
  bool HasFullLength(LONGLONG length);

  FileMark m_opened{};
  unsigned long m_yieldTimer;
};

#endif
