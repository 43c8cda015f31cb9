// SHA-1's compression function by the SHA extensions of x86 processors. Its functions ask for their
// instruction set one by one: the rest of the library must run on any i686.

#include <cpuid.h>
#include <immintrin.h>

#include <utility>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha1Compress.h"

#define SHA_INSTRUCTIONS gnu::target("sha,sse4.1,ssse3")

namespace {

constexpr std::size_t kGroups = 20;  // of four rounds: what one instruction does

// Lanes count from the highest: A, B, C, D, and the schedule's words in their order.
struct Vectors {
  __m128i abcd;
  __m128i e;     // the highest lane: the A of four rounds ago, which becomes E when rotated
  __m128i w[4];  // the last 16 words of the message schedule, a ring
};

[[SHA_INSTRUCTIONS]] inline __m128i LoadWords(const unsigned char* bytes) {
  const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
  return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
}

template <std::size_t kGroup>
[[SHA_INSTRUCTIONS, gnu::always_inline]] inline void FourRounds(Vectors& v,
                                                                const unsigned char* block) {
  __m128i& w = v.w[kGroup % 4];
  if constexpr (kGroup < 4) {
    w = LoadWords(block + 16 * kGroup);
  } else {
    w = _mm_sha1msg1_epu32(w, v.w[(kGroup + 1) % 4]);
    w = _mm_xor_si128(w, v.w[(kGroup + 2) % 4]);
    w = _mm_sha1msg2_epu32(w, v.w[(kGroup + 3) % 4]);
  }
  // A block begins with E itself; nothing is left to rotate.
  const __m128i e = kGroup == 0 ? _mm_add_epi32(v.e, w) : _mm_sha1nexte_epu32(v.e, w);
  // The copy becomes E, and the rounds change A to D where they are: the other way round, the move
  // stands in the chain of rounds, which then waits for it unless the processor renames it away.
  v.e = v.abcd;
  asm("" : "+x"(v.e));
  v.abcd = _mm_sha1rnds4_epu32(v.abcd, e, kGroup / 5);
}

template <std::size_t... kGroup>
[[SHA_INSTRUCTIONS, gnu::always_inline]] inline void AllRounds(Vectors& v,
                                                               const unsigned char* block,
                                                               std::index_sequence<kGroup...>) {
  (FourRounds<kGroup>(v, block), ...);
}

}  // namespace

// A host's stack may be aligned to 4 bytes only, and GCC forgets -mstackrealign where a function
// has a target of its own.
[[SHA_INSTRUCTIONS, gnu::force_align_arg_pointer]] void Sha1CompressShaExtensions(
    std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  constexpr int kReverseLanes = 0x1B;
  auto* const stored = reinterpret_cast<__m128i*>(state);
  Vectors v;
  v.abcd = _mm_shuffle_epi32(_mm_loadu_si128(stored), kReverseLanes);
  v.e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
  for (; count > 0; --count, blocks += kShaBlockSize) {
    __m128i before[2] = {v.abcd, v.e};
    // In memory: with the 8 registers of 32-bit mode, compilers would else put E there and wait
    // for it when the next block begins.
    asm("" : "+m"(before));
    AllRounds(v, blocks, std::make_index_sequence<kGroups>());
    v.abcd = _mm_add_epi32(v.abcd, before[0]);
    v.e = _mm_sha1nexte_epu32(v.e, before[1]);
  }
  _mm_storeu_si128(stored, _mm_shuffle_epi32(v.abcd, kReverseLanes));
  state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(v.e, 3));
}

// Every kernel that runs on such a processor saves its 128-bit registers: nothing more to ask.
bool Sha1ShaExtensionsUsable() {
  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
  constexpr unsigned kSse = bit_SSSE3 | bit_SSE4_1;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & kSse) != kSse) return false;
  return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_SHA) != 0;
}
