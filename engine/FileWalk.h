#ifndef ENGINE_FILEWALK_H
#define ENGINE_FILEWALK_H

#include "engine/CorvoVerifiedRecording.h"

// WalkToG726WAVData for those who must tell a refused walk from one that found an empty "data"
// chunk: false is a refusal.
bool FindG726Audio(VerifyRecording& engine, TFileHandler& file, unsigned long& factValue,
                   long long& eyreValue, unsigned long& audioBytes);

#endif
