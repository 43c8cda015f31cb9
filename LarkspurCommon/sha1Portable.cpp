// SHA-1's compression function in plain C++.

#include <utility>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha1Compress.h"
#include "LarkspurCommon/sha1Rounds.h"

namespace {

// `ring` holds the last 16 words of the message schedule.
template <std::size_t kRound>
[[gnu::always_inline]] inline void Round(std::uint32_t v[5], std::uint32_t ring[16],
                                         const unsigned char* block) {
  std::uint32_t& w = ring[kRound % 16];
  if constexpr (kRound < 16) {
    w = LoadBe32(block + 4 * kRound);
  } else {
    w ^= ring[(kRound + 2) % 16] ^ ring[(kRound + 8) % 16] ^ ring[(kRound + 13) % 16];
    w = RotateLeft(w, 1);
  }
  Sha1Round<kRound>(v, w + kSha1Constants[kRound / 20]);
}

// Unrolled, so that every word stays where it is.
template <std::size_t... kRound>
[[gnu::always_inline]] inline void AllRounds(std::uint32_t v[5], const unsigned char* block,
                                             std::index_sequence<kRound...>) {
  std::uint32_t ring[16];
  (Round<kRound>(v, ring, block), ...);
}

}  // namespace

void Sha1CompressPortable(std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += kShaBlockSize) {
    std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
    AllRounds(v, blocks, std::make_index_sequence<kSha1Rounds>());
    for (int i = 0; i < 5; ++i) state[i] += v[i];
  }
}
