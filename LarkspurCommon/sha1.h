#ifndef LARKSPURCOMMON_SHA1_H
#define LARKSPURCOMMON_SHA1_H

#include <cstdint>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"

// SHA-1 as FIPS 180-1 defines it. A context belongs to its caller; different contexts may be used
// on different threads at once.

struct SHA1_CTX {
  std::uint32_t state[5];    // the chaining value
  std::uint32_t count[2];    // message bits fed so far, low word first
  unsigned char buffer[64];  // the pending part of the current block
};
CORVO_SIZE(92, 92, SHA1_CTX);

// Starts a message: the initial chaining value, nothing fed.
CORVO_API void SHA1Init(SHA1_CTX* context);

// Adds `length` bytes, in as many calls as the caller likes. `data` may be null when it is 0.
CORVO_API void SHA1Update(SHA1_CTX* context, const unsigned char* data, unsigned int length);

// Pads the message and writes its 20-byte digest, each word's most significant byte first. Nothing
// of the message stays in the context: count and buffer are zero, and the state is what one
// compression of a zero block makes of a zero state. SHA1Init makes it usable again.
CORVO_API void SHA1Final(unsigned char* digest, SHA1_CTX* context);

// Compresses one block into the state. The words are 32-bit values, also where a long is wider:
// what exceeds 32 bits is ignored on entry and zero afterwards.
CORVO_API void SHA1Transform(unsigned long state[5], const unsigned char block[64]);

#endif
