#ifndef LARKSPURCOMMON_SHA256_H
#define LARKSPURCOMMON_SHA256_H

#include <cstdint>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"

// SHA-256 as FIPS 180-4 defines it. A context belongs to its caller; different contexts may be used
// on different threads at once.

struct SHA256_CTX {
  std::uint32_t state[8];    // the chaining value
  std::uint32_t count[2];    // message bits fed so far, low word first
  unsigned char buffer[64];  // the pending part of the current block
};
CORVO_SIZE(104, 104, SHA256_CTX);

// Starts a message: the initial chaining value, nothing fed.
CORVO_API void SHA256Init(SHA256_CTX* context);

// Adds `length` bytes, in as many calls as the caller likes. `data` may be null when it is 0.
CORVO_API void SHA256Update(SHA256_CTX* context, const unsigned char* data, unsigned int length);

// Pads the message, writes its digest, each word's most significant byte first, and zeroes the
// whole context. SHA256Init makes it usable again.
CORVO_API void SHA256Final(unsigned char digest[32], SHA256_CTX* context);

#endif
