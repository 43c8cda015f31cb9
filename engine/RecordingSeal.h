#ifndef ENGINE_RECORDINGSEAL_H
#define ENGINE_RECORDINGSEAL_H

/* The library's outside face: four functions under plain symbol names, for hosts in C and C++.

   Each call is independent and synchronous, runs on the caller's thread and keeps no state. Calls
   for different recordings may run at the same time; calls for the same recording are not
   coordinated: sealing replaces the file under any other call that reads it, and of two calls that
   seal it one may find it gone or changed, and fail. The answer is the
   result; the reason of a false goes to the trace (LarkspurCommon/debug.h), failures at identifier
   0x00270002. `pszFileName` is a zero-terminated path of at most 259 bytes; a bare name means a
   file in the directory of the running program, and letter case is ignored where no exact spelling
   exists. */

#include "platform/Export.h"

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#endif

/* Seals a recording: rewrites it into the fixed G.726 WAVE layout with the SHA-1 digest over that
   layout in its metadata record. True: the recording now carries a seal; a recording that already
   carries one is left as it is. False: the recording is untouched, or (after a failed replacement,
   named in the trace) sealed and complete under its temporary name. One that changes while it is
   being sealed, in size, times, attributes or names (links too), is refused and stays as it became.

   wCodec: 16 for GSM audio; any other value for a recording with G.726 chunks.
   pStartTime, pEndTime: 64-bit times in units of 100 ns, neither may be null. Their difference is
   the duration written into the record; the start time becomes the "eyre" chunk. Unless wCodec is
   16, the search for the audio of a recording that isn't sealed yet stores the recording's own
   "eyre" value in *pEndTime. */
CORVO_API bool CreateSignature(const char* pszFileName, unsigned short wCodec,
                               long long* pStartTime, long long* pEndTime);

/* True: the recording is sealed, and what the seal covers is unchanged. It is only read. */
CORVO_API bool VerifySignature(const char* pszFileName);

/* True: the recording's metadata record is marked as sealed. The digest is not looked at. */
CORVO_API bool IsSignaturePresent(const char* pszFileName);

/* Gives the metadata of a sealed recording as 28 items joined by ";".

   pszProperties: 2048 bytes, cleared first, or null. Receives the text and its terminating zero,
   cut after 2047 characters. Empty for a recording that can't be opened or isn't sealed. False only
   when a sealed recording's record could not be read. */
CORVO_API bool GetRecordingProperty(const char* pszFileName, char* pszProperties);

#ifdef __cplusplus
}
#endif

#endif
