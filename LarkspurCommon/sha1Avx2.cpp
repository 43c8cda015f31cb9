// SHA-1's compression function for processors with AVX2 but without SHA extensions: vectors work
// out the message schedules of two blocks at a time, four words of each, and the rounds are left
// nothing but to add them.

#include <immintrin.h>

#include <utility>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha1Compress.h"
#include "LarkspurCommon/sha1Rounds.h"

#define AVX2_INSTRUCTIONS gnu::target("avx2,bmi,bmi2")

namespace {

constexpr std::size_t kGroups = kSha1Rounds / 4;  // of four words
constexpr std::size_t kBlocks = 2;

// Four words of the first block, then four of the second, constants added.
using Schedule = std::uint32_t[kGroups][4 * kBlocks];

[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i LoadGroup(const unsigned char* first,
                                                                   const unsigned char* second) {
  const __m256i reversed =
      _mm256_broadcastsi128_si256(_mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203));
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(second));
  return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1),
                             reversed);
}

[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i Rotate(__m256i words, int bits) {
  return _mm256_or_si256(_mm256_slli_epi32(words, bits), _mm256_srli_epi32(words, 32 - bits));
}

[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i Xor(__m256i a, __m256i b, __m256i c,
                                                             __m256i d) {
  return _mm256_xor_si256(_mm256_xor_si256(a, b), _mm256_xor_si256(c, d));
}

// The words 14 (or 6) places before those of a group, in the groups 4 and 3 (or 2 and 1) before it.
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i Straddle(__m256i older, __m256i newer) {
  return _mm256_alignr_epi8(newer, older, 8);
}

// From the 16 words before. The last of the four depends on the first of them.
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i NextGroup(const __m256i* w) {
  const __m256i sum = Xor(w[-4], Straddle(w[-4], w[-3]), w[-2], _mm256_srli_si256(w[-1], 4));
  const __m256i first = _mm256_slli_si256(sum, 12);
  return _mm256_xor_si256(Rotate(sum, 1), Rotate(first, 2));
}

// From the 32 words before, none of which is in the group: the same recurrence, applied twice.
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline __m256i LaterGroup(const __m256i* w) {
  return Rotate(Xor(w[-8], w[-7], w[-4], Straddle(w[-2], w[-1])), 2);
}

template <std::size_t kGroup>
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline void PutGroup(__m256i* w, Schedule& schedule,
                                                               const unsigned char* first,
                                                               const unsigned char* second) {
  if constexpr (kGroup < 4) {
    w[kGroup] = LoadGroup(first + 16 * kGroup, second + 16 * kGroup);
  } else if constexpr (kGroup < 8) {
    w[kGroup] = NextGroup(w + kGroup);
  } else {
    w[kGroup] = LaterGroup(w + kGroup);
  }
  const __m256i constant = _mm256_set1_epi32(static_cast<int>(kSha1Constants[kGroup / 5]));
  _mm256_store_si256(reinterpret_cast<__m256i*>(schedule[kGroup]),
                     _mm256_add_epi32(w[kGroup], constant));
}

template <std::size_t... kGroup>
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline void PutSchedule(Schedule& schedule,
                                                                  const unsigned char* first,
                                                                  const unsigned char* second,
                                                                  std::index_sequence<kGroup...>) {
  __m256i w[kGroups];
  (PutGroup<kGroup>(w, schedule, first, second), ...);
}

template <std::size_t... kRound>
[[AVX2_INSTRUCTIONS, gnu::always_inline]] inline void AllRounds(std::uint32_t state[5],
                                                                const Schedule& schedule,
                                                                std::size_t block,
                                                                std::index_sequence<kRound...>) {
  std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
  (Sha1Round<kRound>(v, schedule[kRound / 4][4 * block + kRound % 4]), ...);
  for (int i = 0; i < 5; ++i) state[i] += v[i];
}

}  // namespace

// A host's stack may be aligned to 4 bytes only, and GCC forgets -mstackrealign where a function
// has a target of its own.
[[AVX2_INSTRUCTIONS, gnu::force_align_arg_pointer]] void Sha1CompressAvx2(
    std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  alignas(32) Schedule schedule;
  while (count > 0) {
    const std::size_t taken = count < kBlocks ? count : kBlocks;
    const unsigned char* const last = blocks + (taken - 1) * kShaBlockSize;
    PutSchedule(schedule, blocks, last, std::make_index_sequence<kGroups>());
    for (std::size_t i = 0; i < taken; ++i) {
      AllRounds(state, schedule, i, std::make_index_sequence<kSha1Rounds>());
    }
    blocks += taken * kShaBlockSize;
    count -= taken;
  }
}

bool Sha1Avx2Usable() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
         __builtin_cpu_supports("bmi2");
}
