#include "bench/Libcrypto.h"

#include <openssl/md5.h>
#include <openssl/sha.h>

void LibcryptoSha1(const unsigned char* message, std::size_t size, unsigned char digest[20]) {
  SHA_CTX context;
  SHA1_Init(&context);
  SHA1_Update(&context, message, size);
  SHA1_Final(digest, &context);
}

void LibcryptoMd5(const unsigned char* message, std::size_t size, unsigned char digest[16]) {
  MD5_CTX context;
  MD5_Init(&context);
  MD5_Update(&context, message, size);
  MD5_Final(digest, &context);
}
