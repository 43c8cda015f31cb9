// SHA-1 over the compression function that suits the processor: contexts, padding, digests.

#include "LarkspurCommon/sha1.h"

#include <cstring>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha1Compress.h"

namespace {

constexpr std::uint32_t kInitialState[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                            0xC3D2E1F0};
// What compressing a block of zeros makes of a state of zeros: computed each time, it would cost a
// message of one block a third more.
constexpr std::uint32_t kFinalState[5] = {0x9E1547ED, 0x57EC91C2, 0x30FA8BC8, 0xC7785A54,
                                          0xA7EFA5E3};

void Compress(std::uint32_t state[5], const unsigned char* blocks, std::size_t count) {
  static const auto compress = Sha1ShaExtensionsUsable() ? Sha1CompressShaExtensions
                               : Sha1Avx2Usable()        ? Sha1CompressAvx2
                                                         : Sha1CompressPortable;
  compress(state, blocks, count);
}

}  // namespace

void SHA1Init(SHA1_CTX* context) {
  std::memcpy(context->state, kInitialState, sizeof kInitialState);
  context->count[0] = context->count[1] = 0;
}

void SHA1Update(SHA1_CTX* context, const unsigned char* data, unsigned int length) {
  FeedShaBlocks(*context, data, length, Compress);
}

void SHA1Final(unsigned char* digest, SHA1_CTX* context) {
  FeedShaPadding(*context, Compress);
  for (std::size_t i = 0; i < 5; ++i) StoreBe32(digest + 4 * i, context->state[i]);
  std::memcpy(context->state, kFinalState, sizeof kFinalState);
  context->count[0] = context->count[1] = 0;
  std::memset(context->buffer, 0, sizeof context->buffer);
}

void SHA1Transform(unsigned long state[5], const unsigned char block[64]) {
  std::uint32_t words[5];
  for (int i = 0; i < 5; ++i) words[i] = static_cast<std::uint32_t>(state[i]);
  Compress(words, block, 1);
  for (int i = 0; i < 5; ++i) state[i] = words[i];
}
