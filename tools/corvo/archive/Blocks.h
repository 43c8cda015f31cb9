#ifndef TOOLS_CORVO_ARCHIVE_BLOCKS_H
#define TOOLS_CORVO_ARCHIVE_BLOCKS_H

#include <functional>

#include "platform/Win32Types.h"
#include "tools/corvo/archive/Descriptor.h"

namespace corvo {

using BlockConsumer = std::function<void(const unsigned char* bytes, unsigned count)>;

// Hands on `length` bytes of a file from `offset` on, block by block, or as many as there are.
// Gives 0, or the error for which the system refused to read.
int ReadBlocks(const Descriptor& file, LONGLONG offset, LONGLONG length,
               const BlockConsumer& consumer);

}  // namespace corvo

#endif
