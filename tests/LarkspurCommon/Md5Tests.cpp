// MD5 against published vectors, and what MD5Final leaves in the context.

#include "LarkspurCommon/md5.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "HexText.h"

namespace {

// Feeds the message in two runs.
MD5_CTX Fed(const std::string& message, std::size_t split) {
  std::vector<unsigned char> bytes(message.begin(), message.end());
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, bytes.data(), static_cast<std::uint16_t>(split));
  MD5Update(&context, bytes.data() + split, static_cast<std::uint16_t>(message.size() - split));
  return context;
}

std::string Digest(const std::string& message, std::size_t split) {
  MD5_CTX context = Fed(message, split);
  unsigned char digest[16];
  MD5Final(digest, &context);
  return HexText(digest, sizeof digest);
}

// The suite of RFC 1321; then, by another implementation, lengths around the block's end and the
// longest run that one call takes.
TEST(Md5, PublishedVectors) {
  const struct {
    std::string message;
    const char* digest;
  } rows[] = {{"", "d41d8cd98f00b204e9800998ecf8427e"},
              {"a", "0cc175b9c0f1b6a831c399e269772661"},
              {"abc", "900150983cd24fb0d6963f7d28e17f72"},
              {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
              {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
              {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
               "d174ab98d277d9f5a5611c2c9f419d9f"},
              {"1234567890123456789012345678901234567890"
               "1234567890123456789012345678901234567890",
               "57edf4a22be3c955ac49da2e2107b67a"},
              {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
              {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
              {std::string(63, 'a'), "b06521f39153d618550606be297466d5"},
              {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
              {std::string(65, 'a'), "c743a45e0d2e6a95cb859adae0248435"},
              {std::string(128, 'a'), "e510683b3f5ffe4093d021808bc6ff70"},
              {std::string(65535, 'a'), "22686eba65441cdc1795f276dcdd4e45"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message.substr(0, 20) + " " + std::to_string(row.message.size()));
    const std::size_t step = std::max<std::size_t>(1, row.message.size() / 130);
    for (std::size_t split = 0; split <= row.message.size(); split += step) {
      ASSERT_EQ(Digest(row.message, split), row.digest) << "split at " << split;
    }
  }
}

TEST(Md5, LengthCarriesAndIsPaddedLowWordFirst) {
  MD5_CTX context;
  MD5Init(&context);
  context.count[0] = 0xFFFFFE00;
  context.count[1] = 0x01020304;
  unsigned char bytes[65] = {};
  MD5Update(&context, bytes, sizeof bytes);
  EXPECT_EQ(context.count[0], 8u);
  EXPECT_EQ(context.count[1], 0x01020305u);
  MD5Final(nullptr, &context);
  EXPECT_EQ(HexText(context.buffer + 56, 8), "0800000005030201");
}

TEST(Md5, FinalWithoutADigestKeepsThePaddedState) {
  MD5_CTX context = Fed("abc", 3);
  MD5Final(nullptr, &context);
  const std::uint32_t state[4] = {0x98500190, 0xB04FD23C, 0x7D3F96D6, 0x727FE128};
  EXPECT_TRUE(std::equal(state, state + 4, context.state));
  EXPECT_EQ(context.count[0], 512u);
  EXPECT_EQ(context.count[1], 0u);
}

TEST(Md5, FinalWithADigestZeroesTheContext) {
  MD5_CTX context = Fed(std::string(200, 'x'), 100);
  unsigned char digest[16];
  MD5Final(digest, &context);
  EXPECT_EQ(HexText(reinterpret_cast<unsigned char*>(&context), 88), std::string(176, '0'));
}

}  // namespace
