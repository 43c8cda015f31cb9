// MD5 with the structure and 16-bit lengths of RFC 1321's reference: update, padding, transform,
// and routines that encode, decode, copy and fill.

#include "LarkspurCommon/md5.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "LarkspurCommon/LittleEndian.h"

namespace {

constexpr std::uint16_t kBlockSize = 64;
constexpr std::uint16_t kLengthOffset = 56;  // of the 64-bit length in the last block
constexpr std::uint16_t kDigestSize = 16;
constexpr int kSteps = 64;

constexpr std::uint32_t kInitialState[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

constexpr std::uint32_t kSines[kSteps] = {  // 2^32 * |sin(step + 1)|, in radians
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Which word of the block a step adds: round r takes word (factor * step + offset) modulo 16.
constexpr int kWordFactor[4] = {1, 5, 3, 7};
constexpr int kWordOffset[4] = {0, 1, 5, 0};

void Copy(unsigned char* out, const unsigned char* in, std::uint16_t length) {
  if (length == 0) return;  // `in` may then be null, which memcpy must not see
  std::memcpy(out, in, length);
}

void Fill(unsigned char* out, unsigned char value, std::uint16_t length) {
  std::memset(out, value, length);
}

// `length`: bytes, a multiple of 4.
void Encode(unsigned char* out, const std::uint32_t* in, std::uint16_t length) {
  for (std::uint16_t i = 0; i < length; i += 4) StoreLe32(out + i, in[i / 4]);
}

// A word of a block where it is needed: a copy of them all would cost more.
std::uint32_t Decode(const unsigned char* block, std::uint16_t word) {
  return LoadLe32(block + std::size_t{4} * word);
}

template <int kStep>
[[gnu::always_inline]] inline void Step(std::uint32_t v[4], const unsigned char* block) {
  constexpr int kRound = kStep / 16;
  constexpr int kShift = kShifts[kRound][kStep % 4];
  constexpr int kWord = (kWordFactor[kRound] * (kStep % 16) + kWordOffset[kRound]) % 16;
  std::uint32_t& a = v[(kSteps - kStep) % 4];
  const std::uint32_t b = v[(kSteps - kStep + 1) % 4];
  const std::uint32_t c = v[(kSteps - kStep + 2) % 4];
  const std::uint32_t d = v[(kSteps - kStep + 3) % 4];
  std::uint32_t sum = Decode(block, kWord) + kSines[kStep];
  // Unless they are told that this sum is taken here, compilers add the constant last of all, where
  // it waits for b: a quarter of the speed with Clang.
  asm("" : "+r"(sum));
  sum += a;
  if constexpr (kRound == 0) {
    sum += d ^ (b & (c ^ d));
  } else if constexpr (kRound == 1) {
    // "Or" would do, but sums let the half without b be added before b is known.
    sum += c & ~d;
    sum += b & d;
  } else if constexpr (kRound == 2) {
    sum += c ^ d ^ b;
  } else {
    sum += c ^ (b | ~d);
  }
  a = (sum << kShift | sum >> (32 - kShift)) + b;
}

template <int... kStep>
[[gnu::always_inline]] inline void AllSteps(std::uint32_t v[4], const unsigned char* block,
                                            std::integer_sequence<int, kStep...>) {
  (Step<kStep>(v, block), ...);
}

// Takes whole blocks; the state stays in registers from one to the next.
void Transform(std::uint32_t state[4], const unsigned char* block, std::size_t blocks) {
  std::uint32_t v[4] = {state[0], state[1], state[2], state[3]};
  for (const unsigned char* const end = block + kBlockSize * blocks; block != end;
       block += kBlockSize) {
    const std::uint32_t before[4] = {v[0], v[1], v[2], v[3]};
    AllSteps(v, block, std::make_integer_sequence<int, kSteps>());
    for (int i = 0; i < 4; ++i) v[i] += before[i];
  }
  std::copy_n(v, 4, state);
}

std::uint16_t Pending(const MD5_CTX& context) {
  return static_cast<std::uint16_t>(context.count[0] / 8 % kBlockSize);
}

void AddToCount(MD5_CTX& context, std::uint16_t length) {
  const std::uint32_t bits = std::uint32_t{length} * 8;
  context.count[0] += bits;
  if (context.count[0] < bits) ++context.count[1];
}

}  // namespace

void MD5Init(MD5_CTX* context) {
  std::memcpy(context->state, kInitialState, sizeof kInitialState);
  context->count[0] = context->count[1] = 0;
}

void MD5Update(MD5_CTX* context, unsigned char* input, std::uint16_t length) {
  const std::uint16_t pending = Pending(*context);
  AddToCount(*context, length);
  const auto missing = static_cast<std::uint16_t>(kBlockSize - pending);
  if (length < missing) {
    Copy(context->buffer + pending, input, length);
    return;
  }
  const unsigned char* const end = input + length;
  const unsigned char* next = input;
  if (pending > 0) {
    Copy(context->buffer + pending, next, missing);
    Transform(context->state, context->buffer, 1);
    next += missing;
  }
  const auto blocks = static_cast<std::size_t>(end - next) / kBlockSize;
  Transform(context->state, next, blocks);
  next += blocks * kBlockSize;
  Copy(context->buffer, next, static_cast<std::uint16_t>(end - next));
}

void MD5Final(unsigned char* digest, MD5_CTX* context) {
  unsigned char bits[8];
  Encode(bits, context->count, sizeof bits);
  unsigned char padding[kBlockSize] = {0x80};
  const std::uint16_t pending = Pending(*context);
  const int zerosEnd = pending < kLengthOffset ? kLengthOffset : kBlockSize + kLengthOffset;
  MD5Update(context, padding, static_cast<std::uint16_t>(zerosEnd - pending));
  MD5Update(context, bits, sizeof bits);
  if (digest == nullptr) return;
  Encode(digest, context->state, kDigestSize);
  Fill(reinterpret_cast<unsigned char*>(context), 0, sizeof *context);
}
