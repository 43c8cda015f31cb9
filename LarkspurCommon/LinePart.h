#ifndef LARKSPURCOMMON_LINEPART_H
#define LARKSPURCOMMON_LINEPART_H

#include <cstddef>

// Copies what comes up to and including the first CR or LF, or all of `size` bytes where there is
// none, and returns how many. Bytes of `out` behind these stay as they are.
std::size_t CopyLinePart(char* out, const char* in, std::size_t size);

#endif
