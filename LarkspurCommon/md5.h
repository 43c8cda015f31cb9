#ifndef LARKSPURCOMMON_MD5_H
#define LARKSPURCOMMON_MD5_H

#include <cstdint>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"

// MD5 as RFC 1321 defines it. A context belongs to its caller; different contexts may be used on
// different threads at once.

struct MD5_CTX {
  std::uint32_t state[4];
  std::uint32_t count[2];    // message bits fed so far, low word first
  unsigned char buffer[64];  // the pending part of the current block
};
CORVO_SIZE(88, 88, MD5_CTX);

extern "C" {

// Starts a message.
CORVO_API void MD5Init(MD5_CTX* context);

// Adds `length` bytes; a longer run takes several calls. `input` is only read.
CORVO_API void MD5Update(MD5_CTX* context, unsigned char* input, std::uint16_t length);

// Pads the message, writes its 16-byte digest, each word's least significant byte first, and
// zeroes the whole context. With a null `digest` the context is padded and left like that.
CORVO_API void MD5Final(unsigned char* digest, MD5_CTX* context);

}  // extern "C"

#endif
