// Sealing: the recording is rewritten into a temporary file, digested, and replaced only by a
// complete copy that is on disk. At every instant it exists whole, under its own name or, sealed,
// under the temporary one.

#include <cstring>

#include "engine/CorvoVerifiedRecording.h"
#include "engine/Operation.h"
#include "engine/SealedCopy.h"
#include "platform/HoldCancellation.h"
#include "platform/Win32Compat.h"

namespace {

constexpr UWORD kCodecGsm = 16;
constexpr unsigned long long kUnitsPerSecond = 10'000'000;  // times come in 100 ns
constexpr unsigned long kMostMissingAudio = 16UL * 1024 * 1024;

// Removes the temporary file on every way out on which it was not handed on.
class TemporaryFileOwner {
 public:
  explicit TemporaryFileOwner(TFileHandler& file) : m_file(file) {}
  ~TemporaryFileOwner() {
    const HoldCancellation hold;
    if (m_owned) m_file.Delete();
  }
  TemporaryFileOwner(const TemporaryFileOwner&) = delete;
  TemporaryFileOwner& operator=(const TemporaryFileOwner&) = delete;

  void HandOn() { m_owned = false; }

 private:
  TFileHandler& m_file;
  bool m_owned = true;
};

// The bytes behind the text's terminator keep their values. An end before the start wraps: the
// difference is unsigned, its minutes are cut to 32 bits and printed signed.
void WriteDuration(NA_INFO& record, LONGLONG start, LONGLONG end) {
  const unsigned long long seconds =
      (static_cast<unsigned long long>(end) - static_cast<unsigned long long>(start)) /
      kUnitsPerSecond;
  sprintf_s(record.szDuration, sizeof record.szDuration, "%dmin:%dsec",
            static_cast<int>(static_cast<DWORD>(seconds / 60)), static_cast<int>(seconds % 60));
}

// Leaves the recording at its audio. On the G.726 walk the end time receives the "eyre" value.
bool FindAudio(SealedCopy& copy, UWORD codec, LONGLONG& endTime) {
  VerifyRecording& engine = copy.engine;
  unsigned long unusedRate = 0;
  int unusedBits = 0;
  engine.m_lastError.clear();
  copy.audioBytes = codec == kCodecGsm
                        ? engine.WalkToWAVDataGSM(copy.recording, unusedRate, unusedBits)
                        : engine.WalkToG726WAVData(copy.recording, copy.factValue, endTime);
  if (!copy.IsSound(copy.recording)) return false;
  if (copy.audioBytes != 0) return true;
  copy.error = engine.m_lastError;
  if (copy.error.empty())
    copy.error.Format("No audio in WAVE file \"%s\"", copy.recording.GetPathname());
  return false;
}

// A recording cut short is sealed with zeros in the place of what it lacks, within reason.
bool CanHoldAudio(SealedCopy& copy) {
  const char* const path = copy.recording.GetPathname();
  if (copy.audioBytes > kMostAudio) {
    copy.error.Format("WAVE file \"%s\" declares %lu bytes of audio, more than can be sealed", path,
                      copy.audioBytes);
    return false;
  }
  const unsigned long missing = copy.MissingAudio();
  if (!copy.IsSound(copy.recording)) return false;
  if (missing <= kMostMissingAudio) return true;
  copy.error.Format("WAVE file \"%s\" lacks %lu of the %lu bytes of audio it declares", path,
                    missing, copy.audioBytes);
  return false;
}

// Builds what the digest covers, then writes the header again with the seal and the start time.
bool WriteSealedFile(SealedCopy& copy, LONGLONG* startTime) {
  unsigned char digest[kDigestSize];
  if (!copy.Build(digest)) return false;
  copy.record.dwSigned = 1;
  std::memcpy(copy.record.bySignature, digest, sizeof digest);
  copy.engine.WriteG726WAVHeader(copy.temporary, copy.audioBytes, copy.factValue, startTime,
                                 &copy.record);
  return copy.IsComplete();
}

// The path of an open file always has a directory part.
tstring DirectoryOf(const char* path) {
  return tstring(path).Left(static_cast<unsigned int>(std::strrchr(path, '/') + 1 - path));
}

// Whatever happens to the machine from here on, the sealed copy is there.
bool FlushTemporary(SealedCopy& copy) {
  if (!copy.temporary.Flush()) return copy.IsSound(copy.temporary);
  const tstring directory = DirectoryOf(copy.temporary.GetPathname());
  if (TFileHandler::FlushToDisk(directory.c_str())) return true;
  copy.error.Format("Directory \"%s\" can't be flushed to disk", directory.c_str());
  return false;
}

void TraceFailedDelete(const TFileHandler& file) {
  DebugA(kTraceFailure, "%s - failed to delete file \"%s\", error \"%s\" has occurred.",
         kCreateSignature.signature, file.GetPathname(), file.DisplayLastError());
}

void TraceFailedTransfer(const char* verb, const SealedCopy& copy) {
  DebugA(kTraceFailure, "%s - failed to %s file \"%s\" to \"%s\", error \"%s\" has occurred.",
         kCreateSignature.signature, verb, copy.temporary.GetPathname(),
         copy.recording.GetPathname(), copy.recording.DisplayLastError());
}

// A failure names the temporary file in the trace, an exception too: it may be the only copy.
bool MoveIntoPlace(const SealedCopy& copy) {
  bool moved = false;
  try {
    moved = MoveFile(copy.temporary.GetPathname(), copy.recording.GetPathname()) != 0;
  } catch (...) {
    TraceFailedTransfer("rename", copy);
    throw;
  }
  if (!moved) TraceFailedTransfer("rename", copy);
  return moved;
}

// The copy is whole and on disk before the temporary file may go.
bool CopyIntoPlace(const SealedCopy& copy) {
  const char* const temporary = copy.temporary.GetPathname();
  const char* const recording = copy.recording.GetPathname();
  if (CopyFile(temporary, recording, 0)) {
    TFileHandler::CopyOwnerAndMode(temporary, recording);  // a failure is logged; the seal stands
    if (TFileHandler::FlushToDisk(recording) &&
        TFileHandler::FlushToDisk(DirectoryOf(recording).c_str())) {
      return true;
    }
  }
  TraceFailedTransfer("copy", copy);
  return false;
}

// Once the recording is deleted the temporary file is its only copy: nothing removes that before
// the move or the copy has succeeded.
void ReplaceRecording(SealedCopy& copy, bool& result) {
  const HoldCancellation untilReplaced;
  if (!copy.recording.Delete()) TraceFailedDelete(copy.recording);
  if (MoveIntoPlace(copy)) {
    result = true;
    TFileHandler::FlushToDisk(DirectoryOf(copy.recording.GetPathname()).c_str());
  } else if (CopyIntoPlace(copy)) {
    result = true;
    if (!copy.temporary.Delete()) TraceFailedDelete(copy.temporary);
  }
}

}  // namespace

bool VerifyRecording::CreateSignature(const char* pszFileName, UWORD wCodec, LONGLONG* pStartTime,
                                      LONGLONG* pEndTime) {
  return RunOperation(kCreateSignature, pszFileName, [&](bool& result) {
    SealedCopy copy(*this);
    if (!copy.OpenRecording(pszFileName)) {
      TraceError(kCreateSignature, copy.error.c_str());
      return;
    }
    if (!GetNAInfo(&copy.record, copy.recording, nullptr)) {
      TraceNoRecord(kCreateSignature, pszFileName);
      return;
    }
    WriteDuration(copy.record, *pStartTime, *pEndTime);
    if (IsSignaturePresent(copy.record)) {
      result = true;
      return;
    }
    if (!copy.OpenTemporary()) {
      TraceError(kCreateSignature, copy.error.c_str());
      return;
    }
    TemporaryFileOwner owner(copy.temporary);
    ClearSeal(copy.record);
    if (!copy.ProtectTemporary() || !FindAudio(copy, wCodec, *pEndTime) || !CanHoldAudio(copy) ||
        !WriteSealedFile(copy, pStartTime) || !FlushTemporary(copy) || !copy.IsUnchanged()) {
      TraceError(kCreateSignature, copy.error.c_str());
      return;
    }
    copy.temporary.Close();
    owner.HandOn();
    ReplaceRecording(copy, result);
  });
}
