// SHA-256 over its compression function: contexts, padding, digests.

#include "LarkspurCommon/sha256.h"

#include <cstring>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/sha256Compress.h"

namespace {

constexpr std::uint32_t kInitialState[8] = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                            0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};

}  // namespace

void SHA256Init(SHA256_CTX* context) {
  std::memcpy(context->state, kInitialState, sizeof kInitialState);
  context->count[0] = context->count[1] = 0;
}

void SHA256Update(SHA256_CTX* context, const unsigned char* data, unsigned int length) {
  FeedShaBlocks(*context, data, length, Sha256CompressPortable);
}

void SHA256Final(unsigned char digest[32], SHA256_CTX* context) {
  FeedShaPadding(*context, Sha256CompressPortable);
  for (std::size_t i = 0; i < 8; ++i) StoreBe32(digest + 4 * i, context->state[i]);
  *context = {};
}
