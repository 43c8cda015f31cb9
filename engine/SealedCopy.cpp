// The temporary copy that sealing and verification both build and digest: what one writes the
// other must write again, byte for byte.

#include "engine/SealedCopy.h"

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/Pacing.h"
#include "LarkspurCommon/sha1.h"
#include "engine/FileBytes.h"

namespace {

constexpr unsigned long kCopyStep = 1000;
constexpr DWORD kDigestBlock = 8192;

constexpr unsigned long kWorkMilliseconds = 10;
constexpr DWORD kPauseMilliseconds = 50;

}  // namespace

SealedCopy::SealedCopy(VerifyRecording& owner) : engine(owner), m_yieldTimer(os_clock()) {
}

bool SealedCopy::OpenRecording(const char* path) {
  if (recording.Open(path, OFM_READ, NLM_BINARY, false, false) && recording.GetMark(m_opened)) {
    return true;
  }
  error = recording.DisplayLastError();
  return false;
}

bool SealedCopy::IsUnchanged() {
  FileMark open{};
  FileMark named{};
  if (!recording.GetMark(open)) {
    error = recording.DisplayLastError();
    return false;
  }
  const bool isThere = TFileHandler::GetMark(recording.GetPathname(), named);
  if (isThere && open == m_opened && named == m_opened) return true;
  error.Format("File \"%s\" has changed while it was being sealed", recording.GetPathname());
  return false;
}

bool SealedCopy::OpenTemporary() {
  if (temporary.OpenTempFile(OFM_READWRITE, NLM_BINARY, false, "QRT", ".tmp")) return true;
  error = temporary.DisplayLastError();
  return false;
}

bool SealedCopy::ProtectTemporary() {
  if (TFileHandler::CopyOwnerAndMode(recording.GetPathname(), temporary.GetPathname())) return true;
  error.Format("The permissions of file \"%s\" can't be given to file \"%s\"",
               recording.GetPathname(), temporary.GetPathname());
  return false;
}

unsigned long SealedCopy::MissingAudio() {
  const LONGLONG left = recording.GetCurrentFileSize() - LONGLONG{recording.GetFilePosition()};
  if (left >= static_cast<LONGLONG>(audioBytes)) return 0;
  return left <= 0 ? audioBytes : audioBytes - static_cast<unsigned long>(left);
}

bool SealedCopy::Build(unsigned char digest[kDigestSize]) {
  long long noEyreValue = 0;
  engine.WriteG726WAVHeader(temporary, audioBytes, factValue, &noEyreValue, &record);
  return CopyAudio() && IsComplete() && Digest(digest);
}

// One step at a time, each looked at: a full disk must not cost the whole copy's time and a log
// line for each of its steps.
bool SealedCopy::CopyAudio() {
  for (unsigned long left = audioBytes; left != 0;) {
    const unsigned long step = std::min(left, kCopyStep);
    engine.CopyData(m_yieldTimer, temporary, recording, step);
    if (!IsSound(temporary) || !IsSound(recording)) return false;
    left -= step;
  }
  return true;
}

bool SealedCopy::Digest(unsigned char digest[kDigestSize]) {
  unsigned char block[kDigestBlock];
  SHA1_CTX context;
  SHA1Init(&context);
  temporary.MoveToPosition(0, 0);
  LONGLONG total = 0;
  for (;;) {
    DWORD count = 0;
    temporary.Read(block, sizeof block, &count);
    if (temporary.EndOfFile() || temporary.FailedSinceOpen()) break;
    if (count > 0) SHA1Update(&context, block, count);
    total += count;
  }
  SHA1Final(digest, &context);
  return IsSound(temporary) && HasFullLength(total);
}

bool SealedCopy::IsComplete() {
  if (!IsSound(temporary)) return false;
  const LONGLONG size = temporary.GetCurrentFileSize();
  return IsSound(temporary) && HasFullLength(size);
}

bool SealedCopy::HasFullLength(LONGLONG length) {
  const unsigned long expected = kSealedHeaderSize + audioBytes;
  if (length == static_cast<LONGLONG>(expected)) return true;
  error.Format("File \"%s\" holds %lld bytes instead of %lu", temporary.GetPathname(), length,
               expected);
  return false;
}

bool SealedCopy::IsSound(const TFileHandler& file) {
  if (!file.FailedSinceOpen()) return true;
  error = file.DisplayLastError();
  return false;
}

void VerifyRecording::CopyData(unsigned long& yieldTimer, TFileHandler& destination,
                               TFileHandler& source, unsigned long length) {
  unsigned char step[kCopyStep];
  while (length != 0) {
    const DWORD count = static_cast<DWORD>(std::min(length, kCopyStep));
    length -= count;
    const DWORD delivered = ReadFully(source, step, count);
    if (delivered < count) std::memset(step + delivered, 0, count - delivered);
    destination.Write(step, count);
    GiveUpTimeSlice(yieldTimer);
  }
}

void VerifyRecording::GiveUpTimeSlice(unsigned long& yieldTimer) {
  PauseWhenDue(yieldTimer, kWorkMilliseconds, kPauseMilliseconds);
}
