#ifndef TOOLS_CORVO_GSMBLOCKS_H
#define TOOLS_CORVO_GSMBLOCKS_H

#include <cstddef>
#include <string>

namespace corvo {

constexpr std::size_t kGsmFrameBytes = 33;  // 160 samples, as .gsm files hold them
constexpr std::size_t kGsmBlockBytes = 65;  // 320 samples, as WAVE files hold them
constexpr unsigned short kGsmBlockSamples = 320;

// Whether these are whole GSM 6.10 frames, each beginning with the format's magic half byte.
bool AreGsmFrames(const std::string& bytes);

// Packs frames, two to a block, as the WAVE format has them: the same parameters, without the
// magic, in the other bit order. Nothing is re-encoded. A silent frame follows an odd last one.
std::string PackGsmFrames(const std::string& frames);

}  // namespace corvo

#endif
