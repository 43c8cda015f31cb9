// The search for a line's end and the copy of the line, in one pass: 16 bytes at a time where the
// processor can. Lines are short, so that two passes and their calls cost more than the bytes.

#include "LarkspurCommon/LinePart.h"

#include <emmintrin.h>

namespace {

std::size_t CopyByBytes(char* out, const char* in, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    out[i] = in[i];
    if (in[i] == '\n' || in[i] == '\r') return i + 1;
  }
  return size;
}

// A host's stack may be aligned to 4 bytes only.
[[gnu::target("sse2"), gnu::force_align_arg_pointer]] std::size_t CopyByBlocks(char* out,
                                                                               const char* in,
                                                                               std::size_t size) {
  constexpr std::size_t kBlock = sizeof(__m128i);
  const __m128i lf = _mm_set1_epi8('\n');
  const __m128i cr = _mm_set1_epi8('\r');
  std::size_t done = 0;
  for (; size - done >= kBlock; done += kBlock) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), block);
    const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(block, lf), _mm_cmpeq_epi8(block, cr));
    const auto found = static_cast<unsigned>(_mm_movemask_epi8(ends));
    if (found != 0) return done + static_cast<unsigned>(__builtin_ctz(found)) + 1;
  }
  return done + CopyByBytes(out + done, in + done, size - done);
}

}  // namespace

std::size_t CopyLinePart(char* out, const char* in, std::size_t size) {
  // Asked each time: that is one load.
  return __builtin_cpu_supports("sse2") ? CopyByBlocks(out, in, size) : CopyByBytes(out, in, size);
}
