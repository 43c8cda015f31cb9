#ifndef TOOLS_CORVO_AUDIOINPUT_H
#define TOOLS_CORVO_AUDIOINPUT_H

#include <optional>
#include <string>

#include "platform/Win32Types.h"

namespace corvo {

enum class Codec { kG726, kGsm, kPcm };

// Format tags of WAVE files.
constexpr WORD kTagPcm = 1;
constexpr WORD kTagGsm = 49;
constexpr WORD kTagG726 = 100;
constexpr WORD kTagG726Other = 69;  // what common tools write

constexpr DWORD kSampleRate = 8000;

// A recording's audio: one channel of 8000 samples a second; G.726 with 2 bits a sample (high bits
// first), GSM 6.10 in WAVE blocks, or linear samples of 16 bits.
struct Audio {
  Codec codec;
  std::string bytes;
};

// Reads a WAVE file, or raw audio of the given codec (GSM as .gsm files have it). A WAVE file must
// be of the given codec if there is one. Throws InputError.
Audio ReadAudio(const std::string& file, std::optional<Codec> codec);

}  // namespace corvo

#endif
