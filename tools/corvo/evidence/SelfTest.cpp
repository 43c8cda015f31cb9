// Known answers for the digests that a report rests on.

#include "tools/corvo/evidence/SelfTest.h"

#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/sha256.h"
#include "engine/NaInfo.h"
#include "tools/corvo/Hex.h"

namespace corvo {
namespace {

constexpr char kTwoBlocks[] = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
constexpr std::size_t kSha256Size = 32;

struct Message {
  const char* description;
  std::string text;
  const char* sha1;
  const char* sha256;
};

std::string Sha1(const std::string& text) {
  SHA1_CTX context;
  unsigned char digest[kDigestSize];
  SHA1Init(&context);
  SHA1Update(&context, reinterpret_cast<const unsigned char*>(text.data()),
             static_cast<unsigned>(text.size()));
  SHA1Final(digest, &context);
  return Hex(digest, sizeof digest);
}

std::string Sha256(const std::string& text) {
  SHA256_CTX context;
  unsigned char digest[kSha256Size];
  SHA256Init(&context);
  SHA256Update(&context, reinterpret_cast<const unsigned char*>(text.data()),
               static_cast<unsigned>(text.size()));
  SHA256Final(digest, &context);
  return Hex(digest, sizeof digest);
}

}  // namespace

std::vector<KnownAnswer> RunSelfTest() {
  const Message messages[] = {
      {"\"abc\"", "abc", "a9993e364706816aba3e25717850c26c9cd0d89d",
       "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"the 56 letters \"abcdbcde...nopq\"", kTwoBlocks, "84983e441c3bd26ebaae4aa1f95129e5e54670f1",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {"a million letters \"a\"", std::string(1'000'000, 'a'),
       "34aa973cd4c4daa4f61eeb2bdbad27316534016f",
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  std::vector<KnownAnswer> answers;
  for (const Message& message : messages) {
    answers.push_back({"SHA-1", message.description, message.sha1, Sha1(message.text)});
    answers.push_back({"SHA-256", message.description, message.sha256, Sha256(message.text)});
  }
  return answers;
}

}  // namespace corvo
