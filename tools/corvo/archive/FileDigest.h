#ifndef TOOLS_CORVO_ARCHIVE_FILEDIGEST_H
#define TOOLS_CORVO_ARCHIVE_FILEDIGEST_H

#include <string>

#include "platform/Win32Types.h"
#include "tools/corvo/archive/Descriptor.h"

namespace corvo {

// The SHA-256 of a whole file of this size: 64 lower-case hexadecimal digits, as sha256sum gives
// it. Gives 0, or the error for which the system refused to read; `hex` is then untouched. Any
// thread.
int DigestFile(const Descriptor& file, LONGLONG size, std::string& hex);

}  // namespace corvo

#endif
