#ifndef LARKSPURCOMMON_SHA1COMPRESS_H
#define LARKSPURCOMMON_SHA1COMPRESS_H

#include <cstddef>
#include <cstdint>

// SHA-1's compression function, one implementation to a source. Internal to the library. Each
// compresses `count` blocks of 64 bytes, at any alignment, into the state; no blocks change
// nothing.

// Plain C++: what the others have to agree with.
void Sha1CompressPortable(std::uint32_t state[5], const unsigned char* blocks, std::size_t count);

// For processors with AVX2 and no SHA extensions. Call it only where Sha1Avx2Usable() is true.
void Sha1CompressAvx2(std::uint32_t state[5], const unsigned char* blocks, std::size_t count);
bool Sha1Avx2Usable();

// The processor's SHA extensions. Call it only where Sha1ShaExtensionsUsable() is true.
void Sha1CompressShaExtensions(std::uint32_t state[5], const unsigned char* blocks,
                               std::size_t count);
bool Sha1ShaExtensionsUsable();

#endif
