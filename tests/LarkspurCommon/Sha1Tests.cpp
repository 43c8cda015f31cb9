// SHA-1 against published vectors, and each compression function against the portable one.

#include "LarkspurCommon/sha1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "HexText.h"
#include "LarkspurCommon/sha1Compress.h"

namespace {

using Bytes = std::vector<unsigned char>;
using CompressFunction = decltype(&Sha1CompressPortable);

constexpr std::uint32_t kInitialState[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                            0xC3D2E1F0};

struct Implementation {
  const char* name;
  CompressFunction compress;
};

std::vector<Implementation> UsableImplementations() {
  std::vector<Implementation> usable = {{"portable", Sha1CompressPortable}};
  if (Sha1ShaExtensionsUsable()) usable.push_back({"SHA extensions", Sha1CompressShaExtensions});
  return usable;
}

Bytes ToBytes(const std::string& text) {
  return {text.begin(), text.end()};
}

std::string Finish(SHA1_CTX& context) {
  unsigned char digest[20];
  SHA1Final(digest, &context);
  return HexText(digest, sizeof digest);
}

std::string Digest(const Bytes& message, std::size_t split) {
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, message.data(), static_cast<unsigned>(split));
  SHA1Update(&context, message.data() + split, static_cast<unsigned>(message.size() - split));
  return Finish(context);
}

// The digest by one compression function alone: one call for all blocks, at the given alignment.
std::string DigestBy(CompressFunction compress, const Bytes& message, std::size_t offset) {
  Bytes padded(offset);
  padded.insert(padded.end(), message.begin(), message.end());
  padded.push_back(0x80);
  while ((padded.size() - offset) % 64 != 56) padded.push_back(0);
  for (int shift = 56; shift >= 0; shift -= 8) {
    padded.push_back(static_cast<unsigned char>(std::uint64_t{message.size()} * 8 >> shift));
  }
  std::uint32_t s[5];
  std::copy_n(kInitialState, 5, s);
  compress(s, padded.data() + offset, (padded.size() - offset) / 64);
  char text[41];
  std::snprintf(text, sizeof text, "%08x%08x%08x%08x%08x", s[0], s[1], s[2], s[3], s[4]);
  return text;
}

TEST(Sha1, PublishedVectors) {
  const struct {
    std::string message;
    const char* digest;
  } rows[] = {{"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
              {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
              {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
               "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
              {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmn"
               "hijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu",
               "a49b2446a02c645bf419f995b67091253a04a259"},
              {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message.substr(0, 10));
    const Bytes message = ToBytes(row.message);
    EXPECT_EQ(Digest(message, message.size() / 3), row.digest);
    for (const Implementation& implementation : UsableImplementations()) {
      EXPECT_EQ(DigestBy(implementation.compress, message, 0), row.digest) << implementation.name;
    }
  }
}

TEST(Sha1, EveryLengthSplitAndAlignmentAroundTheBlockSize) {
  Bytes message;
  for (unsigned length = 0; length <= 130; ++length) {
    const std::string expected = DigestBy(Sha1CompressPortable, message, 0);
    for (const Implementation& implementation : UsableImplementations()) {
      ASSERT_EQ(DigestBy(implementation.compress, message, length % 16), expected)
          << implementation.name << ", " << length;
    }
    for (std::size_t split = 0; split <= length; ++split) {
      ASSERT_EQ(Digest(message, split), expected) << length << " split at " << split;
    }
    message.push_back(static_cast<unsigned char>(length * 151 + 13));
  }
}

#ifdef __i386__
// Compresses one block on a stack that is `above` bytes off the alignment compilers count on.
void CompressOnOddStack(CompressFunction compress, std::uint32_t state[5],
                        const unsigned char* block, unsigned above) {
  asm volatile(
      "movl %%esp, %%esi; andl $-16, %%esp; subl %%ecx, %%esp;"
      "pushl $1; pushl %%edx; pushl %%eax; call *%%edi; movl %%esi, %%esp"
      : "+a"(state), "+d"(block), "+c"(above)
      : "D"(compress)
      : "esi", "memory", "cc");
}

TEST(Sha1, HostStacksAreAlignedToFourBytesOnly) {
  const Bytes block(64, 'x');
  std::uint32_t expected[5] = {1, 2, 3, 4, 5};
  Sha1CompressPortable(expected, block.data(), 1);
  for (const Implementation& implementation : UsableImplementations()) {
    for (unsigned above = 0; above < 16; above += 4) {
      std::uint32_t state[5] = {1, 2, 3, 4, 5};
      CompressOnOddStack(implementation.compress, state, block.data(), above);
      EXPECT_TRUE(std::equal(state, state + 5, expected)) << implementation.name;
    }
  }
}
#endif

// As if nearly 3.5 GiB had been fed; the digest is another implementation's.
TEST(Sha1, LengthCarriesIntoTheHighWordAndBothArePadded) {
  SHA1_CTX context;
  SHA1Init(&context);
  context.count[0] = 0xFFFFFE00;
  context.count[1] = 6;
  SHA1Update(&context, Bytes(65).data(), 65);
  EXPECT_EQ(context.count[0], 8u);
  EXPECT_EQ(context.count[1], 7u);
  EXPECT_EQ(Finish(context), "dce7a8109f173e73f322d249839f387febfc7672");
}

TEST(Sha1, FinalLeavesAClearedContextCompressedOnce) {
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, ToBytes("abc").data(), 3);
  Finish(context);
  unsigned long state[5] = {};
  const unsigned char zeros[64] = {};
  SHA1Transform(state, zeros);
  EXPECT_TRUE(std::equal(state, state + 5, context.state));
  EXPECT_TRUE(std::equal(zeros, zeros + 64, context.buffer));
  EXPECT_EQ(context.count[0], 0u);
  EXPECT_EQ(context.count[1], 0u);
}

TEST(Sha1, TransformWorksIn32BitsWhereALongIsWider) {
  constexpr unsigned long kAbove32Bits = ~0xFFFFFFFFul;
  unsigned long state[5];
  for (int i = 0; i < 5; ++i) state[i] = kAbove32Bits | kInitialState[i];
  unsigned char block[64] = {'a', 'b', 'c', 0x80};
  block[63] = 24;
  SHA1Transform(state, block);
  const unsigned long expected[5] = {0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D};
  EXPECT_TRUE(std::equal(state, state + 5, expected));
}

}  // namespace
