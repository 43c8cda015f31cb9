// Whether a recording is sealed, and whether it still is what was sealed.

#include <cstring>

#include "engine/CorvoVerifiedRecording.h"
#include "engine/FileWalk.h"
#include "engine/Operation.h"
#include "engine/SealedCopy.h"
#include "platform/HoldCancellation.h"

namespace {

// Walks to the audio. False: the walker refuses the recording, or it ends before its declared
// audio; then it is not what was sealed, for a sealed recording always holds all of it.
bool FindSealedAudio(SealedCopy& copy) {
  long long eyreValue = 0;
  return FindG726Audio(copy.engine, copy.recording, copy.factValue, eyreValue, copy.audioBytes) &&
         copy.MissingAudio() == 0;
}

// Rebuilds what sealing digested and compares the digests. Writes the failure line: what can't be
// read or rebuilt is an error, not a forgery.
bool StillMatches(SealedCopy& copy, const char* path) {
  unsigned char stored[kDigestSize];
  unsigned char digest[kDigestSize];
  std::memcpy(stored, copy.record.bySignature, sizeof stored);
  ClearSeal(copy.record);
  const bool found = FindSealedAudio(copy);
  if (!copy.IsSound(copy.recording) || (found && !copy.Build(digest))) {
    TraceError(kVerifySignature, copy.error.c_str());
    return false;
  }
  if (found && std::memcmp(digest, stored, sizeof digest) == 0) return true;
  DebugA(kTraceFailure, "%s - Legal authentication failed for file - \"%s\".",
         kVerifySignature.signature, path);
  return false;
}

void Discard(TFileHandler& temporary) {
  const HoldCancellation hold;
  temporary.Delete();
}

}  // namespace

bool VerifyRecording::VerifySignature(const char* pszFileName) {
  return RunOperation(kVerifySignature, pszFileName, [&](bool& result) {
    SealedCopy copy(*this);
    if (!IsSignaturePresent(pszFileName)) {
      DebugA(kTraceFailure, "%s - no signature found within the file \"%s\".",
             kVerifySignature.signature, pszFileName);
      return;
    }
    if (!copy.OpenRecording(pszFileName)) {
      TraceError(kVerifySignature, copy.error.c_str());
      return;
    }
    if (!GetNAInfo(&copy.record, copy.recording, nullptr)) {
      TraceNoRecord(kVerifySignature, pszFileName);
      return;
    }
    if (!copy.OpenTemporary()) {
      TraceError(kVerifySignature, copy.error.c_str());
      return;
    }
    try {
      copy.ProtectTemporary();  // as far as it goes: the copy is thrown away
      result = StillMatches(copy, pszFileName);
    } catch (abi::__forced_unwind&) {
      Discard(copy.temporary);
      throw;
    }
    Discard(copy.temporary);  // an exception leaves it for the inquiry that follows
  });
}

bool VerifyRecording::IsSignaturePresent(const char* pszFileName) {
  return RunOperation(kIsSignaturePresent, pszFileName, [&](bool& result) {
    TFileHandler recording;
    if (!recording.Open(pszFileName, OFM_READ, NLM_BINARY, false, false)) {
      TraceError(kIsSignaturePresent, recording.DisplayLastError());
      return;
    }
    NA_INFO record{};
    if (!GetNAInfo(&record, recording, nullptr)) {
      TraceNoRecord(kIsSignaturePresent, pszFileName);
      return;
    }
    result = IsSignaturePresent(record);
  });
}
