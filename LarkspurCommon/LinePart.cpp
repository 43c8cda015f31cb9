// The search for a line's end and the copy of the line, in one pass: 16 bytes at a time where the
// processor can. Lines are short, so that two passes and their calls cost more than the bytes.

#include "LarkspurCommon/LinePart.h"

#include <emmintrin.h>

namespace {

constexpr std::size_t kBlock = sizeof(__m128i);

std::size_t CopyByBytes(char* out, const char* in, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    out[i] = in[i];
    if (in[i] == '\n' || in[i] == '\r') return i + 1;
  }
  return size;
}

// What a block written from here on leaves as it was: `kUntouched + kBlock - n`, all but the first
// n bytes.
// clang-format off
alignas(kBlock) constexpr char kUntouched[2 * kBlock] = {
    0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
// clang-format on

[[gnu::target("sse2"), gnu::always_inline]] inline __m128i Load(const char* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

[[gnu::target("sse2"), gnu::always_inline]] inline void Store(char* to, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}

// A host's stack may be aligned to 4 bytes only.
[[gnu::target("sse2"), gnu::force_align_arg_pointer]] std::size_t CopyByBlocks(char* out,
                                                                               const char* in,
                                                                               std::size_t size) {
  const __m128i lf = _mm_set1_epi8('\n');
  const __m128i cr = _mm_set1_epi8('\r');
  std::size_t done = 0;
  for (; size - done >= kBlock; done += kBlock) {
    const __m128i block = Load(in + done);
    const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(block, lf), _mm_cmpeq_epi8(block, cr));
    const auto found = static_cast<unsigned>(_mm_movemask_epi8(ends));
    if (found != 0) {
      const std::size_t length = static_cast<unsigned>(__builtin_ctz(found)) + 1;
      const __m128i untouched = Load(kUntouched + kBlock - length);
      Store(out + done, _mm_or_si128(_mm_andnot_si128(untouched, block),
                                     _mm_and_si128(untouched, Load(out + done))));
      return done + length;
    }
    Store(out + done, block);
  }
  return done + CopyByBytes(out + done, in + done, size - done);
}

}  // namespace

std::size_t CopyLinePart(char* out, const char* in, std::size_t size) {
  // Asked each time: that is one load.
  return __builtin_cpu_supports("sse2") ? CopyByBlocks(out, in, size) : CopyByBytes(out, in, size);
}
