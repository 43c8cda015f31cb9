// Identifies a file by all its bytes.

#include "tools/corvo/archive/FileDigest.h"

#include "LarkspurCommon/sha256.h"
#include "tools/corvo/Hex.h"
#include "tools/corvo/archive/Blocks.h"

namespace corvo {
namespace {

constexpr std::size_t kSha256Size = 32;

}  // namespace

int DigestFile(const Descriptor& file, LONGLONG size, std::string& hex) {
  SHA256_CTX context;
  unsigned char digest[kSha256Size];
  SHA256Init(&context);
  const int error = ReadBlocks(file, 0, size, [&](const unsigned char* bytes, unsigned count) {
    SHA256Update(&context, bytes, count);
  });
  SHA256Final(digest, &context);
  if (error == 0) hex = Hex(digest, sizeof digest);
  return error;
}

}  // namespace corvo
