// SHA-1 over the compression function that suits the processor: contexts, padding, digests.

#include "LarkspurCommon/sha1.h"

#include <cstring>

#include "LarkspurCommon/sha1Compress.h"

namespace {

constexpr std::uint32_t kInitialState[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                            0xC3D2E1F0};
// What compressing a block of zeros makes of a state of zeros: computed each time, it would cost a
// message of one block a third more.
constexpr std::uint32_t kFinalState[5] = {0x9E1547ED, 0x57EC91C2, 0x30FA8BC8, 0xC7785A54,
                                          0xA7EFA5E3};
constexpr std::size_t kLengthOffset = 56;  // of the 64-bit length in the last block

void Compress(std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  static const auto compress =
      Sha1ShaExtensionsUsable() ? Sha1CompressShaExtensions : Sha1CompressPortable;
  compress(state, blocks, count);
}

void StoreBe32(unsigned char* bytes, std::uint32_t value) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

std::size_t Pending(const SHA1_CTX& context) {
  return context.count[0] / 8 % kSha1BlockSize;
}

void AddToCount(SHA1_CTX& context, unsigned int length) {
  const std::uint64_t count = std::uint64_t{context.count[1]} << 32 | context.count[0];
  const std::uint64_t sum = count + std::uint64_t{length} * 8;
  context.count[0] = static_cast<std::uint32_t>(sum);
  context.count[1] = static_cast<std::uint32_t>(sum >> 32);
}

void CompressPadding(SHA1_CTX& context) {
  std::size_t used = Pending(context);
  context.buffer[used++] = 0x80;
  if (used > kLengthOffset) {
    std::memset(context.buffer + used, 0, kSha1BlockSize - used);
    Compress(context.state, context.buffer, 1);
    used = 0;
  }
  std::memset(context.buffer + used, 0, kLengthOffset - used);
  StoreBe32(context.buffer + kLengthOffset, context.count[1]);
  StoreBe32(context.buffer + kLengthOffset + 4, context.count[0]);
  Compress(context.state, context.buffer, 1);
}

}  // namespace

void SHA1Init(SHA1_CTX* context) {
  std::memcpy(context->state, kInitialState, sizeof kInitialState);
  context->count[0] = context->count[1] = 0;
}

void SHA1Update(SHA1_CTX* context, const unsigned char* data, unsigned int length) {
  if (length == 0) return;  // `data` may then be null, which memcpy must not see
  const std::size_t pending = Pending(*context);
  AddToCount(*context, length);
  const std::size_t missing = kSha1BlockSize - pending;
  if (length < missing) {
    std::memcpy(context->buffer + pending, data, length);
    return;
  }
  std::size_t left = length;
  if (pending > 0) {
    std::memcpy(context->buffer + pending, data, missing);
    Compress(context->state, context->buffer, 1);
    data += missing;
    left -= missing;
  }
  Compress(context->state, data, left / kSha1BlockSize);
  const std::size_t rest = left % kSha1BlockSize;
  std::memcpy(context->buffer, data + left - rest, rest);
}

void SHA1Final(unsigned char* digest, SHA1_CTX* context) {
  CompressPadding(*context);
  for (std::size_t i = 0; i < 5; ++i) StoreBe32(digest + 4 * i, context->state[i]);
  *context = {};
  std::memcpy(context->state, kFinalState, sizeof kFinalState);
}

void SHA1Transform(unsigned long state[5], const unsigned char block[64]) {
  std::uint32_t words[5];
  for (int i = 0; i < 5; ++i) words[i] = static_cast<std::uint32_t>(state[i]);
  Compress(words, block, 1);
  for (int i = 0; i < 5; ++i) state[i] = words[i];
}
