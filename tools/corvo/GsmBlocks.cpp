// GSM 6.10 audio: from the frames of .gsm files to the blocks of WAVE files.

#include "tools/corvo/GsmBlocks.h"

namespace corvo {
namespace {

constexpr unsigned kMagic = 0xD;
constexpr unsigned kMagicBits = 4;

// Widths of a frame's parameters in bits, in order: eight filter coefficients, then four sub-frames
// of lag, gain, grid position, block amplitude and 13 pulses.
constexpr unsigned kFilterBits[] = {6, 6, 5, 5, 4, 4, 3, 3};
constexpr unsigned kSubframeBits[] = {7, 2, 2, 6, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
constexpr int kSubframes = 4;

// What the decoder turns into silence: pulses in the middle of their scale, no gain.
constexpr char kSilentFrame[] =
    "\xD8\x20\xA2\xE1\x5A\x50\x00\x49\x24\x92\x49\x24\x50\x00\x49\x24\x92"
    "\x49\x24\x50\x00\x49\x24\x92\x49\x24\x50\x00\x49\x24\x92\x49\x24";
static_assert(sizeof kSilentFrame == kGsmFrameBytes + 1);

class HighBitsFirstReader {
 public:
  explicit HighBitsFirstReader(const char* bytes) : m_bytes(bytes) {}

  unsigned Read(unsigned width) {
    unsigned value = 0;
    for (; width != 0; --width, ++m_bit) {
      value =
          value << 1 | ((static_cast<unsigned char>(m_bytes[m_bit / 8]) >> (7 - m_bit % 8)) & 1);
    }
    return value;
  }

 private:
  const char* m_bytes;
  unsigned m_bit = 0;
};

class LowBitsFirstWriter {
 public:
  explicit LowBitsFirstWriter(char* clearedBytes) : m_bytes(clearedBytes) {}

  void Write(unsigned value, unsigned width) {
    for (; width != 0; --width, value >>= 1, ++m_bit) {
      char& byte = m_bytes[m_bit / 8];
      byte = static_cast<char>(static_cast<unsigned char>(byte) | (value & 1) << (m_bit % 8));
    }
  }

 private:
  char* m_bytes;
  unsigned m_bit = 0;
};

void PackFrame(const char* frame, LowBitsFirstWriter& block) {
  HighBitsFirstReader bits(frame);
  bits.Read(kMagicBits);
  for (const unsigned width : kFilterBits) block.Write(bits.Read(width), width);
  for (int subframe = 0; subframe < kSubframes; ++subframe) {
    for (const unsigned width : kSubframeBits) block.Write(bits.Read(width), width);
  }
}

}  // namespace

bool AreGsmFrames(const std::string& bytes) {
  if (bytes.size() % kGsmFrameBytes != 0) return false;
  for (std::size_t frame = 0; frame < bytes.size(); frame += kGsmFrameBytes) {
    if (HighBitsFirstReader(&bytes[frame]).Read(kMagicBits) != kMagic) return false;
  }
  return true;
}

std::string PackGsmFrames(const std::string& frames) {
  const std::size_t count = frames.size() / kGsmFrameBytes;
  std::string blocks((count + 1) / 2 * kGsmBlockBytes, '\0');
  for (std::size_t frame = 0; frame < count; frame += 2) {
    LowBitsFirstWriter block(&blocks[frame / 2 * kGsmBlockBytes]);
    PackFrame(&frames[frame * kGsmFrameBytes], block);
    PackFrame(frame + 1 < count ? &frames[(frame + 1) * kGsmFrameBytes] : kSilentFrame, block);
  }
  return blocks;
}

}  // namespace corvo
