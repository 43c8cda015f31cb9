// SHA-1's compression function in plain C++, as FIPS 180-1 section 7 writes it down.

#include <utility>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha1Compress.h"

namespace {

constexpr std::size_t kRounds = 80;

struct Words {
  std::uint32_t v[5];   // A to E: a round's A stands one place before the last round's
  std::uint32_t w[16];  // the last 16 words of the message schedule, a ring
};

inline std::uint32_t RotateLeft(std::uint32_t value, int bits) {
  return value << bits | value >> (32 - bits);
}

// The round function and constant. A sum stands for "or" where no bit can be set on both sides.
template <std::size_t kRound>
inline std::uint32_t Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  if constexpr (kRound < 20) {
    return (d ^ (b & (c ^ d))) + 0x5A827999u;
  } else if constexpr (kRound < 40) {
    return (b ^ c ^ d) + 0x6ED9EBA1u;
  } else if constexpr (kRound < 60) {
    return (b & c) + (d & (b ^ c)) + 0x8F1BBCDCu;
  } else {
    return (b ^ c ^ d) + 0xCA62C1D6u;
  }
}

template <std::size_t kRound>
[[gnu::always_inline]] inline void Round(Words& words, const unsigned char* block) {
  std::uint32_t& w = words.w[kRound % 16];
  if constexpr (kRound < 16) {
    w = LoadBe32(block + 4 * kRound);
  } else {
    w ^= words.w[(kRound + 2) % 16] ^ words.w[(kRound + 8) % 16] ^ words.w[(kRound + 13) % 16];
    w = RotateLeft(w, 1);
  }
  const auto place = [&](std::size_t letter) -> std::uint32_t& {
    return words.v[(kRounds - kRound + letter) % 5];
  };
  std::uint32_t& b = place(1);
  place(4) += RotateLeft(place(0), 5) + Mix<kRound>(b, place(2), place(3)) + w;
  b = RotateLeft(b, 30);
}

// Unrolled, so that every word stays where it is and no round moves five of them along.
template <std::size_t... kRound>
[[gnu::always_inline]] inline void AllRounds(Words& words, const unsigned char* block,
                                             std::index_sequence<kRound...>) {
  (Round<kRound>(words, block), ...);
}

}  // namespace

void Sha1CompressPortable(std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += kShaBlockSize) {
    Words words;
    for (int i = 0; i < 5; ++i) words.v[i] = state[i];
    AllRounds(words, blocks, std::make_index_sequence<kRounds>());
    for (int i = 0; i < 5; ++i) state[i] += words.v[i];
  }
}
