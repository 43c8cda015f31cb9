#ifndef TOOLS_CORVO_RECORDING_H
#define TOOLS_CORVO_RECORDING_H

#include <optional>
#include <string>

#include "engine/NaInfo.h"

namespace corvo {

// A file that holds a recording, sealed or not.
struct Recording {
  std::string name;  // as the user typed it
  std::string path;  // as the library gets it
  NA_INFO record;
};

// The library's text about a recording, with the name that the user knows.
std::string InUsersWords(const Recording& recording, std::string text);

// Finds the file and reads its metadata record. Throws InputError.
Recording FindRecording(const std::string& name);

// How a recording's audio is to be found, what it says about its times, and the value that
// CreateSignature knows the codec by.
struct SealableAudio {
  UWORD codec;
  std::optional<long long> start;  // G.726 only, where it isn't zero
  long long duration;
};

constexpr UWORD kSealGsm = 16;
constexpr UWORD kSealG726 = 0;  // any value but 16

// Without a codec the recording's own format tag decides: GSM or, for every other, G.726. Throws
// InputError when the recording holds no such audio.
SealableAudio FindAudio(const Recording& recording, std::optional<UWORD> codec);

}  // namespace corvo

#endif
