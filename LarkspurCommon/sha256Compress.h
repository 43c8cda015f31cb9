#ifndef LARKSPURCOMMON_SHA256COMPRESS_H
#define LARKSPURCOMMON_SHA256COMPRESS_H

#include <cstddef>
#include <cstdint>

// SHA-256's compression function. Internal to the library. It compresses `count` blocks of 64
// bytes, at any alignment, into the state; no blocks change nothing.
void Sha256CompressPortable(std::uint32_t state[8], const unsigned char* blocks, std::size_t count);

#endif
