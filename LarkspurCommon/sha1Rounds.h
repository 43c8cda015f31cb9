#ifndef LARKSPURCOMMON_SHA1ROUNDS_H
#define LARKSPURCOMMON_SHA1ROUNDS_H

#include <cstddef>
#include <cstdint>

// SHA-1's rounds in plain C++, as FIPS 180-1 section 7 writes them down, for every implementation
// that doesn't leave them to the processor.

constexpr std::size_t kSha1Rounds = 80;
constexpr std::uint32_t kSha1Constants[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

inline std::uint32_t RotateLeft(std::uint32_t value, int bits) {
  return value << bits | value >> (32 - bits);
}

// The round function. A sum stands for "or" where no bit can be set on both sides.
template <std::size_t kRound>
[[gnu::always_inline]] inline std::uint32_t Sha1Mix(std::uint32_t b, std::uint32_t c,
                                                    std::uint32_t d) {
  if constexpr (kRound < 20) {
    return d ^ (b & (c ^ d));
  } else if constexpr (kRound >= 40 && kRound < 60) {
    return (b & c) + (d & (b ^ c));
  } else {
    return b ^ c ^ d;
  }
}

// A round. `v` holds A to E, in places that go round so that no round moves five words along: a
// round's A stands one place before the last round's. `word` is the message word and the constant.
template <std::size_t kRound>
[[gnu::always_inline]] inline void Sha1Round(std::uint32_t v[5], std::uint32_t word) {
  constexpr auto kPlace = [](std::size_t letter) { return (kSha1Rounds - kRound + letter) % 5; };
  std::uint32_t& b = v[kPlace(1)];
  v[kPlace(4)] +=
      RotateLeft(v[kPlace(0)], 5) + Sha1Mix<kRound>(b, v[kPlace(2)], v[kPlace(3)]) + word;
  b = RotateLeft(b, 30);
}

#endif
