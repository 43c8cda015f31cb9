// SHA-256's compression function in plain C++, as FIPS 180-4 section 6.2.2 writes it down.

#include <utility>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha256Compress.h"

namespace {

constexpr std::size_t kRounds = 64;

constexpr std::uint32_t kConstants[kRounds] = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5,
    0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174,
    0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147, 0x06CA6351, 0x14292967,
    0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3,
    0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208, 0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};

struct Words {
  std::uint32_t v[8];   // A to H: a round's A stands one place before the last round's
  std::uint32_t w[16];  // the last 16 words of the message schedule, a ring
};

inline std::uint32_t RotateRight(std::uint32_t value, int bits) {
  return value >> bits | value << (32 - bits);
}

inline std::uint32_t Rotations(std::uint32_t x, int first, int second, int third) {
  return RotateRight(x, first) ^ RotateRight(x, second) ^ RotateRight(x, third);
}

template <std::size_t kRound>
[[gnu::always_inline]] inline std::uint32_t NextWord(Words& words, const unsigned char* block) {
  std::uint32_t& w = words.w[kRound % 16];
  if constexpr (kRound < 16) {
    w = LoadBe32(block + 4 * kRound);
  } else {
    const std::uint32_t early = words.w[(kRound + 1) % 16];
    const std::uint32_t late = words.w[(kRound + 14) % 16];
    w += words.w[(kRound + 9) % 16] + (RotateRight(early, 7) ^ RotateRight(early, 18) ^ early >> 3);
    w += RotateRight(late, 17) ^ RotateRight(late, 19) ^ late >> 10;
  }
  return w;
}

template <std::size_t kRound>
[[gnu::always_inline]] inline void Round(Words& words, const unsigned char* block) {
  const auto place = [&](std::size_t letter) -> std::uint32_t& {
    return words.v[(kRounds - kRound + letter) % 8];
  };
  const std::uint32_t a = place(0), b = place(1), c = place(2);
  const std::uint32_t e = place(4), f = place(5), g = place(6);
  std::uint32_t& h = place(7);
  h += Rotations(e, 6, 11, 25) + (g ^ (e & (f ^ g))) + kConstants[kRound];
  h += NextWord<kRound>(words, block);
  place(3) += h;
  h += Rotations(a, 2, 13, 22) + ((a & b) | (c & (a | b)));
}

// Unrolled, so that every word stays where it is and no round moves eight of them along.
template <std::size_t... kRound>
[[gnu::always_inline]] inline void AllRounds(Words& words, const unsigned char* block,
                                             std::index_sequence<kRound...>) {
  (Round<kRound>(words, block), ...);
}

}  // namespace

void Sha256CompressPortable(std::uint32_t state[8], const unsigned char* blocks,
                            std::size_t count) {
  for (; count > 0; --count, blocks += kShaBlockSize) {
    Words words;
    for (int i = 0; i < 8; ++i) words.v[i] = state[i];
    AllRounds(words, blocks, std::make_index_sequence<kRounds>());
    for (int i = 0; i < 8; ++i) state[i] += words.v[i];
  }
}
