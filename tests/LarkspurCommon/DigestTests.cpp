// The digests against published vectors, and SHA-1's compression functions against each other.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "LarkspurCommon/md5.h"
#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/sha1Compress.h"
#include "LarkspurCommon/sha256.h"

namespace {

std::string HexText(const void* bytes, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < 2 * size; ++i) {
    const unsigned byte = static_cast<const unsigned char*>(bytes)[i / 2];
    text += "0123456789abcdef"[i % 2 == 0 ? byte >> 4 : byte & 15];
  }
  return text;
}

// The digest, and a check that nothing of the message is left behind.
std::string Finish(SHA1_CTX& context) {
  unsigned char digest[20];
  SHA1Final(digest, &context);
  EXPECT_EQ(HexText(context.buffer, sizeof context.buffer), std::string(128, '0'));
  return HexText(digest, sizeof digest);
}

std::string Finish(SHA256_CTX& context) {
  unsigned char digest[32];
  SHA256Final(digest, &context);
  EXPECT_EQ(HexText(&context, sizeof context), std::string(208, '0'));
  return HexText(digest, sizeof digest);
}

std::string Finish(MD5_CTX& context) {
  unsigned char digest[16];
  MD5Final(digest, &context);
  EXPECT_EQ(HexText(&context, sizeof context), std::string(176, '0'));
  return HexText(digest, sizeof digest);
}

// Bytes that all differ from their neighbours.
std::string Counted(std::size_t size) {
  std::string bytes;
  while (bytes.size() < size) bytes += static_cast<char>(bytes.size() * 151 + 13);
  return bytes;
}

template <class Context, class Input, class Size>
std::string DigestOf(void (*init)(Context*), void (*update)(Context*, Input*, Size),
                     std::string message, std::size_t split) {
  auto* const bytes = reinterpret_cast<unsigned char*>(message.data());
  Context context;
  init(&context);
  update(&context, bytes, static_cast<Size>(split));
  update(&context, bytes + split, static_cast<Size>(message.size() - split));
  return Finish(context);
}

// Three out of the standards; then, by another implementation, padding that just fits a third block
// and the longest run that one call of MD5 takes.
TEST(Digests, PublishedVectors) {
  const struct {
    std::string message;
    const char *sha1, *md5, *sha256;
  } rows[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709", "d41d8cd98f00b204e9800998ecf8427e",
       "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d", "900150983cd24fb0d6963f7d28e17f72",
       "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "84983e441c3bd26ebaae4aa1f95129e5e54670f1", "8215ef0796a20bcaaae116d3876c664a",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {Counted(183), "f37e833e6ad2dc1156c5af9da8c3a67e5f38a2ef", "d4ecbcee3206603b46e6a9d138a8c323",
       "1a63a42200912efac22c423e37297d551619685e78f6a0e20f0370b0236d6754"},
      {std::string(65535, 'a'), "e1d0a18d43d3a689af088e156bd0434aa0c831fc",
       "22686eba65441cdc1795f276dcdd4e45",
       "6e1bebca6a8229364a162a72ef064826c4cd7457bf54f190ef782bd9deff3e42"}};
  for (const auto& [message, sha1, md5, sha256] : rows) {
    for (std::size_t split = 0; split <= message.size(); split += 1 + message.size() / 200) {
      SCOPED_TRACE(testing::Message() << message.size() << " at " << split);
      ASSERT_EQ(DigestOf(SHA1Init, SHA1Update, message, split), sha1);
      ASSERT_EQ(DigestOf(MD5Init, MD5Update, message, split), md5);
      ASSERT_EQ(DigestOf(SHA256Init, SHA256Update, message, split), sha256);
    }
  }
}

using Sha1Compress = void (*)(std::uint32_t*, const unsigned char*, std::size_t);

// For i386 on a stack that is `above` bytes off the alignment compilers count on: the hosts' stacks
// are aligned to 4 bytes only.
void Compress(Sha1Compress compress, std::uint32_t* state, const unsigned char* blocks,
              std::size_t count, [[maybe_unused]] unsigned above) {
#ifdef __i386__
  const void* const arguments[] = {state, blocks, reinterpret_cast<void*>(count)};
  const void* const* first = arguments;
  asm volatile(
      "movl %%esp, %%esi; andl $-16, %%esp; subl %%ecx, %%esp;"
      "pushl 8(%%eax); pushl 4(%%eax); pushl (%%eax); call *%%edi; movl %%esi, %%esp"
      : "+a"(first), "+c"(above)
      : "D"(compress)
      : "edx", "esi", "memory", "cc");
#else
  compress(state, blocks, count);
#endif
}

void ExpectPortableResults(Sha1Compress compress) {
  const std::string bytes = Counted(16 + 3 * 64);
  const auto* const blocks = reinterpret_cast<const unsigned char*>(bytes.data());
  for (unsigned i = 0; i < 16 * 4; ++i) {
    const unsigned offset = i / 4;
    const std::size_t count = i % 4;
    std::array<std::uint32_t, 5> expected = {1, 2, 3, 4, 5};
    auto state = expected;
    Sha1CompressPortable(expected.data(), blocks + offset, count);
    Compress(compress, state.data(), blocks + offset, count, offset & 12);
    EXPECT_EQ(state, expected) << count << " blocks at " << offset;
  }
}

TEST(Sha1, ShaExtensionsAgreeWithPortable) {
  if (!Sha1ShaExtensionsUsable()) GTEST_SKIP() << "not on this processor";
  ExpectPortableResults(Sha1CompressShaExtensions);
}

TEST(Sha1, Avx2AgreesWithPortable) {
  if (!Sha1Avx2Usable()) GTEST_SKIP() << "not on this processor";
  ExpectPortableResults(Sha1CompressAvx2);
}

// As if gigabytes had been fed; the SHA-1 digest is another implementation's. MD5, without a
// digest, keeps its padded state.
TEST(Digests, LengthsCarryIntoTheHighWordAndBothArePadded) {
  unsigned char bytes[65] = {};
  SHA1_CTX sha1;
  SHA1Init(&sha1);
  sha1.count[0] = 0xFFFFFE00;
  sha1.count[1] = 6;
  SHA1Update(&sha1, bytes, sizeof bytes);
  EXPECT_EQ(Finish(sha1), "dce7a8109f173e73f322d249839f387febfc7672");
  MD5_CTX md5;
  MD5Init(&md5);
  md5.count[0] = 0xFFFFFE00;
  md5.count[1] = 0x01020304;
  MD5Update(&md5, bytes, sizeof bytes);
  MD5Final(nullptr, &md5);
  EXPECT_EQ(HexText(md5.buffer + 56, 8), "0800000005030201");
}

// What a closed context holds: one compression of a cleared one. The words of a state have 32 bits.
TEST(Sha1, TransformOfACleanBlock) {
  SHA1_CTX context;
  SHA1Init(&context);
  Finish(context);
  unsigned long state[5];
  std::fill_n(state, 5, ~0xFFFFFFFFul);
  const unsigned char block[64] = {};
  SHA1Transform(state, block);
  EXPECT_TRUE(std::equal(state, state + 5, context.state));
}

}  // namespace
