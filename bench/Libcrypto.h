#ifndef BENCH_LIBCRYPTO_H
#define BENCH_LIBCRYPTO_H

#include <cstddef>

// Whole messages through libcrypto's low-level calls, in a source of their own: its contexts have
// the names of ours.
void LibcryptoSha1(const unsigned char* message, std::size_t size, unsigned char digest[20]);
void LibcryptoMd5(const unsigned char* message, std::size_t size, unsigned char digest[16]);

#endif
