#ifndef LARKSPURCOMMON_LINEPART_H
#define LARKSPURCOMMON_LINEPART_H

// The search for a line's end and the copy of the line, in one pass: 16 bytes at a time where the
// processor can. Lines are short, so that two passes and their calls cost more than the bytes; all
// of this is inline for the same reason.

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace line_part {

constexpr std::size_t kBlock = sizeof(__m128i);

inline std::size_t CopyByBytes(char* out, const char* in, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    out[i] = in[i];
    if (in[i] == '\n' || in[i] == '\r') return i + 1;
  }
  return size;
}

// Copies `size` bytes, which are at least one T and at most two: the two may overlap.
template <typename T>
[[gnu::always_inline]] inline void CopyFromBothEnds(char* out, const char* in, std::size_t size) {
  T first;
  T last;
  std::memcpy(&first, in, sizeof(T));
  std::memcpy(&last, in + size - sizeof(T), sizeof(T));
  std::memcpy(out, &first, sizeof(T));
  std::memcpy(out + size - sizeof(T), &last, sizeof(T));
}

// Copies a line shorter than a block and nothing behind it.
[[gnu::always_inline]] inline void CopyShort(char* out, const char* in, std::size_t size) {
  if (size >= 8) return CopyFromBothEnds<std::uint64_t>(out, in, size);
  if (size >= 4) return CopyFromBothEnds<std::uint32_t>(out, in, size);
  if (size >= 2) return CopyFromBothEnds<std::uint16_t>(out, in, size);
  *out = *in;
}

[[gnu::target("sse2"), gnu::always_inline]] inline __m128i Load(const char* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

[[gnu::target("sse2"), gnu::always_inline]] inline void Store(char* to, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}

[[gnu::target("sse2"), gnu::always_inline]] inline std::size_t CopyByBlocks(char* out,
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
      const std::size_t length = done + static_cast<unsigned>(__builtin_ctz(found)) + 1;
      // A line of a block and more ends with a whole one, which overlaps the one before.
      if (length < kBlock)
        CopyShort(out, in, length);
      else
        Store(out + length - kBlock, Load(in + length - kBlock));
      return length;
    }
    Store(out + done, block);
  }
  return done + CopyByBytes(out + done, in + done, size - done);
}

#ifdef __SSE2__

[[gnu::always_inline]] inline std::size_t Copy(char* out, const char* in, std::size_t size) {
  return CopyByBlocks(out, in, size);
}

#else

// A host's stack may be aligned to 4 bytes only.
[[gnu::target("sse2"), gnu::force_align_arg_pointer]] inline std::size_t CopyOnAlignedStack(
    char* out, const char* in, std::size_t size) {
  return CopyByBlocks(out, in, size);
}

// The processor is asked each time: that is one load.
inline std::size_t Copy(char* out, const char* in, std::size_t size) {
  return __builtin_cpu_supports("sse2") ? CopyOnAlignedStack(out, in, size)
                                        : CopyByBytes(out, in, size);
}

#endif

}  // namespace line_part

// Copies what comes up to and including the first CR or LF, or all of `size` bytes where there is
// none, and returns how many. Bytes of `out` behind these stay as they are.
[[gnu::always_inline]] inline std::size_t CopyLinePart(char* out, const char* in,
                                                       std::size_t size) {
  return line_part::Copy(out, in, size);
}

#endif
