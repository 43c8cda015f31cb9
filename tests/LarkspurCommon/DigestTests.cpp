// The digests against published vectors, and SHA-1's compression functions against each other.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "LarkspurCommon/md5.h"
#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/sha1Compress.h"
#include "LarkspurCommon/sha256.h"

namespace {

using Bytes = std::vector<unsigned char>;

std::string HexText(const void* bytes, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < 2 * size; ++i) {
    const unsigned byte = static_cast<const unsigned char*>(bytes)[i / 2];
    text += "0123456789abcdef"[i % 2 == 0 ? byte >> 4 : byte & 15];
  }
  return text;
}

std::string Finish(SHA1_CTX& context) {
  unsigned char digest[20];
  SHA1Final(digest, &context);
  EXPECT_EQ(HexText(context.buffer, sizeof context.buffer), std::string(128, '0'));
  return HexText(digest, sizeof digest);
}

std::string Sha1Of(const Bytes& message, std::size_t split) {
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, message.data(), static_cast<unsigned>(split));
  SHA1Update(&context, message.data() + split, static_cast<unsigned>(message.size() - split));
  return Finish(context);
}

std::string Finish(SHA256_CTX& context) {
  unsigned char digest[32];
  SHA256Final(digest, &context);
  EXPECT_EQ(HexText(&context, sizeof context), std::string(208, '0'));
  return HexText(digest, sizeof digest);
}

std::string Sha256Of(const Bytes& message, std::size_t split) {
  SHA256_CTX context;
  SHA256Init(&context);
  SHA256Update(&context, message.data(), static_cast<unsigned>(split));
  SHA256Update(&context, message.data() + split, static_cast<unsigned>(message.size() - split));
  return Finish(context);
}

std::string Md5Of(const Bytes& message, std::size_t split) {
  Bytes bytes = message;  // the interface takes no const
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, bytes.data(), static_cast<std::uint16_t>(split));
  MD5Update(&context, bytes.data() + split, static_cast<std::uint16_t>(message.size() - split));
  unsigned char digest[16];
  MD5Final(digest, &context);
  EXPECT_EQ(HexText(&context, sizeof context), std::string(176, '0'));
  return HexText(digest, sizeof digest);
}

// Three out of the standards; then, by another implementation, lengths around the block's end and
// the longest run that one call of MD5 takes.
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
      {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a",
       "ef1772b6dff9a122358552954ad0df65",
       "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(64, 'a'), "0098ba824b5c16427bd7a1122a5a442a25ec644d",
       "014842d480b571495a4a0363793f7367",
       "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(65535, 'a'), "e1d0a18d43d3a689af088e156bd0434aa0c831fc",
       "22686eba65441cdc1795f276dcdd4e45",
       "6e1bebca6a8229364a162a72ef064826c4cd7457bf54f190ef782bd9deff3e42"}};
  for (const auto& row : rows) {
    const Bytes message(row.message.begin(), row.message.end());
    for (std::size_t split = 0; split <= message.size(); split += 1 + message.size() / 130) {
      ASSERT_EQ(Sha1Of(message, split), row.sha1) << message.size() << " at " << split;
      ASSERT_EQ(Md5Of(message, split), row.md5) << message.size() << " at " << split;
      ASSERT_EQ(Sha256Of(message, split), row.sha256) << message.size() << " at " << split;
    }
  }
}

TEST(Sha1, EveryLengthAndSplitAroundTheBlockSize) {
  Bytes message;
  for (unsigned length = 0; length <= 130; ++length) {
    const std::string expected = Sha1Of(message, 0);
    for (std::size_t split = 1; split <= length; ++split) {
      ASSERT_EQ(Sha1Of(message, split), expected) << length << " split at " << split;
    }
    message.push_back(static_cast<unsigned char>(length * 151 + 13));
  }
}

// Three blocks, for i386 on a stack that is `above` bytes off the alignment compilers count on: the
// hosts' stacks are aligned to 4 bytes only.
void CompressBySha(std::uint32_t* state, const unsigned char* blocks,
                   [[maybe_unused]] unsigned above) {
#ifdef __i386__
  asm volatile(
      "movl %%esp, %%esi; andl $-16, %%esp; subl %%ecx, %%esp;"
      "pushl $3; pushl %%edx; pushl %%eax; call *%%edi; movl %%esi, %%esp"
      : "+a"(state), "+d"(blocks), "+c"(above)
      : "D"(Sha1CompressShaExtensions)
      : "esi", "memory", "cc");
#else
  Sha1CompressShaExtensions(state, blocks, 3);
#endif
}

TEST(Sha1, ShaExtensionsAgreeWithPortableAtEveryAlignment) {
  if (!Sha1ShaExtensionsUsable()) GTEST_SKIP() << "not on this processor";
  Bytes bytes;
  while (bytes.size() < 16 + 3 * 64) bytes.push_back(static_cast<unsigned char>(bytes.size() * 7));
  for (unsigned offset = 0; offset < 16; ++offset) {
    std::array<std::uint32_t, 5> expected = {1, 2, 3, 4, 5};
    auto state = expected;
    Sha1CompressPortable(expected.data(), bytes.data() + offset, 3);
    CompressBySha(state.data(), bytes.data() + offset, offset & 12);
    EXPECT_EQ(state, expected) << offset;
  }
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
  SHA1Transform(state, Bytes(64).data());
  EXPECT_TRUE(std::equal(state, state + 5, context.state));
}

}  // namespace
