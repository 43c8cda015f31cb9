// The library as the loader linked it to the program at its start.

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/debug.h"
#include "Library.h"
#include "engine/CorvoVerifiedRecording.h"
#include "platform/HostServices.h"

Library OpenLibrary(const char*) {
  return {DebugA,
          DebugW,
          TFileHandler::Delete,
          CreateSignature,
          VerifySignature,
          IsSignaturePresent,
          CorvoSettingsDirectory,
          CorvoReleaseMarker};
}
